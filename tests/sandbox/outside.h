#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "sandbox/descriptor.h"
#include "sandbox/enter.h"

// Help for tests that look at a sandbox from the outside.
namespace sandbox {

// Skips where sandboxes are refused; with CI=true that is a failure.
class OutsideTest : public testing::Test {
 protected:
  void SetUp() override;
  // Skips, or with CI=true fails, the running test.
  static void Refuse(const std::string& reason);
};

struct Outcome {
  int Status = -1;
  std::string Output;
};

// Runs `body` in a sandbox; its result is the output.
Outcome Tell(const std::function<std::string()>& body, const Options& options = {});

// Runs a command line and takes its standard output and error.
Outcome RunCommand(const std::string& line);

// The namespaces of the calling process and that of the interfaces' other ends, such as
// "net:[42]", one a line.
std::string OwnNamespaces();

// Which of `namespaces`, one a line, a process still lives in; waits a while for them to go.
std::set<std::string> StillAlive(const std::string& namespaces);

// Lines that give the mounts of the calling process.
std::string Mounts();

// Starts a process of a session of its own that never ends by itself.
void LeaveProcessBehind();

}  // namespace sandbox
