// What always holds, whatever rows come: random rows (valid, malformed, at the boundaries, every
// attribute in several spellings) through the handler, cycle after cycle on the same scratch state.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "sensors/record_builder.h"
#include "tests/sensors/row_maker.h"
#include "tests/sensors/sensor_test.h"

namespace {

using testing::IsEmpty;

// Every list of sensors in the document.
std::vector<const QtSts::CSensorList*> SensorLists(const QtSts::CStatus& status) {
  std::vector<const QtSts::CSensorList*> lists = {&status.Sensors};
  if (const QtSts::COutput* const output = status.Outputs[0]) {
    for (unsigned int i = 0; i < output->DisplayInterfaces.Count(); ++i) {
      lists.push_back(&output->DisplayInterfaces[i]->Sensors);
    }
  }
  return lists;
}

std::vector<const QtSts::CSensor*> Records(const QtSts::CStatus& status) {
  std::vector<const QtSts::CSensor*> records;
  for (const QtSts::CSensorList* const list : SensorLists(status)) {
    for (unsigned int i = 0; i < list->Count(); ++i) {
      records.push_back((*list)[i]);
    }
  }
  return records;
}

bool NothingIsPresent() {
  const auto present = [](const DcioPoint& point) { return point.Present != 0; };
  return std::ranges::none_of(dcioInputs, present) && std::ranges::none_of(dcioOutputs, present);
}

// A board that was just built has taken all that was staged for its kind.
void ExpectTaken(const QtSts::CSensor& record) {
  if (dynamic_cast<const QtSts::CCANDcio*>(&record) != nullptr) {
    EXPECT_TRUE(NothingIsPresent());
  }
  if (dynamic_cast<const QtSts::CCANDcioAndFanRpm*>(&record) != nullptr) {
    EXPECT_THAT(FanRpms, IsEmpty());
  }
  if (dynamic_cast<const QtSts::CCANPsrbSensor*>(&record) != nullptr) {
    EXPECT_THAT(f_Psrb_InputVoltages, IsEmpty());
    EXPECT_THAT(f_Psrb_OutputVoltages, IsEmpty());
  }
}

template <class List>
void ExpectValidPoints(const List& list, std::set<const void*>* seen) {
  for (auto* const point : list.Points) {
    ASSERT_NE(point, nullptr);
    EXPECT_TRUE(seen->insert(point).second) << "a point in two places";
    EXPECT_TRUE(list.IsValid(point));
    EXPECT_GE(point->Index, 1);
    EXPECT_LE(static_cast<std::uint32_t>(point->Index), list.MaximumIndex);
  }
}

void ExpectSoundBoard(const QtSts::CCANDcio& board, std::set<const void*>* seen) {
  EXPECT_EQ(board.Connected, board.BoardConnected);
  ASSERT_NE(board.Points.Inputs, nullptr);
  ASSERT_NE(board.Points.Outputs, nullptr);
  EXPECT_LE(board.Points.Inputs->Points.size(), kStagedInputs);
  EXPECT_LE(board.Points.Outputs->Points.size(), kStagedOutputs);
  ExpectValidPoints(*board.Points.Inputs, seen);
  ExpectValidPoints(*board.Points.Outputs, seen);
}

void ExpectSoundFans(const QtSts::FanRpmList& fans, std::set<const void*>* seen) {
  for (unsigned int i = 0; i < fans.Count(); ++i) {
    EXPECT_TRUE(seen->insert(fans[i]).second) << "a fan in two places";
    EXPECT_EQ(fans[i]->Ordinal, i);
    EXPECT_TRUE(i == 0 || fans[i - 1]->FanNumber < fans[i]->FanNumber);
  }
}

// The rules of the lists, and that no element stands in two places.
void ExpectSound(const QtSts::CStatus& status) {
  std::set<const void*> seen;
  for (const QtSts::CSensor* const record : Records(status)) {
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(seen.insert(record).second) << "a record in two places";
    if (const auto* const board = dynamic_cast<const QtSts::CCANDcio*>(record)) {
      ExpectSoundBoard(*board, &seen);
    }
    if (const auto* const board = dynamic_cast<const QtSts::CCANDcioAndFanRpm*>(record)) {
      ExpectSoundFans(board->FanRpms, &seen);
    }
  }
  for (const QtSts::CSensorList* const list : SensorLists(status)) {
    for (unsigned int i = 0; list != &status.Sensors && i < list->Count(); ++i) {
      const auto& record = At<QtSts::CCANSensor>(*list, i);
      EXPECT_NE(record.Face, nullptr);
    }
  }
}

// How many points, fans and voltages a record holds.
std::size_t TakenBy(const QtSts::CSensor& record) {
  std::size_t taken = 0;
  if (const auto* const board = dynamic_cast<const QtSts::CCANDcio*>(&record)) {
    taken += board->Points.Inputs->Points.size() + board->Points.Outputs->Points.size();
  }
  if (const auto* const board = dynamic_cast<const QtSts::CCANDcioAndFanRpm*>(&record)) {
    taken += board->FanRpms.Count();
  }
  if (const auto* const board = dynamic_cast<const QtSts::CCANPsrbSensor*>(&record)) {
    taken += board->InputVoltages.size() + board->OutputVoltages.size();
  }
  return taken;
}

class Property : public SensorTest {
 protected:
  // One row, and what must hold right after it.
  void SendAndCheck(const std::string& key, const std::string& value) {
    const auto before = Records(status_);
    const bool refused = key.size() > 7 && key[7] >= '(' && key[7] <= '/';
    EXPECT_EQ(Send(key, value), refused ? -1 : 0);
    const auto after = Records(status_);
    ASSERT_LE(after.size(), before.size() + 1);
    if (after.size() == before.size()) {
      EXPECT_EQ(after, before);
      return;
    }
    EXPECT_TRUE(key.ends_with("_Type")) << "only a type completes a sensor";
    const auto added = std::ranges::find_if(after, [&before](const QtSts::CSensor* record) {
      return std::ranges::find(before, record) == before.end();
    });
    ExpectTaken(**added);
    ++built_;
  }

  std::size_t built_ = 0;
};

}  // namespace

TEST_F(Property, NoRowsLeaveALeakASharedElementABrokenListOrAStagedPointOfABuiltBoard) {
  std::set<std::string> classes;
  std::size_t taken = 0;
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const Rows rows = RowMaker(seed).Make();
    Status_ClearLists(&status_);
    for (const auto& [key, value] : rows) {
      SCOPED_TRACE(testing::Message() << key << " = " << value);
      SendAndCheck(key, value);
    }
    ExpectSound(status_);
    for (const QtSts::CSensor* const record : Records(status_)) {
      classes.insert(QtSts::ClassOf(*record)->Name);
      taken += TakenBy(*record);
    }
    ASSERT_FALSE(HasFailure());
  }
  // The rows are a real test: they have built every kind, many times over.
  EXPECT_EQ(classes.size(), sensors::SensorKinds().size());
  EXPECT_GT(built_, 1500U);
  EXPECT_GT(taken, 500U);
}

TEST_F(Property, TheSameRowsInTheSameScratchStateGiveTheSameDocument) {
  for (unsigned seed = 1; seed <= 150; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const Rows rows = RowMaker(seed).Make();
    const Scratch before = SaveScratch();
    QtSts::CStatus other;
    for (const auto& [key, value] : rows) {
      Dispatch(&other, key, value);
    }
    RestoreScratch(before);
    Cycle(rows);
    ASSERT_THAT(DifferencesOf(status_, other), IsEmpty());
  }
}
