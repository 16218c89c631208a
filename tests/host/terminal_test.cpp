// Colour, on a pseudo-terminal. `show` runs on this machine, whatever it is: what it finds does not
// matter here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;

// What the program writes to a terminal.
std::string OnTerminal(const std::vector<std::string>& environment) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    unsetenv("NO_COLOR");
    setenv("TERM", "xterm", 1);
    for (const std::string& variable : environment) {
      putenv(const_cast<char*>(variable.c_str()));
    }
    execl(HOST_PROGRAM, HOST_PROGRAM, "show", nullptr);
    _exit(127);
  }
  std::string output;
  char block[4096];
  ssize_t count = 0;
  while ((count = read(terminal, block, sizeof block)) > 0) {
    output.append(block, static_cast<std::size_t>(count));
  }
  waitpid(child, nullptr, 0);
  close(terminal);
  return output;
}

TEST(Terminal, ShowsTitlesInColour) {
  EXPECT_THAT(OnTerminal({}), HasSubstr("\x1b[1mIdentity\x1b[0m\r\n"));
}

TEST(Terminal, ShowsNoColourWhenNoColorIsSet) {
  const std::string output = OnTerminal({"NO_COLOR=1"});
  EXPECT_THAT(output, HasSubstr("\r\nIdentity\r\n"));
  EXPECT_THAT(output, Not(HasSubstr("\x1b")));
}

TEST(Terminal, ShowsColourWhenNoColorIsEmpty) {
  EXPECT_THAT(OnTerminal({"NO_COLOR="}), HasSubstr("\x1b[1mIdentity\x1b[0m"));
}

TEST(Terminal, ShowsNoColourOnADumbTerminal) {
  EXPECT_THAT(OnTerminal({"TERM=dumb"}), Not(HasSubstr("\x1b")));
}

}  // namespace
