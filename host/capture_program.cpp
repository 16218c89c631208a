// The program that `statuscollector capture` runs: apart, so that no other command loads what
// packs archives.
//
//   capture CYCLES INTERVAL TIMEOUT REDACT FILE
//
// REDACT is 1 or 0, FILE may be "-". The other words are numbers, which `statuscollector` has
// checked.
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <random>
#include <string>

#include "capture/archive.h"
#include "capture/contents.h"
#include "capture/output_file.h"
#include "capture/recording.h"
#include "capture/redact.h"
#include "host/commands.h"
#include "host/failure_text.h"
#include "host/printable.h"

namespace {

struct Options {
  capture::Plan Plan;
  bool Redact = false;
  std::string File;
};

std::optional<Options> Parse(int argc, char** argv) {
  if (argc != 6) {
    return std::nullopt;
  }
  Options options;
  options.Plan.Cycles = std::atoi(argv[1]);
  options.Plan.Interval = std::chrono::seconds(std::atoi(argv[2]));
  options.Plan.Timeout = std::chrono::seconds(std::atoi(argv[3]));
  options.Redact = std::strcmp(argv[4], "1") == 0;
  options.File = argv[5];
  return options;
}

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
std::string PackedCapture(const Options& options, capture::Recording* recording) {
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

int Capture(const Options& options) {
  const bool to_output = options.File == "-";
  std::optional<capture::OutputFile> file;
  if (to_output) {
    capture::RequireNoTerminal();
  } else {
    file.emplace(options.File);  // what is wrong with it shows before the cycle
  }
  capture::Recording recording = capture::Record(options.Plan);
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
  const std::optional<Options> options = Parse(argc, argv);
  if (!options) {
    std::fputs("statuscollector: this program is for `statuscollector capture`\n", stderr);
    return host::kTrouble;
  }
  try {
    return Capture(*options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "statuscollector: %s\n", host::Printable(host::InWords(error)).c_str());
    return host::kTrouble;
  }
}
