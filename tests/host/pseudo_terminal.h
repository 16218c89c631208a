// A program on a terminal of its own, whose keyboard and screen the test has.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <string>
#include <string_view>
#include <vector>

namespace test_support {

struct WindowSize {
  unsigned short Columns = 80;
  unsigned short Lines = 24;
};

class PseudoTerminal {
 public:
  // Runs `arguments[0]`, found along PATH, with the terminal as standard input, output and error.
  // The environment is that of this process with TERM=xterm, without what changes colours, width
  // and pager, and with the changes to it ("NAME=value"). Throws std::runtime_error.
  explicit PseudoTerminal(const std::vector<std::string>& arguments,
                          const std::vector<std::string>& environment = {}, WindowSize size = {});
  // Ends the program when it still runs.
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // The program gets SIGWINCH, as when a person drags the window.
  void Resize(WindowSize size) const;

  // Keys, "\x03" for Ctrl-C.
  void Type(std::string_view keys) const;

  // Waits until the program has written `text` or has ended, at most a minute. Returns whether it
  // has written it.
  bool WaitFor(std::string_view text);

  // Waits until the program has ended, at most a minute. Types `keys` each time that it is silent:
  // a program that gets a signal may throw away what was typed before. Its exit code; -1 when it
  // did not end, or was ended by a signal.
  int WaitForEnd(std::string_view keys = "");

  // All that was written so far, with "\r\n" as the terminal makes it of "\n".
  const std::string& Output() const { return output_; }

  // The modes of the terminal: echo, line by line and the like.
  termios Modes() const;

 private:
  bool ReadBlock();

  int terminal_ = -1;
  // The other side, so that the terminal and its modes outlive the program.
  int kept_ = -1;
  pid_t process_ = -1;
  bool reaped_ = false;
  int status_ = 0;
  std::string output_;
};

// `text` without escape sequences and carriage returns.
std::string WithoutEscapes(std::string_view text);

}  // namespace test_support
