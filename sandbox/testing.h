#pragma once

#include <gtest/gtest.h>

#include "sandbox/devices.h"

// First line of a test that needs device nodes: where the system refuses them the test is skipped
// with the reason. (With CI=true the whole program has failed before.)
#define SANDBOX_NEEDS_DEVICES()                                       \
  if (!sandbox::DevicesAvailable()) {                                 \
    GTEST_SKIP() << "no device nodes: " << sandbox::DevicesRefusal(); \
  }                                                                   \
  static_assert(true, "asks for a semicolon")
