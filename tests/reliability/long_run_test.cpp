// A controller runs for years: memory and descriptors stay what they were, and what a cycle gives
// does not depend on how many there were before.
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <string>

#include "sandbox/system_log.h"
#include "sandbox/testing.h"
#include "tests/collector/scratch_variables.h"
#include "tests/reliability/controller.h"

namespace {

using reliability::Foreign;
using reliability::Outcome;
using reliability::Repetitions;

constexpr const char* kFreshDocument = "/tmp/fresh";

class LongRun : public testing::Test {
 protected:
  Outcome Cycle() {
    return reliability::Run(&quiet_, [this] { return collector_.QueryDatabase(); });
  }

  // Two cycles on the controller's own rows: their document and what they carry on.
  std::string Settle() {
    EXPECT_EQ(Cycle().Result, 0);
    EXPECT_EQ(Cycle().Result, 0);
    return reliability::Document(&collector_.m_Status) + ScratchText();
  }

  reliability::Quiet quiet_;
  CStatusInterface collector_;
};

struct Usage {
  std::size_t Heap;  // bytes in use
  long Resident;     // pages
  int Descriptors;
};

Usage Measure() {
  std::ifstream statm("/proc/self/statm");
  long size = 0;
  long resident = 0;
  statm >> size >> resident;
  const struct mallinfo2 heap = mallinfo2();
  return {heap.uordblks + heap.hblkhd, resident, reliability::OpenDescriptors()};
}

// One of the changes that writers make: another value, a row less, a row more. None of them makes
// a board refuse a point, which deliberately leaves that point behind.
std::string AnyChange(std::mt19937* random) {
  const auto number = [random] { return std::to_string((*random)() % 30); };
  const char* const changes[] = {
      "UPDATE status SET value='%1' WHERE address LIKE 'Sensor_%2_%' AND address NOT LIKE '%put_%' "
      "AND address NOT LIKE '%Type'",
      "DELETE FROM status WHERE address LIKE 'Sensor_%2_C%'",
      "INSERT OR REPLACE INTO status VALUES('Sensor_%2_PsrbVin_%1_Volts','23%1')",
      "INSERT OR REPLACE INTO status VALUES('Sensor_%2_Fan_%1_Rpm','%1')",
      "INSERT OR REPLACE INTO status VALUES('TtableDeviceNode_%2','%1')",
      "INSERT OR REPLACE INTO status VALUES('DCIO_%2_Type','DoorSwitch')",
      "INSERT OR REPLACE INTO status VALUES('TtableTitle', hex(zeroblob(%1)))",
  };
  std::string change = changes[(*random)() % std::size(changes)];
  for (const char* const mark : {"%1", "%2"}) {
    for (std::size_t at; (at = change.find(mark)) != std::string::npos;) {
      change.replace(at, 2, number());
    }
  }
  return change;
}

}  // namespace

TEST_F(LongRun, IsFlatInMemoryAndDescriptorsAndEndsWithTheDocumentOfAFreshProcess) {
  SANDBOX_NEEDS_DEVICES();
  sandbox::SystemLog log;
  reliability::BusyController().Apply();
  reliability::Process fresh([this] {
    collector_.InitDatabase(false);
    std::ofstream(kFreshDocument) << Settle();
    return 0;
  });
  ASSERT_EQ(fresh.Wait(), 0);

  Foreign writer;
  ASSERT_EQ(writer.Do("PRAGMA synchronous=OFF; CREATE TABLE good AS SELECT * FROM status"), "");
  const auto repair = [&writer] {
    return writer.Do("BEGIN; DELETE FROM status; INSERT INTO status SELECT * FROM good; COMMIT");
  };
  collector_.InitDatabase(false);
  std::mt19937 random(20260304);
  Usage early = {};
  const int cycles = Repetitions(2000, 200000);
  for (int i = 0; i < cycles; ++i) {
    ASSERT_EQ(writer.Do(AnyChange(&random)), "");
    ASSERT_EQ(Cycle().Result, 0) << "cycle " << i;
    if (i % 50 == 49) {
      ASSERT_EQ(repair(), "");
      sandbox::ClearDeviceLog();
      log.Read();
    }
    if (i == 99) {
      Settle();
      early = Measure();
    }
  }
  ASSERT_EQ(repair(), "");
  const std::string last = Settle();
  const Usage late = Measure();
  EXPECT_EQ(late.Descriptors, early.Descriptors);
  std::printf("heap %zu to %zu bytes, resident %ld to %ld pages, %d descriptors\n", early.Heap,
              late.Heap, early.Resident, late.Resident, late.Descriptors);
#ifndef __SANITIZE_ADDRESS__
  // What may still come after a hundred cycles are pages in the caches of SQLite, as rows are
  // added.
  EXPECT_LT(late.Heap, early.Heap + (std::size_t{256} << 10));
  EXPECT_LT(late.Resident, early.Resident + 256) << "pages";
#endif
  EXPECT_EQ(reliability::FirstDifference(last, sandbox::ReadFile(kFreshDocument)), "");
}
