// Writes the completion of the program's command line for a shell, from its table of commands.
//
//   completions bash|zsh
#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/commands.h"
#include "host/mistake.h"

namespace {

using host::Argument;
using host::Command;

// Types of arguments that are names of files.
constexpr std::string_view kFiles[] = {"FILE", "BEFORE", "AFTER"};

struct Described {
  std::string Name;
  std::string About;
  std::vector<Argument> Arguments;
};

std::vector<Described> Commands() {
  std::vector<Described> commands;
  std::vector<std::string> names;
  for (const Command& command : host::kCommands) {
    commands.push_back({command.Name, command.About, command.Declare().Arguments});
    names.emplace_back(command.Name);
  }
  static std::string unused;
  commands.push_back({host::kHelp,
                      host::kAboutHelp,
                      {{.Name = "command",
                        .Type = "COMMAND",
                        .About = "The command to describe",
                        .Value = &unused,
                        .Choices = names}}});
  return commands;
}

bool IsOption(const Argument& argument) { return argument.Name[0] == '-'; }

bool IsFlag(const Argument& argument) { return std::holds_alternative<bool*>(argument.Value); }

bool IsFile(const Argument& argument) {
  return std::ranges::find(kFiles, argument.Type) != std::end(kFiles);
}

// "-f", "--format"
std::vector<std::string> NamesOf(const Argument& argument) {
  const std::string all = argument.Name;
  const std::size_t comma = all.find(',');
  if (comma == std::string::npos) {
    return {all};
  }
  return {all.substr(0, comma), all.substr(comma + 1)};
}

// What its value may be or begin with.
const std::vector<std::string>& ValuesOf(const Argument& argument) {
  return argument.Choices.empty() ? argument.Offers : argument.Choices;
}

std::string Joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : between) + word;
  }
  return text;
}

// ---- bash

// What a value is completed with: a statement of the shell.
std::string BashValue(const Argument& argument) {
  if (IsFile(argument)) {
    return "files=yes";
  }
  const std::vector<std::string>& values = ValuesOf(argument);
  if (values.empty()) {
    return "return";
  }
  const bool goes_on = values.front().ends_with('=');
  return (goes_on ? "compopt -o nospace 2>/dev/null; " : "") + std::string("words='") +
         Joined(values) + "'";
}

void WriteBashCommand(const Described& command) {
  std::vector<std::string> words = {"--help"};
  std::string others;
  for (const Argument& argument : command.Arguments) {
    if (!IsOption(argument)) {
      if (IsFile(argument)) {
        others = "; files=yes";
      }
      words.insert(words.end(), argument.Choices.begin(), argument.Choices.end());
      continue;
    }
    const std::vector<std::string> names = NamesOf(argument);
    words.push_back(names.back());
    if (!IsFlag(argument)) {
      std::vector<std::string> patterns;
      patterns.reserve(names.size());
      for (const std::string& name : names) {
        patterns.push_back("'" + command.Name + " " + name + "'");
      }
      std::printf("      %s) %s ;;\n", Joined(patterns, " | ").c_str(),
                  BashValue(argument).c_str());
    }
  }
  std::printf("      '%s '*) words='%s'%s ;;\n", command.Name.c_str(), Joined(words).c_str(),
              others.c_str());
}

void WriteBash() {
  std::vector<std::string> names;
  for (const Described& command : Commands()) {
    names.push_back(command.Name);
  }
  std::printf(
      "# bash completion for statuscollector, made from its table of commands.\n\n"
      "_statuscollector() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
      "  local words='' files=''\n"
      "  COMPREPLY=()\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
      "    words='%s --help --version'\n"
      "  else\n"
      "    case \"${COMP_WORDS[1]} $before\" in\n",
      Joined(names).c_str());
  for (const Described& command : Commands()) {
    WriteBashCommand(command);
  }
  std::printf(
      "    esac\n"
      "  fi\n"
      "  if [ -n \"$files\" ]; then\n"
      "    compopt -o filenames 2>/dev/null\n"
      "    mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
      "  fi\n"
      "  mapfile -t -O \"${#COMPREPLY[@]}\" COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
      "}\n"
      "complete -F _statuscollector statuscollector\n");
}

// ---- zsh

// Text within the single quotes of an argument of _arguments, where brackets and colons are marks.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\'') {
      escaped += "'\\''";
      continue;
    }
    escaped += std::string_view("[]:\\").find(c) == std::string_view::npos ? "" : "\\";
    escaped += c;
  }
  return escaped;
}

// ":FILE:_files", ":NAME:(text xml json)"
std::string ZshValue(const Argument& argument) {
  std::string action = " ";
  if (IsFile(argument)) {
    action = "_files";
  } else if (const std::vector<std::string>& values = ValuesOf(argument); !values.empty()) {
    const bool goes_on = values.front().ends_with('=');
    action = (goes_on ? "{compadd -S \"\" - " : "(") + Joined(values) + (goes_on ? "}" : ")");
  }
  return ":" + ZshText(argument.Type) + ":" + action;
}

std::string ZshArgument(const Argument& argument) {
  if (!IsOption(argument)) {
    return "'" + ZshValue(argument) + "'";
  }
  const bool repeats = std::holds_alternative<std::vector<std::string>*>(argument.Value);
  const std::vector<std::string> names = NamesOf(argument);
  const std::string rest =
      "'[" + ZshText(argument.About) + "]" + (IsFlag(argument) ? "" : ZshValue(argument)) + "'";
  if (names.size() == 1) {
    return (repeats ? "'*'" : "") + names.front() + rest;
  }
  const std::string before = repeats ? "'*'" : "'(" + Joined(names) + ")'";
  return before + "{" + Joined(names, ",") + "}" + rest;
}

void WriteZsh() {
  std::printf(
      "#compdef statuscollector\n"
      "# zsh completion for statuscollector, made from its table of commands.\n\n"
      "_statuscollector() {\n"
      "  local -a commands=(\n");
  for (const Described& command : Commands()) {
    std::printf("    '%s:%s'\n", command.Name.c_str(), ZshText(command.About).c_str());
  }
  std::printf(
      "  )\n"
      "  if ((CURRENT == 2)); then\n"
      "    _describe -t commands command commands\n"
      "    _arguments '(- :)'{-h,--help}'[List all commands]' '(- :)--version[Print the version]'\n"
      "    return\n"
      "  fi\n"
      "  local command=$words[2]\n"
      "  shift words\n"
      "  ((CURRENT--))\n"
      "  case $command in\n");
  for (const Described& command : Commands()) {
    std::printf("    %s)\n      _arguments -s", command.Name.c_str());
    for (const Argument& argument : command.Arguments) {
      std::printf(" \\\n        %s", ZshArgument(argument).c_str());
    }
    std::printf(" \\\n        '(- :)'{-h,--help}'[Describe the command]' ;;\n");
  }
  std::printf(
      "  esac\n"
      "}\n"
      "_statuscollector \"$@\"\n");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view shell = argc == 2 ? argv[1] : "";
  if (shell == "bash") {
    WriteBash();
  } else if (shell == "zsh") {
    WriteZsh();
  } else {
    std::fprintf(stderr, "completions: no such shell; run completions bash or completions zsh\n");
    return 2;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
