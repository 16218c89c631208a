#include "tests/support/run_program.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace test_support {
namespace {

// A stream of the program, caught in memory.
class Catcher {
 public:
  Catcher() : descriptor_(memfd_create("caught", MFD_CLOEXEC)) {
    if (descriptor_ == -1) {
      throw std::runtime_error("memfd_create");
    }
  }
  ~Catcher() { close(descriptor_); }
  Catcher(const Catcher&) = delete;
  Catcher& operator=(const Catcher&) = delete;

  void Become(int descriptor) const { dup2(descriptor_, descriptor); }

  std::string Text() const {
    std::string text;
    char block[65536];
    ssize_t count = 0;
    while ((count = pread(descriptor_, block, sizeof block, static_cast<off_t>(text.size()))) > 0) {
      text.append(block, static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  int descriptor_;
};

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment) {
  const Catcher output;
  const Catcher errors;
  std::vector<char*> argv;
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  const pid_t child = fork();
  if (child == -1) {
    throw std::runtime_error("fork");
  }
  if (child == 0) {
    output.Become(STDOUT_FILENO);
    errors.Become(STDERR_FILENO);
    for (const std::string& variable : environment) {
      putenv(const_cast<char*>(variable.c_str()));
    }
    execvp(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output.Text(), errors.Text()};
}

}  // namespace test_support
