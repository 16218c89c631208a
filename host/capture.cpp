// capture: put what a cycle is given into a file.
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "host/commands.h"

namespace host {
namespace {

struct Options {
  int Cycles = 1;
  int Interval = 1;  // seconds
  int Timeout = 30;  // seconds
  bool Redact = false;
  std::string File;
};

// The program that does it, as seen from the folder of this one.
constexpr const char* kProgram = CAPTURE_FOLDER "/capture";

int Capture(const Options& options) {
  const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe");
  const std::string program = (own.parent_path() / kProgram).lexically_normal();
  std::array<std::string, 6> words = {program,
                                      std::to_string(options.Cycles),
                                      std::to_string(options.Interval),
                                      std::to_string(options.Timeout),
                                      options.Redact ? "1" : "0",
                                      options.File};
  std::array<char*, words.size() + 1> arguments = {};
  for (std::size_t at = 0; at < words.size(); ++at) {
    arguments[at] = words[at].data();
  }
  execv(program.c_str(), arguments.data());
  throw std::runtime_error(program + ": " + std::generic_category().message(errno) +
                           "; it belongs to this program: install both again");
}

}  // namespace

Declaration DeclareCapture() {
  const auto options = std::make_shared<Options>();
  return {{{.Name = "file",
            .Type = "FILE",
            .About = "Where to; -: standard output",
            .Value = &options->File},
           {.Name = "-c,--cycles",
            .Type = "N",
            .About = "Cycles to run (1)",
            .Value = &options->Cycles,
            .Least = 1,
            .Most = 100},
           {.Name = "--interval",
            .Type = "SECONDS",
            .About = "From the beginning of a cycle to that of the next (1)",
            .Value = &options->Interval,
            .Least = 0,
            .Most = 86400},
           {.Name = "--timeout",
            .Type = "SECONDS",
            .About = "How long a cycle may take (30)",
            .Value = &options->Timeout,
            .Least = 1,
            .Most = 3600},
           {.Name = "--redact",
            .Type = "",
            .About = "Replace what identifies the controller",
            .Value = &options->Redact}},
          [options] { return Capture(*options); }};
}

}  // namespace host
