#include "sandbox/check.h"

#include <cerrno>
#include <string>
#include <system_error>

namespace sandbox {

void Fail(std::string_view what, std::string_view subject) {
  const int error = errno;
  std::string text(what);
  if (!subject.empty()) {
    text.append(" ").append(subject);
  }
  throw std::system_error(error, std::generic_category(), text);
}

}  // namespace sandbox
