// The locale de_DE.UTF-8, whose decimal point is a comma and whose thousands are separated by
// points.
#pragma once

#include <locale>
#include <string>

namespace test_support {

// As long as it lives, the whole process, C and C++, is in that locale.
class CommaLocale {
 public:
  CommaLocale();
  ~CommaLocale();
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  // What a program started by a test needs in its environment to be in it, too.
  static std::string Path();  // of LOCPATH
  static constexpr const char* kName = "de_DE.UTF-8";

 private:
  std::string before_;
  std::locale locale_before_;
};

}  // namespace test_support
