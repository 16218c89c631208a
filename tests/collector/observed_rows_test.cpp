// What is reported to an observer about the rows of a cycle and what they make.
#include "collector/key_table.h"
#include "collector/state/scratch.h"
#include "model/can_sensors.h"
#include "tests/collector/cycle_fixture.h"
#include "tests/collector/observed.h"

namespace {

using testing::ElementsAre;

class ObservedRows : public CycleTest {
 protected:
  // The lines of a cycle with these rows that begin with one of the `wanted` texts.
  std::vector<std::string> LinesOf(const sandbox::Rows& rows,
                                   const std::vector<std::string>& wanted) {
    sandbox::SetRows(rows);
    Open();
    Observed observer;
    observer.Then = [this](const observe::Event& event) {
      if (then_) {
        then_(event);
      }
    };
    EXPECT_EQ(Cycle(), kDone);
    return observer.Lines(wanted);
  }

  std::function<void(const observe::Event&)> then_;
};

}  // namespace

TEST_F(ObservedRows, HaveTheirKeyTheirValueAndTheirEntryOfTheKeyTable) {
  EXPECT_STREQ(status_primary_keys[10].Key.c_str(), "GUID");
  EXPECT_THAT(LinesOf({{"GUID", "abc"}, {"GUIDX", ""}, {"Zzz", "7"}}, {"row", "ends row"}),
              ElementsAre("row 10 GUID=abc", "ends row 0", "row 10 GUIDX=", "ends row 0",
                          "row -1 Zzz=7", "ends row 0"));
}

// The handlers of these families ignore such keys, too: only the entry proves that none is called.
TEST_F(ObservedRows, HaveNoEntryWhenTheirKeyIsShorterThanTheTableKey) {
  EXPECT_THAT(LinesOf({{"DCIO", "1"}, {"Sensor", "1"}, {"TtableDevice", "1"}}, {"row"}),
              ElementsAre("row -1 DCIO=1", "row -1 Sensor=1", "row -1 TtableDevice=1"));
}

TEST_F(ObservedRows, HaveTheSameEntryAsOthersOfTheirPrefix) {
  EXPECT_THAT(LinesOf({{"DCIO_1_State", "1"},
                       {"DCIO_2_State", "2"},
                       {"DimmingLevel", "3"},
                       {"Sensor_5_Type", "CANTemp"}},
                      {"row"}),
              ElementsAre("row 4 DCIO_1_State=1", "row 4 DCIO_2_State=2", "row 5 DimmingLevel=3",
                          "row 14 Sensor_5_Type=CANTemp"));
}

TEST_F(ObservedRows, DistinguishNullFromEmpty) {
  EXPECT_THAT(LinesOf({{"GUID", nullptr}}, {"row "}), ElementsAre("row 10 GUID=NULL"));
}

TEST_F(ObservedRows, HaveTheResultOfTheirHandler) {
  EXPECT_THAT(LinesOf({{"Sensor_-1_Celsius", "1"}}, {"ends row"}), ElementsAre("ends row -1"));
}

TEST_F(ObservedRows, AreWholeAndAsTheyAreCut) {
  sandbox::RunSql("DROP TABLE status; CREATE TABLE status(address, value);");
  std::vector<std::size_t> lengths;
  then_ = [&](const observe::Event& event) {
    if (const auto* row = event.As<observe::RowBegins>()) {
      for (const char* text : {row->Key, row->Value, row->CutKey, row->CutValue}) {
        lengths.push_back(std::string(text).size());
      }
    }
  };
  LinesOf({{"GUID" + std::string(200, 'x'), std::string(600, 'y')}}, {});
  EXPECT_THAT(lengths, ElementsAre(204, 600, 127, 511));
}

TEST_F(ObservedRows, HaveTheBytesThatAreStoredAfterAZeroByte) {
  std::vector<std::size_t> bytes;
  then_ = [&](const observe::Event& event) {
    if (const auto* row = event.As<observe::RowBegins>()) {
      bytes = {row->StoredBytes(0), row->StoredBytes(1)};
    }
  };
  EXPECT_THAT(LinesOf({{"GUID", sandbox::Blob(std::string("a\0bc", 4))}}, {"row "}),
              ElementsAre("row 10 GUID=a"));
  EXPECT_THAT(bytes, ElementsAre(4, 4));
}

// A row that does not come in byte order is searched for after its entry.
TEST_F(ObservedRows, ReportWhereTheSearchForTheirKeyBegan) {
  std::vector<std::pair<int, int>> searches;
  then_ = [&](const observe::Event& event) {
    if (const auto* row = event.As<observe::RowBegins>()) {
      searches.emplace_back(row->SearchedFrom, row->Entry);
    }
  };
  LinesOf({{"GUID", ""}, {"TtableED", ""}, {"Zzz", ""}, {"a", ""}}, {});
  EXPECT_THAT(searches, ElementsAre(std::pair(0, 10), std::pair(10, 21), std::pair(21, -1),
                                    std::pair(21, -1)));
}

TEST_F(ObservedRows, ReportWhichSensorTheyComplete) {
  const QtSts::CBaseStatus* element = nullptr;
  then_ = [&](const observe::Event& event) {
    if (const auto* record = event.As<observe::Record>()) {
      element = record->Element;
    }
  };
  EXPECT_THAT(
      LinesOf({{"Sensor_05_Location", "Local_CAN"}, {"Sensor_05_Type", "CANTemp"}}, {"record"}),
      ElementsAre("record sensor 5, type 0: completed at 0, took 7"));
  EXPECT_EQ(element, status_.Sensors[0]);
}

TEST_F(ObservedRows, ReportWhyASensorIsRefused) {
  EXPECT_THAT(
      LinesOf({{"Sensor_0_Type", "CANDoor"},
               {"Sensor_00_Type", "CANTemp"},
               {"Sensor_1_Type", "Door"},
               {"Sensor_2_Location", "TXR_CAN"},
               {"Sensor_2_Type", "OnboardTemp"},
               {"Sensor_3_Type", "CANTemp"}},
              {"record"}),
      ElementsAre("record sensor 0, type 0: completed at 0, took 7",
                  "record sensor 0, type 4: position taken at 1, took 0",
                  "record sensor 1, type 20: no kind at 1, took 0",
                  "record display interface 0, type 1: completed at 0, took 2",
                  "record interface sensor 2, type 17: not here at 0 of 0, took 0",
                  "record display interface 0, type 1: found at 0, took 1",
                  testing::StartsWith("record interface sensor 3, type 0: completed at 0 of 0")));
}

TEST_F(ObservedRows, ReportWhichDcioDeviceTheyComplete) {
  EXPECT_THAT(LinesOf({{"DCIO_0_Type", "RunLED"},
                       {"DCIO_00_Type", "DoorSwitch"},
                       {"DCIO_1_Type", "PowerMonitor"}},
                      {"record"}),
              ElementsAre("record DCIO device 0, type 0: completed at 0, took 4",
                          "record DCIO device 0, type 2: position taken at 1, took 0",
                          "record DCIO device 1, type 1: completed at 1, took 4"));
}

TEST_F(ObservedRows, ReportWhatBecomesOfTheirPoints) {
  EXPECT_THAT(LinesOf({{"Sensor_0_Input_1_Index", "2"},
                       {"Sensor_0_Input_1_Type", "3"},
                       {"Sensor_0_Input_2_Index", "3"},
                       {"Sensor_0_Input_2_Type", "1"},
                       {"Sensor_0_Input_3_Type", "12"},
                       {"Sensor_0_Input_4_State", "1"},
                       {"Sensor_0_Output_0_Index", "1"},
                       {"Sensor_0_Output_0_Type", "4"},
                       {"Sensor_0_Type", "CANDcio2in1out"}},
                      {"point"}),
              ElementsAre("point input 1, type 3, index 2: taken",
                          "point input 2, type 1, index 3: refused",
                          "point input 3, type 12, index 0: no class",
                          "point input 4, type 0, index 0: left",
                          "point output 0, type 4, index 1: no class"));
}

TEST_F(ObservedRows, ReportWhichFansABoardTakes) {
  EXPECT_THAT(LinesOf({{"Sensor_0_Fan_7_Rpm", "1200"}, {"Sensor_0_Type", "CANDcioAndFanRpm"}},
                      {"point", "record"}),
              ElementsAre("point fan 7, type 0, index 0: taken",
                          testing::StartsWith("record sensor 0, type 8: completed at 0, took ")));
}

TEST_F(ObservedRows, ReportWhichScratchVariablesARecordTakes) {
  std::vector<const void*> taken;
  then_ = [&](const observe::Event& event) {
    if (const auto* record = event.As<observe::Record>()) {
      taken.assign(record->Taken.begin(), record->Taken.end());
    }
  };
  LinesOf({{"Sensor_0_Type", "OnboardTemp"}}, {});
  EXPECT_THAT(taken, testing::UnorderedElementsAre(&u32_NumAttribute, &uiSyncLossCounter,
                                                   &b_Connected, &f_celsius));
}

TEST_F(ObservedRows, ReportEachDeviceNodeOfTheTtable) {
  EXPECT_THAT(LinesOf({{"TtableDeviceNode_7", "1"}}, {"record"}),
              ElementsAre("record T-table device 7, type 0: completed at 0, took 0"));
}
