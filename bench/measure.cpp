// bench_measure ROUNDS COMMAND... [-- COMMAND...]: runs the commands in turn, ROUNDS times each,
// their output thrown away, and prints for each run the number of the command, from 0 on, the
// processor time in microseconds, the peak memory in kB and the page faults, on standard output.
//
// A program of its own, and a small one, because a process begins with the peak of the one that
// started it.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int kCannotRun = 126;

[[noreturn]] void Become(char** command) {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  execvp(command[0], command);
  std::perror(command[0]);
  _exit(kCannotRun);
}

long Microseconds(const timeval& time) { return time.tv_sec * 1'000'000 + time.tv_usec; }

// False when the command cannot be run or fails.
bool Measure(std::size_t number, char** command) {
  const pid_t child = fork();
  if (child == 0) {
    Become(command);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) < 0 || status != 0) {
    return false;
  }
  std::printf("%zu %ld %ld %ld\n", number,
              Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime), usage.ru_maxrss,
              usage.ru_minflt + usage.ru_majflt);
  return true;
}

// Each ends with a null pointer.
std::vector<char**> CommandsOf(char** words) {
  std::vector<char**> commands = {words};
  for (char** word = words; *word != nullptr; ++word) {
    if (std::strcmp(*word, "--") == 0) {
      *word = nullptr;
      commands.push_back(word + 1);
    }
  }
  return commands;
}

}  // namespace

int main(int count, char** values) {
  if (count < 3) {
    return 2;
  }
  const std::vector<char**> commands = CommandsOf(values + 2);
  for (long rounds = std::strtol(values[1], nullptr, 10); rounds > 0; --rounds) {
    for (std::size_t number = 0; number < commands.size(); ++number) {
      if (!Measure(number, commands[number])) {
        return 1;
      }
    }
  }
  return 0;
}
