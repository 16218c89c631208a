// A host that loads the collector while it runs, and lets it go again.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "collector/key_table.h"
#include "collector/state/scratch.h"
#include "hardware/rate_limit.h"

namespace {

using Library = std::unique_ptr<void, int (*)(void*)>;

Library Load() {
  Library library(dlopen(COLLECTOR_FILE, RTLD_NOW | RTLD_LOCAL), dlclose);
  EXPECT_NE(library, nullptr) << dlerror();
  return library;
}

template <class T>
T& In(const Library& library, const char* name) {
  void* const variable = dlsym(library.get(), name);
  EXPECT_NE(variable, nullptr) << name;
  return *static_cast<T*>(variable);
}

using KeyTable = std::array<StatusKey, kStatusKeyCount>;

TEST(LoadedLibrary, HasItsTableAndItsStagingTablesReady) {
  const Library library = Load();
  const auto& table = In<const KeyTable>(library, "status_primary_keys");
  EXPECT_EQ(table.front().Key, "ActualDimmingLevel");
  EXPECT_EQ(table.back().Key, "TtableTitle");
  const auto is_empty = [](const DcioPoint& point) {
    return point.Present == 0 && point.Type == 0 && point.Index == 0 && point.State == 0 &&
           point.Label.empty();
  };
  for (const DcioPoint& point : In<std::array<DcioPoint, kStagedInputs>>(library, "dcioInputs")) {
    EXPECT_TRUE(is_empty(point));
  }
  for (const DcioPoint& point : In<std::array<DcioPoint, kStagedOutputs>>(library, "dcioOutputs")) {
    EXPECT_TRUE(is_empty(point));
  }
  EXPECT_TRUE((In<std::map<std::uint8_t, std::uint16_t>>(library, "FanRpms").empty()));
  EXPECT_TRUE(In<std::vector<float>>(library, "f_Psrb_InputVoltages").empty());
  EXPECT_EQ(In<ratelimit_state>(library, "rs").interval, 3600);
}

TEST(LoadedLibrary, RunsAHandlerOfItsTable) {
  const Library library = Load();
  const auto& table = In<const KeyTable>(library, "status_primary_keys");
  QtSts::CStatus status;
  char value[] = "abc";
  char key[] = "GUID";
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const StatusKey& candidate) { return candidate.Key == key; });
  ASSERT_NE(row, table.end());
  EXPECT_EQ(row->Handler(&status, value, key), 0);
  EXPECT_EQ(status.GUID, "abc");
}

// What the staged points hold is given back, or the leak check of the sanitizers fails.
TEST(LoadedLibrary, StartsAnewWhenItIsLoadedAgain) {
  {
    const Library library = Load();
    for (DcioPoint& point : In<std::array<DcioPoint, kStagedInputs>>(library, "dcioInputs")) {
      point.Label = std::string(100, 'x');
    }
    In<std::vector<float>>(library, "f_Psrb_InputVoltages") = {24.5F};
    In<std::map<std::uint8_t, std::uint16_t>>(library, "FanRpms") = {{1, 1200}};
    In<std::uint32_t>(library, "u32_Address") = 17;
  }
  const Library library = Load();
  EXPECT_EQ(In<std::uint32_t>(library, "u32_Address"), 0U);
  EXPECT_TRUE(In<std::vector<float>>(library, "f_Psrb_InputVoltages").empty());
}

}  // namespace
