// The controller in a box that a display at work looks like.
#pragma once

#include <gtest/gtest.h>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"

namespace test_serve {

inline sandbox::Scenario Demo() {
  return sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo"));
}

// A test on the demo; skipped where there are no device nodes.
class OnTheDemo : public testing::Test {
 protected:
  void SetUp() override {
    SANDBOX_NEEDS_DEVICES();
    Demo().Apply();
  }
};

}  // namespace test_serve
