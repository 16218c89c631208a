// diff, on documents in files and streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "model/document.h"
#include "model/xml.h"
#include "tests/support/run_program.h"

namespace {

using test_support::ProgramResult;
using test_support::RunProgram;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int kAllWell = 0;
constexpr int kTrouble = 2;

ProgramResult Collector(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {HOST_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command);
}

void Write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }

class DiffTest : public testing::Test {
 protected:
  void SetUp() override {
    QtSts::CStatus status;
    Write(before_, QtSts::WriteDocument(status));
    status.MemoryFree = 5;
    status.GUID =
        "\xC2\x9B"
        "31m";
    Write(after_, QtSts::WriteDocument(status));
  }

  const std::string before_ = "/tmp/before.xml";
  const std::string after_ = "/tmp/after.xml";
};

TEST_F(DiffTest, ListsTheDifferencesAndEndsWithOne) {
  const ProgramResult result = Collector({"diff", before_, after_});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_EQ(result.Output,
            "GUID: \"\" -> \"\xEF\xBF\xBD"
            "31m\"\nMemoryFree: 100000 -> 5\n");
  EXPECT_EQ(result.Errors, "");
}

TEST_F(DiffTest, SaysNothingAboutEqualDocuments) {
  const ProgramResult result = Collector({"diff", before_, before_});
  EXPECT_EQ(result.ExitCode, kAllWell);
  EXPECT_EQ(result.Output, "");
}

TEST_F(DiffTest, NamesTheFileThatIsNoDocument) {
  Write("/tmp/wrong.xml", "<Status>\x1b[31m");
  const ProgramResult wrong = Collector({"diff", before_, "/tmp/wrong.xml"});
  EXPECT_EQ(wrong.ExitCode, kTrouble);
  EXPECT_THAT(wrong.Errors, StartsWith("statuscollector: /tmp/wrong.xml: line 1: not a document"));
  EXPECT_THAT(wrong.Errors, Not(HasSubstr("\x1b")));
  const ProgramResult missing = Collector({"diff", "/tmp/missing.xml", after_});
  EXPECT_EQ(missing.ExitCode, kTrouble);
  EXPECT_EQ(
      missing.Errors,
      "statuscollector: /tmp/missing.xml: the file cannot be read: No such file or directory\n");
}

}  // namespace
