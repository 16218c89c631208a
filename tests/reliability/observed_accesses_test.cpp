// What the kernel sees the collector ask is what the collector reports to its observer.
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/reliability/controller.h"
#include "tests/reliability/random_controller.h"
#include "tests/support/run_program.h"

namespace {

using sandbox::Scenario;

// The line of a system call as observe_accesses writes it; "" for one that asks nothing.
std::string AccessOf(const std::string& call) {
  static const std::regex kForm(R"((\w+)\((.*)\) += (-?\d+).*)");
  static const std::regex kPath(R"(^(?:AT_FDCWD|\d+), "([^"]*)\".*)");
  static const std::regex kFirst(R"(^"?([^",]*).*)");
  std::smatch parts;
  if (!std::regex_match(call, parts, kForm)) {
    return "not understood: " + call;
  }
  const std::string name = parts[1];
  const std::string arguments = parts[2];
  const std::string result = " = " + parts[3].str();
  const std::string path = std::regex_replace(arguments, kPath, "$1");
  const std::string first = std::regex_replace(arguments, kFirst, "$1");
  if (name == "openat") {
    return "open " + path + result;
  }
  if (name == "newfstatat") {
    return "status " + (path.empty() ? first : path) + result;
  }
  if (name == "close" || name == "geteuid") {
    return "";
  }
  static const std::map<std::string, std::string> kNames = {{"read", "read "},
                                                            {"fstat", "status "},
                                                            {"ioctl", "request "},
                                                            {"statfs", "storage "},
                                                            {"readlinkat", "link "}};
  if (const auto known = kNames.find(name); known != kNames.end()) {
    return known->second + first + result;
  }
  static const std::map<std::string, std::string> kAlone = {{"sysinfo", "system"},
                                                            {"socket", "socket"}};
  const auto alone = kAlone.find(name);
  return (alone == kAlone.end() ? name : alone->second) + result;
}

bool IsOf(const std::string& frame, const char* library) {
  return frame.find(library) != std::string::npos;
}

// The accesses of a trace with the stack of each system call: those that the collector's library
// makes by a function of the C library which does nothing else. The others are the C library's,
// SQLite's and the database layer's own.
std::string AccessesOf(const std::string& trace) {
  std::ifstream lines(trace);
  std::string accesses;
  std::string call;
  std::vector<std::string> frames;
  const auto end_call = [&] {
    if (frames.size() >= 2 && IsOf(frames[0], "/libc.so") &&
        IsOf(frames[1], "/libstatuscollector.so")) {
      const std::string access = AccessOf(call);
      accesses += access + (access.empty() ? "" : "\n");
    }
    frames.clear();
  };
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(" > ")) {
      frames.push_back(line);
    } else if (!line.empty()) {
      end_call();
      call = line;
    }
  }
  end_call();
  return accesses;
}

std::string TextOf(const std::string& file) {
  std::ifstream text(file);
  return {std::istreambuf_iterator<char>(text), {}};
}

void ExpectEveryAccessToBeObserved(const Scenario& controller) {
  controller.Apply();
  const auto ran = test_support::RunProgram(
      {"strace", "-k", "-o", "/tmp/trace", OBSERVE_ACCESSES, "/tmp/observed"});
  ASSERT_EQ(ran.ExitCode, 0) << ran.Errors;
  const std::string traced = AccessesOf("/tmp/trace");
  EXPECT_NE(traced, "");
  EXPECT_EQ(traced, TextOf("/tmp/observed"));
}

// The system calls between the two marks of a trace: name, path if there is one, and result. Memory
// is the observer's business as well, and processes have different numbers.
std::string CallsBetweenMarks(const std::string& trace) {
  static const std::regex kForm(R"((\w+)\([^"]*("[^"]*")?.* = (\S+).*)");
  static const std::set<std::string> kAside = {"brk",    "mmap",    "munmap", "mprotect",
                                               "mremap", "madvise", "getpid"};
  std::ifstream lines(trace);
  std::string calls;
  int marks = 0;
  for (std::string line; std::getline(lines, line);) {
    std::smatch parts;
    if (line.starts_with("getppid(")) {
      ++marks;
    } else if (marks == 1 && std::regex_match(line, parts, kForm) && !kAside.contains(parts[1])) {
      calls += parts[1].str() + parts[2].str() + " = " + parts[3].str() + '\n';
    }
  }
  EXPECT_EQ(marks, 2);
  return calls;
}

std::string CallsOf(std::vector<std::string> program) {
  program.insert(program.begin(), {"strace", "-o", "/tmp/trace"});
  const auto ran = test_support::RunProgram(program);
  EXPECT_EQ(ran.ExitCode, 0) << ran.Errors;
  return CallsBetweenMarks("/tmp/trace");
}

}  // namespace

TEST(AnObservedCycle, MakesTheSystemCallsOfOneThatIsNot) {
  const int count = reliability::Repetitions(8, 300);
  for (int seed = 1; seed <= count; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    reliability::RandomController(static_cast<unsigned>(seed)).Database().Apply();
    CallsOf({OBSERVE_ACCESSES});  // makes the files beside the database, which then stay
    const std::string unobserved = CallsOf({OBSERVE_ACCESSES});
    EXPECT_GT(std::ranges::count(unobserved, '\n'), 50);
    EXPECT_EQ(CallsOf({OBSERVE_ACCESSES, "/tmp/observed"}), unobserved);
  }
}

TEST(EveryAccessOfACycle, IsObservedOnABareController) {
  ExpectEveryAccessToBeObserved(Scenario().Database());
}

TEST(EveryAccessOfACycle, IsObservedOnABusyController) {
  SANDBOX_NEEDS_DEVICES();
  ExpectEveryAccessToBeObserved(reliability::BusyController());
}

TEST(EveryAccessOfACycle, IsObservedOnAFaultyController) {
  SANDBOX_NEEDS_DEVICES();
  ExpectEveryAccessToBeObserved(Scenario::Load(sandbox::SourcePath("scenarios/faults"))
                                    .Unopenable("/home/Zet/.settings/uuid")
                                    .Folder("/proc/meminfo"));
}
