// statuscollector-replay: runs the cycles of a capture again.
#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "host/command_line.h"
#include "host/failure_text.h"
#include "replay/cycles.h"
#include "replay/recording.h"
#include "replay/verify.h"
#include "sandbox/advice.h"
#include "sandbox/enter.h"
#include "sandbox/tool.h"

namespace {

using replay::Recording;

constexpr int kSame = 0;
constexpr int kDifferent = 1;
constexpr int kTrouble = 2;

struct Options {
  bool Verify = false;
  std::vector<std::string> Files;
  std::vector<std::string> Show;
};

sandbox::Tool Describe(Options* options) {
  return {
      .Name = "statuscollector-replay",
      .About =
          "Makes the controller of a capture in a box, runs its cycles there again, and\n"
          "shows the last document as `statuscollector show` does with what follows --.\n",
      .Footer =
          "FILE is a capture, which `statuscollector capture` writes, or a scenario folder.\n\n"
          "Exit status: that of `statuscollector show`; with --verify 0 the documents are\n"
          "the same, 1 some are not; 2 a capture cannot be read or replayed, wrong usage.\n\n"
          "Example: statuscollector-replay north.tar.zst -- --format json",
      .Arguments = {{.Name = "--verify",
                     .Type = "",
                     .About = "Compare the documents with those in the captures",
                     .Value = &options->Verify},
                    {.Name = "FILE", .Type = "FILE|FOLDER", .About = "", .Value = &options->Files}},
      .Rest = &options->Show,
      .Trouble = kTrouble,
  };
}

std::string InWords(const std::exception& error) {
  const auto* const refused = dynamic_cast<const sandbox::Refused*>(&error);
  return refused != nullptr ? std::string(error.what()) + "; " + sandbox::HowToAllow()
                            : host::InWords(error);
}

void RequireDevices(const Recording& recording) {
  const std::string why = recording.Controller.NeedsDevices() ? sandbox::WhyNoDevices() : "";
  if (!why.empty()) {
    throw std::runtime_error(why);
  }
}

bool StandsFor(const std::string& word, const char* brief, const std::string& full) {
  return word.starts_with(brief) || word == full || word.starts_with(full + "=");
}

// The words after "statuscollector".
std::vector<std::string> ShowWords(const Recording& recording, const Options& options) {
  std::vector<std::string> words = {"show"};
  bool cycles_given = false;
  for (const std::string& word : options.Show) {
    if (StandsFor(word, "-o", "--output")) {
      throw std::runtime_error(word + ": a file would be written in the box; write " +
                               recording.Name + " to standard output and send that to the file");
    }
    cycles_given = cycles_given || StandsFor(word, "-c", "--cycles");
    words.push_back(word);
  }
  if (!cycles_given) {
    words.insert(words.end(), {"--cycles", std::to_string(recording.Cycles.size())});
  }
  return words;
}

int RunShow(const sandbox::Tool& tool, const Recording& recording, std::vector<std::string> words) {
  replay::Begin(recording);
  for (const std::string& line : recording.Controller.NotReplayed()) {
    sandbox::Complain(tool, line);
  }
  words.insert(words.begin(), "statuscollector");
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  const replay::Stepper stepper(recording.Controller);
  const int status = host::RunCommandLine(static_cast<int>(words.size()), pointers.data());
  if (!stepper.Trouble().empty()) {
    throw std::runtime_error(stepper.Trouble());
  }
  return status;
}

int Show(const sandbox::Tool& tool, const Options& options) {
  if (options.Files.size() != 1) {
    throw std::runtime_error("one capture is shown at a time; give one, or --verify");
  }
  const Recording recording = replay::Read(options.Files[0]);
  RequireDevices(recording);
  const std::vector<std::string> words = ShowWords(recording, options);
  sandbox::Options box = sandbox::OptionsFromEnvironment();
  box.RootBytes = recording.RootBytes;
  return sandbox::RunInside(box, [&] {
    try {
      return RunShow(tool, recording, words);
    } catch (const std::exception& error) {
      sandbox::Complain(tool, InWords(error));
      return kTrouble;
    }
  });
}

std::string Cycles(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " cycle" : " cycles");
}

int VerifyOne(const std::string& file) {
  const Recording recording = replay::Read(file);
  RequireDevices(recording);
  const replay::Verdict verdict = replay::Verify(recording);
  if (verdict.Compared == 0) {
    throw std::runtime_error(file +
                             ": no document to compare with; give a capture of a cycle "
                             "that ended");
  }
  std::string text;
  for (const std::string& line : verdict.Differences) {
    text += file + ": " + sandbox::Shown(line) + "\n";
  }
  if (verdict.Differences.empty()) {
    text = file + ": " + Cycles(verdict.Compared) + ", no differences\n";
  }
  // Not std::ferror(): that is set for all files after one that could not be printed.
  if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
  return verdict.Differences.empty() ? kSame : kDifferent;
}

int VerifyAll(const sandbox::Tool& tool, const Options& options) {
  if (!options.Show.empty()) {
    throw std::runtime_error("--verify shows no document; leave out what follows --");
  }
  int worst = kSame;
  for (const std::string& file : options.Files) {
    int status = kTrouble;
    try {
      status = VerifyOne(file);
    } catch (const std::exception& error) {
      const std::string text = InWords(error);
      sandbox::Complain(
          tool, text.starts_with(file) ? text : std::string(file).append(": ").append(text));
    }
    worst = std::max(worst, status);
  }
  return worst;
}

}  // namespace

int main(int argc, char** argv) {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  std::setlocale(LC_ALL, "");
  Options options;
  const sandbox::Tool tool = Describe(&options);
  try {
    const std::optional<int> ended = sandbox::ReadCommandLine(tool, argc, argv);
    return ended ? *ended : options.Verify ? VerifyAll(tool, options) : Show(tool, options);
  } catch (const std::exception& error) {
    sandbox::Complain(tool, InWords(error));
    return kTrouble;
  }
}
