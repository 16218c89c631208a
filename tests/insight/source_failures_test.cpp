// Sources that may not be read, and calls that fail.
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "sandbox/files.h"
#include "sandbox/testing.h"
#include "tests/insight/source_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

namespace fs = std::filesystem;
using insight::Snapshot;
using insight::SourceState;
using interposed::Call;
using interposed::Failure;

const Verdict kDenied{SourceState::kDenied, EACCES, "Permission denied"};

// ---- Denied

TEST(Sources, ThatRefuseToBeOpenedAreDenied) {
  SANDBOX_NEEDS_DEVICES();
  for (const char* const node : {"travex", "zetdisplay", "diagnostics"}) {
    const Snapshot snapshot = Lose([node] { sandbox::SetOpenError(node, EACCES); });
    EXPECT_EQ(VerdictOf(snapshot, node), kDenied);
    sandbox::SetOpenError(node, 0);
  }
}

// While it lives, the process has the rights of nobody, who may read what the sandbox has.
class Nobody {
 public:
  Nobody() { EXPECT_EQ(seteuid(65534), 0); }
  Nobody(const Nobody&) = delete;
  Nobody& operator=(const Nobody&) = delete;
  ~Nobody() { EXPECT_EQ(seteuid(0), 0); }
};

struct Locked {
  std::string Source;
  std::string Path;
};
void PrintTo(const Locked& locked, std::ostream* out) { *out << locked.Source; }

class SourceDenied : public testing::TestWithParam<Locked> {};

TEST_P(SourceDenied, ChangesTheFieldsThatItIsSaidToFeed) {
  SANDBOX_NEEDS_DEVICES();
  Losses losses;
  Verdict verdict;
  for (const auto& scenario : {Talkative(), Contrary()}) {
    Apply(scenario);
    for (const char* const dump : {kRegisters, kRouting}) {
      fs::permissions(dump, fs::perms(0666));
    }
    const auto cycle = [] {
      const Nobody nobody;
      return Cycle();
    };
    const Snapshot before = cycle();
    fs::permissions(GetParam().Path, fs::perms(0));
    const Snapshot after = cycle();
    fs::permissions(GetParam().Path, fs::perms(fs::is_directory(GetParam().Path) ? 0755 : 0644));
    losses.Add(before, after);
    verdict = VerdictOf(after, GetParam().Source);
  }
  losses.ExpectChangesAreUnfed();
  EXPECT_EQ(verdict, kDenied);
}

INSTANTIATE_TEST_SUITE_P(
    Files, SourceDenied,
    testing::Values(Locked{"frame-control", kRegisters}, Locked{"video-mux", kRouting},
                    Locked{"watchdog", "/var/run"}, Locked{"serial", "/home/Zet/.settings/serial#"},
                    Locked{"uuid", "/home/Zet/.settings"}, Locked{"uuid", "/home/Zet"},
                    Locked{"meminfo", "/proc/meminfo"}, Locked{"routes", "/proc/net/route"},
                    Locked{"link-counters:eth0", "/proc/net/dev"},
                    Locked{"carrier:eth0", "/sys/class/net/eth0/carrier"},
                    Locked{"carrier:eth0", "/sys/class/net/eth0"},
                    Locked{"transitions:eth1", "/dev/shm/netlink-eth1"},
                    Locked{"resolver", "/etc/resolv.conf"},
                    Locked{"packages", "/var/lib/dpkg/status"},
                    Locked{"configuration-timestamp",
                           "/var/www/localhost/htdocs/korvane/syscontrol/1.0/configuration"},
                    Locked{"database", "/dev/shm/status.db"}),
    [](const auto& test) { return "Case" + std::to_string(test.index); });

// The owner of a link that others may place must be root or the reader.
TEST(Sources, BehindAStrangersLinkFail) {
  sandbox::Scenario().Folder("/home/Zet/.settings").File("/secret", "secret").Apply();
  sandbox::MakeLink("/home/Zet/.settings/uuid", "/secret");
  ASSERT_EQ(lchown("/home/Zet/.settings/uuid", 1000, 1000), 0);
  EXPECT_EQ(VerdictOf(Cycle(), "uuid"),
            (Verdict{SourceState::kFailed, ELOOP, "Too many levels of symbolic links"}));
  ASSERT_EQ(lchown("/home/Zet/.settings/uuid", 0, 0), 0);
  EXPECT_EQ(VerdictOf(Cycle(), "uuid"), Verdict());
}

// ---- Calls that fail

struct FailingCall {
  std::string Source;
  Call What;
  Verdict Expected;
};
void PrintTo(const FailingCall& call, std::ostream* out) { *out << call.Source; }

class SourceFails : public testing::TestWithParam<FailingCall> {};

TEST_P(SourceFails, ChangesTheFieldsThatItIsSaidToFeed) {
  SANDBOX_NEEDS_DEVICES();
  Losses losses;
  Verdict verdict;
  for (const auto& scenario : {Talkative(), Contrary()}) {
    Apply(scenario);
    const Snapshot before = Cycle();
    const Failure failure(GetParam().What);
    const Snapshot after = Cycle();
    losses.Add(before, after);
    verdict = VerdictOf(after, GetParam().Source);
  }
  losses.ExpectChangesAreUnfed();
  EXPECT_EQ(verdict, GetParam().Expected);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, SourceFails,
    testing::Values(
        FailingCall{"sysinfo", Call::kSysinfo, {SourceState::kFailed, EFAULT, "Bad address"}},
        FailingCall{"storage", Call::kStatfs, {SourceState::kFailed, EIO, "Input/output error"}},
        FailingCall{"interfaces",
                    Call::kGetifaddrs,
                    {SourceState::kFailed, ENOBUFS, "No buffer space available"}},
        FailingCall{"hardware-address:eth0",
                    Call::kSocket,
                    {SourceState::kFailed, EMFILE, "Too many open files"}}),
    [](const auto& test) { return "Case" + std::to_string(test.index); });

// An address that cannot be written ends the probe as it stands.
TEST(Sources, ThatGiveAnAddressThatCannotBeWrittenStopTheProbe) {
  for (const unsigned long nth : {1UL, 2UL, 3UL, 4UL, 6UL, 7UL}) {
    Losses losses;
    Apply(Talkative());
    const Snapshot before = Cycle();
    const Failure failure(Call::kGetnameinfo, nth);
    const Snapshot after = Cycle();
    losses.Add(before, after);
    losses.ExpectChangesAreUnfed();
    const insight::Source& source = Find(after, "interfaces");
    EXPECT_EQ(source.State, SourceState::kFailed) << nth;
    EXPECT_EQ(source.Reason, std::string("address of eth") + (nth < 4 || nth == 7 ? '0' : '1') +
                                 ": Memory allocation failure");
    if (nth == 1) {
      EXPECT_EQ(VerdictOf(after, "routes"), (Verdict{SourceState::kNotAsked, 0, "", "interfaces"}));
      EXPECT_EQ(VerdictOf(after, "hardware-address:eth0"),
                (Verdict{SourceState::kNotAsked, 0, "", "interfaces"}));
    }
  }
}

TEST(Sources, ThatCannotBeReadHaveFailed) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Talkative());
  const Failure failure(Call::kRead, 1, interposed::Extent::kFromThenOn);
  const Snapshot after = Cycle();
  const Verdict broken{SourceState::kFailed, EIO, "Input/output error"};
  for (const char* const id : {"frame-control", "uuid", "meminfo", "routes", "packages"}) {
    EXPECT_EQ(VerdictOf(after, id), broken) << id;
  }
  EXPECT_EQ(VerdictOf(after, "database").State, SourceState::kFailed);
}

}  // namespace
