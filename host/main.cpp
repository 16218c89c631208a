// statuscollector: runs collection cycles and shows the document.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "host/command_line.h"
#include "host/commands.h"
#include "host/failure_text.h"
#include "host/printable.h"

namespace {

// A program may be started with its standard streams closed. The next file opened would then take
// the place of one of them, and messages would go into it. Opened for reading, the place is taken
// and writing to it stays an error.
void KeepStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      static_cast<void>(open("/dev/null", O_RDONLY));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  KeepStandardStreams();
  // A pipe whose reader is gone is reported like any other output that cannot be written.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  try {
    return host::RunCommandLine(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "statuscollector: %s\n", host::Printable(host::InWords(error)).c_str());
    return host::kTrouble;
  }
}
