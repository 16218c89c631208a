// What the rows of sensors allocate, and what happens when memory runs out in the middle of a
// record.
#include <gmock/gmock.h>

#include <new>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "sensors/placements.h"
#include "sensors/points.h"
#include "sensors/record_builder.h"
#include "tests/sensors/sensor_test.h"
#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/failure.h"

using interposed::Call;
using interposed::Failure;
using interposed::g_allocations;

namespace {

// Longer than a string holds without memory of its own.
const char* const kLongLabel = "the door on the left of the cabinet on the roof";

constexpr std::size_t kStaged = 4;

class Memory : public SensorTest {
 protected:
  // The first number that is written to a stream leaves memory with the locale.
  Memory() { testing::Message() << 1; }

  // Points, fans and voltages for a board of any kind; no board refuses index 1.
  static void Stage() {
    for (std::size_t i = 0; i < kStaged; ++i) {
      dcioInputs[i] = {1, 3, 1, 1, kLongLabel};
      dcioOutputs[i] = {1, 5, 1, 1, kLongLabel};
    }
    FanRpms = {{1, 1100}, {2, 1200}};
    f_Psrb_InputVoltages = {24.5F, 24.25F};
    f_Psrb_OutputVoltages = {12.0F};
    // A beacon has all its optional values.
    beaconRoundel = {1, 2, 3, 4, 5, 6, 7, 8, 300, 60};
  }

  // Gives back all memory that the scratch state holds.
  static void Forget() {
    ClearScratch();
    for (DcioPoint& point : dcioInputs) {
      point.Label.shrink_to_fit();
    }
    for (DcioPoint& point : dcioOutputs) {
      point.Label.shrink_to_fit();
    }
  }

  // Runs `action` with its n-th allocation failing; true when it came to an end all the same.
  template <class Action>
  static bool Survives(unsigned long n, Action action) {
    const Failure failure(Call::kMemory, n + 1);
    try {
      action();
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }
};

void ExpectNoRecordUnless(bool survived, const QtSts::CStatus& status) {
  const QtSts::COutput* const output = status.Outputs[0];
  if (!survived) {
    EXPECT_EQ(status.Sensors.Count(), 0U);
  }
  if (!survived && output != nullptr && output->DisplayInterfaces[0] != nullptr) {
    EXPECT_EQ(output->DisplayInterfaces[0]->Sensors.Count(), 0U);
  }
}

// How many entries from the front are empty; the rest must be as they were staged.
template <std::size_t kEntries>
std::size_t TakenFrom(const std::array<DcioPoint, kEntries>& staged,
                      const std::array<DcioPoint, kEntries>& before) {
  std::size_t taken = 0;
  while (taken < kStaged && staged[taken] == DcioPoint()) {
    ++taken;
  }
  for (std::size_t i = taken; i < kEntries; ++i) {
    EXPECT_EQ(staged[i], before[i]) << "entry " << i;
  }
  return taken;
}

}  // namespace

TEST_F(Memory, IsNotUsedByRowsThatOnlyStoreANumberAFlagOrACode) {
  const std::uint64_t at_start = g_allocations.Made;
  std::vector<std::string> names;
  for (const rows::Attribute& attribute : sensors::ExactAttributes()) {
    names.emplace_back(attribute.Name);
  }
  for (const rows::Attribute& family : sensors::AttributeFamilies()) {
    names.emplace_back(family.Name);
  }
  for (const char* const name : {"Input_0_Type", "Output_0_State", "Input_1_Index", "nonsense"}) {
    names.emplace_back(name);
  }
  st_Type = kUnknownSensor;
  ASSERT_GT(g_allocations.Made, at_start) << "allocations are not counted";
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    std::string key = "Sensor_5_" + name;
    char value[] = "17";
    const std::uint64_t before = g_allocations.Made;
    Status_Sensor(&status_, value, key.data());
    EXPECT_EQ(g_allocations.Made, before);
  }
}

TEST_F(Memory, ThatRunsOutBetweenPointsLeavesTheOnesThatAreStillStaged) {
  using Populate = void (*)(QtSts::CCANDcio*);
  for (const Populate populate : {&PopulateInputs, &PopulateOutputs}) {
    const bool inputs = populate == &PopulateInputs;
    SCOPED_TRACE(inputs ? "inputs" : "outputs");
    Forget();
    const std::int64_t live = g_allocations.Live;
    unsigned long failures = 0;
    for (bool survived = false; !survived; ++failures) {
      SCOPED_TRACE(testing::Message() << "allocation " << failures << " fails");
      ASSERT_LT(failures, 1000U);
      Stage();
      const auto inputs_before = dcioInputs;
      const auto outputs_before = dcioOutputs;
      {
        QtSts::CCANDcio board;
        board.Points.Inputs = std::make_unique<QtSts::InputListType>(24);
        board.Points.Outputs = std::make_unique<QtSts::OutputListType>(12);
        survived = Survives(failures, [&] { populate(&board); });
        if (inputs) {
          EXPECT_EQ(TakenFrom(dcioInputs, inputs_before), board.Points.Inputs->Points.size());
          EXPECT_EQ(dcioOutputs, outputs_before);
        } else {
          EXPECT_EQ(TakenFrom(dcioOutputs, outputs_before), board.Points.Outputs->Points.size());
          EXPECT_EQ(dcioInputs, inputs_before);
        }
      }
    }
    // Each point is one allocation, its label another, and the list grows in between.
    EXPECT_GT(failures, 2 * kStaged);
    Forget();
    EXPECT_EQ(g_allocations.Live, live);
  }
}

TEST_F(Memory, ThatRunsOutInARecordLeavesNeitherARecordNorALeak) {
  for (const sensors::SensorKind& kind : sensors::SensorKinds()) {
    SCOPED_TRACE(kind.Text);
    for (const bool behind_interface : {false, true}) {
      Forget();
      bool survived = false;
      unsigned long failures = 0;
      for (; !survived; ++failures) {
        SCOPED_TRACE(testing::Message() << "allocation " << failures << " fails");
        ASSERT_LT(failures, 1000U);
        const std::int64_t live = g_allocations.Live;
        Stage();
        st_Type = kind.Code;
        {
          QtSts::CStatus status;
          survived = Survives(failures, [&] {
            behind_interface ? Status_VerifyDisplayInterfaceSensor(&status, kRouterCan)
                             : Status_VerifySensor(&status);
          });
          ExpectNoRecordUnless(survived, status);
        }
        Forget();
        EXPECT_EQ(g_allocations.Live, live);
      }
      // Also where nothing is made of the kind: an output and its interface come first.
      EXPECT_GT(failures, 1U) << "no allocation failed";
    }
  }
}

TEST_F(Memory, ThatRunsOutInARecordTakesAllFansAndVoltagesOrNone) {
  const std::map<std::uint8_t, std::uint16_t> fans = {{1, 1100}, {2, 1200}};
  for (const SensorType type : {kCanDcioAndFanRpm, kCanPowerSupplyRedundancyBoard}) {
    SCOPED_TRACE(type);
    bool survived = false;
    unsigned long failures = 0;
    for (; !survived; ++failures) {
      SCOPED_TRACE(testing::Message() << "allocation " << failures << " fails");
      Stage();
      st_Type = type;
      QtSts::CStatus status;
      survived = Survives(failures, [&] { Status_VerifySensor(&status); });
      if (type == kCanDcioAndFanRpm) {
        EXPECT_TRUE(FanRpms.empty() || FanRpms == fans);
        EXPECT_TRUE(!survived || FanRpms.empty());
      } else {
        EXPECT_EQ(FanRpms, fans);
        EXPECT_EQ(f_Psrb_InputVoltages.empty(), f_Psrb_OutputVoltages.empty());
        EXPECT_TRUE(!survived || f_Psrb_InputVoltages.empty());
      }
    }
    EXPECT_GT(failures, 1U) << "no allocation failed";
  }
}

TEST_F(Memory, ThatRunsOutInABoardsOutputsFindsItsInputsTaken) {
  for (const SensorType type : {kCanDcio16In3Out8Cfg, kCanDcio2In1Out, kCanDcioAndFanRpm}) {
    SCOPED_TRACE(type);
    bool survived = false;
    bool between = false;
    for (unsigned long n = 0; !survived; ++n) {
      SCOPED_TRACE(testing::Message() << "allocation " << n << " fails");
      Stage();
      const auto inputs_before = dcioInputs;
      const auto outputs_before = dcioOutputs;
      st_Type = type;
      QtSts::CStatus status;
      survived = Survives(n, [&] { Status_VerifySensor(&status); });
      const std::size_t inputs = TakenFrom(dcioInputs, inputs_before);
      const std::size_t outputs = TakenFrom(dcioOutputs, outputs_before);
      EXPECT_TRUE(inputs == kStaged || outputs == 0) << inputs << " inputs, " << outputs;
      between = between || (inputs == kStaged && outputs == 0);
    }
    EXPECT_TRUE(between);
  }
}

TEST_F(Memory, OfARecordComesBackWhenItsInterfaceVanishesMeanwhile) {
  Forget();
  const std::int64_t live = g_allocations.Live;
  {
    QtSts::CStatus status;
    Status_VerifyDisplayInterfaceSensor(&status, kRouterCan);
    u32_SensorNumber = 1;
    interposed::g_on_next_allocation = [&status] { status.Outputs.Clear(); };
    EXPECT_EQ(Status_VerifyDisplayInterfaceSensor(&status, kRouterCan), 0);
    EXPECT_EQ(interposed::g_on_next_allocation, nullptr) << "nothing was built";
    EXPECT_EQ(status.Outputs.Count(), 0U);
  }
  Forget();
  EXPECT_EQ(g_allocations.Live, live);
}

TEST_F(Memory, ThatRunsOutInARowLeavesWhatWasStored) {
  Forget();
  dcioInputs[0].Label = "door";
  FanRpms = {{1, 1100}};
  f_Psrb_InputVoltages = {24.5F};
  f_Psrb_InputVoltages.shrink_to_fit();
  u32_SensorNumber = 5;
  const Scratch before = SaveScratch();
  for (const auto& [name, value] : Attributes{
           {"Input_0_Label", kLongLabel}, {"Fan_2_Rpm", "1200"}, {"PsrbVin_1_Volts", "24"}}) {
    SCOPED_TRACE(name);
    std::string key = "Sensor_5_" + name;
    std::string text = value;
    EXPECT_FALSE(Survives(0, [&] { Status_Sensor(&status_, text.data(), key.data()); }));
    EXPECT_EQ(SaveScratch(), before);
  }
}

TEST_F(Memory, OfARefusedPointIsDroppedAndThatOfEveryOtherComesBack) {
  Forget();
  const std::int64_t live = g_allocations.Live;
  Stage();
  dcioInputs[1].Index = 0;
  dcioInputs[2].Index = 25;
  st_Type = kCanDcio16In3Out8Cfg;
  {
    QtSts::CStatus status;
    Status_VerifySensor(&status);
    const auto& board = At<QtSts::CCANDcio16in3out8cfg>(status.Sensors, 0);
    EXPECT_EQ(board.Points.Inputs->Points.size(), 2U);
  }
  Forget();
  // Two points with their labels are gone for good, on purpose.
  EXPECT_EQ(g_allocations.Live - live, 4);
}
