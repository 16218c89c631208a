// When a capture has less than was asked for, or cannot be written.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "sandbox/files.h"
#include "sandbox/scenario.h"
#include "tests/capture/capture_fixture.h"
#include "tests/capture/silent_node.h"
#include "tests/support/held_lease.h"
#include "tests/support/paths.h"

namespace {

namespace fs = std::filesystem;
using captured::Capture;
using captured::CaptureNow;
using captured::CaptureTest;
using captured::Description;
using captured::Entries;
using captured::kFile;
using captured::Load;
using test_support::HeldLease;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

constexpr const char* kFolder = "/captures";

class CaptureFailure : public CaptureTest {
 protected:
  void SetUp() override {
    CaptureTest::SetUp();
    if (!IsSkipped()) {
      Load("demo").Apply();
      sandbox::MakeFolder(kFolder);
    }
  }

  static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(kFolder)) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
};

TEST_F(CaptureFailure, KeepsWhatCameBeforeASourceThatHangs) {
  const HeldLease lease("/proc/meminfo");
  const ProgramResult result = Capture({"--timeout", "1", kFile});
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_THAT(result.Errors,
              HasSubstr("statuscollector: no answer within 1 s: still opening "
                        "/proc/meminfo; /captures/one.tar.zst has what came before"));
  const Entries capture = captured::Read();
  const nlohmann::json description = Description(capture);
  EXPECT_EQ(description.at("complete"), false);
  EXPECT_EQ(description.at("stopped").at("source"), "/proc/meminfo");
  EXPECT_EQ(description.at("stopped").at("doing"), "opening");
  EXPECT_EQ(description.at("stopped").at("cycle"), 1);
  EXPECT_THAT(capture, AllOf(Contains(Key("devices/travex")), Contains(Key("devices/zetdisplay")),
                             Contains(Key("root/home/Zet/.settings/uuid")),
                             Contains(Key("root/proc/driver/frame_control/registers")),
                             Not(Contains(Key("document.xml"))), Not(Contains(Key("rows.tsv")))));
}

// A driver that hangs keeps who asks it in the kernel.
TEST_F(CaptureFailure, DoesNotWaitForACycleThatCannotBeEnded) {
  const captured::SilentNode node("/dev/travex");
  const ProgramResult result =
      RunProgram({"/bin/sh", "-c",
                  test_support::HostProgram() + " capture --timeout 1 " + kFile + " 2>&1 | cat"});
  EXPECT_TRUE(captured::CannotBeEnded("capture"));
  EXPECT_THAT(result.Output, HasSubstr("no answer within 1 s: still request of /dev/travex"));
  const Entries capture = captured::Read();
  EXPECT_EQ(Description(capture).at("stopped").at("source"), "/dev/travex");
  EXPECT_THAT(capture.at("devices/zetdisplay").Bytes, HasSubstr("0x8004DA5F 1\n"));
}

// A process of this name whose parent has the same name; -1 while there is none.
pid_t ChildNamed(const std::string& name) {
  std::map<pid_t, pid_t> parents;
  for (const fs::directory_entry& entry : fs::directory_iterator("/.proc")) {
    const std::string id = entry.path().filename();
    std::ifstream file(std::isdigit(static_cast<unsigned char>(id.front())) != 0
                           ? entry.path() / "stat"
                           : fs::path());
    std::string own;
    std::string called;
    std::string state;
    pid_t parent = 0;
    if (file >> own >> called >> state >> parent && called == "(" + name + ")") {
      parents[std::stoi(own)] = parent;
    }
  }
  for (const auto& [process, parent] : parents) {
    if (parents.contains(parent)) {
      return process;
    }
  }
  return -1;
}

TEST_F(CaptureFailure, KeepsWhatCameBeforeACycleThatIsEndedByASignal) {
  const HeldLease lease("/proc/meminfo");
  std::thread killer([] {
    pid_t child = -1;
    while (child == -1 || sandbox::DeviceLog().size() < 20) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      child = ChildNamed("capture");
    }
    kill(child, SIGABRT);
  });
  sandbox::ClearDeviceLog();
  const ProgramResult result = Capture({"--timeout", "60", kFile});
  killer.join();
  EXPECT_EQ(result.ExitCode, 1);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: the cycle was ended by signal 6"));
  const nlohmann::json description = Description(captured::Read());
  EXPECT_EQ(description.at("complete"), false);
  EXPECT_EQ(description.at("stopped").at("why"), "the cycle was ended by signal 6");
}

TEST_F(CaptureFailure, KeepsTheCyclesBeforeTheOneThatHangs) {
  std::thread holder;
  std::atomic<bool> over = false;
  {
    holder = std::thread([&over] {
      while (sandbox::DeviceLog().size() < 20) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      // The file may still be open, or be read just now.
      const int file = open("/proc/meminfo", O_RDWR | O_CLOEXEC);
      static_cast<void>(std::signal(SIGIO, SIG_IGN));
      while (!over && fcntl(file, F_SETLEASE, F_WRLCK) == -1) {
      }
      while (!over) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      close(file);
    });
  }
  sandbox::ClearDeviceLog();
  const ProgramResult result =
      Capture({"--cycles", "100", "--interval", "0", "--timeout", "1", kFile});
  over = true;
  holder.join();
  EXPECT_EQ(result.ExitCode, 1);
  const Entries capture = captured::Read();
  const nlohmann::json description = Description(capture);
  const int cycles = description.at("stopped").at("cycle");
  ASSERT_EQ(description.at("cycles").size(), static_cast<std::size_t>(cycles));
  EXPECT_EQ(description.at("cycles").back().at("document"), false);
  EXPECT_THAT(capture, Not(Contains(Key("steps/" + std::string(cycles < 11 ? "0" : "") +
                                        std::to_string(cycles - 1) + "/document.xml"))));
  EXPECT_GE(cycles, 1);
}

TEST_F(CaptureFailure, LeavesNothingWhenItIsKilled) {
  const HeldLease lease("/proc/meminfo");
  const std::string program = test_support::HostProgram();
  const pid_t child = fork();
  if (child == 0) {
    execl(program.c_str(), program.c_str(), "capture", "--timeout", "60", kFile, nullptr);
    _exit(127);
  }
  while (sandbox::DeviceLog().size() < 10) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_EQ(kill(child, SIGKILL), 0);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CaptureFailure, IsForItsOwnerOnlyAlsoInPlaceOfAnotherFile) {
  sandbox::WriteFile(kFile, "before", 0666);
  CaptureNow();
  struct stat status = {};
  ASSERT_EQ(stat(kFile, &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_THAT(Names(), testing::ElementsAre("one.tar.zst"));
}

TEST_F(CaptureFailure, IsNotWrittenWhereSomethingElseStands) {
  fs::create_directory("/captures/folder");
  sandbox::MakeLink("/captures/link", "/captures/elsewhere");
  ASSERT_EQ(mkfifo("/captures/pipe", 0600), 0);
  for (const std::string name : {"folder", "link", "pipe"}) {
    const ProgramResult result = Capture({"/captures/" + name});
    EXPECT_EQ(result.ExitCode, 2) << name;
    EXPECT_THAT(result.Errors,
                HasSubstr("statuscollector: /captures/" + name + " is not a regular file"));
  }
  EXPECT_THAT(Capture({"/captures/"}).Errors, HasSubstr("/captures/ is a folder; add the name"));
  EXPECT_THAT(Capture({"/nowhere/file"}).Errors,
              HasSubstr("statuscollector: /nowhere/file: No such file or directory"));
  EXPECT_FALSE(fs::exists("/captures/elsewhere"));
}

TEST_F(CaptureFailure, SaysWhatIsWrongWithTheFileBeforeTheCycle) {
  sandbox::ClearDeviceLog();
  Capture({"/nowhere/file"});
  EXPECT_THAT(sandbox::DeviceLog(), IsEmpty());
}

TEST_F(CaptureFailure, FollowsLinksOfRootToTheFolderAndThoseOfNobodyElse) {
  sandbox::MakeLink("/way", "captures");
  EXPECT_EQ(Capture({"/way/one"}).ExitCode, 0);
  EXPECT_TRUE(fs::exists("/captures/one"));
  sandbox::MakeLink("/foreign", "/captures");
  if (lchown("/foreign", 1001, 1001) != 0) {
    GTEST_SKIP() << "no other users";
  }
  const ProgramResult result = Capture({"/foreign/two"});
  EXPECT_EQ(result.ExitCode, 2);
  EXPECT_THAT(result.Errors, HasSubstr("another user's link \"foreign\" leads there"));
  EXPECT_FALSE(fs::exists("/captures/two"));
}

TEST_F(CaptureFailure, LeavesNothingOnADiskThatIsFull) {
  ASSERT_EQ(mount("full", kFolder, "tmpfs", 0, "size=4k"), 0);
  sandbox::WriteFile("/captures/before", "kept");
  const ProgramResult result = Capture({kFile});
  EXPECT_EQ(result.ExitCode, 2);
  EXPECT_THAT(result.Errors, HasSubstr("/captures/one.tar.zst: No space left on device"));
  EXPECT_THAT(Names(), testing::ElementsAre("before"));
  umount(kFolder);
}

TEST_F(CaptureFailure, GoesToStandardOutputForAMinus) {
  const ProgramResult result = Capture({"-"});
  EXPECT_EQ(result.ExitCode, 0);
  EXPECT_THAT(captured::Unpack(result.Output), Contains(Key("document.xml")));
}

TEST_F(CaptureFailure, SaysThatStandardOutputCannotBeWritten) {
  const ProgramResult result = RunProgram(
      {"/bin/sh", "-c", "exec " + test_support::HostProgram() + " capture - >/dev/full"});
  EXPECT_EQ(result.ExitCode, 2);
  EXPECT_THAT(result.Errors, HasSubstr("statuscollector: standard output: No space left"));
}

TEST_F(CaptureFailure, OfTheRowsAloneIsNoFailureOfTheCapture) {
  sandbox::RemoveDatabase();
  const ProgramResult result = Capture({kFile});
  EXPECT_EQ(result.ExitCode, 0);
  EXPECT_EQ(Description(captured::Read()).at("cycles").at(0).at("result"), 1);
}

TEST_F(CaptureFailure, IsWrongUsageForArgumentsThatAreNone) {
  EXPECT_EQ(Capture({}).ExitCode, 2);
  EXPECT_EQ(Capture({"--cycles", "0", kFile}).ExitCode, 2);
  EXPECT_EQ(Capture({"--timeout", "0", kFile}).ExitCode, 2);
  EXPECT_EQ(Capture({"--no-such", kFile}).ExitCode, 2);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CaptureFailure, SaysThatWhatItRunsIsNotInstalled) {
  sandbox::MakeFolder("/elsewhere/bin");
  fs::copy_file(test_support::HostProgram(), "/elsewhere/bin/statuscollector");
  std::string libraries;
  const fs::path build = fs::path(test_support::HostProgram()).parent_path().parent_path();
  for (const std::string folder : {"collector", "db", "insight", "model"}) {
    libraries += (libraries.empty() ? "" : ":") + (build / folder).string();
  }
  const ProgramResult result = RunProgram({"/elsewhere/bin/statuscollector", "capture", kFile},
                                          {"LD_LIBRARY_PATH=" + libraries});
  EXPECT_EQ(result.ExitCode, 2);
  EXPECT_THAT(result.Errors,
              HasSubstr("statuscollector: /elsewhere/libexec/statuscollector/capture cannot be "
                        "run: No such file or directory; install statuscollector-tools"));
}

TEST_F(CaptureFailure, ShowsWhatTheCollectorPrintsOnStandardErrorOnly) {
  const ProgramResult result = Capture({kFile});
  EXPECT_EQ(result.Output, "");
  EXPECT_THAT(result.Errors, HasSubstr("Dev Name eth0"));
}

}  // namespace
