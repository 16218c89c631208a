// What `statuscollector capture` keeps of what a cycle was given.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/format/faults.h"
#include "sandbox/rows.h"
#include "tests/capture/capture_fixture.h"
#include "tests/support/paths.h"

namespace {

using captured::CaptureNow;
using captured::CaptureTest;
using captured::Comparable;
using captured::Description;
using captured::Entries;
using captured::Load;
using captured::Show;
using captured::ShowAgain;
using sandbox::Scenario;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

const nlohmann::json& FirstCycle(const nlohmann::json& description) {
  return description.at("cycles").at(0);
}

std::vector<std::string> NotedFields(const Entries& capture) {
  const nlohmann::json description = Description(capture);
  std::vector<std::string> fields;
  for (const auto& note : FirstCycle(description).at("notes")) {
    fields.push_back(note.at("field"));
  }
  return fields;
}

TEST_F(CaptureTest, HasTheBytesAndModesOfEveryFileThatTheCycleRead) {
  Load("demo").Apply();
  sandbox::WriteFile("/proc/meminfo", "MemTotal: 1 kB\n", 0440);
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("root/proc/meminfo").Bytes, "MemTotal: 1 kB\n");
  EXPECT_EQ(capture.at("root/proc/meminfo").Mode, 0440U);
  int files = 0;
  for (const auto& [name, entry] : capture) {
    if (name.starts_with("root/") && !entry.IsFolder) {
      EXPECT_EQ(entry.Bytes, sandbox::ReadFile(name.substr(4))) << name;
      ++files;
    }
  }
  EXPECT_EQ(files, 14);
}

TEST_F(CaptureTest, HasAnswersInterfacesRowsAndTheDocumentOfThatCycle) {
  Load("demo").Apply();
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("devices/diagnostics").Bytes, "0x8004DB17 0\n");
  EXPECT_THAT(capture.at("interfaces").Bytes,
              HasSubstr("interface eth0\n  mac 00:1A:2B:3C:4D:5E\n"));
  EXPECT_THAT(capture.at("interfaces").Bytes,
              HasSubstr("  address 10.50.0.1/24 broadcast 10.50.0.255\n"));
  const std::string rows = sandbox::ReadFile(sandbox::SourcePath("scenarios/demo/rows.tsv"));
  EXPECT_EQ(capture.at("rows.tsv").Bytes, sandbox::RowsText(sandbox::ParseRows(rows)));
  EXPECT_EQ(Comparable(capture.at("document.xml").Bytes), Comparable(Show()));
  const nlohmann::json description = Description(capture);
  EXPECT_EQ(description.at("complete"), true);
  EXPECT_EQ(FirstCycle(description).at("result"), 0);
  EXPECT_EQ(FirstCycle(description).at("storage").at("blockSize"), 4096);
  EXPECT_THAT(capture, Not(Contains(Key("faults"))));
}

TEST_F(CaptureTest, GivesTheSameDocumentWhenItBecomesTheController) {
  for (const char* const name : {"bare", "demo", "faults", "minimal", "mistakes"}) {
    Load(name).Apply();
    const Entries capture = CaptureNow();
    EXPECT_EQ(Comparable(ShowAgain(capture)), Comparable(capture.at("document.xml").Bytes)) << name;
  }
}

// What libarchive cannot convert to UTF-8 once was not packed, and in the C locale that was every
// name with a letter beyond ASCII.
TEST_F(CaptureTest, KeepsInterfacesWhoseNamesAreNoText) {
  Scenario scenario = Load("demo");
  const std::vector<std::string> names = {"\xFF\xE9x", "\xC3\xA4"};
  for (const std::string& name : names) {
    scenario.Interface({.Name = name}).File("/sys/class/net/" + name + "/carrier", "1\n");
  }
  scenario.Apply();
  const Entries capture = CaptureNow();
  for (const std::string& name : names) {
    EXPECT_THAT(capture.at("interfaces").Bytes, HasSubstr("interface " + name + "\n"));
    EXPECT_EQ(capture.at("root/sys/class/net/" + name + "/carrier").Bytes, "1\n");
  }
  EXPECT_EQ(Comparable(ShowAgain(capture)), Comparable(capture.at("document.xml").Bytes));
}

TEST_F(CaptureTest, SaysWhereAFileGoesOn) {
  Load("demo").File("/proc/meminfo", std::string(5000, 'x')).Apply();
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("root/proc/meminfo").Bytes, std::string(2048, 'x'));
  const nlohmann::json description = Description(capture);
  for (const auto& source : FirstCycle(description).at("sources")) {
    if (source.at("name") == "/proc/meminfo") {
      EXPECT_EQ(source.at("goesOn"), true);
    } else if (source.at("name") == "/etc/resolv.conf") {
      EXPECT_EQ(source.at("goesOn"), false);
    }
  }
}

TEST_F(CaptureTest, KeepsTextsThatAreNotUtf8AndCellsOfEveryKind) {
  Load("bare")
      .File("/home/Zet/.settings/uuid", "\xFF\xFE")
      .Row("Blob", sandbox::Blob("ab"))
      .Row("Null", nullptr)
      .Row("\xC3(", "not \xFF UTF-8")
      .Row("Tab", "a\tb\n#\\")
      .Apply();
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("root/home/Zet/.settings/uuid").Bytes, "\xFF\xFE");
  const sandbox::Rows rows = sandbox::ParseRows(capture.at("rows.tsv").Bytes);
  EXPECT_EQ(std::get<std::string>(rows.at("Blob")), "ab");
  EXPECT_EQ(std::get<std::nullptr_t>(rows.at("Null")), nullptr);
  EXPECT_EQ(std::get<std::string>(rows.at("\xC3(")), "not \xFF UTF-8");
  EXPECT_EQ(std::get<std::string>(rows.at("Tab")), "a\tb\n#\\");
}

TEST_F(CaptureTest, KeepsRowsUpToTheirZeroBytesInTheirOrder) {
  Load("bare").Row("GUID", "abc").Apply();
  sandbox::RunSql(
      "INSERT INTO status VALUES(CAST(x'476100' AS TEXT), 'first');"
      "INSERT INTO status VALUES(CAST(x'476101' AS TEXT), 'last');"
      "INSERT INTO status VALUES(CAST(x'47610062' AS TEXT), 'second');"
      "UPDATE status SET value = CAST(x'61620063' AS TEXT) WHERE address = 'GUID';");
  const Entries capture = CaptureNow();
  const sandbox::Rows rows = sandbox::ParseRows(capture.at("rows.tsv").Bytes);
  std::vector<std::string> values;
  for (const auto& [key, value] : rows) {
    values.push_back(std::string(key.Bytes.c_str()) + "=" + std::get<std::string>(value));
  }
  EXPECT_THAT(values, testing::ElementsAre("GUID=ab", "Ga=first", "Ga=second", "Ga\x01=last"));
  EXPECT_EQ(FirstCycle(Description(capture)).at("database").at("rowsThatGoOn"), 3);
}

TEST_F(CaptureTest, KeepsKeysThatAreBlobsAfterAllTexts) {
  Load("bare").Row("TtableTitle", "text").Row(sandbox::Blob("GUID"), "too late").Apply();
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("rows.tsv").Bytes, "TtableTitle\ttext\n\\x47554944\ttoo late\n");
  EXPECT_THAT(NotedFields(capture), Not(Contains("*")));
}

TEST_F(CaptureTest, NotesThatRowsCameInAnotherOrderThanThatOfTheirBytes) {
  Load("bare").Apply();
  sandbox::RunSql(
      "DROP TABLE status; CREATE TABLE status(address TEXT COLLATE NOCASE PRIMARY KEY, value TEXT);"
      "INSERT INTO status VALUES('a', ''), ('B', ''), ('c', ''), ('D', '');");
  EXPECT_THAT(NotedFields(CaptureNow()), Contains("*"));
  sandbox::RemoveDatabase();
  Load("demo").Apply();
  EXPECT_THAT(NotedFields(CaptureNow()), Not(Contains("*")));
}

TEST_F(CaptureTest, KeepsAFileAtItsPathWhateverLinksLeadThere) {
  Load("bare").File("/data/settings/identity", "by links").Apply();
  std::filesystem::remove_all("/home/Zet/.settings");
  sandbox::MakeLink("/home/Zet/.settings", "/data/settings");
  sandbox::MakeLink("/data/settings/uuid", "identity");
  const Entries capture = CaptureNow();
  EXPECT_EQ(capture.at("root/home/Zet/.settings/uuid").Bytes, "by links");
  EXPECT_THAT(capture, Not(Contains(Key(HasSubstr("data")))));
  EXPECT_THAT(capture.at("capture.json").Bytes,
              HasSubstr("\"/home/Zet/.settings -> /data/settings\""));
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("GUID=\"by links\""));
}

TEST_F(CaptureTest, LeavesOutWhatAnotherUsersLinkLeadsTo) {
  Load("bare").File("/secret", "secret").Folder("/home/Zet/.settings").Apply();
  sandbox::MakeLink("/home/Zet/.settings/uuid", "/secret");
  if (lchown("/home/Zet/.settings/uuid", 1001, 1001) != 0) {
    GTEST_SKIP() << "no other users";
  }
  const Entries capture = CaptureNow();
  for (const auto& [name, entry] : capture) {
    EXPECT_THAT(entry.Bytes, Not(HasSubstr("secret"))) << name;
  }
  EXPECT_EQ(
      sandbox::ParseFaults(capture.at("faults").Bytes).Files.at("/home/Zet/.settings/uuid").Open,
      ELOOP);
}

TEST_F(CaptureTest, KeepsAliasesAndLinksWithoutABroadcastAddress) {
  Load("bare")
      .Interface({.Name = "eth0",
                  .Mac = "00:1A:2B:3C:4D:5E",
                  .State = sandbox::LinkState::kUp,
                  .Addresses = {{.Prefix = "10.0.0.5/8", .Broadcast = "10.255.255.255"},
                                {.Prefix = "10.0.0.6/8", .Label = "eth0:1"},
                                {.Prefix = "2001:db8::20/64"}}})
      .Interface({.Name = "eth1", .State = sandbox::LinkState::kUnplugged})
      .Interface({.Name = "ppp0", .Addresses = {{.Prefix = "172.16.0.5/16", .Peer = "0.0.0.0"}}})
      .Apply();
  const auto interfaces = sandbox::ParseInterfaces(CaptureNow().at("interfaces").Bytes);
  ASSERT_EQ(interfaces.size(), 3U);
  ASSERT_EQ(interfaces[0].Addresses.size(), 3U);
  EXPECT_EQ(interfaces[0].Mac, "00:1A:2B:3C:4D:5E");
  EXPECT_EQ(interfaces[0].Addresses[0].Broadcast, "10.255.255.255");
  EXPECT_EQ(interfaces[0].Addresses[1].Prefix, "10.0.0.6/8");
  EXPECT_EQ(interfaces[0].Addresses[1].Label, "eth0:1");
  EXPECT_EQ(interfaces[0].Addresses[2].Prefix, "2001:db8::20/64");
  EXPECT_EQ(interfaces[1].State, sandbox::LinkState::kUnplugged);
  EXPECT_EQ(interfaces[2].Addresses[0].Peer, "0.0.0.0");
}

TEST_F(CaptureTest, NotesThatAReplayHasNoAliasOfTheLoopbackInterface) {
  Load("bare").Apply();
  if (test_support::RunProgram(
          {"ip", "address", "add", "127.0.0.9/8", "label", "lo:1", "dev", "lo"})
          .ExitCode != 0) {
    GTEST_SKIP() << "no program to give an address";
  }
  const Entries capture = CaptureNow();
  test_support::RunProgram({"ip", "address", "del", "127.0.0.9/8", "dev", "lo"});
  EXPECT_THAT(NotedFields(capture), Contains("Network"));
}

TEST_F(CaptureTest, NamesNoFileThatIsNotThere) {
  Scenario().Apply();
  const Entries capture = CaptureNow();
  EXPECT_THAT(capture, Not(Contains(Key(HasSubstr("root/")))));
  EXPECT_THAT(capture, Not(Contains(Key("rows.tsv"))));
  EXPECT_THAT(capture, Not(Contains(Key("faults"))));
  EXPECT_EQ(FirstCycle(Description(capture)).at("result"), 1);
  EXPECT_THAT(FirstCycle(Description(capture)).at("database").at("failures"), Not(IsEmpty()));
}

// ---- Failures

sandbox::Faults FaultsOf(const Scenario& scenario) {
  scenario.Apply();
  const Entries capture = CaptureNow();
  return capture.contains("faults") ? sandbox::ParseFaults(capture.at("faults").Bytes)
                                    : sandbox::Faults();
}

TEST_F(CaptureTest, HasTheErrorOfAFileThatCannotBeOpened) {
  Scenario scenario = Load("demo");
  scenario.Unopenable("/proc/meminfo");
  EXPECT_EQ(FaultsOf(scenario).Files.at("/proc/meminfo").Open, ENXIO);
}

TEST_F(CaptureTest, HasAFolderWhereAFolderStands) {
  Load("demo").NoFile("/etc/resolv.conf").Folder("/etc/resolv.conf").Apply();
  EXPECT_TRUE(CaptureNow().at("root/etc/resolv.conf").IsFolder);
}

TEST_F(CaptureTest, SaysWhereAPipeStands) {
  Load("demo").NoFile("/proc/meminfo").Apply();
  ASSERT_EQ(mkfifo("/proc/meminfo", 0644), 0);
  const Entries capture = CaptureNow();
  EXPECT_TRUE(sandbox::ParseFaults(capture.at("faults").Bytes).Files.at("/proc/meminfo").IsPipe);
  EXPECT_THAT(capture, Not(Contains(Key("root/proc/meminfo"))));
}

TEST_F(CaptureTest, HasWhatANodeRefusesAndWhatItDoesNotAnswer) {
  Load("demo").Apply();
  sandbox::SetOpenError("travex", EBUSY);
  sandbox::SetAnswer("zetdisplay", 0x8004DA5F, -EIO);
  sandbox::RemoveDevice("diagnostics");
  Entries capture = CaptureNow();
  EXPECT_THAT(capture.at("devices/travex").Bytes, HasSubstr("open 16\n"));
  EXPECT_THAT(capture.at("devices/zetdisplay").Bytes, HasSubstr("0x8004DA5F -5\n"));
  sandbox::SetOpenError("travex", 0);
  capture = CaptureNow();
  EXPECT_THAT(capture, Not(Contains(Key("devices/diagnostics"))));
  EXPECT_THAT(capture.at("devices/travex").Bytes, HasSubstr("0x8004DA0C 59940\n"));
}

TEST_F(CaptureTest, HasADatabaseWithoutATableApartFromNone) {
  Scenario scenario = Load("demo");
  scenario.Apply();
  sandbox::RunSql("DROP TABLE status; CREATE TABLE other(a);");
  const Entries capture = CaptureNow();
  EXPECT_EQ(sandbox::ParseFaults(capture.at("faults").Bytes).Query, 1);
  EXPECT_THAT(capture, Not(Contains(Key("rows.tsv"))));
  EXPECT_EQ(FaultsOf(scenario.NoDatabase()).Query, 0);
}

TEST_F(CaptureTest, HasWhatAUserMayNotRead) {
  Load("demo").Apply();
  ASSERT_EQ(chmod("/home/Zet", 0700), 0);
  ASSERT_EQ(chmod("/proc/meminfo", 0600), 0);
  sandbox::MakeFolder("/captures");
  ASSERT_EQ(chmod("/captures", 0777), 0);
  const test_support::ProgramResult result = test_support::RunProgram(
      {"/usr/bin/setpriv", "--reuid", "1001", "--regid", "1001", "--clear-groups",
       test_support::HostProgram(), "capture", "/captures/users"});
  if (result.ExitCode != 0) {
    GTEST_SKIP() << "no other users: " << result.Errors;
  }
  const Entries capture = captured::Read("/captures/users");
  const sandbox::Faults faults = sandbox::ParseFaults(capture.at("faults").Bytes);
  EXPECT_EQ(faults.Files.at("/proc/meminfo").Open, EACCES);
  EXPECT_EQ(faults.Files.at("/home/Zet/.settings/uuid").Open, EACCES);
  EXPECT_EQ(faults.Files.at("/home/Zet/.settings/serial#").Open, EACCES);
}

}  // namespace
