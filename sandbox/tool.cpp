#include "sandbox/tool.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <variant>

#include "insight/nearest.h"
#include "sandbox/format/text.h"
#include "sandbox/tool_completion.h"

namespace sandbox {
namespace {

using host::Argument;

bool IsOption(std::string_view word) { return word.size() > 1 && word.front() == '-'; }

void Add(CLI::App& app, const Argument& argument) {
  if (bool* const* const flag = std::get_if<bool*>(&argument.Value)) {
    app.add_flag(argument.Name, **flag, argument.About);
    return;
  }
  CLI::Option* const option =
      std::visit([&](auto* value) { return app.add_option(argument.Name, *value, argument.About); },
                 argument.Value);
  option->type_name(argument.Type);
  option->required(option->get_positional() && !argument.MayBeMissing);
  if (std::holds_alternative<std::vector<std::string>*>(argument.Value)) {
    option->allow_extra_args(option->get_positional());
  }
  if (std::holds_alternative<int*>(argument.Value)) {
    option->check(CLI::Range(argument.Least, argument.Most).description(""));
  }
}

std::string NearestTo(const Tool& tool, const std::string& word) {
  std::vector<std::string> names = {"--help"};
  for (const Argument& argument : tool.Arguments) {
    const std::string_view all = argument.Name;
    if (const std::size_t at = all.find("--"); at != std::string_view::npos) {
      names.emplace_back(all.substr(at));
    }
  }
  const std::string_view nearest = insight::Names({names.begin(), names.end()}).Nearest(word);
  return nearest.empty() ? "" : "; the nearest is " + std::string(nearest);
}

std::string InWords(const Tool& tool, const std::vector<std::string>& unknown,
                    const std::string& text) {
  std::string about = text;
  if (!unknown.empty()) {
    const auto option = std::ranges::find_if(unknown, &IsOption);
    const std::string word = option == unknown.end() ? unknown.front() : *option;
    const std::string name = word.substr(0, word.find('='));
    about = IsOption(word) ? "no such option: " + name + NearestTo(tool, name)
                           : "not expected: " + word;
  }
  return about + "; see " + tool.Name + " --help";
}

// A program may be started with its standard streams closed. What is opened next would take the
// place of one of them. Opened for reading, the place is taken and writing to it stays an error.
void KeepStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      static_cast<void>(open("/dev/null", O_RDONLY));
    }
  }
}

int PrintCompletion(const Tool& tool, std::string_view shell) {
  const std::string text = CompletionFor(tool, shell);
  if (text.empty()) {
    Complain(tool, "no completion for this shell; give --completion bash or zsh");
    return tool.Trouble;
  }
  std::fputs(text.c_str(), stdout);
  return std::fflush(stdout) == 0 ? 0 : tool.Trouble;
}

}  // namespace

std::optional<int> ReadCommandLine(const Tool& tool, int argc, char** argv) {
  KeepStandardStreams();
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 2 && words[0] == "--completion") {
    return PrintCompletion(tool, words[1]);
  }
  const auto rest = std::ranges::find(words, "--");
  if (rest != words.end()) {
    tool.Rest->assign(rest + 1, words.end());
    words.erase(rest, words.end());
  }
  CLI::App app(tool.About, tool.Name);
  app.footer(tool.Footer);
  app.get_formatter()->column_width(26);
  for (const Argument& argument : tool.Arguments) {
    Add(app, argument);
  }
  std::ranges::reverse(words);  // as the parser takes them
  try {
    app.parse(words);
  } catch (const CLI::CallForHelp&) {
    const std::string help = app.help();
    std::fputs(help.c_str(), stdout);
    return std::fflush(stdout) == 0 ? 0 : tool.Trouble;
  } catch (const CLI::ParseError& error) {
    Complain(tool, InWords(tool, app.remaining(true), error.what()));
    return tool.Trouble;
  }
  return std::nullopt;
}

std::string Shown(std::string_view text) {
  constexpr unsigned char kDelete = 0x7F;
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    shown += byte < ' ' || byte == kDelete ? "\\x" + Hexadecimal(c) : std::string(1, c);
  }
  return shown;
}

void Complain(const Tool& tool, std::string_view text) {
  std::fprintf(stderr, "%s: %s\n", tool.Name, Shown(text).c_str());
}

std::uint64_t BytesOf(const std::string& text) {
  constexpr std::string_view kUnits = "KMG";
  const std::size_t unit = text.empty() ? std::string_view::npos : kUnits.find(text.back());
  if (unit == std::string_view::npos) {
    return NumberOf(text);
  }
  constexpr std::uint64_t kMost = std::uint64_t{1} << 30;
  const std::uint64_t number = NumberOf(text.substr(0, text.size() - 1), kMost);
  return number << (10 * (unit + 1));
}

}  // namespace sandbox
