#include "capture/assembler.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "collector/observer.h"
#include "hardware/paths.h"

namespace capture {
namespace {

namespace paths = hardware::paths;
using observe::Call;
using observe::Stage;

// The files to which a probe goes name by name. Of one that has several, or one for each interface,
// nobody can say which it wanted when a folder on the way cannot be opened.
constexpr struct {
  const char* Probe;
  const char* Path;
} kWalked[] = {
    {"IDs", paths::kSerial.Path},
    {"GUID", paths::kUuid.Path},
    {"GetTime", paths::kConfigurationTimestamp.Path},
};

const std::string& SourceOf(const Observation& seen) { return seen.Texts.front(); }
const std::string& BytesOf(const Observation& seen) { return seen.Texts.back(); }

const char* DoingOf(Call call) {
  switch (call) {
    case Call::kOpen:
      return "opening";
    case Call::kRead:
      return "reading";
    case Call::kRequest:
      return "request of";
    default:
      return "asking";
  }
}

Question QuestionOf(const Observation& seen) {
  const std::string& source = SourceOf(seen);
  return {DoingOf(static_cast<Call>(seen.Call)), source.empty() ? "the system" : source};
}

std::optional<std::string> Cell(const Observation& seen, int column) {
  if ((seen.Number & (1U << column)) != 0) {
    return std::nullopt;
  }
  return seen.Texts[static_cast<std::size_t>(column)];
}

std::string HardwareText(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += text.empty() ? "" : ":";
    text += {kDigits[byte / 16], kDigits[byte % 16]};
  }
  return text;
}

}  // namespace

bool Reading::Same(const Reading& other) const {
  return OpenError == other.OpenError && StatusError == other.StatusError &&
         ReadError == other.ReadError && Mode == other.Mode && Bytes == other.Bytes;
}

bool IsDevice(const std::string& path) {
  return path == paths::kRouter || path == paths::kDisplay || path == paths::kDiagnostics;
}

Reading* Assembler::Current() {
  return current_.empty() ? nullptr : &cycle_->Files[current_].Readings.back();
}

void Assembler::Take(const Observation& seen, std::chrono::steady_clock::time_point now) {
  switch (seen.What) {
    case Saw::kCycleBegins:
      cycle_ = &cycles_.emplace_back();
      began_ = now;
      probe_.clear();
      current_.clear();
      break;
    case Saw::kCycleEnds:
      TakeEnd(seen, now);
      break;
    case Saw::kProbeBegins:
      FinishWalk();
      probe_ = SourceOf(seen);
      current_.clear();
      break;
    case Saw::kAsks:
      waiting_ = QuestionOf(seen);
      if (waiting_->Source.starts_with("/proc/thread-self/fd/")) {
        waiting_->Source = walk_.Path();  // the file that was looked at
      }
      break;
    case Saw::kAnswers:
      waiting_.reset();
      TakeAnswer(seen);
      break;
    case Saw::kInterface:
      cycle_->Interfaces.push_back({seen.Number, seen.Texts});
      break;
    case Saw::kAsksDatabase:
      waiting_ = Question{"reading", paths::kStatusDatabase};
      cycle_->AskedForRows =
          cycle_->AskedForRows || static_cast<Stage>(seen.Number) == Stage::kRows;
      break;
    case Saw::kDatabaseFails:
      cycle_->Failures.push_back({seen.Number, static_cast<int>(seen.Result), SourceOf(seen)});
      break;
    case Saw::kRow:
      TakeRow(seen);
      break;
    case Saw::kDocument:
      cycle_->Document = BytesOf(seen);
      break;
  }
}

void Assembler::TakeEnd(const Observation& seen, std::chrono::steady_clock::time_point now) {
  FinishWalk();
  waiting_.reset();
  cycle_->Ended = true;
  cycle_->Result = static_cast<int>(seen.Result);
  cycle_->Threw = seen.Number != 0;
  cycle_->Seconds = std::chrono::duration<double>(now - began_).count();
}

void Assembler::TakeAnswer(const Observation& seen) {
  const auto call = static_cast<Call>(seen.Call);
  switch (call) {
    case Call::kOpen:
      TakeOpen(seen);
      break;
    case Call::kRead:
      TakeRead(seen);
      break;
    case Call::kFileStatus:
      TakeFileStatus(seen);
      break;
    case Call::kPathStatus:
      TakePathStatus(seen);
      break;
    case Call::kLinkTarget:
      if (seen.Result > 0) {
        walk_.Follow(SourceOf(seen), BytesOf(seen));
        walk_error_ = 0;
      }
      break;
    case Call::kRequest:
      cycle_->Devices[SourceOf(seen)].Answers[static_cast<std::uint32_t>(seen.Number)].push_back(
          {probe_, seen.Result, seen.Error});
      break;
    default:
      TakeSystem(seen);
  }
}

// What is no file and no node.
void Assembler::TakeSystem(const Observation& seen) {
  const bool answered = seen.Result >= 0;
  switch (static_cast<Call>(seen.Call)) {
    case Call::kStorage:
      if (answered) {
        cycle_->Storage = {seen.Number, seen.Offset, seen.Limit};
      }
      break;
    case Call::kSystem:
      if (answered) {
        cycle_->Uptime = seen.Number;
      }
      break;
    case Call::kInterfaces:
      cycle_->InterfacesError = seen.Error;
      break;
    case Call::kHardwareAddress:
      cycle_->HardwareAddresses[SourceOf(seen)] = {answered ? HardwareText(BytesOf(seen)) : "",
                                                   seen.Error};
      break;
    case Call::kHostText:
      if (seen.Result != 0) {
        cycle_->WithoutText.push_back(SourceOf(seen));
      }
      break;
    case Call::kLocalTime:
      cycle_->LocalTime = BytesOf(seen);
      cycle_->ZoneOffset = static_cast<std::int64_t>(seen.Number);
      cycle_->DaylightSaving = seen.Offset != 0;
      break;
    default:
      break;
  }
}

void Assembler::TakeOpen(const Observation& seen) {
  if (IsDevice(SourceOf(seen))) {
    cycle_->Devices[SourceOf(seen)].Openings.push_back(
        {probe_, seen.Result < 0 ? -1 : 0, seen.Error});
  } else {
    TakeFileOpen(seen);
  }
}

void Assembler::TakeFileOpen(const Observation& seen) {
  const FileWalk::Step step = walk_.Open(SourceOf(seen), seen.Number, seen.Offset != 0);
  if (walk_.Begins()) {
    FinishWalk();
    current_.clear();
    opens_anew_ = true;
  }
  if (step != FileWalk::Step::kFile) {
    walk_error_ = step == FileWalk::Step::kFolder ? seen.Error : walk_error_;
    return;
  }
  walk_error_ = 0;
  const std::string path = walk_.Path();
  File& file = cycle_->Files[path];
  if (std::exchange(opens_anew_, false) || path != current_) {
    file.Readings.push_back({.Probe = probe_});
  }
  file.Links = walk_.Links();
  current_ = path;
  file.Readings.back().OpenError = seen.Error;
}

// A folder on the way could not be opened: so the file could not.
void Assembler::FinishWalk() {
  const int error = std::exchange(walk_error_, 0);
  if (error == 0 || error == ENOENT) {
    return;
  }
  const auto* const walked =
      std::ranges::find_if(kWalked, [this](const auto& row) { return row.Probe == probe_; });
  if (walked != std::end(kWalked)) {
    cycle_->Files[walked->Path].Readings.push_back({.Probe = probe_, .OpenError = error});
  }
}

void Assembler::TakeFileStatus(const Observation& seen) {
  Reading* const reading = Current();
  if (reading == nullptr || reading->OpenError != 0) {
    return;  // of a link, or of a file that is going to be waited for
  }
  reading->StatusError = seen.Error;
  if (seen.Result == 0) {
    reading->Mode = static_cast<std::uint32_t>(seen.Number);
  }
}

void Assembler::TakePathStatus(const Observation& seen) {
  File& file = cycle_->Files[Normal(SourceOf(seen))];
  const std::optional<std::uint32_t> mode =
      seen.Result == 0 ? std::optional(static_cast<std::uint32_t>(seen.Number)) : std::nullopt;
  if (!file.LookedAt && file.LookError == 0) {
    file.LookedAt = mode;
    file.LookError = seen.Error;
  } else if (file.LookedAt != mode || file.LookError != seen.Error) {
    file.LooksDiffer = true;
  }
}

void Assembler::TakeRead(const Observation& seen) {
  Reading* const reading = Current();
  if (reading == nullptr) {
    return;
  }
  if (seen.Result >= 0) {
    reading->Bytes += BytesOf(seen);
    reading->GoesOn = seen.Limit != 0 && static_cast<std::uint64_t>(seen.Result) == seen.Limit;
  } else if (seen.Error != EINTR) {
    reading->ReadError = seen.Error;
  }
}

void Assembler::TakeRow(const Observation& seen) {
  Row row = {Cell(seen, 0), Cell(seen, 1)};
  row.KeyGoesOn = (seen.Number & 4U) != 0;
  row.ValueGoesOn = (seen.Number & 8U) != 0;
  cycle_->Rows.push_back(std::move(row));
}

std::vector<Cycle> Assembler::TakeCycles() { return std::move(cycles_); }

}  // namespace capture
