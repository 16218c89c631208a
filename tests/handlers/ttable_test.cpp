#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "collector/key_table.h"
#include "collector/state/scratch.h"
#include "model/xml.h"
#include "tests/handlers/handler_fixture.h"

namespace {

using QtSts::COutput;
using QtSts::CTtable;

class TtableHandler : public HandlerTest {
 protected:
  int Node(const char* key, const char* value) { return Row(Status_TtableDevice, key, value); }

  // "index/node/value" of each device node.
  std::vector<std::string> Nodes() {
    std::vector<std::string> nodes;
    const QtSts::CDeviceList& devices = Output().Devices;
    for (unsigned int i = 0; i < devices.Count(); ++i) {
      nodes.push_back(std::to_string(devices[i]->Index) + "/" + std::to_string(devices[i]->Node) +
                      "/" + std::to_string(devices[i]->Value));
    }
    return nodes;
  }
};

using testing::ElementsAre;
using testing::IsEmpty;

// Integers and what they read as: wrapped to 32 bits, without any check.
constexpr struct {
  const char* Value;
  std::uint32_t Number;
} kNumbers[] = {
    {"15", 15},
    {"abc", 0},
    {"", 0},
    {" 7x", 7},
    {"+9", 9},
    {"010", 10},
    {"0x10", 0},
    {"-1", 4294967295},
    {"4294967295", 4294967295},
    {"4294967297", 1},
    {"99999999999999999999", 4294967295},  // the largest long, cut
    {"-99999999999999999999", 0},          // the smallest long, cut
    {"37.9", 37},
};

TEST_F(TtableHandler, StoresColumnsAndOneMore) {
  for (const auto& row : kNumbers) {
    EXPECT_EQ(Row(Status_TtableColumns, "TtableColumns", row.Value), 0);
    EXPECT_EQ(Output().Ttable.Columns, row.Number) << '"' << row.Value << '"';
    EXPECT_EQ(Output().Ttable.ColumnsPlusOne, row.Number + 1) << '"' << row.Value << '"';
  }
  EXPECT_EQ(Output().Ttable.Rows, 0U);
  EXPECT_EQ(Output().Ttable.RowsPlusOne, 0U);
}

TEST_F(TtableHandler, StoresRowsAndOneMore) {
  for (const auto& row : kNumbers) {
    EXPECT_EQ(Row(Status_TtableRows, "TtableRows", row.Value), 0);
    EXPECT_EQ(Output().Ttable.Rows, row.Number) << '"' << row.Value << '"';
    EXPECT_EQ(Output().Ttable.RowsPlusOne, row.Number + 1) << '"' << row.Value << '"';
  }
  EXPECT_EQ(Output().Ttable.Columns, 0U);
  EXPECT_EQ(Output().Ttable.ColumnsPlusOne, 0U);
}

TEST_F(TtableHandler, CountsNoneAndNotOneWithoutAValue) {
  Row(Status_TtableColumns, "TtableColumns", nullptr);
  Row(Status_TtableRows, "TtableRows", nullptr);
  EXPECT_EQ(Output().Ttable.ColumnsPlusOne, 0U);
  EXPECT_EQ(Output().Ttable.RowsPlusOne, 0U);
}

TEST_F(TtableHandler, CountsOneMoreThanMinusOneAsZero) {
  Row(Status_TtableColumns, "TtableColumns", "-1");
  EXPECT_EQ(Output().Ttable.Columns, 4294967295U);
  EXPECT_EQ(Output().Ttable.ColumnsPlusOne, 0U);
}

constexpr struct {
  int (*Handler)(QtSts::CStatus*, char*, char*);
  const char* Key;
  std::uint32_t CTtable::*Field;
} kIntegers[] = {
    {Status_TTableFaceCount, "TtableFaceCnt", &CTtable::FaceCount},
    {Status_TtableInterleaved, "TtableInterleaved", &CTtable::Interleaved},
    {Status_TtableModHeight, "TtableModHeight", &CTtable::ModuleHeight},
    {Status_TtableModWidth, "TtableModWidth", &CTtable::ModuleWidth},
};

TEST_F(TtableHandler, StoresEachIntegerInItsField) {
  for (const auto& integer : kIntegers) {
    SCOPED_TRACE(integer.Key);
    for (const auto& row : kNumbers) {
      EXPECT_EQ(Row(integer.Handler, integer.Key, row.Value), 0);
      EXPECT_EQ(Output().Ttable.*integer.Field, row.Number) << '"' << row.Value << '"';
    }
    Output().Ttable.*integer.Field = 0;
    status_.Outputs.Clear();
  }
}

TEST_F(TtableHandler, KeepsInterleavedAsANumber) {
  Row(Status_TtableInterleaved, "TtableInterleaved", "1");
  EXPECT_EQ(Output().Ttable.Interleaved, 1U);
  Row(Status_TtableInterleaved, "TtableInterleaved", "2");
  EXPECT_EQ(Output().Ttable.Interleaved, 2U);
}

TEST_F(TtableHandler, StoresPitchAndRefreshRateAsFloats) {
  constexpr struct {
    const char* Value;
    float Number;
  } kRows[] = {{"6.35", 6.35F}, {"59.94", 59.94F}, {"garbage", 0}, {"", 0}, {"6,35", 6}};
  for (const auto& row : kRows) {
    EXPECT_EQ(Row(Status_TtablePixelPitch, "TtablePixelPitch", row.Value), 0);
    EXPECT_EQ(Output().Ttable.PixelPitch, row.Number) << '"' << row.Value << '"';
    EXPECT_EQ(Row(Status_TtableRefreshRate, "TtableRefreshRate", row.Value), 0);
    EXPECT_EQ(Output().Ttable.RefreshRate, row.Number) << '"' << row.Value << '"';
  }
}

constexpr struct {
  int (*Handler)(QtSts::CStatus*, char*, char*);
  const char* Key;
  std::string COutput::*Field;
} kTexts[] = {
    {Status_TtableTitle, "TtableTitle", &COutput::Title},
    {Status_TtableAuthor, "TtableAuthor", &COutput::Author},
    {Status_TtableContract, "TtableContract", &COutput::Contract},
    {Status_TtableED, "TtableED", &COutput::ED},
    {Status_TtableDate, "TtableDate", &COutput::Date},
    {Status_TtableTime, "TtableTime", &COutput::Time},
    {Status_TtableTask, "TtableTask", &COutput::Task},
};

TEST_F(TtableHandler, StoresEachTextWholeInItsField) {
  for (const auto& text : kTexts) {
    EXPECT_EQ(Row(text.Handler, text.Key, (std::string(" the ") + text.Key).c_str()), 0);
  }
  for (const auto& text : kTexts) {
    EXPECT_EQ(Output().*text.Field, std::string(" the ") + text.Key);
  }
  EXPECT_EQ(Output().SpareText, "");
  EXPECT_EQ(status_.Outputs.Count(), 1U);
}

TEST_F(TtableHandler, LeavesATextAloneWithoutAValueButCreatesTheOutput) {
  for (const auto& text : kTexts) {
    SCOPED_TRACE(text.Key);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(text.Handler, text.Key, nullptr), 0);
    EXPECT_EQ(status_.Outputs.Count(), 1U);
    Output().*text.Field = "old";
    EXPECT_EQ(Row(text.Handler, text.Key, nullptr), 0);
    EXPECT_EQ(Output().*text.Field, "old");
  }
}

TEST_F(TtableHandler, LeavesANumberAloneWithoutAValueButCreatesTheOutput) {
  constexpr struct {
    int (*Handler)(QtSts::CStatus*, char*, char*);
    const char* Key;
  } kRows[] = {
      {Status_TtableColumns, "TtableColumns"},
      {Status_TtableRows, "TtableRows"},
      {Status_TTableFaceCount, "TtableFaceCnt"},
      {Status_TtableInterleaved, "TtableInterleaved"},
      {Status_TtableModHeight, "TtableModHeight"},
      {Status_TtableModWidth, "TtableModWidth"},
      {Status_TtablePixelPitch, "TtablePixelPitch"},
      {Status_TtableRefreshRate, "TtableRefreshRate"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Key);
    status_.Outputs.Clear();
    EXPECT_EQ(Row(row.Handler, row.Key, nullptr), 0);
    EXPECT_EQ(status_.Outputs.Count(), 1U);
    EXPECT_EQ(Row(row.Handler, row.Key, "23"), 0);
    const std::string written = QtSts::WriteDocument(status_);
    EXPECT_THAT(written, testing::HasSubstr("\"23\""));
    EXPECT_EQ(Row(row.Handler, row.Key, nullptr), 0);
    EXPECT_EQ(QtSts::WriteDocument(status_), written);
  }
}

TEST_F(TtableHandler, NeverTouchesThePresetIntegers) {
  for (const auto& integer : kIntegers) {
    Row(integer.Handler, integer.Key, "77");
  }
  Row(Status_TtableColumns, "TtableColumns", "77");
  Row(Status_TtableRows, "TtableRows", "77");
  Node("TtableDeviceNode_1", "77");
  const COutput& output = Output();
  EXPECT_EQ(output.Ttable.FaceCount, 77U);
  EXPECT_THAT((std::vector{output.Preset1, output.Preset2, output.Preset3, output.Preset4,
                           output.Preset5, output.Preset6}),
              ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(TtableHandler, NumbersDeviceNodesInTheOrderOfTheirRows) {
  EXPECT_EQ(Node("TtableDeviceNode_3", "30"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_1", "-10"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_7", "abc"), 0);
  EXPECT_THAT(Nodes(), ElementsAre("0/3/30", "1/1/-10", "2/7/0"));
  EXPECT_EQ(status_.Outputs.Count(), 1U);
}

TEST_F(TtableHandler, AppendsADeviceNodeAgainInsteadOfReplacingIt) {
  Node("TtableDeviceNode_3", "1");
  Node("TtableDeviceNode_3", "2");
  EXPECT_THAT(Nodes(), ElementsAre("0/3/1", "1/3/2"));
}

TEST_F(TtableHandler, RefusesANodeThatBeginsWithASignAndCountsOn) {
  for (const char* key :
       {"TtableDeviceNode_-2", "TtableDeviceNode_(", "TtableDeviceNode_)", "TtableDeviceNode_*",
        "TtableDeviceNode_+1", "TtableDeviceNode_,", "TtableDeviceNode_.5", "TtableDeviceNode_/"}) {
    EXPECT_EQ(Node(key, "1"), -1) << key;
    EXPECT_EQ(status_.Outputs.Count(), 0U) << key;
    EXPECT_EQ(u32_TTableNumAttribute, 0U) << key;
  }
  EXPECT_EQ(Node("TtableDeviceNode_4", "1"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_-2", "1"), -1);
  EXPECT_EQ(Node("TtableDeviceNode_5", "1"), 0);
  EXPECT_THAT(Nodes(), ElementsAre("0/4/1", "1/5/1"));
}

TEST_F(TtableHandler, LooksAtTheFirstCharacterOfANodeOnly) {
  EXPECT_EQ(Node("TtableDeviceNode_", "1"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_x9", "2"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_ -2", "3"), 0);
  EXPECT_EQ(Node("TtableDeviceNode_'", "4"), 0);  // the character before '('
  EXPECT_EQ(Node("TtableDeviceNode_:", "5"), 0);  // the character after '/' and '0' to '9'
  EXPECT_EQ(Node("TtableDeviceNode_12-3", "6"), 0);
  EXPECT_THAT(Nodes(), ElementsAre("0/0/1", "1/0/2", "2/-2/3", "3/0/4", "4/0/5", "5/12/6"));
}

TEST_F(TtableHandler, ReadsNodeAndValueAsSigned) {
  Node("TtableDeviceNode_4294967295", "4294967295");
  Node("TtableDeviceNode_2147483648", "-2147483648");
  EXPECT_THAT(Nodes(), ElementsAre("0/-1/-1", "1/-2147483648/-2147483648"));
}

TEST_F(TtableHandler, TakesTheNextIndexFromTheScratchState) {
  u32_TTableNumAttribute = 41;
  Node("TtableDeviceNode_1", "1");
  EXPECT_THAT(Nodes(), ElementsAre("41/1/1"));
  EXPECT_EQ(u32_TTableNumAttribute, 42U);
}

TEST_F(TtableHandler, LeavesTheScratchStateToOthersButForTheNodeCounter) {
  FillScratch();
  const Scratch before = SaveScratch();
  for (const StatusKey& row : status_primary_keys) {
    if (row.Key != "DCIO_" && row.Key != "Sensor_") {
      EXPECT_EQ(Row(row.Handler, row.Key.c_str(), "1"), 0) << row.Key;
    }
  }
  EXPECT_THAT(Differences(SaveScratch(), before), ElementsAre("u32_TTableNumAttribute"));
  EXPECT_EQ(u32_TTableNumAttribute, 2U) << "one node on top of the one filled in";
}

TEST_F(TtableHandler, DoesNothingForANodeKeyShorterThanItsPrefix) {
  for (const char* key : {"TtableDeviceNode", "TtableDevice", "T", ""}) {
    EXPECT_EQ(Node(key, "1"), 0) << key;
  }
  EXPECT_EQ(Node(nullptr, "1"), 0);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(u32_TTableNumAttribute, 0U);
}

TEST_F(TtableHandler, AddsNoNodeWithoutAValueButCreatesTheOutput) {
  EXPECT_EQ(Node("TtableDeviceNode_1", nullptr), 0);
  EXPECT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_THAT(Nodes(), IsEmpty());
  EXPECT_EQ(u32_TTableNumAttribute, 0U);
  EXPECT_EQ(Node("TtableDeviceNode_-1", nullptr), -1);
}

}  // namespace
