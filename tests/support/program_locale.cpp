// Linked into every test program: puts it into the locale of its environment, C and C++ alike, as a
// host may be. Under sanitizers ./test runs them in one with a decimal comma.
#include <cstdio>
#include <cstdlib>

#include "tests/support/process_locale.h"

namespace {

bool Enter() {
  if (!test_support::EnterLocale("")) {
    std::fprintf(stderr, "there is no locale %s\n", std::getenv("LC_ALL"));
    std::_Exit(EXIT_FAILURE);
  }
  return true;
}

const bool kEntered = Enter();

}  // namespace
