// What the tests of the cycle share: a bare controller with a database, and one cycle with what it
// writes to standard error.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "collector/status_interface.h"
#include "sandbox/scenario.h"

struct CycleResult {
  int Result;
  std::string Errors;  // standard error

  bool operator==(const CycleResult&) const = default;
};
void PrintTo(const CycleResult& result, std::ostream* out);

// What `action` writes to standard output, and what to standard error.
std::string OutputOf(const std::function<void()>& action);
std::string ErrorsOf(const std::function<void()>& action);

// Number of descriptors that this process has open.
std::size_t OpenDescriptors();

class CycleTest : public testing::Test {
 protected:
  // A controller without devices, interfaces and files, with an empty table `status`.
  CycleTest();
  ~CycleTest() override;

  // Opens the database for reading.
  void Open() { collector_.InitDatabase(false); }

  CycleResult Cycle();

  // Replaces table `status` by a view of that name.
  static void MakeView(const std::string& select);

  CStatusInterface collector_;
  QtSts::CStatus& status_ = collector_.m_Status;

  inline static const CycleResult kDone{0, ""};
};
