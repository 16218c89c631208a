#include "tests/support/paths.h"

namespace test_support {

std::string SourceTree() { return TEST_SOURCE_TREE; }
std::string Locales() { return TEST_BUILD_TREE "/locales"; }

std::string HostProgram() { return TEST_BUILD_TREE "/host/statuscollector"; }
std::string ControllerBox() { return TEST_BUILD_TREE "/sandbox/controller-box"; }
std::string ReplayProgram() { return TEST_BUILD_TREE "/replay/statuscollector-replay"; }
std::string FastClock() { return TEST_BUILD_TREE "/tests/serve/libfast_clock.so"; }
std::string SandboxTests() { return TEST_BUILD_TREE "/tests/sandbox/sandbox_tests"; }
std::string TerminalChild() { return TEST_BUILD_TREE "/tests/host/terminal_child"; }

}  // namespace test_support
