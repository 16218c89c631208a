// The program that `statuscollector capture` runs, which gives it the words: apart, so that no
// other command loads what packs archives.
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "capture/archive.h"
#include "capture/contents.h"
#include "capture/output_file.h"
#include "capture/recording.h"
#include "capture/redact.h"
#include "host/apart.h"
#include "host/capture.h"
#include "host/commands.h"
#include "host/failure_text.h"
#include "host/printable.h"

namespace {

// "no answer within 30 s: still reading /proc/meminfo"
std::string InWords(const capture::Stopped& stopped) {
  std::string text = stopped.Why;
  if (stopped.Last) {
    text += ": still " + stopped.Last->Doing + " " + stopped.Last->Source;
  }
  return text;
}

std::string HostName() {
  char name[256] = "";
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

// The capture of `recording` as a file. With --redact the recording loses what identifies the
// controller.
std::string PackedCapture(const host::CaptureOptions& options, capture::Recording* recording) {
  if (!options.Redact) {
    return capture::Pack(capture::ContentsOf(*recording, {}, capture::ThisMachine()));
  }
  std::random_device seed;
  std::mt19937_64 random((std::uint64_t{seed()} << 32) + seed());
  const capture::Redaction redaction(*recording, HostName(), &random);
  redaction.Apply(recording);
  const capture::Entries contents =
      capture::ContentsOf(*recording, redaction.List(), capture::ThisMachine());
  redaction.Check(contents);
  return capture::Pack(contents);
}

int Capture(const host::CaptureOptions& options) {
  const bool to_output = options.File == "-";
  std::optional<capture::OutputFile> file;
  if (to_output) {
    capture::RequireNoTerminal();
  } else {
    file.emplace(options.File);  // what is wrong with it shows before the cycle
  }
  capture::Plan plan;
  plan.Cycles = options.Cycles;
  plan.Interval = std::chrono::seconds(options.Interval);
  plan.Timeout = std::chrono::seconds(options.Timeout);
  capture::Recording recording = capture::Record(plan);
  const std::string packed = PackedCapture(options, &recording);
  if (to_output) {
    capture::WriteToStandardOutput(packed);
  } else {
    file->Write(packed);
  }
  if (recording.Stopped) {
    std::fprintf(
        stderr, "statuscollector: %s\n",
        host::Printable(InWords(*recording.Stopped) + "; " + options.File + " has what came before")
            .c_str());
    return host::kFailed;
  }
  return host::kAllWell;
}

}  // namespace

int main(int argc, char** argv) {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  std::setlocale(LC_ALL, "");
  try {
    host::CaptureOptions options;
    host::TakeWords(std::vector<std::string>(argv + 1, argv + argc),
                    host::CaptureArguments(&options));
    return Capture(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "statuscollector: %s\n", host::Printable(host::InWords(error)).c_str());
    return host::kTrouble;
  }
}
