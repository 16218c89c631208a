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

// The options of a command, or of the program, each as "-f,--format" or without the short name.
std::vector<std::string> Options(const std::string& name) {
  std::vector<std::string> options = {"-h,--help"};
  if (name.empty()) {
    options.emplace_back("--version");
  }
  for (const Command& command : kCommands) {
    if (command.Name == name) {
      for (const Argument& argument : command.Declare().Arguments) {
        options.emplace_back(argument.Name);
      }
    }
  }
  return options;
}

std::vector<std::string> LongNames(const std::vector<std::string>& options) {
  std::vector<std::string> names;
  for (const std::string& option : options) {
    if (const std::size_t at = option.find("--"); at != std::string::npos) {
      names.push_back(option.substr(at));
    }
  }
  return names;
}

// "; there are -h, -f and -c", letters being too short to be near to others.
std::string ShortNamesAre(const std::vector<std::string>& options) {
  std::vector<std::string> names;
  for (const std::string& option : options) {
    if (option.size() > 1 && option[0] == '-' && option[1] != '-') {
      names.push_back(option.substr(0, 2));
    }
  }
  std::string text = names.size() == 1 ? "; there is " : "; there are ";
  for (const std::string& name : names) {
    const bool is_first = &name == &names.front();
    text.append(is_first ? "" : &name == &names.back() ? " and " : ", ").append(name);
  }
  return text;
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
    const std::vector<std::string> options = Options(mistake.Command);
    return "no such option: " + name +
           (name.starts_with("--") ? NearestIs(name, LongNames(options)) : ShortNamesAre(options));
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
