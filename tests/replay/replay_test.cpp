// The program that replays captures, from outside.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "sandbox/enter.h"
#include "tests/sandbox/outside.h"
#include "tests/support/paths.h"
#include "tests/support/temporary_folder.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// A description with so many more of them.
std::string Values(std::size_t count) {
  std::string text = R"({"format":1,"more":[0)";
  for (std::size_t at = 0; at < count; ++at) {
    text += ",0";
  }
  return text + "]}";
}

class Replay : public OutsideTest {
 protected:
  void Write(const std::string& name, const std::string& text) const {
    const fs::path path = Path(name);
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }

  std::string Path(const std::string& name) const { return folder_.Path() + "/" + name; }

  std::string Text(const std::string& name) const {
    std::stringstream text;
    text << std::ifstream(Path(name)).rdbuf();
    return text.str();
  }

  // Packs the folder `capture`.
  std::string Pack(const std::string& name = "a.tar.zst") const {
    EXPECT_EQ(
        0,
        RunCommand("tar --zstd -C " + folder_.Path() + " -cf " + Path(name) + " capture").Status);
    return Path(name);
  }

  static Outcome Run(const std::string& arguments) {
    return RunCommand(test_support::ReplayProgram() + " " + arguments);
  }

  // The document after so many cycles of the folder.
  std::string DocumentAfter(int cycles) const {
    return RunCommand(test_support::ReplayProgram() + " " + Path("capture") +
                      " -- --format xml --cycles " + std::to_string(cycles) + " 2>/dev/null")
        .Output;
  }

  // A controller with two steps, and what its cycles give.
  void WriteCapture() const {
    Write("capture/root/home/Zet/.settings/uuid", "one\n");
    Write("capture/rows.tsv", "CalculatedSunrise\tfirst\n");
    Write("capture/steps/01/root/home/Zet/.settings/uuid", "two\n");
    Write("capture/steps/02/rows.tsv", "CalculatedSunrise\tthird\n");
    Write("capture/capture.json",
          R"({"format":1,"zone":"<+03>-3","cycles":[{"notes":[]},{"notes":[]},{"notes":[]}]})");
    const std::string first = DocumentAfter(1);
    const std::string second = DocumentAfter(2);
    const std::string third = DocumentAfter(3);
    Write("capture/document.xml", first);
    Write("capture/steps/01/document.xml", second);
    Write("capture/steps/02/document.xml", third);
  }

  test_support::TemporaryFolder folder_;
};

TEST_F(Replay, ShowsTheLastDocumentOfACapture) {
  WriteCapture();
  const Outcome text = Run(Pack() + " 2>/dev/null");
  EXPECT_EQ(0, text.Status) << text.Output;
  EXPECT_THAT(text.Output, HasSubstr("two"));
  const Outcome xml = Run(Pack() + " -- --format xml 2>/dev/null");
  EXPECT_THAT(xml.Output, AllOf(StartsWith("<?xml"), HasSubstr("GUID=\"two"), HasSubstr("third")));
  const Outcome first = Run(Pack() + " -- --format xml --cycles 1 2>/dev/null");
  EXPECT_THAT(first.Output, AllOf(HasSubstr("GUID=\"one"), HasSubstr("first")));
}

TEST_F(Replay, TheClockHasTheZoneOfTheCapture) {
  WriteCapture();
  EXPECT_THAT(Run(Pack() + " -- --format xml 2>/dev/null").Output,
              testing::ContainsRegex("LocalTime=\"[^\"]*\\+03"));
}

TEST_F(Replay, EndsAsShowDoes) {
  Write("capture/root/proc/meminfo", "");
  EXPECT_EQ(1, Run(Pack()).Status) << "there is no database";
  const Outcome outcome = Run(Pack() + " -- --formt xml");
  EXPECT_EQ(2, outcome.Status);
  EXPECT_THAT(outcome.Output, HasSubstr("the nearest is --format"));
}

TEST_F(Replay, VerifyingFindsNoDifferenceInWhatIsTheSame) {
  WriteCapture();
  const std::string file = Pack();
  const Outcome outcome = Run("--verify " + file + " " + Path("capture"));
  EXPECT_EQ(0, outcome.Status);
  EXPECT_EQ(
      file + ": 3 cycles, no differences\n" + Path("capture") + ": 3 cycles, no differences\n",
      outcome.Output);
}

TEST_F(Replay, VerifyingListsWhatDiffersByItsPath) {
  WriteCapture();
  std::string document = Text("capture/steps/01/document.xml");
  document.replace(document.find("two"), 3, "six");
  Write("capture/steps/01/document.xml", document);
  const std::string file = Pack();
  const Outcome outcome = Run("--verify " + file);
  EXPECT_EQ(1, outcome.Status);
  EXPECT_THAT(outcome.Output, StartsWith(file + ": cycle 2: GUID: \"six"));
  Write("capture/capture.json",
        R"({"format":1,"cycles":[{},{"notes":[{"field":"GUID","why":"a test"}]},{}]})");
  EXPECT_EQ(0, Run("--verify " + Pack()).Status);
}

TEST_F(Replay, OneBadCaptureDoesNotKeepTheOthersFromBeingCompared) {
  WriteCapture();
  const std::string good = Pack("good");
  Write("bad", "no archive");
  const Outcome outcome = Run("--verify " + Path("bad") + " " + good);
  EXPECT_EQ(2, outcome.Status);
  EXPECT_THAT(outcome.Output,
              AllOf(HasSubstr("statuscollector-replay: " + Path("bad") + ": not a capture: "),
                    HasSubstr(good + ": 3 cycles, no differences\n")));
}

TEST_F(Replay, ADescriptionThatIsNoneIsReported) {
  WriteCapture();
  struct Row {
    const char* File;
    std::string Text;
    const char* Complaint;
  };
  const Row rows[] = {
      {"capture.json", "{", "capture.json: "},
      {"capture.json", "[]", "capture.json: JSON, but not an object"},
      {"capture.json", Values(1'000'001), "more than 1000000 values"},
      {"capture.json", R"({"format":2})", "format 2 is newer than this program"},
      {"capture.json", R"({"format":1,"cycles":[{"notes":[{}]}]})", "capture.json: "},
      {"capture.json", R"({"format":1,"cycles":[{"notes":[{"field":"No/Such"}]}]})", "No/Such"},
      {"document.xml", "<none/>", "document.xml: "},
  };
  for (const auto& [file, text, complaint] : rows) {
    const std::string kept = Text(std::string("capture/") + file);
    Write(std::string("capture/") + file, text);
    if (std::string(complaint) == "No/Such") {
      Write("capture/document.xml", DocumentAfter(2));
    }
    const Outcome outcome = Run("--verify " + Pack());
    EXPECT_EQ(2, outcome.Status) << text.substr(0, 100);
    EXPECT_THAT(outcome.Output,
                AllOf(StartsWith("statuscollector-replay: "), HasSubstr(complaint)));
    EXPECT_EQ(1, std::count(outcome.Output.begin(), outcome.Output.end(), '\n')) << outcome.Output;
    Write(std::string("capture/") + file, kept);
  }
}

TEST_F(Replay, WithoutADocumentThereIsNothingToCompare) {
  Write("capture/rows.tsv", "CalculatedSunrise\tfirst\n");
  const Outcome outcome = Run("--verify " + Pack());
  EXPECT_EQ(2, outcome.Status);
  EXPECT_THAT(outcome.Output, HasSubstr("no document to compare with"));
}

TEST_F(Replay, MistakesAreReportedWithWhatToDo) {
  WriteCapture();
  const std::string file = Pack();
  EXPECT_THAT(
      Run("--verfy " + file).Output,
      HasSubstr("statuscollector-replay: no such option: --verfy; the nearest is --verify"));
  EXPECT_THAT(Run(file + " " + file).Output, HasSubstr("one capture is shown at a time"));
  EXPECT_THAT(Run(file + " -- --output out.xml").Output, HasSubstr("to standard output"));
  EXPECT_THAT(Run("--verify " + file + " -- --brief").Output, HasSubstr("leave out what follows"));
  EXPECT_THAT(Run(Path("missing")).Output, HasSubstr("missing: No such file or directory"));
  for (const std::string& words : {std::string("--verfy ") + file, std::string(), file + " x"}) {
    EXPECT_EQ(2, Run(words).Status) << words;
  }
}

// tests/replay/corpus/README.md says what they are.
TEST_F(Replay, CapturesThatAreKeptGiveTheirDocuments) {
  const std::string corpus = test_support::SourceTree() + "/tests/replay/corpus";
  const Outcome outcome = Run("--verify " + corpus + "/*.tar.zst");
  EXPECT_EQ(0, outcome.Status) << outcome.Output;
  const auto lines = std::count(outcome.Output.begin(), outcome.Output.end(), '\n');
  const auto files = std::distance(fs::directory_iterator(corpus), fs::directory_iterator()) - 1;
  EXPECT_EQ(files, lines) << outcome.Output;
  EXPECT_LE(6, lines);
}

// What is in a capture lands in the box or nowhere.
TEST_F(Replay, AHostileCaptureWritesNothing) {
  const std::string target = Path("target");
  for (const char* const line :
       {"capture/../target", "/target", "capture/root/proc/sys/kernel/hostname"}) {
    const std::string name = line[0] == '/' ? target : line;
    Write("inner", "hostile");
    const std::string made = "cd " + folder_.Path() + " && tar -P --zstd --transform 's|^inner$|" +
                             name + "|' -cf hostile.tar.zst inner";
    ASSERT_EQ(0, RunCommand(made).Status);
    const Outcome outcome = Run(Path("hostile.tar.zst"));
    EXPECT_EQ(2, outcome.Status) << outcome.Output;
    EXPECT_THAT(outcome.Output, StartsWith("statuscollector-replay: "));
    EXPECT_EQ(1, std::count(outcome.Output.begin(), outcome.Output.end(), '\n')) << outcome.Output;
    EXPECT_FALSE(fs::exists(target));
  }
}

// Documents used to get lost when the file that they stand in had the place of a closed stream, and
// a verdict that nobody could read was a good one.
TEST_F(Replay, ClosedAndFullStreamsAreReported) {
  WriteCapture();
  const std::string verify = test_support::ReplayProgram() + " --verify " + Pack();
  const Outcome closed = RunCommand("(" + verify + " 3>&1 >&- 2>&3)");
  EXPECT_EQ(2, closed.Status);
  EXPECT_THAT(closed.Output, HasSubstr("standard output: Bad file descriptor"));
  const Outcome full = RunCommand("(" + verify + " 2>&1 >/dev/full)");
  EXPECT_EQ(2, full.Status);
  EXPECT_THAT(full.Output, HasSubstr("standard output: No space left on device"));
  const Outcome silent = RunCommand("(" + verify + " 2>&- <&-)");
  EXPECT_EQ(RunCommand(verify).Output, silent.Output);
  EXPECT_THAT(silent.Output, HasSubstr("3 cycles, no differences"));
}

// What cannot be written once can be later. The reason used to be that of any call since then.
TEST_F(Replay, AFailureToPrintIsReportedOnceWithItsReason) {
  WriteCapture();
  const std::string file = Pack();
  const std::string out = Path("out");
  // Who is traced cannot look for leaks.
  const std::string once = "strace -q -o /dev/null -E ASAN_OPTIONS=detect_leaks=0 -P " + out +
                           " -e trace=write -e inject=write:error=ENOSPC:when=1 ";
  const Outcome outcome = RunCommand("(" + once + test_support::ReplayProgram() + " --verify " +
                                     file + " " + file + " 2>&1 >" + out + ")");
  EXPECT_EQ(2, outcome.Status);
  EXPECT_THAT(outcome.Output, StartsWith("statuscollector-replay: " + file +
                                         ": standard output: No space left on device"));
  EXPECT_EQ(1, std::count(outcome.Output.begin(), outcome.Output.end(), '\n')) << outcome.Output;
}

TEST_F(Replay, HelpNamesEveryOption) {
  const Outcome help = Run("--help");
  EXPECT_EQ(0, help.Status);
  EXPECT_THAT(help.Output, AllOf(HasSubstr("--verify"), HasSubstr("FILE"), HasSubstr("--")));
  std::istringstream lines(help.Output);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_GE(80U, line.size()) << line;
  }
}

}  // namespace
}  // namespace sandbox
