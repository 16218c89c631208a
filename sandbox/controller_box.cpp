// controller-box: runs a command in a sandbox.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"

namespace {

// As shells have it.
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;

int Run(std::vector<std::string>& command) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (std::string& word : command) {
    words.push_back(word.data());
  }
  words.push_back(nullptr);
  execvp(words[0], words.data());
  const int error = errno;
  std::fprintf(stderr, "controller-box: %s: %s\n", words[0], std::strerror(error));
  return error == ENOENT ? kNotFound : kCannotRun;
}

// Exceptions, inside and outside, end as messages.
template <class Body>
int Guarded(const Body& body) {
  try {
    return body();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "controller-box: %s\n", error.what());
    return kCannotRun;
  }
}

int Main(int argc, char** argv) {
  CLI::App app(
      "Runs COMMAND in a controller in a box: an empty root file system with the\n"
      "programs and libraries of this machine, and the files, device nodes, interfaces\n"
      "and database rows of a scenario. Nothing of it is left when COMMAND ends.\n",
      "controller-box");
  app.footer(
      "The exit status is COMMAND's, 128 + n when signal n ended it, 127 when it is not\n"
      "found, 126 when the box or COMMAND cannot be started.\n\n"
      "The environment passes through. SANDBOX_BIND=PATH:PATH is another way to say\n"
      "--bind; STATUS_UPDATE_GOLDEN=1 makes the source tree writable.\n\n"
      "Example: controller-box --scenario scenarios/demo -- cat /proc/meminfo\n");
  sandbox::Options options = sandbox::OptionsFromEnvironment();
  std::vector<std::string> binds;
  std::string folder;
  std::vector<std::string> command;
  app.add_option("--bind", binds, "Make this path writable inside; repeatable")
      ->type_name("PATH")
      ->allow_extra_args(false);
  app.add_option("--scenario", folder, "The controller to be; without it an empty one")
      ->type_name("DIR");
  app.add_option("--root-size", options.RootBytes, "Size of the root file system")
      ->type_name("BYTES")
      ->capture_default_str();
  app.add_option("COMMAND", command, "Program and arguments, behind --")->required();
  CLI11_PARSE(app, argc, argv);
  std::optional<sandbox::Scenario> scenario;
  if (!folder.empty()) {
    scenario = sandbox::Scenario::Load(folder);
  }
  options.Writable.insert(options.Writable.end(), binds.begin(), binds.end());
  return sandbox::RunInside(options, [&] {
    return Guarded([&] {
      if (scenario) {
        scenario->Apply();
      }
      return Run(command);
    });
  });
}

}  // namespace

int main(int argc, char** argv) {
  return Guarded([&] { return Main(argc, argv); });
}
