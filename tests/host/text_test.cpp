#include "host/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>

#include "host/page.h"
#include "host/printable.h"
#include "host/text_sections.h"
#include "host/text_template.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/listing.h"
#include "model/text.h"
#include "model/tree.h"
#include "tests/host/sample_documents.h"
#include "tests/support/comma_locale.h"
#include "tests/support/golden.h"
#include "tests/support/random_document.h"

namespace {

using host::RenderText;
using test_support::MatchesGolden;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Text(const QtSts::CStatus& status, const host::Look& look = {}) {
  return RenderText(sample::SnapshotOf(status), look);
}

std::unique_ptr<QtSts::CStatus> Random(std::uint64_t seed) {
  return test_support::RandomDocument(test_support::SeededChoices(seed));
}

std::string WithoutStyles(const std::string& text) {
  return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), "");
}

TEST(RenderText, ShowsAControllerInTrouble) {
  const std::string text = RenderText(sample::TroubledSnapshot(), {});
  EXPECT_TRUE(MatchesGolden(text, "tests/host/golden/troubled.txt"));
}

TEST(RenderText, ShowsAControllerInTroubleOnAWidePage) {
  const std::string text = RenderText(sample::TroubledSnapshot(), {.Columns = 180});
  EXPECT_TRUE(MatchesGolden(text, "tests/host/golden/troubled-180.txt"));
}

TEST(RenderText, ShowsADocumentBeforeTheFirstCycle) {
  QtSts::CStatus status;
  EXPECT_TRUE(MatchesGolden(Text(status), "tests/host/golden/untouched.txt"));
}

TEST(RenderText, ShowsTheSameUnderALocaleWithDecimalComma) {
  const test_support::CommaLocale locale;
  const std::string text = RenderText(sample::TroubledSnapshot(), {});
  EXPECT_TRUE(MatchesGolden(text, "tests/host/golden/troubled.txt"));
}

TEST(RenderText, MarksTheLinesWhereTheCauseStands) {
  const std::string text = RenderText(sample::TroubledSnapshot(), {});
  EXPECT_THAT(text, HasSubstr("\n! Status flags       0x7C05: power off"));
  EXPECT_THAT(text, HasSubstr("\n! 0  CANTempSensor "));
  EXPECT_THAT(text, HasSubstr("\n  5  OnboardCabinetFanControlSensor "));
}

TEST(RenderText, NamesCodesAndUnknownCodes) {
  auto status = sample::Troubled();
  EXPECT_THAT(Text(*status), HasSubstr("Mode             unknown (7)\n"));
  EXPECT_THAT(Text(*status), HasSubstr("Override  thermal\n"));
  status->Outputs[0]->Dimming.DimmingMode = 3;
  EXPECT_THAT(Text(*status), HasSubstr("Mode             gps\n"));
}

// Rows and files hold anything, and so do findings that quote them.
insight::Snapshot HostileSnapshot(std::uint64_t seed) {
  const auto document = Random(seed);
  insight::Snapshot snapshot = sample::SnapshotOf(*document);
  const std::string hostile[] = {"\x1b[2J\xC2\x9B" + document->GUID, std::string(10'000, 'n'),
                                 "\xE2\x80\xAE\xFF\xF0\x9F" + document->FirmwareVersion, "",
                                 "\xE5\xB9\x85\xE5\xB9\x85" + std::string(300, 'w') + "\r\n\t"};
  std::uint64_t next = seed;
  const auto text = [&hostile, &next] { return hostile[next++ % std::size(hostile)]; };
  for (int i = 0; i < 4; ++i) {
    insight::Finding& finding = snapshot.Findings.emplace_back();
    finding.Level = static_cast<insight::Severity>((seed + static_cast<std::uint64_t>(i)) % 3);
    finding.Message = text();
    finding.Where = text();
    finding.Hint = text();
    finding.Path = text();
    finding.Key = text();
    insight::Source& source = snapshot.Sources.emplace_back();
    source.Name = text();
    source.Reason = text();
    source.StoppedBy = text();
  }
  return snapshot;
}

void ExpectAPage(const std::string& text, std::size_t columns) {
  std::string clean = text;
  QtSts::CleanText(&clean);
  EXPECT_EQ(clean, text) << "is not UTF-8 without control characters";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(host::Width(line), columns) << line;
    EXPECT_EQ(host::Printable("x" + line + "x"), "x" + line + "x") << line;
    EXPECT_THAT(line, Not(testing::EndsWith(" ")));
  }
}

// STATUS_LONG=1 makes 400 of them.
TEST(RenderText, KeepsToItsColumnsAndSteersNoTerminal) {
  const std::uint64_t count = std::getenv("STATUS_LONG") != nullptr ? 400 : 20;
  for (std::uint64_t seed = 0; seed < count; ++seed) {
    SCOPED_TRACE(seed);
    const insight::Snapshot snapshot = HostileSnapshot(seed);
    for (const std::size_t columns : {40U, 80U, 180U}) {
      ExpectAPage(RenderText(snapshot, {.Columns = columns}), columns);
      ExpectAPage(RenderText(snapshot, {.Columns = columns, .Brief = true}), columns);
    }
  }
}

TEST(RenderText, AddsNothingButStylesInColour) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const insight::Snapshot snapshot = HostileSnapshot(seed);
    EXPECT_EQ(WithoutStyles(RenderText(snapshot, {.Colour = true})), RenderText(snapshot, {}));
  }
  const std::string text = RenderText(sample::TroubledSnapshot(), {.Colour = true});
  EXPECT_THAT(text, StartsWith("\x1b[1;31mcritical: 2 critical, 1 unknown, 2 warnings\x1b[0m\n"));
  EXPECT_THAT(text, HasSubstr("\x1b[1;31m! critical  fan 7 stands still"));
  EXPECT_THAT(text, HasSubstr("\x1b[1;35m! unknown   /dev/zetdisplay"));
  EXPECT_THAT(text, HasSubstr("\x1b[1;33m! warning   door open"));
}

// The value that a field begins with used to stand there.
TEST(RenderText, ShowsNoInitialValueOfAFieldThatIsNotReported) {
  insight::Snapshot snapshot = sample::TroubledSnapshot();
  EXPECT_THAT(RenderText(snapshot, {}), HasSubstr("\n  Hardware identifiers  not reported\n"));
  EXPECT_THAT(RenderText(snapshot, {}), HasSubstr("\n  Modules     not reported columns, 0 rows"));
  snapshot.NotReported.clear();
  EXPECT_THAT(RenderText(snapshot, {}),
              HasSubstr("\n  Hardware identifiers  not reported, 2, not reported\n"));
}

// A row that says that the ambient sensor failed says nothing about the power.
TEST(RenderText, ShowsThePowerOnlyWhenItsSourceAnswered) {
  insight::Snapshot snapshot = sample::TroubledSnapshot();
  EXPECT_THAT(RenderText(snapshot, {}), HasSubstr("\n  Power       not reported\n"));
  snapshot.Sources.front().Unfed.clear();
  EXPECT_THAT(RenderText(snapshot, {}), HasSubstr("\n! Power       off\n"));
}

// The zeros of a sensor that is lost look like readings.
TEST(RenderText, ShowsNoTemperatureOfASensorThatIsNotConnected) {
  const std::string text = RenderText(sample::TroubledSnapshot(), {.Sections = {"display"}});
  EXPECT_THAT(text, HasSubstr("\n  temperature sensor 0       17  not connected"));
  EXPECT_THAT(text, HasSubstr("\n  isolation board 3          20  21.6 "));
}

TEST(RenderText, ShowsTheSectionsThatAreAskedForInItsOwnOrder) {
  const std::string text =
      RenderText(sample::TroubledSnapshot(), {.Sections = {"dcio", "network"}});
  EXPECT_THAT(text, StartsWith("critical: 2 critical, 1 unknown, 2 warnings\n"
                               "2 rows, database last changed 12 s ago\n"
                               "\nNetwork\n"));
  EXPECT_LT(text.find("\nNetwork\n"), text.find("\nDCIO devices\n"));
  EXPECT_THAT(text, Not(HasSubstr("\nIdentity\n")));
  EXPECT_THAT(text, Not(HasSubstr("fan 7")));
}

TEST(RenderText, MakesTheWholeOfItsSections) {
  const insight::Snapshot snapshot = sample::TroubledSnapshot();
  std::string whole;
  for (const std::string& section : host::SectionNames()) {
    const std::string text = RenderText(snapshot, {.Sections = {section}});
    const std::size_t beginning = text.find("\n\n");
    ASSERT_NE(beginning, std::string::npos) << section << " is empty";
    whole += text.substr(beginning + 1);
  }
  const std::string text = RenderText(snapshot, {});
  EXPECT_EQ(whole, text.substr(text.find("\n\n") + 1));
}

TEST(RenderText, ShowsFansOfABoardWithoutPoints) {
  QtSts::CStatus status;
  auto* const board = new QtSts::CCANDcioAndFanRpm;
  status.Sensors.Add(board);
  EXPECT_THAT(Text(status), Not(HasSubstr("Points of")));
  board->FanRpms.Add(new QtSts::FanRpm(0, 3, 2200));
  EXPECT_THAT(Text(status), HasSubstr("\nPoints of CANDcioAndFanRpm 0 on the controller\n"));
  EXPECT_THAT(Text(status), HasSubstr("\n  0    3  2200 rpm\n"));
}

// A template that names a field wrongly would show "not reported" for ever.
class Templates : public testing::Test {
 protected:
  // Whether the place leads to a listed value of `info` or of an heir.
  static bool Leads(const QtSts::ClassInfo& info, std::string path) {
    path = path.substr(0, path.find(':'));
    if (path == "Class" || path == "#") {
      return true;
    }
    const QtSts::ClassInfo* at = &info;
    for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/')) {
      const QtSts::Field* const field = QtSts::FieldNamed(*at, path.substr(0, slash));
      if (field == nullptr || field->Record == nullptr || field->Elements != nullptr) {
        return false;
      }
      at = field->Record;
      path = path.substr(slash + 1);
    }
    const QtSts::Field* const field = QtSts::FieldNamed(*at, path);
    return field != nullptr && field->Scalar != nullptr;
  }

  static void ExpectPlacesOf(const QtSts::ClassInfo& info, const std::string& text_template) {
    static const std::regex place(R"(\{([^}]*)\})");
    for (std::sregex_iterator match(text_template.begin(), text_template.end(), place), end;
         match != end; ++match) {
      EXPECT_TRUE(Leads(info, (*match)[1])) << info.Name << " has no {" << (*match)[1] << "}";
    }
  }

  static void ExpectPlacesOf(const QtSts::ClassInfo& info, const host::Columns& columns) {
    for (const host::Column& column : columns) {
      ExpectPlacesOf(info, column.Template);
    }
  }

  // The class of what a block shows, starting from `info`.
  static const QtSts::ClassInfo* Shown(const QtSts::ClassInfo& info, std::string path) {
    const QtSts::ClassInfo* at = &info;
    while (!path.empty()) {
      const std::size_t slash = path.find('/');
      const QtSts::Field* const field = QtSts::FieldNamed(*at, path.substr(0, slash));
      if (field == nullptr || field->Record == nullptr) {
        return nullptr;
      }
      at = field->Record;
      path = slash == std::string::npos ? "" : path.substr(slash + 1);
    }
    return at;
  }

  static void ExpectPlacesOf(const QtSts::ClassInfo& info, const host::Blocks& blocks) {
    for (const host::Block& block : blocks) {
      const QtSts::ClassInfo* const shown = Shown(info, block.Path);
      ASSERT_NE(shown, nullptr) << block.Path;
      ExpectPlacesOf(*shown, block.Shown);
    }
  }

  static void ExpectPlacesOf(const QtSts::ClassInfo& info, const host::Sections& sections) {
    for (const host::Section& section : sections) {
      ExpectPlacesOf(info, section.Shown);
    }
  }
};

TEST_F(Templates, NameFieldsOfWhatTheyShow) {
  ExpectPlacesOf(QtSts::CStatus::Class, host::kDocumentSections);
  ExpectPlacesOf(QtSts::CStatus::Class, host::kClosingSections);
  ExpectPlacesOf(QtSts::COutput::Class, host::kOutputSections);
  ExpectPlacesOf(QtSts::COutput::Class, host::kDisplayFacts);
  ExpectPlacesOf(QtSts::IOList::Class, host::kPointBlocks);
  ExpectPlacesOf(QtSts::CSensor::Class, host::kSensorReadings);
  ExpectPlacesOf(QtSts::CCANSensor::Class, host::kSensorAddresses);
  ExpectPlacesOf(*QtSts::ClassNamed("FanRpm"), host::kFanSpeeds);
  for (const host::Reading& reading : host::kReadings) {
    ExpectPlacesOf(reading.Class, reading.Template);
  }
  for (const host::Measured& measured : host::kMeasured) {
    ExpectPlacesOf(measured.Class, measured.Template);
  }
}

TEST_F(Templates, AreSeenToBeWrongWhenTheyAre) {
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "Nothing"));
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "SolarInfo"));
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "SolarInfo/Nothing"));
  EXPECT_TRUE(Leads(QtSts::CStatus::Class, "SolarInfo/CalculatedSunset:nil="));
}

// Every value that a sensor's own class adds to the common ones stands somewhere in its reading.
TEST_F(Templates, TellEveryValueOfEverySensor) {
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    if (info->Create == nullptr || !QtSts::IsA(*info, QtSts::CSensor::Class)) {
      continue;
    }
    const host::Reading* reading = host::kReadings.data();
    while (!QtSts::IsA(*info, reading->Class)) {
      ++reading;
    }
    for (const QtSts::Field& field : info->OwnFields()) {
      const std::string name = field.Name;
      const bool common = QtSts::IsA(QtSts::CCANSensor::Class, *info);
      const bool elsewhere = name == "SpareAverage" || name == "BoardConnected";
      if (field.Scalar != nullptr && !common && !elsewhere) {
        EXPECT_TRUE(std::regex_search(reading->Template, std::regex("\\{" + name + "[:}]")))
            << info->Name << "/" << name;
      }
    }
  }
}

struct FillRow {
  const char* Template;
  const char* Text;
};

TEST(Fill, FillsThePlacesOfATemplate) {
  auto status = sample::Troubled();
  const QtSts::DocumentTree document(*status);
  const FillRow rows[] = {
      {"", ""},
      {"plain", "plain"},
      {"{GUID}", "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8"},
      {"<{MemoryFree}>", "<100000\u00A0kB>"},
      {"{MemoryFree:bare}", "100000"},
      {"{SerialNumber:hex}", "0x12AF0"},
      {"{SerialNumber:hex8}", "0x00012AF0"},
      {"{Uptime:duration}", "1 d 2 h 3 min 4 s"},
      {"{ProductFamily}", "unknown (8)"},
      {"{DaylightSaving}", "no"},
      {"{DisplayFirmwareVersion}", "not reported"},
      {"at {DisplayFirmwareVersion} or {Nothing}", "not reported"},
      {"{DisplayFirmwareVersion}, {Version}", "not reported, 1.0"},
      {"{SolarInfo/CalculatedSunset:nil=}", "not reported"},
      {"{SolarInfo/Nothing}", "not reported"},
      {"{Nothing/Nothing}", "not reported"},
      {"{HardwareID2:1=one,2=two}", "two"},
      {"{HardwareID1:1=one,2=two}", "-1"},
      {"{Class} {#}", "Status 0"},
      {"{FirmwareVersion}", "7.3.1 \xEF\xBF\xBD[31mred\xEF\xBF\xBD[0m"},
  };
  for (const FillRow& row : rows) {
    SCOPED_TRACE(row.Template);
    EXPECT_EQ(host::Fill(row.Template, document.Root()).Text, row.Text);
  }
}

TEST(Fill, NamesTheStatusFlags) {
  auto status = sample::Troubled();
  const auto filled = [&status](std::uint32_t flags) {
    status->Outputs[0]->StatusFlags = flags;
    const QtSts::DocumentTree document(*status);
    return host::Fill("{StatusFlags:flags}", *document.Root().Find("Outputs[0]")).Text;
  };
  EXPECT_EQ(filled(0), "none");
  EXPECT_EQ(filled(0x1800), "0x1800: pixel tracker active, output blanked");
  EXPECT_EQ(filled(0x6004), "0x6004: power off, ambient sensor failure, ambient override");
  EXPECT_EQ(filled(0x1), "0x1");
}

}  // namespace
