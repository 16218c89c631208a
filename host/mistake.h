// Wrong usage, in words.
#pragma once

#include <string>
#include <vector>

namespace host {

// The program's own command, which the table of commands does not have: it describes the others.
inline constexpr const char* kHelp = "help";
inline constexpr const char* kAboutHelp = "Describe a command, or list all";

struct Mistake {
  std::string Command;               // that was given; "" when none was, or an unknown one
  std::vector<std::string> Unknown;  // words in the order given that are neither command nor option
  std::string Text;                  // what is wrong; counts without unknown words only
};

// What is wrong, the nearest that there is, and where to read what there is. The text is not
// printable as it is.
//
//   show: no such option: --formt; the nearest is --format; see statuscollector show --help
std::string InWords(const Mistake& mistake);

}  // namespace host
