// Captured in a box, replayed in another one: the same documents.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "capture/archive.h"
#include "replay/recording.h"
#include "replay/verify.h"
#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/scenario.h"
#include "tests/replay/captured.h"
#include "tests/replay/generator.h"
#include "tests/sandbox/outside.h"
#include "tests/support/temporary_folder.h"

namespace replay {
namespace {

using sandbox::Scenario;

// What the clock and the storage of a box make differ.
std::string Steady(const std::string& document) {
  static const std::regex kVolatile("(LocalTime|Uptime|StorageTotal|StorageFree)=\"[^\"]*\"");
  return std::regex_replace(document, kVolatile, "$1=\"*\"");
}

class RoundTrip : public sandbox::OutsideTest {
 protected:
  // Captures and replays; gives what is wrong with that.
  std::string Try(const Scenario& scenario) {
    const std::string file = folder_.Path() + "/capture.tar.zst";
    sandbox::Options options = sandbox::OptionsFromEnvironment();
    options.Writable.emplace_back(folder_.Path());
    const int status = sandbox::RunInside(options, [&] {
      if (freopen("/dev/null", "w", stdout) == nullptr ||
          freopen("/dev/null", "w", stderr) == nullptr) {
        return 1;
      }
      std::ofstream(file, std::ios::binary) << capture::Pack(Captured(scenario)) << std::flush;
      return 0;
    });
    if (status != 0) {
      return "the capture ended with status " + std::to_string(status);
    }
    return Differences(Read(file));
  }

  static std::string Differences(const Recording& recording) {
    std::string text;
    const std::vector<std::string> documents = DocumentsOf(recording);
    for (std::size_t cycle = 0; cycle < documents.size(); ++cycle) {
      const auto& [captured, left_out] = recording.Cycles[cycle];
      if (!captured) {
        text += "no document of cycle " + std::to_string(cycle + 1) + "\n";
      } else if (Steady(*captured) != Steady(documents[cycle])) {
        for (const std::string& line : Compare(*captured, documents[cycle], {})) {
          text += "cycle " + std::to_string(cycle + 1) + ": " + line + "\n";
        }
      }
      // Nothing but these may be left out of a comparison.
      static const std::set<std::string> kVolatile = {"LocalTime", "Uptime", "StorageTotal",
                                                      "StorageFree", "Result"};
      for (const std::string& field : left_out) {
        if (!kVolatile.contains(field) && !field.ends_with("/MACAddress")) {
          text += "left out: " + field + "\n";
        }
      }
    }
    return text;
  }

  test_support::TemporaryFolder folder_;
};

TEST_F(RoundTrip, EveryScenarioGivesTheSameDocument) {
  for (const auto& entry : std::filesystem::directory_iterator(sandbox::SourcePath("scenarios"))) {
    if (entry.is_directory()) {
      EXPECT_EQ("", Try(Scenario::Load(entry.path()))) << entry.path();
    }
  }
}

// An interface that failed once, and of which only an alias was asked afterwards, used to fail in
// the replay for ever.
TEST_F(RoundTrip, AnAliasThatAnswersEndsTheFaultOfItsInterface) {
  const auto file = [](const std::string& bytes) { return sandbox::Node{.Bytes = bytes}; };
  const std::string label = " broadcast 10.255.255.255 label eth0:1\n";
  const Scenario scenario = Scenario::FromTree(
      {{"interfaces", file("interface eth0\n  address 10.1.0.1/24\n")},
       {"faults", file("eth0 hardware-address 6\n")},
       {"steps/01/interfaces",
        file("interface eth0\n  address 10.1.0.1/16\n  address 10.1.0.2/24" + label)},
       {"steps/01/root/sys/class/net/eth0/carrier", file("0\n")},
       {"steps/01/faults", file("")}},
      "alias");
  EXPECT_EQ("", Try(scenario));
}

// Its replay used to refuse it, for a name in the archive.
TEST_F(RoundTrip, ALabelMayLeadThroughOtherFolders) {
  EXPECT_EQ("", Try(Scenario()
                        .Interface({.Name = "eth0",
                                    .Addresses = {{.Prefix = "10.1.0.1/24",
                                                   .Broadcast = "10.1.0.255",
                                                   .Label = "eth0/../eth0"}}})
                        .File("/sys/class/net/eth0/carrier", "1\n")
                        .File("/dev/shm/netlink-eth0", "100\n")));
}

// The replay used to have the second address at eth1, whose name begins the label as well.
TEST_F(RoundTrip, ALabelIsThatOfTheInterfaceWithTheLongestNameInIt) {
  EXPECT_EQ("", Try(Scenario()
                        .Interface({.Name = "eth1", .State = sandbox::LinkState::kUnplugged})
                        .Interface({.Name = "eth10",
                                    .Addresses = {{.Prefix = "10.2.0.1/24",
                                                   .Broadcast = "10.2.0.255",
                                                   .Label = "eth10/../eth10"}}})
                        .File("/sys/class/net/eth10/carrier", "1\n")));
}

// STATUS_LONG=1 makes 500 of them.
TEST_F(RoundTrip, GeneratedControllersGiveTheSameDocuments) {
  const unsigned int count = std::getenv("STATUS_LONG") != nullptr ? 500 : 12;
  const char* const only = std::getenv("STATUS_SEED");
  std::size_t cycles = 0;
  for (unsigned int seed = 1; seed <= count; ++seed) {
    if (only != nullptr && seed != static_cast<unsigned int>(std::atoi(only))) {
      continue;
    }
    const Scenario scenario = Scenario::FromTree(Generate(seed), "generated");
    cycles += scenario.Steps() + 1;
    EXPECT_EQ("", Try(scenario)) << "STATUS_SEED=" << seed;
  }
  EXPECT_GT(cycles, only != nullptr ? 0 : count * 2);
}

}  // namespace
}  // namespace replay
