// Puts the whole process, C and C++ alike, into a locale.
#pragma once

#include <clocale>
#include <locale>
#include <string>

namespace test_support {

// How C++ writes numbers, taken from the C locale as it stands. std::locale("name") would do the
// same, but the C library forgets memory each time it looks for a name in LOCPATH that way.
class PunctuationOfC : public std::numpunct<char> {
 public:
  PunctuationOfC()
      : point_(*std::localeconv()->decimal_point),
        separator_(*std::localeconv()->thousands_sep),
        grouping_(std::localeconv()->grouping) {}

 private:
  char do_decimal_point() const override { return point_; }
  char do_thousands_sep() const override { return separator_; }
  std::string do_grouping() const override { return grouping_; }

  char point_;
  char separator_;
  std::string grouping_;
};

// False, and nothing changed, where there is no such locale; "" is that of the environment.
inline bool EnterLocale(const char* name) {
  if (std::setlocale(LC_ALL, name) == nullptr) {
    return false;
  }
  // The facet belongs to the locale; without a name it leaves the C locale alone.
  std::locale::global(std::locale(std::locale::classic(), new PunctuationOfC));
  return true;
}

}  // namespace test_support
