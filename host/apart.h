// Commands that a program of its own runs, since it is linked with more than the other commands
// should have to load.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/commands.h"

namespace host {

// The values of `arguments` as words, each "--name=value": all numbers and texts, the flags that
// are set, and each value of what may be given several times.
std::vector<std::string> WordsOf(const std::vector<Argument>& arguments);

// Sets the values to what WordsOf() wrote for the same arguments. Throws std::runtime_error for any
// other word.
void TakeWords(std::span<const std::string> words, const std::vector<Argument>& arguments);

// Replaces this process by the program `name` of this installation, with the values of `arguments`
// as its words. It stands where this program stands, by one relative path, in the build tree and
// wherever the program is installed. Throws std::runtime_error when it cannot be run; where it is
// missing, `package` has it.
[[noreturn]] void RunApart(const std::string& name, const std::string& package,
                           const std::vector<Argument>& arguments);

}  // namespace host
