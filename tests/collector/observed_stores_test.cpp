// What is reported to an observer about each value: where it goes, how it was read, or why it goes
// nowhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "collector/state/scratch.h"
#include "handlers/handlers.h"
#include "model/document.h"
#include "sensors/sensor_keys.h"
#include "tests/collector/observed.h"
#include "tests/collector/scratch_variables.h"

namespace {

using testing::ElementsAre;

class ObservedStores : public testing::Test {
 protected:
  ObservedStores() { ClearScratch(); }
  ~ObservedStores() override { ClearScratch(); }

  using Handler = int (*)(QtSts::CStatus*, char*, char*);

  // What is reported about the row, except the number in its key.
  std::vector<std::string> Send(Handler handler, std::string key, std::string value) {
    Observed observer;
    observer.Then = [this](const observe::Event& event) {
      if (const auto* stores = event.As<observe::Stores>()) {
        destination_ = stores->Destination;
        container_ = stores->Container;
      }
    };
    handler(&status_, value.data(), key.data());
    std::vector<std::string> lines = observer.Lines({"stores"});
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("stores  "); });
    return lines;
  }

  std::vector<std::string> Sensor(const std::string& attribute, const std::string& value) {
    return Send(Status_Sensor, "Sensor_3_" + attribute, value);
  }

  QtSts::CStatus status_;
  const void* destination_ = nullptr;
  const void* container_ = nullptr;
};

}  // namespace

TEST_F(ObservedStores, NameTheScratchVariableByItsAddress) {
  EXPECT_THAT(Sensor("Address", "17"),
              ElementsAre("stores Address \"17\": stored, integer of 2, 17 as 17"));
  EXPECT_EQ(destination_, &u32_Address);
  EXPECT_EQ(container_, nullptr);
}

TEST_F(ObservedStores, NameTheFieldByItsAddress) {
  EXPECT_THAT(Send(Status_DimmingLevel, "DimmingLevel", "37.5"),
              ElementsAre("stores DimmingLevel \"37.5\": stored, number of 4, 37.5 as 37.5"));
  EXPECT_EQ(destination_, &status_.Outputs[0]->Dimming.DimmingLevel);
  EXPECT_THAT(Send(Status_GUID, "GUIDX", "abc"),
              ElementsAre("stores GUID \"abc\": stored, text of 3, none as none"));
  EXPECT_EQ(destination_, &status_.GUID);
}

TEST_F(ObservedStores, DistinguishZeroFromNoNumberAndAnInheritedValueFromANewOne) {
  f_celsius = 20;
  EXPECT_THAT(Sensor("Celsius", "0"),
              ElementsAre("stores Celsius \"0\": stored, number of 1, 0 as 0"));
  EXPECT_THAT(Sensor("Celsius", "abc"),
              ElementsAre("stores Celsius \"abc\": stored, number of 0, 0 as 0"));
  EXPECT_THAT(Sensor("Celsius", "20 C"),
              ElementsAre("stores Celsius \"20 C\": stored, number of 2, 20 as 20"));
}

TEST_F(ObservedStores, ReportWhatIsCutToTheWidthOfItsPlace) {
  EXPECT_THAT(Sensor("OneMin", "65541"),
              ElementsAre("stores OneMin \"65541\": stored, integer of 5, 65541 as 5"));
  EXPECT_THAT(Sensor("Rev", "-1"),
              ElementsAre("stores Rev \"-1\": stored, integer of 2, -1 as -1"));
  EXPECT_THAT(Sensor("Latitude", "44.9"),
              ElementsAre("stores Latitude \"44.9\": stored, integer of 2, 44 as 44"));
  EXPECT_THAT(Sensor("PortStatus", "4294967296"),
              ElementsAre("stores PortStatus \"4294967296\": stored, unsigned integer of 10, "
                          "4294967296 as 0"));
}

TEST_F(ObservedStores, ReportWhichWordsAreUnknownAndWhatStays) {
  at_Type = kRouterCan;
  EXPECT_THAT(Sensor("Location", "Local"),
              ElementsAre("stores Location \"Local\": unknown word, word of 0, none as 1"));
  EXPECT_THAT(Sensor("Locked", "no"),
              ElementsAre("stores Locked \"no\": other word, word of 0, 3 as 3"));
  EXPECT_THAT(Sensor("Connected", "True"),
              ElementsAre("stores Connected \"True\": other word, flag of 0, 0 as 0"));
  EXPECT_THAT(Sensor("Connected", "true"),
              ElementsAre("stores Connected \"true\": stored, flag of 4, 1 as 1"));
  EXPECT_THAT(Send(Status_MdlsAmbientFailure, "MdlsAmbientFailure", "0"),
              ElementsAre("stores MdlsAmbientFailure \"0\": unknown word, word of 0, none as 0"));
}

TEST_F(ObservedStores, ReportTheNumberInTheKey) {
  Observed observer;
  for (const char* key : {"Sensor_07_Bus", "Sensor_A_Bus", "Sensor_-1_Bus"}) {
    std::string text = key;
    std::string value = "1";
    Status_Sensor(&status_, value.data(), text.data());
  }
  EXPECT_THAT(observer.Lines({"stores  "}),
              ElementsAre("stores  \"07_Bus\": stored, integer of 2, 7 as 7",
                          "stores  \"A_Bus\": stored, integer of 0, 0 as 0",
                          "stores  \"-1_Bus\": refused number"));
}

TEST_F(ObservedStores, ReportWhichAttributesAreMissingOrUnknown) {
  EXPECT_THAT(Sensor("Zone", "1"), ElementsAre("stores Zone \"1\": unknown attribute"));
  Observed observer;
  std::string key = "Sensor_3";
  std::string value = "1";
  Status_Sensor(&status_, value.data(), key.data());
  EXPECT_EQ(observer.All.back(), "stores  \"Sensor_3\": no attribute");
  EXPECT_THAT(Send(Status_DCIO, "DCIO_1_Zone", "1"),
              ElementsAre("stores Zone \"1\": unknown attribute"));
  EXPECT_THAT(Send(Status_ErrorFlags, "ErrorFlagsX", "0x1"),
              ElementsAre("stores ErrorFlags \"0x1\": other key"));
  EXPECT_THAT(Send(Status_CalculatedSunInfo, "CalculatedSunsetX", "1"),
              ElementsAre("stores CalculatedSunset \"1\": other key"));
}

TEST_F(ObservedStores, ReportWhereAPointGoesOrWhyItGoesNowhere) {
  EXPECT_THAT(Sensor("Input_2_Index", "1"),
              ElementsAre("stores Index \"1\": stored, integer of 1, 1 as 1, index 2"));
  EXPECT_EQ(destination_, &dcioInputs[2].Index);
  EXPECT_EQ(container_, &dcioInputs);
  EXPECT_THAT(Sensor("Input_2_Type", "3"),
              ElementsAre("stores Type \"3\": stored, any text of 0, 1 as 1, index 2",
                          "stores Type \"3\": stored, integer of 1, 3 as 3, index 2"));
  EXPECT_THAT(Sensor("Input_24_Index", "1"),
              ElementsAre("stores Index \"Input_24_Index\": outside table, index 24"));
  EXPECT_THAT(Sensor("Input_2_index", "1"),
              ElementsAre("stores index \"1\": unknown attribute, index 2"));
  EXPECT_THAT(Sensor("Output_2", "1"),
              ElementsAre("stores Output \"Output_2\": no attribute, index 2"));
}

TEST_F(ObservedStores, ReportThatTheFirstSpeedOfAFanStays) {
  EXPECT_THAT(Sensor("Fan_1_Rpm", "1200"),
              ElementsAre("stores Fan_ \"1200\": stored, integer of 4, 1200 as 1200, index 1"));
  EXPECT_EQ(container_, &FanRpms);
  EXPECT_THAT(Sensor("Fan_1_Rpm", "1300"),
              ElementsAre("stores Fan_ \"1300\": first stays, index 1"));
  EXPECT_THAT(Sensor("Fan_1_Speed", "1300"),
              ElementsAre("stores Speed \"1300\": unknown attribute, index 1"));
}

TEST_F(ObservedStores, ReportThePositionOfAVoltage) {
  EXPECT_THAT(Sensor("PsrbVin_9_Volts", "5"),
              ElementsAre("stores PsrbVin_ \"5\": stored, number of 1, 5 as 5, index 0"));
  EXPECT_EQ(container_, &f_Psrb_InputVoltages);
  EXPECT_THAT(Sensor("PsrbVin_9", "5"),
              ElementsAre("stores PsrbVin_ \"PsrbVin_9\": not volts, index 1"));
}

TEST_F(ObservedStores, ReportThatAnAmbientReadingIsReplaced) {
  Send(Status_DimmingMode, "DimmingMode", "manual");
  Send(Status_MdlsAmbientOverride, "MdlsAmbientOverride", "1");
  EXPECT_THAT(Sensor("Ambient", "80"),
              ElementsAre("stores Ambient \"80\": stored, integer of 2, 80 as 80",
                          "stores Ambient \"80\": stored, any text of 0, 201 as 201"));
  EXPECT_EQ(destination_, &u16_Ambient);
}

TEST_F(ObservedStores, ReportBothPlacesOfAColumnCount) {
  EXPECT_THAT(Send(Status_TtableColumns, "TtableColumns", "15"),
              ElementsAre("stores TtableColumns \"15\": stored, integer of 2, 15 as 15",
                          "stores TtableColumns \"15\": stored, integer plus one of 2, 16 as 16"));
}
