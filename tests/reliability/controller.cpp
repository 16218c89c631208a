#include "tests/reliability/controller.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "hardware/rate_limit.h"
#include "model/xml.h"
#include "sandbox/enter.h"

namespace reliability {

namespace {

std::string Failure(sqlite3* db, int code) {
  return code == SQLITE_OK ? "" : std::to_string(code) + ":" + sqlite3_errmsg(db);
}

void ForgetProbes(QtSts::COutput* output) {
  output->Dimming.OutputLevel = 0;
  output->Dimming.Content.First = 0;
  output->Dimming.Content.Second = 0;
  output->Dimming.Content.Third = 0;
  output->ScalerOutputArea.Width = 0;
  output->ScalerOutputArea.Height = 0;
  output->Frequency.Vertical = 0;
  output->Statistics.Clear();
  output->StatusFlags = 0;  // rows add to what the probe assigned
}

}  // namespace

sandbox::Scenario BusyController() {
  constexpr std::uint32_t kTrackerEnable = 0x8004DA1C;
  return sandbox::Scenario::Load(sandbox::SourcePath("scenarios/demo"))
      .Answer("travex", kTrackerEnable, 0)
      .File("/proc/driver/frame_control/registers",
            // The first of a label counts.
            "pixel_tracker_bits: 0x8\n" +
                sandbox::ReadFile(
                    sandbox::SourcePath("scenarios/demo/root/proc/driver/frame_control/registers")))
      .File("/var/run/wd_event", "")
      .File("/home/Zet/uuid", "behind a link\n")
      .Link("/home/Zet/.settings/uuid", "../uuid")
      .Row("ErrorFlags", sandbox::Blob("0x1234"))
      .Row("TtableContract", nullptr)
      .Row("MdlsAmbientFailure", "1");
}

void ForgetTrackerReports() {
  rs.begin = 0;
  rs.printed = 0;
  rs.missed = 0;
}

Quiet::Quiet()
    : caught_(memfd_create("stderr", MFD_CLOEXEC)),
      nowhere_(open("/dev/null", O_WRONLY | O_CLOEXEC)),
      error_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)),
      output_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
  if (caught_ == -1 || nowhere_ == -1 || error_ == -1 || output_ == -1) {
    throw std::runtime_error("cannot catch the output");
  }
}

Quiet::~Quiet() {
  for (const int file : {caught_, nowhere_, error_, output_}) {
    close(file);
  }
}

std::string Quiet::Run(const std::function<void()>& action) {
  std::fflush(nullptr);
  dup2(caught_, STDERR_FILENO);
  dup2(nowhere_, STDOUT_FILENO);
  action();
  std::fflush(nullptr);
  dup2(error_, STDERR_FILENO);
  dup2(output_, STDOUT_FILENO);

  std::string text(static_cast<std::size_t>(lseek(caught_, 0, SEEK_CUR)), '\0');
  if (pread(caught_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
      ftruncate(caught_, 0) == -1 || lseek(caught_, 0, SEEK_SET) == -1) {
    throw std::runtime_error("cannot read the output");
  }
  return text;
}

Outcome Run(Quiet* quiet, const std::function<int()>& cycle) {
  Outcome outcome;
  outcome.Report = quiet->Run([&] {
    try {
      outcome.Result = cycle();
    } catch (const std::bad_alloc&) {
      outcome.Threw = true;
    }
  });
  return outcome;
}

int ReportLines(const std::string& report) {
  std::istringstream text(report);
  int count = 0;
  for (std::string line; std::getline(text, line); ++count) {
    const std::size_t colon = line.find_first_not_of("0123456789");
    if (colon == 0 || colon == std::string::npos || line[colon] != ':' ||
        line.size() == colon + 1) {
      return -1;
    }
  }
  return report.empty() || report.back() == '\n' ? count : -1;
}

std::string Document(QtSts::CStatus* status) {
  status->LocalTime.clear();
  status->Uptime.clear();
  return QtSts::WriteDocument(*status);
}

std::string RowsOnly(QtSts::CStatus* status) {
  status->Compositors.Clear();
  status->Inputs.Clear();
  status->Network.Devices.Clear();
  status->Network.DNS.Addresses.Clear();
  for (std::string* text : {&status->FirmwareVersion, &status->DisplayFirmwareVersion,
                            &status->ConfigurationTimestamp}) {
    text->clear();
  }
  status->MemoryTotal = 0;
  status->MemoryFree = 0;
  status->StorageTotal = 0;
  status->StorageFree = 0;
  status->HardwareID1 = 0;
  status->HardwareID2 = 0;
  status->HardwareID3 = 0;
  status->SerialNumber = 0;
  for (unsigned int i = 0; i < status->Outputs.Count(); ++i) {
    ForgetProbes(status->Outputs[i]);
  }
  return Document(status);
}

std::string FirstDifference(const std::string& left, const std::string& right) {
  std::istringstream first(left);
  std::istringstream second(right);
  for (;;) {
    std::string a = "(end)";
    std::string b = "(end)";
    const bool more_first = static_cast<bool>(std::getline(first, a));
    const bool more_second = static_cast<bool>(std::getline(second, b));
    if (a != b) {
      return a + "\n" + b;
    }
    if (!more_first && !more_second) {
      return "";
    }
  }
}

int OpenDescriptors() {
  DIR* const folder = opendir("/proc/self/fd");
  int count = -1;  // the folder's own
  while (const dirent* entry = readdir(folder)) {
    count += entry->d_name[0] != '.' ? 1 : 0;
  }
  closedir(folder);
  return count;
}

Foreign::Foreign(const std::string& file) {
  if (sqlite3_open(file.c_str(), &db_) != SQLITE_OK) {
    throw std::runtime_error("cannot open " + file);
  }
}

Foreign::~Foreign() { sqlite3_close(db_); }

std::string Foreign::Do(const std::string& sql) {
  return Failure(db_, sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr));
}

std::string Foreign::Get(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr);
  std::string text;
  if (code == SQLITE_OK) {
    code = sqlite3_step(statement);
    const auto* const column =
        code == SQLITE_ROW ? reinterpret_cast<const char*>(sqlite3_column_text(statement, 0))
                           : nullptr;
    text = column != nullptr ? column : Failure(db_, code);
  } else {
    text = Failure(db_, code);
  }
  sqlite3_finalize(statement);
  return text;
}

Process::Process(const std::function<int()>& action) : pid_(fork()) {
  if (pid_ == 0) {
    _exit(action());
  }
}

void Process::Kill() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    Wait();
  }
}

int Process::Wait() {
  int status = 0;
  waitpid(std::exchange(pid_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Repetitions(int brief, int thorough) {
  const char* const wanted = std::getenv("STATUS_LONG");
  return wanted != nullptr && std::string_view(wanted) == "1" ? thorough : brief;
}

}  // namespace reliability
