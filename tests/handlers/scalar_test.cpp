#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/xml.h"
#include "tests/handlers/handler_fixture.h"

namespace {

using ScalarHandler = HandlerTest;

TEST_F(ScalarHandler, StoresTheGuidWhole) {
  EXPECT_EQ(Row(Status_GUID, "GUID", "5f0c-11\xE4 "), 0);
  EXPECT_EQ(status_.GUID, "5f0c-11\xE4 ");
  EXPECT_EQ(Row(Status_GUID, "GUID", ""), 0);
  EXPECT_EQ(status_.GUID, "");
}

TEST_F(ScalarHandler, TrustsThePrefixOfTheGuidKey) {
  EXPECT_EQ(Row(Status_GUID, "GUIDX", "abc"), 0);
  EXPECT_EQ(status_.GUID, "abc");
}

TEST_F(ScalarHandler, KeepsTheGuidWithoutAValue) {
  status_.GUID = "old";
  EXPECT_EQ(Row(Status_GUID, "GUID", nullptr), 0);
  EXPECT_EQ(status_.GUID, "old");
}

TEST_F(ScalarHandler, StoresErrorFlagsAsTextForTheWholeKeyOnly) {
  EXPECT_EQ(Row(Status_ErrorFlags, "ErrorFlags", "0xZZ no number"), 0);
  EXPECT_EQ(status_.ErrorFlags, "0xZZ no number");
  for (const char* key : {"ErrorFlagsX", "ErrorFlag", "errorflags", ""}) {
    EXPECT_EQ(Row(Status_ErrorFlags, key, "1"), 0);
    EXPECT_EQ(status_.ErrorFlags, "0xZZ no number") << key;
  }
  EXPECT_EQ(Row(Status_ErrorFlags, nullptr, "1"), 0);
  EXPECT_EQ(Row(Status_ErrorFlags, "ErrorFlags", nullptr), 0);
  EXPECT_EQ(status_.ErrorFlags, "0xZZ no number");
}

TEST_F(ScalarHandler, StoresEachSunEventUnderItsOwnKeyVerbatim) {
  EXPECT_EQ(Row(Status_CalculatedSunInfo, "CalculatedSunrise", "06:12 or so"), 0);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "06:12 or so");
  EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "nil");
  EXPECT_EQ(Row(Status_CalculatedSunInfo, "CalculatedSunset", "21:40"), 0);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "06:12 or so");
  EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "21:40");
}

TEST_F(ScalarHandler, ComparesTheWholeKeyOfASunEvent) {
  for (const char* key : {"CalculatedSunriseX", "CalculatedSunsetX", "CalculatedSun", ""}) {
    EXPECT_EQ(Row(Status_CalculatedSunInfo, key, "x"), 0);
    EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "nil") << key;
    EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "nil") << key;
  }
  EXPECT_EQ(Row(Status_CalculatedSunInfo, nullptr, "x"), 0);
  EXPECT_EQ(Row(Status_CalculatedSunInfo, "CalculatedSunrise", nullptr), 0);
  EXPECT_EQ(Row(Status_CalculatedSunInfo, "CalculatedSunset", nullptr), 0);
  EXPECT_EQ(status_.SolarInfo.CalculatedSunrise, "nil");
  EXPECT_EQ(status_.SolarInfo.CalculatedSunset, "nil");
}

TEST_F(ScalarHandler, FindsTheProductFamilyInTheText) {
  constexpr struct {
    const char* Value;
    std::int32_t Family;
  } kRows[] = {
      {"qtm2100", 8},  // deliberately not 2
      {"qtm3400", 3},
      {"qtm3300", 4},
      {"the qtm3300-b of 2011", 4},
      {"qtm3200", 5},
      {"qtm3310", 0},
      {"qtm3210", 1},
      {"", 8},
      {"qtm", 8},
      {"QTM3400", 8},
      {"qtm2100 qtm3400", 3},
      {"qtm3400 qtm2100", 3},
      {"qtm2100 qtm3210", 1},
      {"qtm3210 qtm3310", 0},
      {"qtm3210 qtm3310 qtm3200 qtm3300 qtm3400", 3},
      {"qtm3210 qtm3310 qtm3200 qtm3300", 4},
      {"qtm3210 qtm3310 qtm3200", 5},
  };
  for (const auto& row : kRows) {
    status_.ProductFamily = 99;
    EXPECT_EQ(Row(Status_ProductFamily, "ProductFamily", row.Value), 0);
    EXPECT_EQ(status_.ProductFamily, row.Family) << '"' << row.Value << '"';
  }
  EXPECT_EQ(status_.Outputs.Count(), 0U);
}

TEST_F(ScalarHandler, KeepsTheProductFamilyWithoutAValue) {
  EXPECT_EQ(Row(Status_ProductFamily, "ProductFamily", nullptr), 0);
  EXPECT_EQ(status_.ProductFamily, 1);
}

TEST_F(ScalarHandler, StoresDimmingLevelsAsFloats) {
  constexpr struct {
    const char* Value;
    float Level;
  } kRows[] = {
      {"37.5", 37.5F}, {"37,5", 37}, {"garbage", 0}, {"", 0},       {" 12.25 percent", 12.25F},
      {"-1.5", -1.5F}, {"1e2", 100}, {"0x10", 16},   {"0.1", 0.1F}, {"99.99", 99.99F}};
  for (const auto& row : kRows) {
    EXPECT_EQ(Row(Status_DimmingLevel, "DimmingLevel", row.Value), 0);
    EXPECT_EQ(Output().Dimming.DimmingLevel, row.Level) << '"' << row.Value << '"';
    EXPECT_EQ(Output().Dimming.ActualDimmingLevel, 1);
  }
  Output().Dimming.DimmingLevel = 7;
  for (const auto& row : kRows) {
    EXPECT_EQ(Row(Status_ActualDimmingLevel, "ActualDimmingLevel", row.Value), 0);
    EXPECT_EQ(Output().Dimming.ActualDimmingLevel, row.Level) << '"' << row.Value << '"';
    EXPECT_EQ(Output().Dimming.DimmingLevel, 7);
  }
}

TEST_F(ScalarHandler, KnowsTheDimmingModesByTheirExactText) {
  constexpr struct {
    const char* Value;
    std::uint32_t Mode;
  } kRows[] = {{"auto", 0}, {"manual", 1}, {"gps", 3},     {"schedule", 2},
               {"vmax", 4}, {"remote", 5}, {"override", 6}};
  status_.Outputs.Add(new QtSts::CTravex6Output);
  for (const auto& row : kRows) {
    Output().Dimming.DimmingMode = 99;
    EXPECT_EQ(Row(Status_DimmingMode, "DimmingMode", row.Value), 0);
    EXPECT_EQ(Output().Dimming.DimmingMode, row.Mode) << row.Value;
  }
  for (const char* unknown : {"Auto", "auto ", "gp", "", "3"}) {
    Output().Dimming.DimmingMode = 99;
    EXPECT_EQ(Row(Status_DimmingMode, "DimmingMode", unknown), 0);
    EXPECT_EQ(Output().Dimming.DimmingMode, 99U) << '"' << unknown << '"';
  }
}

TEST_F(ScalarHandler, CreatesTheOutputEvenForAnUnknownDimmingMode) {
  EXPECT_EQ(Row(Status_DimmingMode, "DimmingMode", "Auto"), 0);
  EXPECT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(Output().Dimming.DimmingMode, 0U);
}

TEST_F(ScalarHandler, EnablesFansForTrueAndDisablesThemForEveryOtherText) {
  EXPECT_EQ(Row(Status_FansEnabled, "FansEnabled", "true"), 0);
  EXPECT_TRUE(Output().Fans.Enabled);
  for (const char* other : {"1", "TRUE", "True", "true ", "", "false", "tru"}) {
    Output().Fans.Enabled = true;
    EXPECT_EQ(Row(Status_FansEnabled, "FansEnabled", other), 0);
    EXPECT_FALSE(Output().Fans.Enabled) << '"' << other << '"';
  }
}

TEST_F(ScalarHandler, KnowsTheFansOverridesByTheirExactText) {
  constexpr struct {
    const char* Value;
    std::uint32_t Override;
  } kRows[] = {{"none", 0}, {"player", 1}, {"thermal", 2}, {"sensor", 3}, {"brightness", 4}};
  status_.Outputs.Add(new QtSts::CTravex6Output);
  for (const auto& row : kRows) {
    Output().Fans.Override = 99;
    EXPECT_EQ(Row(Status_FansOverride, "FansOverride", row.Value), 0);
    EXPECT_EQ(Output().Fans.Override, row.Override) << row.Value;
  }
  for (const char* unknown : {"None", "", "none ", "1"}) {
    Output().Fans.Override = 99;
    EXPECT_EQ(Row(Status_FansOverride, "FansOverride", unknown), 0);
    EXPECT_EQ(Output().Fans.Override, 99U) << '"' << unknown << '"';
  }
}

TEST_F(ScalarHandler, OnlyEverSetsTheAmbientFlags) {
  EXPECT_EQ(Row(Status_MdlsAmbientFailure, "MdlsAmbientFailure", "1"), 0);
  EXPECT_EQ(Output().StatusFlags, 0x2000U);
  EXPECT_EQ(Row(Status_MdlsAmbientFailure, "MdlsAmbientFailure", "0"), 0);
  EXPECT_EQ(Output().StatusFlags, 0x2000U);
  EXPECT_EQ(Row(Status_MdlsAmbientOverride, "MdlsAmbientOverride", "1"), 0);
  EXPECT_EQ(Output().StatusFlags, 0x6000U);
  EXPECT_EQ(Row(Status_MdlsAmbientOverride, "MdlsAmbientOverride", "0"), 0);
  EXPECT_EQ(Row(Status_MdlsAmbientOverride, "MdlsAmbientOverride", "1"), 0);
  EXPECT_EQ(Output().StatusFlags, 0x6000U);
}

TEST_F(ScalarHandler, SetsTheAmbientFlagsForExactlyOneAndBesideOtherBits) {
  for (const char* other : {" 1", "1 ", "01", "true", "", "11"}) {
    EXPECT_EQ(Row(Status_MdlsAmbientFailure, "MdlsAmbientFailure", other), 0);
    EXPECT_EQ(Row(Status_MdlsAmbientOverride, "MdlsAmbientOverride", other), 0);
    EXPECT_EQ(Output().StatusFlags, 0U) << '"' << other << '"';
  }
  Output().StatusFlags = 0x404;
  Row(Status_MdlsAmbientOverride, "MdlsAmbientOverride", "1");
  EXPECT_EQ(Output().StatusFlags, 0x4404U);
}

TEST_F(ScalarHandler, ConsumesContentLevelAndThermalScalerWithoutATrace) {
  const std::string before = QtSts::WriteDocument(status_);
  EXPECT_EQ(Row(Status_ContentLevelAvg, "ContentLevelAvg", "55"), 0);
  EXPECT_EQ(Row(Status_ThermalScaler, "ThermalScaler", "0.5"), 0);
  EXPECT_EQ(Row(Status_ContentLevelAvg, nullptr, nullptr), 0);
  EXPECT_EQ(Row(Status_ThermalScaler, nullptr, nullptr), 0);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(QtSts::WriteDocument(status_), before);
}

// The handlers that write to output 0, with a value that changes it.
constexpr struct {
  int (*Handler)(QtSts::CStatus*, char*, char*);
  const char* Key;
  const char* Value;
} kOutputRows[] = {
    {Status_DimmingLevel, "DimmingLevel", "12"},
    {Status_ActualDimmingLevel, "ActualDimmingLevel", "13"},
    {Status_DimmingMode, "DimmingMode", "remote"},
    {Status_FansEnabled, "FansEnabled", "true"},
    {Status_FansOverride, "FansOverride", "sensor"},
    {Status_MdlsAmbientFailure, "MdlsAmbientFailure", "1"},
    {Status_MdlsAmbientOverride, "MdlsAmbientOverride", "1"},
};

TEST_F(ScalarHandler, FirstCreatesTheOutputAndOnlyOnce) {
  for (const auto& row : kOutputRows) {
    SCOPED_TRACE(row.Key);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(row.Handler, row.Key, row.Value), 0);
    EXPECT_EQ(Row(row.Handler, row.Key, row.Value), 0);
    EXPECT_EQ(status_.Outputs.Count(), 1U);
  }
}

TEST_F(ScalarHandler, WithoutAValueCreatesTheOutputButChangesNothing) {
  for (const auto& row : kOutputRows) {
    SCOPED_TRACE(row.Key);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(row.Handler, row.Key, nullptr), 0);
    ASSERT_EQ(status_.Outputs.Count(), 1U);
    const std::string fresh = QtSts::WriteDocument(status_);

    Row(row.Handler, row.Key, row.Value);
    const std::string written = QtSts::WriteDocument(status_);
    EXPECT_NE(written, fresh);
    EXPECT_EQ(Row(row.Handler, row.Key, nullptr), 0);
    EXPECT_EQ(QtSts::WriteDocument(status_), written);
  }
}

TEST_F(ScalarHandler, NeverLooksAtTheKeyOfAnOutputRow) {
  for (const auto& row : kOutputRows) {
    SCOPED_TRACE(row.Key);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(row.Handler, row.Key, row.Value), 0);
    const std::string expected = QtSts::WriteDocument(status_);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(row.Handler, nullptr, row.Value), 0);
    EXPECT_EQ(QtSts::WriteDocument(status_), expected);
  }
}

}  // namespace
