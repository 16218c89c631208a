// bench_measure COUNT COMMAND...: runs the command COUNT times, its output thrown away, and prints
// for each run the processor time in microseconds and the peak memory in kB, on standard output.
//
// A program of its own, and a small one, because a process begins with the peak of the one that
// started it.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

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

}  // namespace

int main(int count, char** values) {
  if (count < 3) {
    return 2;
  }
  for (long runs = std::strtol(values[1], nullptr, 10); runs > 0; --runs) {
    const pid_t child = fork();
    if (child == 0) {
      Become(values + 2);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) < 0 || status != 0) {
      return 1;
    }
    std::printf("%ld %ld\n", Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime),
                usage.ru_maxrss);
  }
  return 0;
}
