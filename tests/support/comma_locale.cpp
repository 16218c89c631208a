#include "tests/support/comma_locale.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "tests/support/paths.h"
#include "tests/support/process_locale.h"

namespace test_support {

std::string CommaLocale::Path() { return Locales(); }

CommaLocale::CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
  setenv("LOCPATH", Path().c_str(), 1);
  if (!EnterLocale(kName) || std::strcmp(std::localeconv()->decimal_point, ",") != 0) {
    throw std::runtime_error("the decimal point of the comma locale is not a comma");
  }
}

CommaLocale::~CommaLocale() {
  std::locale::global(locale_before_);
  std::setlocale(LC_ALL, before_.c_str());
  unsetenv("LOCPATH");
}

}  // namespace test_support
