// Copies of a text in heap buffers that end where it ends, so that a sanitizer sees every byte read
// beyond.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

// With its terminating zero.
class ExactText {
 public:
  explicit ExactText(std::string_view text) : bytes_(new char[text.size() + 1]) {
    std::copy(text.begin(), text.end(), bytes_.get());
    bytes_[text.size()] = '\0';
  }
  char* Get() const { return bytes_.get(); }
  operator const char*() const { return bytes_.get(); }  // NOLINT: stands for the literal

 private:
  std::unique_ptr<char[]> bytes_;
};

// Without any terminator.
class ExactView {
 public:
  explicit ExactView(std::string_view text) : bytes_(new char[text.size()]), size_(text.size()) {
    std::copy(text.begin(), text.end(), bytes_.get());
  }
  operator std::string_view() const { return {bytes_.get(), size_}; }  // NOLINT: as above

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};
