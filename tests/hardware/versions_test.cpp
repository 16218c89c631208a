// The versions of packages, and how the package database is read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "sandbox/descriptor.h"
#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Call;
using interposed::Failure;
using interposed::ShortReads;
using sandbox::Scenario;

class Versions : public ProbeTest {};

TEST_F(Versions, AreThoseOfTheirPackages) {
  Scenario()
      .File(kPackages,
            "Package: bash\nVersion: 5.2\n\n"
            "Package: dispfw\nStatus: install ok installed\nVersion: 1.2.3-4ubuntu1\n\n"
            "Package: qtm-distro\nVersion: 4.1~rc2 (beta)\nDescription: player\n\n")
      .Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "4.1~rc2 (beta)");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "1.2.3-4");
}

TEST_F(Versions, MayComeFromALongerNameOrALaterStanza) {
  Scenario()
      .File(kPackages,
            "Package: display-firmware\nVersion: 1.0\n\n"
            "Package: dispfw\nStatus: deinstall ok config-files\n\n"
            "Package: qtm-distro-extra\nStatus: deinstall ok config-files\n\n"
            "Package: zip\nVersion: 3.0\n\n"
            "Package: qtm-distro\nVersion: 4.1\n")
      .Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "3.0");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "3.0") << "dispfw wins, without a version of its own";
}

TEST_F(Versions, OfADatabaseOfManyReadsAreFound) {
  std::string packages;
  while (packages.size() < 50000) {
    packages += "Package: filler\nVersion: 0.0\nDescription: nothing of interest\n\n";
  }
  packages += "Package: qtm-distro\nVersion: 4.1\n\n" + packages;
  packages += "Package: display-firmware\nVersion: 1.2\n";
  Scenario().File(kPackages, packages).Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "4.1");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "1.2");
}

// Many files of the system are longer than they claim to be.
TEST_F(Versions, OfAFileThatClaimsNoSizeAreFound) {
  std::string packages;
  while (packages.size() < 50000) {
    packages += "Package: filler\nVersion: 0.0\n\n";
  }
  packages += "Package: qtm-distro\nVersion: 4.1\n";
  const pid_t process = fork();
  if (process == 0) {  // its environment is such a file
    char* const environment[] = {packages.data(), nullptr};
    execle("/usr/bin/sleep", "sleep", "1000", nullptr, environment);
    _exit(1);
  }
  const std::string file = "/.proc/" + std::to_string(process) + "/environ";
  while (sandbox::ReadFile(file).find("qtm-distro") == std::string::npos) {
    ASSERT_EQ(waitpid(process, nullptr, WNOHANG), 0);
    usleep(1000);
  }
  Scenario().Link(kPackages, file).Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "4.1");
  kill(process, SIGKILL);
  EXPECT_EQ(waitpid(process, nullptr, 0), process);
}

// An endless source used to take all memory.
TEST_F(Versions, AreNotTakenFromADevice) {
  status_.FirmwareVersion = "former";
  Scenario().Link(kPackages, "/dev/urandom").Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 1);
  EXPECT_EQ(status_.FirmwareVersion, "former");
}

TEST_F(Versions, StayWhenTheDatabaseIsMissing) {
  status_.FirmwareVersion = "former";
  status_.DisplayFirmwareVersion = "former display";
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 1);
  EXPECT_EQ(status_.FirmwareVersion, "former");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "former display");
}

TEST_F(Versions, StayWhenTheirPackagesAreMissing) {
  status_.FirmwareVersion = "former";
  status_.DisplayFirmwareVersion = "former display";
  for (const char* packages :
       {"", "Package: bash\nVersion: 5.2\n", "Package: dispfw\nPackage: qtm-distro\nVersion:5\n"}) {
    SCOPED_TRACE(packages);
    Scenario().File(kPackages, packages).Apply();
    EXPECT_EQ(probe_.FirmwareVersion(), 0);
    EXPECT_EQ(probe_.DisplayFirmwareVersion(), 1);
    EXPECT_EQ(status_.FirmwareVersion, "former");
    EXPECT_EQ(status_.DisplayFirmwareVersion, "former display");
  }
}

TEST_F(Versions, StayWhenTheDatabaseCannotBeRead) {
  status_.DisplayFirmwareVersion = "former display";
  Scenario().Folder(kPackages).Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 1);
  EXPECT_EQ(status_.DisplayFirmwareVersion, "former display");
}

// The two probes share one reading of the database only when it reaches the end. A read
// that failed used to lose the version of the display as well.
TEST_F(Versions, OfTheDisplayAreReadAgainWhenReadingFails) {
  const std::string filler(150000, '\n');
  Scenario()
      .File(kPackages, filler + "Package: qtm-distro\nVersion: 4.1\n\n" + filler +
                           "Package: dispfw\nVersion: 1.2\n")
      .Apply();
  for (const int nth : {1, 2, 3, 4, 5}) {
    SCOPED_TRACE(nth);
    status_.FirmwareVersion = "former";
    status_.DisplayFirmwareVersion = "former display";
    const Failure failure(Call::kRead, nth);
    EXPECT_EQ(probe_.UpdateStatus(&status_), 0);
    EXPECT_EQ(status_.FirmwareVersion, nth <= 3 ? "former" : "4.1");
    EXPECT_EQ(status_.DisplayFirmwareVersion, "1.2");
  }
}

TEST_F(Versions, FoundBeforeAReadFailsCount) {
  const std::string filler(150000, '\n');
  Scenario().File(kPackages, "Package: dispfw\nVersion: 1.2\n" + filler).Apply();
  const Failure failure(Call::kRead, 2);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 0);
  EXPECT_EQ(status_.DisplayFirmwareVersion, "1.2");
}

TEST_F(Versions, AreTheSameInReadsOfAnySize) {
  Scenario()
      .File(kPackages,
            "Package: display-firmware\nVersion: 1.2-3~\n\n"
            "Package: qtm-distro\nVersion: 4.1\n")
      .Apply();
  for (std::size_t size = 1; size < 80; ++size) {
    SCOPED_TRACE(size);
    const ShortReads reads(size);
    status_.FirmwareVersion = "former";
    status_.DisplayFirmwareVersion = "former display";
    probe_.UpdateStatus(&status_);
    EXPECT_EQ(status_.FirmwareVersion, "4.1");
    EXPECT_EQ(status_.DisplayFirmwareVersion, "1.2-3");
  }
}

constexpr off_t kCeiling = off_t{1} << 30;  // bytes of the database that are looked at

// Writes `text` into the database from `position` on; what was not written is zero, and takes no
// room.
void WritePackagesAt(off_t position, std::string_view text) {
  const sandbox::Descriptor file(open(kPackages, O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  EXPECT_EQ(pwrite(file.Number(), text.data(), text.size(), position),
            static_cast<ssize_t>(text.size()));
}

long PeakMemoryKB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// A database used to take as much memory as it had bytes, an endless one all of it.
TEST_F(Versions, AreSearchedInLittleMemoryAndOnlyInTheFirstGiB) {
  constexpr std::string_view kFirst = "Package: qtm-distro\nVersion: 4.1\n";
  constexpr std::string_view kLast = "Package: display-firmware\nVersion: 1.2";
  Scenario().Folder("/var/lib/dpkg").Apply();
  WritePackagesAt(0, kFirst);
  WritePackagesAt(kCeiling - static_cast<off_t>(kLast.size()), kLast);
  WritePackagesAt(kCeiling, "34\nPackage: dispfw\nVersion: 5.6\n");
  const pid_t child = fork();  // which has a peak of its own
  if (child == 0) {
    const long before = PeakMemoryKB();
    probe_.UpdateStatus(&status_);
    const bool small = PeakMemoryKB() - before < 16 * 1024;
    const bool found = status_.FirmwareVersion == "4.1" && status_.DisplayFirmwareVersion == "1.2";
    _exit((small ? 0 : 1) + (found ? 0 : 2));
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(Versions, MayBecomeEmpty) {
  status_.FirmwareVersion = "former";
  status_.DisplayFirmwareVersion = "former display";
  Scenario()
      .File(kPackages, "Package: dispfw\nVersion: v1\n\nPackage: qtm-distro\nVersion: \n")
      .Apply();
  EXPECT_EQ(probe_.FirmwareVersion(), 0);
  EXPECT_EQ(probe_.DisplayFirmwareVersion(), 0);
  EXPECT_EQ(status_.FirmwareVersion, "");
  EXPECT_EQ(status_.DisplayFirmwareVersion, "");
}

}  // namespace
