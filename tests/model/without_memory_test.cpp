// Documents that are copied, written and read while memory runs out, at every place in turn.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "model/can_sensors.h"
#include "model/copy.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/json.h"
#include "tests/support/interposed/allocations.h"
#include "tests/support/interposed/failure.h"

namespace {

using interposed::Call;
using interposed::Failure;
using QtSts::CStatus;

// A document with something of everything that is allocated.
std::unique_ptr<CStatus> Sample() {
  auto status = std::make_unique<CStatus>();
  status->GUID = "a text that does not fit into the string itself";
  status->Outputs.Add(new QtSts::CTravex6Output);
  auto* const board = new QtSts::CCANDcioAndFanRpm;
  board->Face = std::make_unique<std::uint32_t>(1);
  board->Points.Inputs = std::make_unique<QtSts::InputListType>(2);
  auto* const door = new QtSts::CDoorSensorInputType;
  door->Index = 2;
  door->Label = status->GUID;
  board->Points.Add(door);
  board->FanRpms.Add(new QtSts::FanRpm(0, 1, 900));
  status->Sensors.Add(board);
  auto* const voltages = new QtSts::CCANPsrbSensor;
  voltages->InputVoltages = {24.1F, 24.2F};
  status->Sensors.Add(voltages);
  return status;
}

// Runs `act` with each of its allocations failing in turn, until none is left to fail.
template <class Act>
void ExpectOnlyBadAlloc(const Act& act) {
  act();  // what is made once stays
  unsigned long nth = 0;
  bool failed = true;
  while (failed && nth < 10000) {
    const std::int64_t before = interposed::g_allocations.Live;
    {
      const Failure out_of_memory(Call::kMemory, ++nth);
      try {
        act();
        failed = false;
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    ASSERT_EQ(failed, interposed::Struck()) << nth;
    ASSERT_EQ(interposed::g_allocations.Live, before) << nth;
  }
  EXPECT_GT(nth, 10U);
  EXPECT_FALSE(failed);
}

TEST(Copy, LeavesNothingBehindWhenMemoryRunsOut) {
  const auto status = Sample();
  ExpectOnlyBadAlloc([&status] { EXPECT_NE(QtSts::Copy(*status), nullptr); });
}

TEST(WriteJson, LeavesNothingBehindWhenMemoryRunsOut) {
  const auto status = Sample();
  ExpectOnlyBadAlloc([&status] { EXPECT_NE(QtSts::WriteJson(*status), ""); });
}

TEST(ReadJson, LeavesNothingBehindWhenMemoryRunsOut) {
  const std::string text = QtSts::WriteJson(*Sample());
  ExpectOnlyBadAlloc([&text] {
    QtSts::JsonError error;
    EXPECT_NE(QtSts::ReadJson(text, &error), nullptr) << error.Text();
  });
}

TEST(ReadJson, LeavesNothingBehindWhenMemoryRunsOutInAnError) {
  std::string text = QtSts::WriteJson(*Sample());
  text.resize(text.size() / 2);
  ExpectOnlyBadAlloc([&text] {
    QtSts::JsonError error;
    EXPECT_EQ(QtSts::ReadJson(text, &error), nullptr);
    EXPECT_NE(error.Text(), "");
  });
}

}  // namespace
