#include "host/plugin_text.h"

#include "host/printable.h"

namespace host {

std::string PluginText(std::string_view text) {
  constexpr std::size_t kMostColumns = 400;
  std::string printable = Truncated(Printable(text), kMostColumns);
  for (std::size_t at = printable.find('|'); at != std::string::npos;
       at = printable.find('|', at)) {
    printable.replace(at, 1, "¦");
  }
  return printable;
}

}  // namespace host
