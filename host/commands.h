// The commands of the program.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace host {

// What the program ends with. `diff` ends as diff(1) does: 1 when the documents differ.
enum ExitStatus : int {
  kAllWell = 0,
  kFailed = 1,   // the last cycle failed (its document is shown all the same); init did not work
  kTrouble = 2,  // wrong usage, or the output or an input cannot be written or read
};

// What `check` ends with, by the conventions of monitoring plugins.
enum PluginStatus : int {
  kPluginOk = 0,
  kPluginWarning = 1,
  kPluginCritical = 2,
  kPluginUnknown = 3,
};

// One argument of a command. Only main.cpp knows the parser.
struct Argument {
  const char* Name;  // "-f,--format", or the name of a word in its place
  const char* Type;  // what the help shows for the value; "" for a flag
  const char* About;
  // Where the value goes; holds what counts without it. A flag is set to true; an option that may
  // be given several times is appended.
  std::variant<std::string*, int*, bool*, std::vector<std::string>*> Value;
  std::vector<std::string> Choices = {};  // the only values of a text; empty: any
  int Least = 0;                          // the limits of a number
  int Most = 0;
  std::vector<std::string> Offers = {};  // what a shell completes a text with that may be any
  bool MayBeMissing = false;             // of a word in its place; options always may
};

// What a command takes, and what runs it once that is parsed. What runs it returns an ExitStatus;
// an exception ends the program with kTrouble. It owns what the arguments point to.
struct Declaration {
  std::vector<Argument> Arguments;
  std::function<int()> Run;
};

struct Command {
  const char* Name;
  const char* About;
  const char* Statuses;  // what it ends with, for the help
  Declaration (*Declare)();
  int Trouble = kTrouble;  // what wrong usage ends with
};

extern const std::span<const Command> kCommands;

Declaration DeclareShow();
Declaration DeclareCheck();
Declaration DeclareExplain();
Declaration DeclareWatch();
Declaration DeclareServe();
Declaration DeclareInit();
Declaration DeclareDiff();
Declaration DeclareSchema();
Declaration DeclareCapture();

}  // namespace host
