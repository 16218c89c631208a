#include "host/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

std::string Text(QtSts::CStatus& status, const host::Look& look = {}) {
  return RenderText(QtSts::DocumentTree(status), look);
}

std::unique_ptr<QtSts::CStatus> Random(std::uint64_t seed) {
  return test_support::RandomDocument(test_support::SeededChoices(seed));
}

std::string WithoutStyles(const std::string& text) {
  return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), "");
}

TEST(RenderText, ShowsAControllerInTrouble) {
  EXPECT_TRUE(MatchesGolden(Text(*sample::Troubled()), "tests/host/golden/troubled.txt"));
}

TEST(RenderText, ShowsADocumentBeforeTheFirstCycle) {
  QtSts::CStatus status;
  EXPECT_TRUE(MatchesGolden(Text(status), "tests/host/golden/untouched.txt"));
}

TEST(RenderText, ShowsTheSameUnderALocaleWithDecimalComma) {
  const test_support::CommaLocale locale;
  EXPECT_TRUE(MatchesGolden(Text(*sample::Troubled()), "tests/host/golden/troubled.txt"));
}

TEST(RenderText, StartsWithWhatNeedsAttention) {
  EXPECT_THAT(Text(*sample::Troubled()), StartsWith("Needs attention\n! "));
  QtSts::CStatus status;
  EXPECT_THAT(Text(status), StartsWith("Nothing needs attention\n"));
}

// "Nothing needs attention" used to stand above the document of a controller without a database.
TEST(RenderText, StartsWithAFailedCycle) {
  const host::Look failed = {.AllRowsRead = false};
  QtSts::CStatus status;
  EXPECT_THAT(Text(status, failed), StartsWith("Needs attention\n"
                                               "! The rows of the database were not all read\n"
                                               "\nIdentity\n"));
  EXPECT_THAT(Text(*sample::Troubled(), failed),
              StartsWith("Needs attention\n"
                         "! The rows of the database were not all read\n"
                         "! Error flags 0x0000000000000010  "));
}

TEST(RenderText, MarksTheLinesWhereTheCauseStands) {
  const std::string text = Text(*sample::Troubled());
  EXPECT_THAT(text, HasSubstr("\n! Error flags           0x0000000000000010\n"));
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

// Whatever rows and files hold, the page stays a page.
TEST(RenderText, KeepsToItsColumnsAndSteersNoTerminal) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const std::string text = Text(*Random(seed));
    std::string clean = text;
    QtSts::CleanText(&clean);
    EXPECT_EQ(clean, text) << "is not UTF-8 without control characters";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(host::Width(line), host::Page::kColumns) << line;
      EXPECT_EQ(host::Printable("x" + line + "x"), "x" + line + "x") << line;
      EXPECT_THAT(line, Not(testing::EndsWith(" ")));
    }
  }
}

TEST(RenderText, AddsNothingButStylesInColour) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const auto document = Random(seed);
    EXPECT_EQ(WithoutStyles(Text(*document, {.Colour = true})), Text(*document));
  }
  EXPECT_THAT(Text(*sample::Troubled(), {.Colour = true}), HasSubstr("\x1b[1;31m! Door open"));
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
};

TEST_F(Templates, NameFieldsOfWhatTheyShow) {
  ExpectPlacesOf(QtSts::CStatus::Class, host::kDocumentBlocks);
  ExpectPlacesOf(QtSts::CStatus::Class, host::kClosingBlocks);
  ExpectPlacesOf(QtSts::COutput::Class, host::kOutputBlocks);
  ExpectPlacesOf(QtSts::IOList::Class, host::kPointBlocks);
  ExpectPlacesOf(QtSts::CSensor::Class, host::kSensorReadings);
  ExpectPlacesOf(QtSts::CCANSensor::Class, host::kSensorAddresses);
  ExpectPlacesOf(*QtSts::ClassNamed("FanRpm"), host::kFanSpeeds);
  for (const host::Reading& reading : host::kReadings) {
    ExpectPlacesOf(reading.Class, reading.Template);
  }
}

TEST_F(Templates, AreSeenToBeWrongWhenTheyAre) {
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "Nothing"));
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "SolarInfo"));
  EXPECT_FALSE(Leads(QtSts::CStatus::Class, "SolarInfo/Nothing"));
  EXPECT_TRUE(Leads(QtSts::CStatus::Class, "SolarInfo/CalculatedSunset:nil="));
}

// Every value that a sensor's own class adds to the common ones is told somewhere in its reading.
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
