// The commands of the program.
#pragma once

#include <cstddef>
#include <functional>

namespace CLI {
class App;
}

namespace host {

// What the program ends with. `diff` ends as diff(1) does: 1 when the documents differ.
enum ExitStatus : int {
  kAllWell = 0,
  kFailed = 1,   // the last cycle failed (its document is shown all the same); init did not work
  kTrouble = 2,  // wrong usage, or the output or an input cannot be written or read
};

// One command: declares its options, and gives what runs it once they are parsed. What runs it
// returns an ExitStatus; an exception ends the program with kTrouble.
struct Command {
  const char* Name;
  const char* About;
  std::function<int()> (*Declare)(CLI::App& command);
};

extern const Command kCommands[];
extern const std::size_t kCommandCount;

std::function<int()> DeclareShow(CLI::App& command);
std::function<int()> DeclareInit(CLI::App& command);
std::function<int()> DeclareDiff(CLI::App& command);
std::function<int()> DeclareSchema(CLI::App& command);

}  // namespace host
