// Linked into every test program: puts it into the locale of its environment, C and C++ alike, as a
// host may be. ./test runs all tests a second time in one with a decimal comma.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <locale>

namespace {

bool Enter() {
  try {
    std::locale::global(std::locale(""));
  } catch (const std::exception&) {
    std::fprintf(stderr, "there is no locale %s\n", std::getenv("LC_ALL"));
    std::_Exit(EXIT_FAILURE);
  }
  return true;
}

const bool kEntered = Enter();

}  // namespace
