// How little memory diff needs. Not under AddressSanitizer, which reserves more than any limit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "model/document.h"
#include "model/xml.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using test_support::ProgramResult;

// A document of 100,000 sensors, 12 MB, each with this text for three of its values.
std::string LargeDocument(const std::string& value) {
  QtSts::CStatus status;
  const std::string text = QtSts::WriteDocument(status);
  const std::string list = "<Sensors/>";
  const std::size_t place = text.find(list);
  std::string sensors = "<Sensors>\n";
  for (int i = 0; i < 100'000; ++i) {
    sensors += "    <CANTempSensor NumberOfAttributes=\"" + value +
               "\" Connected=\"true\" SyncLossCounter=\"" + value + "\" Address=\"" +
               std::to_string(i) + "\" Bus=\"0\" Celsius=\"" + value + "\"/>\n";
  }
  return text.substr(0, place) + sensors + "  </Sensors>" + text.substr(place + list.size());
}

class DiffMemory : public testing::Test {
 protected:
  // A document with this text in a file of this name, whose path is returned.
  std::string Write(const char* name, const std::string& value) const {
    const std::string path = folder_.Path() + "/" + name;
    std::ofstream(path) << LargeDocument(value);
    return path;
  }

  static ProgramResult LimitedDiff(const std::string& before, const std::string& after) {
    return test_support::RunProgram({"/bin/sh", "-c",
                                     "ulimit -v 140000; exec " + test_support::HostProgram() +
                                         " diff " + before + " " + after});
  }

  test_support::TemporaryFolder folder_;
};

// The tree that libxml2 made of such a document used to take 180 MB.
TEST_F(DiffMemory, IsLittleForLargeDocuments) {
  const std::string document = Write("before.xml", "5");
  const ProgramResult result = LimitedDiff(document, document);
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_EQ(result.Output, "");
}

// All differences used to be kept, and the text of all, 100 MB more.
TEST_F(DiffMemory, IsLittleForManyDifferences) {
  const ProgramResult result = LimitedDiff(Write("before.xml", "5"), Write("after.xml", "6"));
  EXPECT_EQ(result.ExitCode, 1) << result.Errors;
  EXPECT_EQ(std::count(result.Output.begin(), result.Output.end(), '\n'), 300'000);
  EXPECT_THAT(result.Output, testing::EndsWith("Sensors[99999]/SyncLossCounter: 5 -> 6\n"
                                               "Sensors[99999]/Celsius: 5 -> 6\n"));
}

}  // namespace
