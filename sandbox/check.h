#pragma once

#include <string_view>

namespace sandbox {

// Throws std::system_error made of errno and "what subject".
[[noreturn]] void Fail(std::string_view what, std::string_view subject = {});

// Returns `result`; throws as Fail() does when it is -1.
inline int Check(int result, std::string_view what, std::string_view subject = {}) {
  if (result == -1) {
    Fail(what, subject);
  }
  return result;
}

}  // namespace sandbox
