#include "sandbox/tool_completion.h"

#include <algorithm>
#include <variant>
#include <vector>

namespace sandbox {
namespace {

using host::Argument;

// Types of arguments that are names of files.
constexpr std::string_view kFiles[] = {"FILE", "FILE|FOLDER", "PATH"};

// A word in its place that begins a command line of its own.
constexpr const char* kCommand = "COMMAND";

bool IsOption(const Argument& argument) { return argument.Name[0] == '-'; }

bool IsFlag(const Argument& argument) { return std::holds_alternative<bool*>(argument.Value); }

bool IsRepeated(const Argument& argument) {
  return std::holds_alternative<std::vector<std::string>*>(argument.Value);
}

bool IsFile(const Argument& argument) {
  return std::ranges::find(kFiles, argument.Type) != std::end(kFiles);
}

// "_statuscollector_replay"
std::string FunctionOf(const Tool& tool) {
  std::string name = std::string("_") + tool.Name;
  std::ranges::replace(name, '-', '_');
  return name;
}

std::string Bash(const Tool& tool) {
  std::string options = "--help";
  std::string values;  // options that a value follows which is no file
  for (const Argument& argument : tool.Arguments) {
    if (IsOption(argument)) {
      options += std::string(" ") + argument.Name;
      if (!IsFlag(argument) && !IsFile(argument)) {
        values += (values.empty() ? "" : " | ") + std::string(argument.Name);
      }
    }
  }
  return "# bash completion for " + std::string(tool.Name) +
         ", made from its table of arguments.\n\n" + FunctionOf(tool) + "() {\n" +
         "  local word=${COMP_WORDS[COMP_CWORD]} at\n"
         "  COMPREPLY=()\n"
         "  for ((at = 1; at < COMP_CWORD; ++at)); do\n"
         "    if [ \"${COMP_WORDS[at]}\" = -- ]; then\n"
         "      compopt -o filenames 2>/dev/null\n"
         "      mapfile -t COMPREPLY < <(compgen -c -f -- \"$word\")\n"
         "      return\n"
         "    fi\n"
         "  done\n" +
         (values.empty() ? ""
                         : "  case ${COMP_WORDS[COMP_CWORD - 1]} in\n    " + values +
                               ") return ;;\n  esac\n") +
         "  if [[ $word == -* ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W '" +
         options +
         "' -- \"$word\")\n"
         "    return\n"
         "  fi\n"
         "  compopt -o filenames 2>/dev/null\n"
         "  mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
         "}\n"
         "complete -F " +
         FunctionOf(tool) + " " + tool.Name + "\n";
}

// Text within the single quotes of an argument of _arguments, where brackets and colons are marks.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const bool marks = std::string_view("[]:\\").find(c) != std::string_view::npos;
    escaped += c == '\'' ? "'\\''" : (marks ? "\\" : "") + std::string(1, c);
  }
  return escaped;
}

std::string ZshArgument(const Argument& argument) {
  const std::string value =
      IsFlag(argument) ? ""
                       : ":" + ZshText(argument.Type) + ":" + (IsFile(argument) ? "_files" : " ");
  if (argument.Name == std::string_view(kCommand)) {
    return "'*::command:_normal'";
  }
  if (!IsOption(argument)) {
    return std::string("'") + (IsRepeated(argument) ? "*" : "") + value + "'";
  }
  return std::string(IsRepeated(argument) ? "'*'" : "") + argument.Name + "'[" +
         ZshText(argument.About) + "]" + value + "'";
}

std::string Zsh(const Tool& tool) {
  std::string text = "#compdef " + std::string(tool.Name) + "\n# zsh completion for " + tool.Name +
                     ", made from its table of arguments.\n\n" + FunctionOf(tool) +
                     "() {\n  _arguments -s";
  for (const Argument& argument : tool.Arguments) {
    text += " \\\n    " + ZshArgument(argument);
  }
  return text + " \\\n    '(- :)'{-h,--help}'[Describe the program]'\n}\n" + FunctionOf(tool) +
         " \"$@\"\n";
}

}  // namespace

std::string CompletionFor(const Tool& tool, std::string_view shell) {
  return shell == "bash" ? Bash(tool) : shell == "zsh" ? Zsh(tool) : "";
}

}  // namespace sandbox
