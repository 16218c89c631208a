#include "host/mistake.h"

#include <algorithm>
#include <string_view>

#include "host/commands.h"
#include "insight/nearest.h"

namespace host {
namespace {

bool IsOption(std::string_view word) { return word.size() > 1 && word.front() == '-'; }

std::vector<std::string> NamesOfCommands() {
  std::vector<std::string> names = {kHelp};
  for (const Command& command : kCommands) {
    names.emplace_back(command.Name);
  }
  return names;
}

// The long options of a command, or of the program.
std::vector<std::string> NamesOfOptions(const std::string& name) {
  std::vector<std::string> names = {"--help"};
  if (name.empty()) {
    names.emplace_back("--version");
  }
  for (const Command& command : kCommands) {
    if (command.Name == name) {
      for (const Argument& argument : command.Declare().Arguments) {
        const std::string_view all = argument.Name;
        if (const std::size_t at = all.find("--"); at != std::string_view::npos) {
          names.emplace_back(all.substr(at));
        }
      }
    }
  }
  return names;
}

std::string NearestIs(const std::string& word, const std::vector<std::string>& names) {
  const std::string_view nearest = insight::Names({names.begin(), names.end()}).Nearest(word);
  return nearest.empty() ? "" : "; the nearest is " + std::string(nearest);
}

// The word that the others may only follow from: the command, or an option before its value.
const std::string& Wrong(const Mistake& mistake) {
  const auto option = std::ranges::find_if(mistake.Unknown, &IsOption);
  const bool first = mistake.Command.empty() || option == mistake.Unknown.end();
  return first ? mistake.Unknown.front() : *option;
}

std::string AboutUnknown(const Mistake& mistake) {
  const std::string& word = Wrong(mistake);
  if (IsOption(word)) {
    const std::string name = word.substr(0, word.find('='));
    const bool is_long = name.starts_with("--");
    return "no such option: " + name +
           (is_long ? NearestIs(name, NamesOfOptions(mistake.Command)) : "");
  }
  return mistake.Command.empty() ? "no such command: " + word + NearestIs(word, NamesOfCommands())
                                 : "not expected: " + word;
}

}  // namespace

std::string InWords(const Mistake& mistake) {
  const std::string about = mistake.Unknown.empty() ? mistake.Text : AboutUnknown(mistake);
  const std::string command = mistake.Command.empty() ? "" : " " + mistake.Command;
  return (mistake.Command.empty() ? "" : mistake.Command + ": ") + about + "; see statuscollector" +
         command + " --help";
}

}  // namespace host
