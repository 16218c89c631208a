// The whole screen of a terminal, drawn again and again in place.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "host/output.h"

namespace host {

// While it lives, the terminal shows its alternate screen without a cursor; what was there before
// is back afterwards, also when a signal ends or stops the program, at whatever moment it comes.
// What the program and its libraries write to standard output and error goes nowhere meanwhile. One
// at a time.
class Screen {
 public:
  // `output` must lead to a terminal, and outlive the screen. Throws std::system_error.
  explicit Screen(const StandardOutput& output);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  // Shows `title`, and as many lines of `text` below it as the window has. Those that are no lines
  // of `known` are highlighted, none when that is empty. Throws std::system_error.
  void Draw(const std::string& title, const std::string& text, const std::string& known);

 private:
  const StandardOutput& output_;
  int errors_;
};

// Waits until `time`. Returns false when the size of the window has changed, or the program was
// stopped and goes on, before that time. Throws std::system_error when nobody reads `output` any
// more.
bool WaitUntil(std::chrono::steady_clock::time_point time, const StandardOutput& output);

}  // namespace host
