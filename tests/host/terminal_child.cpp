// What the tests run on a terminal: asks host/terminal.h there, and prints the answer between "<"
// and
// ">"; or shows a screen.
#include <dlfcn.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>

#include "host/output.h"
#include "host/screen.h"
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

bool g_interrupt_at_end = false;

// Ctrl-C comes at the moment at which the screen gives the signal back to the system.
void ShowScreen() {
  const host::StandardOutput output;
  host::Screen screen(output);
  screen.Draw("<title>", "line\n", "another line\n");
  g_interrupt_at_end = true;
}

}  // namespace

// Stands in front of the system's.
int sigaction(int signal, const struct sigaction* action, struct sigaction* before) noexcept {
  using Function = int (*)(int, const struct sigaction*, struct sigaction*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "sigaction"));
  const int result = real(signal, action, before);
  if (g_interrupt_at_end && signal == SIGINT) {
    raise(SIGINT);
  }
  return result;
}

int main(int argc, char** argv) {
  const std::string_view what = argc == 2 ? argv[1] : "";
  if (what == "screen") {
    ShowScreen();
    return 0;
  }
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
