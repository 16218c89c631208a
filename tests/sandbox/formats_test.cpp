#include <gmock/gmock.h>

#include <string>

#include "sandbox/devices.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
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
