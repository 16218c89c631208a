// Where this build and its sources are, as absolute paths. Only paths.cpp is compiled with them:
// all other sources are the same in every folder, so that the compiler cache finds them.
#pragma once

#include <string>

namespace test_support {

std::string SourceTree();
std::string Locales();  // the folder of the locales that are made for the tests

std::string HostProgram();
std::string ControllerBox();
std::string ReplayProgram();
std::string SandboxTests();   // the program of tests/sandbox
std::string TerminalChild();  // of tests/host
std::string FastClock();      // of tests/serve, to be loaded before a program

}  // namespace test_support
