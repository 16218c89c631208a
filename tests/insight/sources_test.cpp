// Each source away, silent or without what is looked for: what it comes to, and that the fields
// that change are those that it is said to feed.
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <ostream>
#include <tuple>

#include "insight/source_table.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/testing.h"
#include "tests/insight/source_fixture.h"

namespace {

using insight::Feed;
using insight::FeedTable;
using insight::Part;
using insight::Snapshot;
using insight::SourceNamed;
using insight::SourceState;
using testing::IsEmpty;
using testing::Not;

const Verdict kOk;
const Verdict kNoFile{SourceState::kMissing, ENOENT, "No such file or directory"};

// A name for a case, of letters and digits.
std::string CaseName(const std::string& text) {
  std::string name;
  for (const char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      name += c;
    }
  }
  return name;
}

// ---- Away

struct Loss {
  std::string Source;
  std::function<void()> Lose;
  Verdict Expected = kNoFile;
};
void PrintTo(const Loss& loss, std::ostream* out) { *out << loss.Source; }

class SourceAway : public testing::TestWithParam<Loss> {};

TEST_P(SourceAway, ChangesTheFieldsThatItIsSaidToFeed) {
  SANDBOX_NEEDS_DEVICES();
  EXPECT_EQ(VerdictOf(Lose(GetParam().Lose), GetParam().Source), GetParam().Expected);
}

Loss NoDevice(const std::string& node) {
  return {node, [node] { sandbox::RemoveDevice(node); }};
}

Loss NoFile(const std::string& source, const std::string& path) {
  return {source, [path] { sandbox::RemoveFile(path); }};
}

INSTANTIATE_TEST_SUITE_P(
    Sources, SourceAway,
    testing::Values(NoDevice("travex"), NoDevice("zetdisplay"), NoDevice("diagnostics"),
                    NoFile("frame-control", kRegisters), NoFile("video-mux", kRouting),
                    NoFile("serial", SourceNamed("serial").Name),
                    NoFile("uuid", SourceNamed("uuid").Name),
                    NoFile("meminfo", SourceNamed("meminfo").Name),
                    NoFile("transitions:eth0", "/dev/shm/netlink-eth0"),
                    NoFile("link-counters:eth1", SourceNamed("link-counters").Name),
                    NoFile("carrier:eth0", "/sys/class/net/eth0/carrier"),
                    NoFile("routes", SourceNamed("routes").Name),
                    NoFile("resolver", SourceNamed("resolver").Name),
                    NoFile("packages", SourceNamed("packages").Name),
                    NoFile("configuration-timestamp", SourceNamed("configuration-timestamp").Name),
                    Loss{"interfaces", [] { sandbox::SetInterfaces({}); },
                         Verdict{SourceState::kEmpty, 0, "no interface runs"}},
                    Loss{"database", &sandbox::RemoveDatabase}),
    [](const auto& test) { return CaseName(test.param.Source); });

TEST(Sources, OfTheDemoAreAllWell) {
  SANDBOX_NEEDS_DEVICES();
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  const Snapshot snapshot = Cycle();
  for (const insight::Source& source : snapshot.Sources) {
    EXPECT_EQ(VerdictOf(snapshot, source.Id), kOk) << source.Id;
  }
  EXPECT_THAT(snapshot.NotReported,
              testing::ElementsAre("Network/Devices[1]/IPv6Address"));  // eth1 has none
}

// The marker is there once the watchdog has struck.
TEST(Sources, AreWellWithAndWithoutTheMarkerOfTheWatchdog) {
  SANDBOX_NEEDS_DEVICES();
  for (const auto& scenario : {Talkative(), Contrary()}) {
    Apply(scenario);
    const Snapshot snapshot = Cycle();
    EXPECT_EQ(VerdictOf(snapshot, "watchdog"), kOk);
    EXPECT_THAT(Find(snapshot, "watchdog").Unfed, IsEmpty());
  }
}

TEST(Sources, ThatAreNotAskedNameTheOneThatStoppedTheirProbe) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  sandbox::RemoveDevice("travex");
  Snapshot snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "diagnostics"), (Verdict{SourceState::kNotAsked, 0, "", "travex"}));
  EXPECT_EQ(VerdictOf(snapshot, "watchdog"), (Verdict{SourceState::kNotAsked, 0, "", "travex"}));
  // Others have asked these, but not all that would have.
  EXPECT_EQ(VerdictOf(snapshot, "zetdisplay"), (Verdict{SourceState::kOk, 0, "", "travex"}));
  EXPECT_EQ(VerdictOf(snapshot, "frame-control"), (Verdict{SourceState::kOk, 0, "", "travex"}));

  Apply(Talkative());
  sandbox::RemoveDevice("zetdisplay");
  snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "serial"), (Verdict{SourceState::kNotAsked, 0, "", "zetdisplay"}));
  EXPECT_EQ(VerdictOf(snapshot, "diagnostics"),
            (Verdict{SourceState::kNotAsked, 0, "", "zetdisplay"}));
  EXPECT_EQ(VerdictOf(snapshot, "video-mux"), (Verdict{SourceState::kOk, 0, "", "zetdisplay"}));
}

TEST(Sources, OfTheNetworkAreNotAskedWithoutAnInterface) {
  Apply(Talkative());
  sandbox::SetInterfaces({});
  EXPECT_EQ(VerdictOf(Cycle(), "routes"), (Verdict{SourceState::kNotAsked, 0, "", "interfaces"}));

  sandbox::SetInterfaces({{.Name = "eth0"}});
  const Snapshot snapshot = Cycle();
  const Verdict no_address{SourceState::kNotAsked, 0, "no IPv4 address"};
  EXPECT_EQ(VerdictOf(snapshot, "routes"), no_address);
  EXPECT_EQ(VerdictOf(snapshot, "hardware-address:eth0"), no_address);
  EXPECT_EQ(VerdictOf(snapshot, "interfaces"), kOk);
}

TEST(Sources, OfAnInterfaceWithoutALinkAreItsCarrierAlone) {
  Apply(Talkative());
  sandbox::WriteFile("/sys/class/net/eth0/carrier", "0\n");
  const Snapshot snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "carrier:eth0"), (Verdict{SourceState::kOk, 0, "no link"}));
  EXPECT_THROW(Find(snapshot, "transitions:eth0"), std::runtime_error);
  // The fields of the other interface have moved to the first place.
  EXPECT_THAT(Find(snapshot, "transitions:eth1").Fields,
              testing::ElementsAre("Network/Devices[0]/Statistics/First"));
}

// ---- Silent

class SourceSilent : public testing::TestWithParam<Feed> {};

// The requests that cycles put to a device, and the fields that one of them feeds.
std::size_t RequestsOf(const std::string& source) {
  std::set<std::pair<std::string, unsigned long>> requests;
  for (const Feed& feed : FeedTable()) {
    if (source == feed.Source && feed.Request != 0) {
      requests.insert({feed.Probe, feed.Request});
    }
  }
  return requests.size();
}

std::set<std::string> FieldsWith(const Feed& part) {
  std::set<std::string> fields;
  for (const Feed& feed : FeedTable()) {
    if (std::string(feed.Source) == part.Source && feed.Request == part.Request &&
        (part.Label == nullptr ||
         (feed.Label != nullptr && feed.Label == std::string(part.Label)))) {
      fields.insert(feed.Needs == Part::kSpoils ? "Sensors[4]/Ambient" : feed.Field);
    }
  }
  return fields;
}

// "no answer to 1 of 10 requests: 0x8004DA5C (HardwareID1, ProductFamily)"; a device that is asked
// one thing only has answered nothing.
std::string SilentTo(const Feed& part) {
  const std::size_t requests = RequestsOf(part.Source);
  if (requests == 1) {
    return "no answer to 1 of 1 request";
  }
  std::string fields;
  for (const Feed& feed : FeedTable()) {
    if (std::string(feed.Source) == part.Source && feed.Request == part.Request &&
        feed.Needs != Part::kSpoils) {
      fields += (fields.empty() ? "" : ", ") + std::string(feed.Field);
    }
  }
  char request[32];
  std::snprintf(request, sizeof request, "0x%lX", part.Request);
  return "no answer to 1 of " + std::to_string(requests) + " requests: " + request + " (" + fields +
         ")";
}

// Which request it was used to be known to nobody.
TEST_P(SourceSilent, NamesTheRequestAndChangesItsFields) {
  SANDBOX_NEEDS_DEVICES();
  const Feed& feed = GetParam();
  std::set<std::string> unfed;
  const Snapshot snapshot =
      Lose([&] { sandbox::SetAnswer(feed.Source, static_cast<std::uint32_t>(feed.Request), -EIO); },
           &unfed);
  EXPECT_EQ(unfed, FieldsWith(feed));
  EXPECT_EQ(VerdictOf(snapshot, feed.Source),
            (Verdict{SourceState::kNoAnswer, EIO, SilentTo(feed)}));
}

std::vector<Feed> FirstOfEachPart(bool requests) {
  std::vector<Feed> parts;
  std::set<std::tuple<std::string, unsigned long, std::string>> seen;
  for (const Feed& feed : FeedTable()) {
    if ((requests ? feed.Request != 0 : feed.Label != nullptr) &&
        seen.insert({feed.Source, feed.Request, feed.Label == nullptr ? "" : feed.Label}).second) {
      parts.push_back(feed);
    }
  }
  return parts;
}

std::string PartName(const testing::TestParamInfo<Feed>& info) {
  const Feed& feed = info.param;
  char request[32];
  std::snprintf(request, sizeof request, "0x%lX", feed.Request);
  return CaseName(feed.Source + std::string(feed.Label == nullptr ? request : feed.Label));
}

INSTANTIATE_TEST_SUITE_P(Requests, SourceSilent, testing::ValuesIn(FirstOfEachPart(true)),
                         PartName);

TEST(Sources, ThatAnswerNothingSaySo) {
  SANDBOX_NEEDS_DEVICES();
  for (const char* const node : {"travex", "zetdisplay", "diagnostics"}) {
    const Snapshot snapshot = Lose([node] { sandbox::SetDevice(node, {}); });
    const std::string requests = std::to_string(RequestsOf(node));
    EXPECT_EQ(VerdictOf(snapshot, node),
              (Verdict{SourceState::kNoAnswer, ENOTTY,
                       "no answer to " + requests + " of " + requests +
                           (requests == "1" ? " request" : " requests")}));
  }
}

TEST(Sources, NameThreeOfTheRequestsThatHaveNoAnswerAndCountTheOthers) {
  SANDBOX_NEEDS_DEVICES();
  const Snapshot snapshot = Lose([] {
    for (const std::uint32_t request : {0x8004DA0CU, 0x8004DA55U, 0x8004DA63U, 0x8004DA64U}) {
      sandbox::SetAnswer("travex", request, -1);
    }
  });
  EXPECT_EQ(VerdictOf(snapshot, "travex").Reason,
            "no answer to 4 of 10 requests: 0x8004DA0C (Outputs[0]/Frequency/Vertical), "
            "0x8004DA55 (Outputs[0]/Dimming/OutputLevel), 0x8004DA63 "
            "(Outputs[0]/Dimming/Content/First) and 1 more");
}

// What the second statistic answers first makes the first one in its place, and is lost.
TEST(Sources, LoseAnAnswerWhenTheStatisticBeforeItHasNone) {
  SANDBOX_NEEDS_DEVICES();
  std::set<std::string> unfed;
  Lose(
      [] {
        sandbox::SetAnswer("travex", 0x8004DA5E, -1);
        sandbox::SetAnswer("travex", 0x8004DA5F, -1);
      },
      &unfed);
  EXPECT_THAT(unfed, testing::ElementsAre(
                         "Outputs[0]/Statistics[0]/First", "Outputs[0]/Statistics[0]/Number",
                         "Outputs[0]/Statistics[0]/Second", "Outputs[0]/Statistics[1]/First"));
}

// ---- Malformed

class SourceMalformed : public testing::TestWithParam<Feed> {};

void Replace(const std::string& path, const std::string& label, const std::string& with) {
  std::string text = sandbox::ReadFile(path);
  for (std::size_t at = 0; (at = text.find(label, at)) != std::string::npos; at += with.size()) {
    text.replace(at, label.size(), with);
  }
  sandbox::WriteFile(path, text);
}

std::string WithoutBlank(std::string label) {
  return label.ends_with(' ') ? label.substr(0, label.size() - 1) : label;
}

TEST_P(SourceMalformed, ChangesTheFieldsOfTheLabel) {
  SANDBOX_NEEDS_DEVICES();
  const Feed& feed = GetParam();
  std::set<std::string> unfed;
  const Snapshot snapshot =
      Lose([&] { Replace(SourceNamed(feed.Source).Name, feed.Label, "?"); }, &unfed);
  EXPECT_EQ(unfed, FieldsWith(feed));
  EXPECT_EQ(VerdictOf(snapshot, feed.Source),
            (Verdict{SourceState::kMalformed, 0, "no \"" + WithoutBlank(feed.Label) + '"'}));
}

INSTANTIATE_TEST_SUITE_P(Labels, SourceMalformed, testing::ValuesIn(FirstOfEachPart(false)),
                         PartName);

TEST(Sources, WithoutSeveralLabelsNameThem) {
  Apply(Talkative());
  sandbox::WriteFile("/proc/meminfo", "MemTotal: 1 kB\n");
  EXPECT_EQ(VerdictOf(Cycle(), "meminfo"),
            (Verdict{SourceState::kMalformed, 0,
                     "2 of 3 labels are missing: \"Cached:\", \"MemFree:\""}));
}

TEST(Sources, WithoutTheRowOfAnInterfaceAreMalformedForIt) {
  const Snapshot snapshot = Lose([] { Replace("/proc/net/dev", "eth1", "eth2"); });
  EXPECT_EQ(VerdictOf(snapshot, "link-counters:eth1"),
            (Verdict{SourceState::kMalformed, 0, "no \"eth1\""}));
  EXPECT_EQ(VerdictOf(snapshot, "link-counters:eth0"), kOk);
}

// An interface without a default route has no gateway, as it is said.
TEST(Sources, WithoutARouteOfAnInterfaceAreWell) {
  Apply(Talkative());
  Replace("/proc/net/route", "eth1", "eth2");
  const Snapshot snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "routes"), kOk);
  EXPECT_THAT(Find(snapshot, "routes").Unfed, IsEmpty());
}

TEST(Sources, WithoutARouteToEverywhereElseSaySo) {
  Apply(Talkative());
  sandbox::WriteFile("/proc/net/route", "Iface\tDestination\tGateway\neth0\t0000A8C0\t00000000\n");
  EXPECT_EQ(VerdictOf(Cycle(), "routes"), (Verdict{SourceState::kOk, 0, "no default route"}));
}

// A device that is gone used to be known by its gateway only.
TEST(Sources, NameADeviceThatComesBeforeOthersAndIsGone) {
  const auto reason_with = [](const std::vector<std::string>& names) {
    sandbox::Scenario scenario = Talkative();
    scenario.NoInterfaces();
    for (const std::string& name : names) {
      scenario.Interface({.Name = name, .Addresses = {}});
    }
    Apply(scenario);
    return Find(Cycle(), "interfaces").Reason;
  };
  EXPECT_EQ(reason_with({"eth1"}), "no device eth0");
  EXPECT_EQ(reason_with({"eth0", "eth2", "wlan1"}), "no device eth1");
  EXPECT_EQ(reason_with({"eth0", "wlan1"}), "no device wlan0");
  EXPECT_EQ(reason_with({"eth0", "eth1"}), "");
  EXPECT_EQ(reason_with({"enp3s1", "eno1", "ethx"}), "");
}

// A device that is switched off is there.
TEST(Sources, NameNoDeviceThatIsSwitchedOff) {
  sandbox::Scenario scenario = Talkative();
  scenario.NoInterfaces();
  scenario.Interface({.Name = "eth0", .State = sandbox::LinkState::kDown, .Addresses = {}});
  scenario.Interface({.Name = "eth1", .Addresses = {}});
  Apply(scenario);
  EXPECT_EQ(Find(Cycle(), "interfaces").Reason, "");
}

// The collector asks for the route of the alias, too, and there is none.
TEST(Sources, WithAnAliasHaveTheRouteOfItsDevice) {
  sandbox::Scenario scenario = Talkative();
  scenario.NoInterfaces().Interface(
      {.Name = "eth0",
       .Addresses = {{.Prefix = "192.168.0.20/24"}, {.Prefix = "10.0.0.5/8", .Label = "eth0:1"}}});
  Apply(scenario);
  sandbox::WriteFile("/proc/net/route", "Iface\tDestination\tGateway\neth0\t00000000\t0100A8C0\n");
  const Snapshot snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "routes"), kOk);
  EXPECT_EQ(snapshot.Document.Root().FindValue("Network/Devices[0]/Gateway")->Text(), "0.0.0.0");
}

// ---- Empty

struct TextFile {
  std::string Source;
  std::string Path;
};
void PrintTo(const TextFile& file, std::ostream* out) { *out << file.Source; }

class SourceEmpty : public testing::TestWithParam<TextFile> {};

TEST_P(SourceEmpty, ChangesTheFieldsThatItIsSaidToFeed) {
  SANDBOX_NEEDS_DEVICES();
  const Snapshot snapshot = Lose([] { sandbox::WriteFile(GetParam().Path, ""); });
  EXPECT_EQ(VerdictOf(snapshot, GetParam().Source),
            (Verdict{SourceState::kEmpty, 0, "nothing in it"}));
}

// It used to be called empty.
TEST_P(SourceEmpty, IsNotReadWhenItIsAFolder) {
  SANDBOX_NEEDS_DEVICES();
  const Snapshot snapshot = Lose([] {
    sandbox::RemoveFile(GetParam().Path);
    sandbox::MakeFolder(GetParam().Path);
  });
  // A folder cannot be opened for writing.
  const bool written = GetParam().Path.starts_with("/proc/driver");
  EXPECT_EQ(VerdictOf(snapshot, GetParam().Source),
            written ? (Verdict{SourceState::kFailed, EISDIR, "Is a directory"})
                    : (Verdict{SourceState::kFailed, 0, "not a regular file"}));
}

std::vector<TextFile> TextFiles() {
  std::vector<TextFile> files;
  for (const insight::SourceInfo& source : insight::SourceTable()) {
    const std::size_t mark = source.Name.find("%s");
    if (source.Name.starts_with('/') && !source.Name.starts_with("/dev/") &&
        std::string(source.Id) != "watchdog") {
      files.push_back({source.Id + std::string(source.Bound ? ":eth0" : ""),
                       mark == std::string::npos
                           ? source.Name
                           : std::string(source.Name).replace(mark, 2, "eth0")});
    }
  }
  files.push_back({"transitions:eth0", "/dev/shm/netlink-eth0"});
  return files;
}

INSTANTIATE_TEST_SUITE_P(Files, SourceEmpty, testing::ValuesIn(TextFiles()),
                         [](const auto& test) { return CaseName(test.param.Source); });

struct Unreadable {
  const char* Id;
  const char* Path;
  const char* Text;
  const char* Reason;
  const char* Field;
};

// They used to be ok, and what the collector makes of them to be reported.
TEST(Sources, WithoutAValueAreMalformed) {
  static const Unreadable kUnreadable[] = {
      {"meminfo", "/proc/meminfo", "MemTotal: abc kB\nMemFree: 1 kB\nCached: 1 kB\n",
       "no value after \"MemTotal:\"", "MemoryTotal"},
      {"uuid", "/home/Zet/.settings/uuid", "  \n", "no value in it", "GUID"},
      {"serial", "/home/Zet/.settings/serial#", "hello", "no value in it", "SerialNumber"},
      {"transitions:eth0", "/dev/shm/netlink-eth0", "hello", "no value in it",
       "Network/Devices[0]/Statistics/First"},
      {"carrier:eth0", "/sys/class/net/eth0/carrier", "hello", "no link", ""},
  };
  SANDBOX_NEEDS_DEVICES();
  for (const auto& [id, path, text, reason, field] : kUnreadable) {
    SCOPED_TRACE(id);
    Apply(Talkative());
    sandbox::WriteFile(path, text);
    const Snapshot snapshot = Cycle();
    EXPECT_EQ(VerdictOf(snapshot, id), (Verdict{SourceState::kMalformed, 0, reason}));
    EXPECT_TRUE(*field == '\0' || !snapshot.IsReported(field));
  }
}

TEST(Sources, WithARegisterThatIsNoNumberNameIt) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  std::string registers = sandbox::ReadFile(kRegisters);
  const std::string label = "dvi_los_count: ";
  const std::size_t value = registers.find(label) + label.size();
  registers.replace(value, registers.find('\n', value) - value, "xyz");
  sandbox::WriteFile(kRegisters, registers);
  const Snapshot snapshot = Cycle();
  EXPECT_EQ(VerdictOf(snapshot, "frame-control"),
            (Verdict{SourceState::kMalformed, 0, "no value after \"dvi_los_count:\""}));
  EXPECT_FALSE(snapshot.IsReported("Inputs[1]/Statistics/First"));
}

}  // namespace

namespace insight {
void PrintTo(const Feed& feed, std::ostream* out) { *out << feed.Source << ' ' << feed.Field; }
}  // namespace insight
