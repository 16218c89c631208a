#include <gmock/gmock.h>

#include <string>

#include "sandbox/devices.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/format/faults.h"
#include "sandbox/format/text.h"
#include "sandbox/format/uptime.h"
#include "sandbox/interfaces.h"
#include "sandbox/rows.h"

namespace sandbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

TEST(Answers, RequestsAndValuesMayBeDecimalOrHexadecimal) {
  const DeviceAnswers answers = DeviceAnswers::Parse(
      "# travex\n0x8004da0c 59940\n\n 10\t-1 # ten\n0x1 0xFFFFFFFF\nopen 13\n");
  EXPECT_THAT(answers.Values, ElementsAre(Pair(1U, -1), Pair(10U, -1), Pair(0x8004DA0CU, 59940)));
  EXPECT_EQ(13, answers.OpenError);
}

TEST(Answers, TheirTextIsReadBackTheSame) {
  DeviceAnswers answers;
  answers.OpenError = 5;
  answers.Values = {{0x8004DA0C, -5000}, {1, 0x7FFFFFFF}, {0xFFFFFFFF, INT32_MIN}};
  const DeviceAnswers again = DeviceAnswers::Parse(answers.Text());
  EXPECT_EQ(answers.Values, again.Values);
  EXPECT_EQ(answers.OpenError, again.OpenError);
}

TEST(RowText, EscapesNullsAndBlobsAreUnderstood) {
  const Rows rows = ParseRows(
      "# comment\n"
      "\n"
      "GUID\ta b\n"
      "\\#key\tx\\ty\\nz\\r\\\\\n"
      "Empty\t\n"
      "Null\t\\N\n"
      "Blob\t\\x00fF41\n"
      "\\x47554944\tblob as key\n"
      "Tabs\ta\tb\n"
      "Last\tno line feed");
  ASSERT_EQ(8U, rows.size());
  EXPECT_EQ("a b", std::get<std::string>(rows.at("GUID")));
  EXPECT_EQ("x\ty\nz\r\\", std::get<std::string>(rows.at("#key")));
  EXPECT_EQ("", std::get<std::string>(rows.at("Empty")));
  EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(rows.at("Null")));
  EXPECT_EQ(std::string("\0\xFF\x41", 3), std::get<Blob>(rows.at("Blob")).Bytes);
  EXPECT_EQ("blob as key", std::get<std::string>(rows.at(Blob("GUID"))));
  EXPECT_EQ("a\tb", std::get<std::string>(rows.at("Tabs")));
  EXPECT_EQ("no line feed", std::get<std::string>(rows.at("Last")));
}

TEST(RowText, EveryBytePassesThroughTheText) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte) {
    every += static_cast<char>(byte);
  }
  const Rows rows = {{"", ""},
                     {"#key", "\\N"},
                     {Blob("GUID"), "blob as key"},
                     {"Blob", Blob(every)},
                     {every, every},
                     {"Key", "\\x41"},
                     {"Null", nullptr},
                     {"Empty", ""},
                     {"Number", "# 5"},
                     {std::string("a\0b", 3), "x"},
                     {"EmptyBlob", Blob("")}};
  const Rows again = ParseRows(RowsText(rows));
  ASSERT_EQ(rows.size(), again.size());
  for (const auto& [key, value] : rows) {
    SCOPED_TRACE(key.Bytes);
    const RowValue& read = again.at(key);
    ASSERT_EQ(value.index(), read.index());
    if (const auto* const blob = std::get_if<Blob>(&value)) {
      EXPECT_EQ(blob->Bytes, std::get<Blob>(read).Bytes);
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
      EXPECT_EQ(*text, std::get<std::string>(read));
    }
  }
}

TEST(InterfaceText, EveryPropertyIsUnderstood) {
  const std::vector<NetworkInterface> interfaces = ParseInterfaces(
      "# the first\n"
      "interface eth0\n"
      "  mac 00:1A:2B:3C:4D:5E\n"
      "  address 192.168.1.20/24 broadcast 192.168.1.255 label eth0:1 # both\n"
      "  address 2001:db8::20/64 peer ::1\n"
      "interface eth1\n"
      "  link unplugged\n"
      "interface eth2\n"
      "  link down\n");
  ASSERT_EQ(3U, interfaces.size());
  EXPECT_EQ("eth0", interfaces[0].Name);
  EXPECT_EQ("00:1A:2B:3C:4D:5E", interfaces[0].Mac);
  EXPECT_EQ(LinkState::kUp, interfaces[0].State);
  ASSERT_EQ(2U, interfaces[0].Addresses.size());
  EXPECT_EQ("192.168.1.20/24", interfaces[0].Addresses[0].Prefix);
  EXPECT_EQ("192.168.1.255", interfaces[0].Addresses[0].Broadcast);
  EXPECT_EQ("eth0:1", interfaces[0].Addresses[0].Label);
  EXPECT_EQ("2001:db8::20/64", interfaces[0].Addresses[1].Prefix);
  EXPECT_EQ("::1", interfaces[0].Addresses[1].Peer);
  EXPECT_EQ(LinkState::kUnplugged, interfaces[1].State);
  EXPECT_EQ(LinkState::kDown, interfaces[2].State);
}

TEST(InterfaceText, ItsTextIsReadBackTheSame) {
  const std::vector<NetworkInterface> interfaces = {
      {.Name = "#a\\b\xFF",
       .Mac = "00:1A:2B:3C:4D:5E",
       .State = LinkState::kDown,
       .Addresses = {{"10.0.0.5/8", "10.255.255.255", "#a\\b\xFF:1", ""},
                     {"172.16.0.5/32", "", "", "172.16.0.1"},
                     {"2001:db8::20/64", "", "", ""}}},
      {.Name = "eth1", .State = LinkState::kUnplugged},
      {.Name = "eth2"}};
  const std::string text = InterfacesText(interfaces);
  const std::vector<NetworkInterface> again = ParseInterfaces(text);
  EXPECT_EQ(text, InterfacesText(again));
  ASSERT_EQ(3U, again.size());
  EXPECT_EQ(interfaces[0].Name, again[0].Name);
  EXPECT_EQ(interfaces[0].Mac, again[0].Mac);
  EXPECT_EQ(interfaces[0].State, again[0].State);
  ASSERT_EQ(3U, again[0].Addresses.size());
  EXPECT_EQ(interfaces[0].Addresses[0].Label, again[0].Addresses[0].Label);
  EXPECT_EQ(interfaces[0].Addresses[0].Broadcast, again[0].Addresses[0].Broadcast);
  EXPECT_EQ(interfaces[0].Addresses[1].Peer, again[0].Addresses[1].Peer);
  EXPECT_EQ(LinkState::kUnplugged, again[1].State);
  EXPECT_EQ(LinkState::kUp, again[2].State);
}

TEST(FaultText, EveryKindIsUnderstood) {
  const Faults faults = ParseFaults(
      "# what fails\n"
      "/proc/meminfo open 13\n"
      "/etc/resolv.conf\tread 5 after 120 # in the middle\n"
      "/etc/resolv.conf status 116\n"
      "/a\\x20b\\x23 read 5\n"
      "/etc/hosts type fifo\n"
      "eth0 hardware-address 19\n"
      "/dev/shm/status.db query 1\n");
  EXPECT_EQ((FileFault{.Open = 13}), faults.Files.at("/proc/meminfo"));
  EXPECT_EQ((FileFault{.Status = 116, .Read = 5, .ReadAfter = 120}),
            faults.Files.at("/etc/resolv.conf"));
  EXPECT_EQ((FileFault{.Read = 5}), faults.Files.at("/a b#"));
  EXPECT_EQ((FileFault{.IsPipe = true}), faults.Files.at("/etc/hosts"));
  EXPECT_EQ(4U, faults.Files.size());
  EXPECT_THAT(faults.HardwareAddresses, ElementsAre(Pair("eth0", 19)));
  EXPECT_EQ(1, faults.Query);
  EXPECT_EQ(faults, ParseFaults(FaultsText(faults)));
}

TEST(FaultText, AMistakeIsReportedWithItsLine) {
  for (const char* const line :
       {"/etc/hosts", "/etc/hosts open", "/etc/hosts open x", "/etc/hosts open 0",
        "/etc/hosts open 512", "/etc/hosts open -5", "/etc/hosts open 5 6", "/etc/hosts read 4",
        "/etc/hosts read 5 after", "/etc/hosts read 5 before 3", "/etc/hosts type folder",
        "/etc/hosts\\x open 5", "/etc/hosts\\n open 5", "eth0 open 5", "eth0 hardware-address",
        "/dev/shm/status.db query 0"}) {
    try {
      ParseFaults(std::string("\n") + line + "\n");
      ADD_FAILURE() << "not refused: " << line;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), testing::StartsWith("line 2: ")) << line;
    }
  }
}

TEST(WordText, EveryByteIsReadBack) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string plain = std::string("a") + static_cast<char>(byte) + "b";
    std::vector<std::string> words;
    ForEachLine(WordText(plain), [&](const std::vector<std::string>& line) { words = line; });
    EXPECT_THAT(words, ElementsAre(plain)) << byte;
  }
}

TEST(UptimeText, IsReadBackTheSame) {
  for (const long long seconds : {0LL, 1LL, 93784LL, 9'000'000'000LL}) {
    EXPECT_EQ(seconds, ParseUptime(UptimeText(std::chrono::seconds(seconds))).count());
  }
  EXPECT_THROW(ParseUptime("# none\n"), std::runtime_error);
  EXPECT_THROW(ParseUptime("-1\n"), std::runtime_error);
  EXPECT_THROW(ParseUptime("5x\n"), std::runtime_error);
  EXPECT_THROW(ParseUptime("9000000001\n"), std::runtime_error);
}

std::string Lines(const std::string& line, std::size_t count) {
  std::string text;
  for (std::size_t at = 0; at < count; ++at) {
    text += line;
  }
  return text;
}

// A few kilobytes of an archive used to become gigabytes of numbers, rows and interfaces.
TEST(Texts, OfMoreLinesThanTheLimitAreRefused) {
  constexpr std::size_t kLines = 10'000;
  EXPECT_NO_THROW(DeviceAnswers::Parse(Lines("1 1\n", kLines)));
  EXPECT_THROW(DeviceAnswers::Parse(Lines("1 1\n", kLines + 1)), std::runtime_error);
  EXPECT_THROW(ParseFaults(Lines("/a open 5\n", kLines + 1)), std::runtime_error);
  EXPECT_THROW(ParseInterfaces(Lines("interface a\n", kLines + 1)), std::runtime_error);
  constexpr std::size_t kRows = 1'000'000;
  EXPECT_NO_THROW(ParseRows(Lines("#\n", kRows)));
  EXPECT_THROW(ParseRows(Lines("#\n", kRows + 1)), std::runtime_error);
}

TEST(Outside, NothingCanBeMadeAFixture) {
  ASSERT_FALSE(Inside());
  EXPECT_THROW(WriteFile("/tmp/of-the-sandbox", "x"), std::logic_error);
  EXPECT_THROW(MakeFolder("/tmp/of-the-sandbox"), std::logic_error);
  EXPECT_THROW(MakeLink("/tmp/of-the-sandbox", "/"), std::logic_error);
  EXPECT_THROW(MakeUnopenable("/tmp/of-the-sandbox"), std::logic_error);
  EXPECT_THROW(RemoveFile("/tmp/of-the-sandbox"), std::logic_error);
  EXPECT_THROW(SetRows({}), std::logic_error);
  EXPECT_THROW(SetInterfaces({}), std::logic_error);
  EXPECT_THROW(SetAnswer("travex", 1, 1), std::logic_error);
  EXPECT_THROW(RemoveDevice("travex"), std::logic_error);
}

}  // namespace
}  // namespace sandbox
