// Running a program to its end.
#pragma once

#include <string>
#include <vector>

namespace test_support {

struct ProgramResult {
  int ExitCode = -1;  // -1: ended by a signal
  std::string Output;
  std::string Errors;
};

// Runs `arguments[0]`, found along PATH, with this process's environment and the changes to it
// ("NAME=value"). Exit code 127: there is no such program.
ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {});

}  // namespace test_support
