// Copies of a text in heap buffers that end where it ends, so that a sanitizer sees every byte read
// beyond.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

// With its terminating zero.
class ExactText {
 public:
  explicit ExactText(std::string_view text) : m_Bytes(new char[text.size() + 1]) {
    std::copy(text.begin(), text.end(), m_Bytes.get());
    m_Bytes[text.size()] = '\0';
  }
  char* Get() const { return m_Bytes.get(); }
  operator const char*() const { return m_Bytes.get(); }  // NOLINT: stands for the literal

 private:
  std::unique_ptr<char[]> m_Bytes;
};

// Without any terminator.
class ExactView {
 public:
  explicit ExactView(std::string_view text) : m_Bytes(new char[text.size()]), m_Size(text.size()) {
    std::copy(text.begin(), text.end(), m_Bytes.get());
  }
  operator std::string_view() const { return {m_Bytes.get(), m_Size}; }  // NOLINT: as above

 private:
  std::unique_ptr<char[]> m_Bytes;
  std::size_t m_Size;
};
