#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands.h"

// What the programs around the sandbox have in common: a table of what they take, from which help,
// parser and completion come, and messages that begin with the program's name.
namespace sandbox {

struct Tool {
  const char* Name;
  const char* About;
  const char* Footer;
  std::vector<host::Argument> Arguments;
  // What follows "--", which is not looked at.
  std::vector<std::string>* Rest;
  int Trouble;  // what wrong usage ends with
};

// Reads the command line. Returns what the program has to end with, after help or a message about a
// mistake; nothing when it goes on. `--completion bash|zsh`, which the help does not list, prints
// the completion of a shell.
std::optional<int> ReadCommandLine(const Tool& tool, int argc, char** argv);

// The text with \x and digits for what a terminal would take for a command.
std::string Shown(std::string_view text);

// Writes "NAME: text" to standard error, as it may be shown.
void Complain(const Tool& tool, std::string_view text);

// A number of bytes, with K, M or G for multiples of 1024. Throws std::runtime_error.
std::uint64_t BytesOf(const std::string& text);

}  // namespace sandbox
