// What terminal_test.cpp runs on a terminal: asks host/terminal.h there, and prints the answer
// between "<" and ">".
#include <cstdio>
#include <string>
#include <string_view>

#include "host/terminal.h"

namespace {

void SaySize() {
  const host::Window window = host::WindowOf(1);
  std::printf("<%zu x %zu>\n", window.Columns, window.Lines);
  static_cast<void>(std::fflush(stdout));
}

// A hundred lines, in the pager or without.
void ShowLines() {
  std::string text;
  for (int line = 1; line <= 100; ++line) {
    text += "line " + std::to_string(line) + " \xE2\x82\xAC\n";
  }
  std::puts(host::ShowInPager(1, text) ? "<pager>" : "<no pager>");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc == 2 ? argv[1] : "";
  if (what == "page") {
    ShowLines();
    return 0;
  }
  SaySize();
  if (what == "resized") {
    static_cast<void>(std::getchar());
    SaySize();
  }
  return 0;
}
