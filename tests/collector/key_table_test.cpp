#include "collector/key_table.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "collector/status_interface.h"
#include "handlers/handlers.h"
#include "sensors/sensor_keys.h"

namespace {

using Handler = int (*)(QtSts::CStatus*, char*, char*);

// What the table must hold, row by row.
const struct {
  const char* Key;
  Handler Function;
} kExpected[] = {
    {"ActualDimmingLevel", Status_ActualDimmingLevel},    // 0
    {"CalculatedSunrise", Status_CalculatedSunInfo},      // 1
    {"CalculatedSunset", Status_CalculatedSunInfo},       // 2
    {"ContentLevelAvg", Status_ContentLevelAvg},          // 3
    {"DCIO_", Status_DCIO},                               // 4
    {"DimmingLevel", Status_DimmingLevel},                // 5
    {"DimmingMode", Status_DimmingMode},                  // 6
    {"ErrorFlags", Status_ErrorFlags},                    // 7
    {"FansEnabled", Status_FansEnabled},                  // 8
    {"FansOverride", Status_FansOverride},                // 9
    {"GUID", Status_GUID},                                // 10
    {"MdlsAmbientFailure", Status_MdlsAmbientFailure},    // 11
    {"MdlsAmbientOverride", Status_MdlsAmbientOverride},  // 12
    {"ProductFamily", Status_ProductFamily},              // 13
    {"Sensor_", Status_Sensor},                           // 14
    {"ThermalScaler", Status_ThermalScaler},              // 15
    {"TtableAuthor", Status_TtableAuthor},                // 16
    {"TtableColumns", Status_TtableColumns},              // 17
    {"TtableContract", Status_TtableContract},            // 18
    {"TtableDate", Status_TtableDate},                    // 19
    {"TtableDeviceNode_", Status_TtableDevice},           // 20
    {"TtableED", Status_TtableED},                        // 21
    {"TtableFaceCnt", Status_TTableFaceCount},            // 22
    {"TtableInterleaved", Status_TtableInterleaved},      // 23
    {"TtableModHeight", Status_TtableModHeight},          // 24
    {"TtableModWidth", Status_TtableModWidth},            // 25
    {"TtablePixelPitch", Status_TtablePixelPitch},        // 26
    {"TtableRefreshRate", Status_TtableRefreshRate},      // 27
    {"TtableRows", Status_TtableRows},                    // 28
    {"TtableTask", Status_TtableTask},                    // 29
    {"TtableTime", Status_TtableTime},                    // 30
    {"TtableTitle", Status_TtableTitle},                  // 31
};

// Runs among this program's own static initialisers, like a host's static CStatusInterface.
const struct EarlyUser {
  CStatusInterface Interface;
  std::string FirstKey = status_primary_keys[0].Key;
  std::string LastKey = status_primary_keys[31].Key;
  Handler LastHandler = status_primary_keys[31].Handler;
} kEarlyUser;

TEST(KeyTable, HasTheseThirtyTwoRows) {
  ASSERT_EQ(status_primary_keys.size(), 32U);
  ASSERT_EQ(std::size(kExpected), 32U);
  for (std::size_t i = 0; i < status_primary_keys.size(); ++i) {
    EXPECT_EQ(status_primary_keys[i].Key, kExpected[i].Key) << "row " << i;
    EXPECT_EQ(status_primary_keys[i].Handler, kExpected[i].Function) << "row " << i;
  }
}

TEST(KeyTable, StandsInAscendingByteOrder) {
  for (std::size_t i = 1; i < status_primary_keys.size(); ++i) {
    const std::string& before = status_primary_keys[i - 1].Key;
    EXPECT_LT(before.compare(status_primary_keys[i].Key), 0) << "row " << i;
  }
}

TEST(KeyTable, HasNoKeyThatBeginsWithAnotherOne) {
  for (const StatusKey& longer : status_primary_keys) {
    for (const StatusKey& shorter : status_primary_keys) {
      EXPECT_FALSE(&longer != &shorter && longer.Key.starts_with(shorter.Key))
          << longer.Key << " begins with " << shorter.Key;
    }
  }
}

static_assert(std::is_same_v<decltype(StatusKey::Key), std::string>);
static_assert(std::is_same_v<decltype(StatusKey::Handler), Handler>);

TEST(KeyTable, CanBeUsedByStaticInitialisersOfAHost) {
  EXPECT_EQ(kEarlyUser.FirstKey, "ActualDimmingLevel");
  EXPECT_EQ(kEarlyUser.LastKey, "TtableTitle");
  EXPECT_EQ(kEarlyUser.LastHandler, &Status_TtableTitle);
}

TEST(KeyTable, IsExportedUnderItsPlainName) {
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "status_primary_keys"), &status_primary_keys);
}

}  // namespace
