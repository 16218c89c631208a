// controller-box: runs a command in a sandbox.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "sandbox/advice.h"
#include "sandbox/archive.h"
#include "sandbox/check.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/tool.h"

namespace {

using sandbox::Scenario;

// As env(1) and shells have it.
constexpr int kTrouble = 125;
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;

constexpr int kMostSteps = 1'000'000;

struct Options {
  std::vector<std::string> Binds;
  std::string Scenario;
  int Step = 0;
  int Realtime = 0;  // seconds; 0: no
  std::string RootSize;
  std::vector<std::string> Command;
};

sandbox::Tool Describe(Options* options) {
  return {
      .Name = "controller-box",
      .About =
          "Runs COMMAND in a controller in a box: an empty root file system with the\n"
          "programs and libraries of this machine, and the files, device nodes, interfaces\n"
          "and database rows of a scenario. Nothing of it is left when COMMAND ends.\n",
      .Footer =
          "It needs namespaces (root, or users who may make them) and, for device nodes\n"
          "and files that fail, /dev/fuse.\n\n"
          "Exit status: COMMAND's, 128 + n when signal n ended it; 125 when there is no\n"
          "box, with the reason; 126 when COMMAND cannot be run, 127 when it is not found.\n\n"
          "The environment passes through. SANDBOX_BIND=PATH:PATH is another way to say\n"
          "--bind; STATUS_UPDATE_GOLDEN=1 makes the source tree writable.\n\n"
          "Example: controller-box --scenario capture.tar.zst -- statuscollector show",
      .Arguments = {{.Name = "--scenario",
                     .Type = "FILE|FOLDER",
                     .About = "The controller: a folder or a capture",
                     .Value = &options->Scenario},
                    {.Name = "--step",
                     .Type = "N",
                     .About = "Begin after N steps of the scenario",
                     .Value = &options->Step,
                     .Least = 0,
                     .Most = kMostSteps},
                    {.Name = "--realtime",
                     .Type = "SECONDS",
                     .About = "Make a step each time these have passed",
                     .Value = &options->Realtime,
                     .Least = 1,
                     .Most = 86400},
                    {.Name = "--bind",
                     .Type = "PATH",
                     .About = "Make this path writable inside; repeatable",
                     .Value = &options->Binds},
                    {.Name = "--root-size",
                     .Type = "BYTES",
                     .About = "Size of the root file system; K, M, G are units",
                     .Value = &options->RootSize},
                    {.Name = "COMMAND",
                     .Type = "",
                     .About = "Program and arguments",
                     .Value = &options->Command,
                     .MayBeMissing = true}},
      .Rest = &options->Command,
      .Trouble = kTrouble,
  };
}

// Exceptions, inside and outside, end as messages.
template <class Body>
int Guarded(const sandbox::Tool& tool, const Body& body) {
  try {
    return body();
  } catch (const sandbox::Refused& refusal) {
    sandbox::Complain(tool, std::string(refusal.what()) + "; " + sandbox::HowToAllow());
  } catch (const std::exception& error) {
    sandbox::Complain(tool, error.what());
  }
  return kTrouble;
}

int Run(const sandbox::Tool& tool, std::vector<std::string>& command, const std::string& outside) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (std::string& word : command) {
    words.push_back(word.data());
  }
  words.push_back(nullptr);
  execvp(words[0], words.data());
  if (errno == ENOENT) {
    sandbox::Complain(tool, sandbox::HowToBring(command[0], outside));
    return kNotFound;
  }
  sandbox::Complain(tool, command[0] + ": " + std::strerror(errno) + "; give a program");
  return kCannotRun;
}

void RequireDevices(const Scenario& scenario) {
  const std::string why = scenario.NeedsDevices() ? sandbox::WhyNoDevices() : "";
  if (!why.empty()) {
    throw std::runtime_error(why);
  }
}

// Makes the steps from `first` on as time passes, in a process of its own, which ends with the box.
// It is no child of the command's.
void StepInTime(const sandbox::Tool& tool, const Scenario& scenario, std::size_t first,
                std::chrono::seconds interval) {
  const pid_t child = sandbox::Check(fork(), "start the process that makes steps");
  if (child != 0) {
    waitpid(child, nullptr, 0);
    return;
  }
  if (fork() != 0) {
    _exit(0);
  }
  Guarded(tool, [&] {
    for (sandbox::StepByStep steps(scenario, first); !steps.AtEnd(); steps.ApplyNext()) {
      std::this_thread::sleep_for(interval);
    }
    return 0;
  });
  _exit(0);
}

void Apply(const sandbox::Tool& tool, const Scenario& scenario, const Options& options) {
  const auto first = static_cast<std::size_t>(options.Step);
  const Scenario begin = scenario.Step(first);
  try {
    begin.Apply();
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::no_space_on_device) {
      throw;
    }
    throw std::runtime_error(std::string(error.what()) + "; give the box more with --root-size");
  }
  for (const std::string& line : begin.NotReplayed()) {
    sandbox::Complain(tool, line);
  }
  if (options.Realtime != 0) {
    StepInTime(tool, scenario, first, std::chrono::seconds(options.Realtime));
  }
}

std::optional<Scenario> Load(const Options& options) {
  if (options.Scenario.empty()) {
    return std::nullopt;
  }
  Scenario scenario = sandbox::LoadScenario(options.Scenario);
  if (static_cast<std::size_t>(options.Step) > scenario.Steps()) {
    throw std::runtime_error("--step " + std::to_string(options.Step) + ": " + options.Scenario +
                             " has no such step; give 0 to " + std::to_string(scenario.Steps()));
  }
  RequireDevices(scenario);
  return scenario;
}

int Main(const sandbox::Tool& tool, Options& options) {
  if (options.Command.empty()) {
    throw std::runtime_error("COMMAND is missing; see controller-box --help");
  }
  const std::optional<Scenario> scenario = Load(options);
  sandbox::Options box = sandbox::OptionsFromEnvironment();
  if (!options.RootSize.empty()) {
    box.RootBytes = sandbox::BytesOf(options.RootSize);
  }
  box.LastProcess = 4000;  // a shell that somebody works in for a day
  for (const std::string& bind : options.Binds) {
    if (!std::filesystem::exists(bind)) {
      throw std::runtime_error("--bind " + bind + ": there is no such path; make it first");
    }
    box.Writable.emplace_back(bind);
  }
  const std::string outside = sandbox::FindProgram(options.Command[0]);
  return sandbox::RunInside(box, [&] {
    return Guarded(tool, [&] {
      if (scenario) {
        Apply(tool, *scenario, options);
      }
      return Run(tool, options.Command, outside);
    });
  });
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  const sandbox::Tool tool = Describe(&options);
  return Guarded(tool, [&] {
    const std::optional<int> ended = sandbox::ReadCommandLine(tool, argc, argv);
    return ended ? *ended : Main(tool, options);
  });
}
