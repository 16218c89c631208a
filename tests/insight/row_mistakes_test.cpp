// The typical mistakes of a writer of rows, as the rows of a snapshot report them.
#include <map>
#include <set>

#include "tests/insight/row_fixture.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

using insight::Outcome;
using insight::OutcomeClass;
using testing::HasSubstr;

struct Mistake {
  const char* Name;
  sandbox::Rows Written;
  const char* Key;  // of the row that is at fault
  Outcome What;
  const char* Says;
};

void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.Name; }

// A sensor with one attribute.
sandbox::Rows Sensor(const std::string& attribute, const std::string& value,
                     const std::string& type = "CANTemp") {
  return {{"Sensor_00_" + attribute, value}, {"Sensor_00_Type", type}};
}

sandbox::Rows Doors(std::initializer_list<const char*> numbers) {
  sandbox::Rows rows;
  for (const char* number : numbers) {
    rows[std::string("Sensor_") + number + "_Type"] = "CANDoor";
  }
  return rows;
}

const std::vector<Mistake>& Mistakes() {
  static const std::vector<Mistake> kMistakes = {
      {"KeyInSmallLetters",
       {{"sensor_01_Celsius", "1"}},
       "sensor_01_Celsius",
       Outcome::kUnknownKey,
       "\"Sensor_\""},
      {"AttributeInSmallLetters",
       {{"Sensor_90_celsius", "1"}},
       "Sensor_90_celsius",
       Outcome::kUnknownAttribute,
       "\"Celsius\""},
      {"FlagWithCapitalLetter", Sensor("Connected", "True"), "Sensor_00_Connected",
       Outcome::kLooksTrue, "\"True\""},
      {"FlagWithLineFeed", Sensor("Connected", "true\n"), "Sensor_00_Connected",
       Outcome::kLooksTrue, "\"true\\n\""},
      {"FlagWithoutAValue", Sensor("Connected", ""), "Sensor_00_Connected", Outcome::kUnknownWord,
       "\"\" does not mean true"},
      {"FlagOfBlanks", Sensor("Connected", " "), "Sensor_00_Connected", Outcome::kUnknownWord,
       "\" \" does not mean true"},
      {"AttributeThatIsNone", Sensor("Zone", "1"), "Sensor_00_Zone", Outcome::kUnknownAttribute,
       "\"Zone\""},
      {"NameOfTheElementAsType", Sensor("Bus", "1", "CANTempSensor"), "Sensor_00_Type",
       Outcome::kUnknownWord, "the nearest is \"CANTemp\"; the element is lost"},
      {"NumbersWithoutPadding", Doors({"0", "1", "2", "10", "11"}), "Sensor_1_Type",
       Outcome::kPositionTaken,
       "Sensor_10_Type, since numbers of 1 to 2 digits are mixed and do not come in their order; "
       "padded to 2 digits, as all should be, number 01 would do"},
      {"WidthsOfNumbersMixed", Doors({"000", "00"}), "Sensor_00_Type", Outcome::kPositionTaken,
       "Sensor_000_Type, since numbers of 2 to 3 digits are mixed and Sensor_000_Type has the same "
       "number; number 001 would do"},
      // Padding used to be the cure of all.
      {"LetterAmongNumbers", Doors({"00", "01", "A"}), "Sensor_A_Type", Outcome::kPositionTaken,
       "position 0 is taken by Sensor_00_Type; number 02 would do"},
      {"BlankBeforeANumber", Doors({" 1", "00", "01"}), "Sensor_00_Type", Outcome::kPositionTaken,
       "position 0 is taken by Sensor_ 1_Type; number 02 would do"},
      {"NumberThatWraps", Doors({"40", "41", "4294967296"}), "Sensor_4294967296_Type",
       Outcome::kPositionTaken, "position 0 is taken by Sensor_40_Type; number 42 would do"},
      {"LetterAfterTheLastNumberOfOneDigit",
       Doors({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "A"}), "Sensor_A_Type",
       Outcome::kPositionTaken, "Sensor_0_Type; number 10 of 2 digits, as all should be, would do"},
      // It used to be an unknown attribute of no name.
      {"KeyThatEndsAfterItsNumber",
       {{"Sensor_00_", "1"}},
       "Sensor_00_",
       Outcome::kNoAttribute,
       "the key ends before its attribute"},
      {"DeviceKeyThatEndsAfterItsNumber",
       {{"DCIO_00_", "1"}},
       "DCIO_00_",
       Outcome::kNoAttribute,
       "the key ends before its attribute"},
      {"PointWithoutItsPart", Sensor("Input_03_", "1"), "Sensor_00_Input_03_",
       Outcome::kNoAttribute, "after the number of \"Input_03_\""},
      // They used to pass without a remark.
      {"HexadecimalFraction",
       {{"DimmingLevel", "0x12"}},
       "DimmingLevel",
       Outcome::kTextAfterNumber,
       "\"0x12\" is hexadecimal: 18 is stored"},
      {"NegativeHexadecimalFraction", Sensor("Celsius", " -0X1p3"), "Sensor_00_Celsius",
       Outcome::kTextAfterNumber, "\"-0X1p3\" is hexadecimal: -8 is stored"},
      {"InfiniteFraction", Sensor("Celsius", "inf"), "Sensor_00_Celsius", Outcome::kNoNumber,
       "\"inf\" is no finite number"},
      {"NotANumber", Sensor("Celsius", "nan(0x1)"), "Sensor_00_Celsius", Outcome::kNoNumber,
       "\"nan(0x1)\" is no finite number"},
      // A notice used to call it wrapped, while a finding called it infinite.
      {"FractionThatIsTooLarge", Sensor("Celsius", "6e400"), "Sensor_00_Celsius",
       Outcome::kNoNumber, "\"6e400\" is too large: INF is stored"},
      {"FractionTooLargeForItsField",
       {{"ActualDimmingLevel", "-1e39"}},
       "ActualDimmingLevel",
       Outcome::kNoNumber,
       "\"-1e39\" is too large: -INF is stored"},
      {"WordWithCapitalLetter",
       {{"DimmingMode", "Manual"}},
       "DimmingMode",
       Outcome::kUnknownWord,
       "\"manual\"; \"auto\" stays, which no row reports"},
      // They used to count as two mistakes, too many for a short word.
      {"TwoLettersInTheWrongOrder",
       {{"DimmingMode", "gsp"}},
       "DimmingMode",
       Outcome::kUnknownWord,
       "the nearest is \"gps\"; \"auto\" stays, which no row reports"},
      {"DecimalComma",
       {{"DimmingLevel", "62,5"}},
       "DimmingLevel",
       Outcome::kTextAfterNumber,
       "62 is stored"},
      {"OneForAFlag", {{"FansEnabled", "1"}}, "FansEnabled", Outcome::kLooksTrue, "\"true\""},
      {"HexadecimalNumber", Sensor("Address", "0x12"), "Sensor_00_Address",
       Outcome::kTextAfterNumber, "\"x12\" follows the number: 0 is stored"},
      {"LocationThatIsNone", Sensor("Location", "Local"), "Sensor_00_Location",
       Outcome::kUnknownWord, "\"Local_CAN\" stays"},
      {"GroupWithoutType",
       {{"Sensor_00_Celsius", "1"}},
       "Sensor_00_Celsius",
       Outcome::kNoType,
       "no row Sensor_00_Type"},
      {"OnboardKindBehindAnInterface", Sensor("Location", "TXR_CAN", "OnboardTemp"),
       "Sensor_00_Type", Outcome::kRefusedKind, "OnboardTemp"},
      {"PointWithIndexZero",
       {{"Sensor_00_Input_00_Index", "0"},
        {"Sensor_00_Input_00_Type", "3"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Index",
       Outcome::kPointIndex,
       "index 0"},
      {"PointWithIndexThreeOfTwo",
       {{"Sensor_00_Input_00_Index", "3"},
        {"Sensor_00_Input_00_Type", "3"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Index",
       Outcome::kPointIndex,
       "index 3"},
      {"PointWithoutIndex",
       {{"Sensor_00_Input_00_Type", "3"}, {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Type",
       Outcome::kPointIndex,
       "index 0"},
      {"PointWithAWordAsType",
       {{"Sensor_00_Input_00_Index", "1"},
        {"Sensor_00_Input_00_Type", "Door"},
        {"Sensor_00_Type", "CANDcio2in1out"}},
       "Sensor_00_Input_00_Type",
       Outcome::kNoNumber,
       "\"Door\" is no number: 0 is stored"},
      {"DcioTypeThatIsNone",
       {{"DCIO_00_Type", "Door"}},
       "DCIO_00_Type",
       Outcome::kUnknownWord,
       "\"DoorSwitch\" stays"},
      {"NegativeNumber", Doors({"-1"}), "Sensor_-1_Type", Outcome::kBadNumber, "\"-\""},
      {"LetterAsNumber", Doors({"A"}), "Sensor_A_Type", Outcome::kBadNumber, "\"A\" is no number"},
      {"NumberMissing", Doors({""}), "Sensor__Type", Outcome::kBadNumber, "missing"},
      {"FanBeyondEightBits",
       {{"Sensor_00_Fan_300_Rpm", "1"}, {"Sensor_00_Type", "CANDcioAndFanRpm"}},
       "Sensor_00_Fan_300_Rpm",
       Outcome::kWrapped,
       "300 does not fit and counts as 44"},
      {"BusBeyondTheSixteenBitsOfTheDocument", Sensor("Bus", "65541"), "Sensor_00_Bus",
       Outcome::kWrapped, "65541 does not fit: 5 is in the document"},
      {"EmptyNumber", {{"DimmingLevel", ""}}, "DimmingLevel", Outcome::kNoNumber, "is empty"},
      {"MarkThatIsTrue",
       {{"MdlsAmbientFailure", "true"}},
       "MdlsAmbientFailure",
       Outcome::kLooksTrue,
       "only \"1\" does"},
      {"DeviceNodeWithText",
       {{"TtableDeviceNode_7x", "1"}},
       "TtableDeviceNode_7x",
       Outcome::kBadNumber,
       "\"7x\" is not digits alone and counts as 7"},
  };
  return kMistakes;
}

class RowMistake : public ExplainedRows, public testing::WithParamInterface<Mistake> {};

TEST_P(RowMistake, IsReportedForItsRow) {
  const Mistake& mistake = GetParam();
  Explain(mistake.Written);
  EXPECT_THAT(TextOf(mistake.Key, mistake.What), HasSubstr(mistake.Says));
  EXPECT_STRNE(insight::InfoOf(mistake.What).Cure, "");
}

INSTANTIATE_TEST_SUITE_P(Each, RowMistake, testing::ValuesIn(Mistakes()),
                         [](const auto& mistake) { return std::string(mistake.param.Name); });

using ScenarioOfMistakes = ExplainedRows;

TEST_F(ScenarioOfMistakes, HasOneOfEveryErrorAndNotice) {
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/mistakes")).Apply();
  Explain();
  std::set<std::string> found;
  for (const insight::Row& row : snapshot_->Rows) {
    for (const insight::Remark& remark : row.Remarks) {
      found.insert(insight::InfoOf(remark.What).Id);
    }
  }
  for (const insight::OutcomeInfo& info : insight::Outcomes()) {
    EXPECT_TRUE(info.Class == OutcomeClass::kFine || found.contains(info.Id)) << info.Id;
  }
}

TEST(OutcomesOfRows, OnThePageAreThoseOfTheLibrary) {
  std::vector<markdown::Cells> known;
  for (const insight::OutcomeInfo& info : insight::Outcomes()) {
    known.push_back(
        {"`" + std::string(info.Id) + "`", insight::NameOf(info.Class), info.Meaning, info.Cure});
  }
  EXPECT_EQ(markdown::Table(test_support::ReadSource("docs/rows.md"), "Outcomes"), known);
}

TEST(OutcomesOfRows, HaveACureUnlessTheyAreFine) {
  for (const insight::OutcomeInfo& info : insight::Outcomes()) {
    EXPECT_EQ(std::string(info.Cure).empty(), info.Class == OutcomeClass::kFine) << info.Id;
  }
}

// ---- What is inherited

using Inheritance = ExplainedRows;

TEST_F(Inheritance, IsReportedWithTheRowOfAnEarlierCycle) {
  Explain({{"DCIO_00_Address", "7"}, {"DCIO_00_NumAttribute", "3"}, {"DCIO_00_Type", "RunLED"}});
  EXPECT_EQ(TextOf("DCIO_00_Type", Outcome::kInherited), "");
  Explain({{"DCIO_00_NumAttribute", "3"}, {"DCIO_00_Type", "RunLED"}});
  EXPECT_EQ(TextOf("DCIO_00_Type", Outcome::kInherited),
            "inherits Address from DCIO_00_Address of an earlier cycle");
}

TEST_F(Inheritance, IsReportedForWhatStoodThereBeforeTheFirstObservedCycle) {
  u32_DCIO_Address = 9;
  Explain({{"DCIO_00_NumAttribute", "3"}, {"DCIO_00_Type", "RunLED"}});
  EXPECT_EQ(TextOf("DCIO_00_Type", Outcome::kInherited),
            "inherits Address from what stood there before the first observed cycle");
}

TEST_F(Inheritance, IsReportedForTheLocation) {
  Explain({{"Sensor_00_Location", "TXR_CAN"},
           {"Sensor_00_Type", "CANDoor"},
           {"Sensor_01_Type", "CANDoor"}});
  EXPECT_THAT(TextOf("Sensor_01_Type", Outcome::kInherited),
              HasSubstr("Location from Sensor_00_Location"));
}

TEST_F(Inheritance, OfFansPointsAndVoltagesIsReportedWhereTheyWaited) {
  Explain({{"Sensor_00_Fan_03_Rpm", "900"},
           {"Sensor_00_Input_02_Index", "1"},
           {"Sensor_00_Input_02_Type", "3"},
           {"Sensor_00_PsrbVin_00_Volts", "230"},
           {"Sensor_00_Type", "CANTemp"},
           {"Sensor_01_Type", "CANDcioAndFanRpm"},
           {"Sensor_02_Type", "CANPowerSupplyRedundancyBoard"}});
  EXPECT_NE(TextOf("Sensor_00_Fan_03_Rpm", Outcome::kWaits), "");
  EXPECT_EQ(RowOf("Sensor_00_Fan_03_Rpm").Path, "Sensors[1]/FanRpms[0]/Rpm");
  EXPECT_THAT(TextOf("Sensor_01_Type", Outcome::kInherited),
              HasSubstr("Fan_3 from Sensor_00_Fan_03_Rpm"));
  EXPECT_THAT(TextOf("Sensor_01_Type", Outcome::kInherited),
              HasSubstr("Input_2_Type from Sensor_00_Input_02_Type"));
  EXPECT_THAT(TextOf("Sensor_02_Type", Outcome::kInherited),
              HasSubstr("PsrbVin_0 from Sensor_00_PsrbVin_00_Volts"));
}

// The entry of a point is emptied whenever a board has taken it.
TEST_F(Inheritance, IsReportedForAPointWithoutAState) {
  Explain({{"Sensor_00_Input_02_Index", "1"},
           {"Sensor_00_Input_02_Type", "3"},
           {"Sensor_00_Type", "CANDcioAndFanRpm"}});
  EXPECT_THAT(TextOf("Sensor_00_Type", Outcome::kInherited),
              HasSubstr("Input_2_State from its empty entry"));
}

// Each of a hundred thousand was named in one text.
TEST_F(Inheritance, OfManyValuesNamesTheFirstOnesAndTheNumber) {
  sandbox::Rows rows = {{"Sensor_00_Type", "CANTemp"},
                        {"Sensor_01_Type", "CANPowerSupplyRedundancyBoard"}};
  for (int i = 100; i < 200; ++i) {
    rows["Sensor_00_PsrbVin_" + std::to_string(i) + "_Volts"] = "230";
  }
  Explain(rows);
  const std::string text = TextOf("Sensor_01_Type", Outcome::kInherited);
  EXPECT_THAT(text, HasSubstr("PsrbVin_0 from Sensor_00_PsrbVin_100_Volts"));
  EXPECT_THAT(text, testing::ContainsRegex(", and [0-9]+ more$"));
  EXPECT_LT(text.size(), 1500U);
}

}  // namespace
