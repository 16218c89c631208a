// Files of expected text in the source tree.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test_support {

// The file at `path`, relative to the source tree; empty when there is none.
std::string ReadSource(const std::string& path);

// Success when the file at `path` holds exactly `actual`. With STATUS_UPDATE_GOLDEN=1 in the
// environment the file is written instead, which is a success too.
testing::AssertionResult MatchesGolden(const std::string& actual, const std::string& path);

}  // namespace test_support
