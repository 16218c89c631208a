// main() of the GoogleTest programs that run in a sandbox: one program, one sandbox.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "sandbox/devices.h"
#include "sandbox/enter.h"

namespace {

constexpr int kSkipped = 77;  // what ctest takes for a skipped test

// On the machines that guard the project nothing may be skipped.
int Refuse(const std::string& reason) {
  const char* guarded = std::getenv("CI");
  const bool failure = guarded != nullptr && std::string_view(guarded) == "true";
  std::printf("%s: the sandbox is refused: %s\n", failure ? "FAILED" : "SKIPPED", reason.c_str());
  return failure ? EXIT_FAILURE : kSkipped;
}

int RunTests() {
  if (!sandbox::DevicesAvailable()) {
    const int status = Refuse(sandbox::DevicesRefusal());
    if (status != kSkipped) {
      return status;
    }
  }
  return RUN_ALL_TESTS();
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // A test program that is started in a sandbox, by controller-box or by a death test, stays in it.
  if (testing::GTEST_FLAG(list_tests) || sandbox::Inside()) {
    return RUN_ALL_TESTS();
  }
  try {
    return sandbox::RunInside(sandbox::OptionsFromEnvironment(), RunTests);
  } catch (const sandbox::Refused& refusal) {
    return Refuse(refusal.what());
  }
}
