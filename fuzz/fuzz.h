// What the fuzz targets share. Each defines LLVMFuzzerTestOneInput, to be driven by libFuzzer or,
// in the ordinary tests, by replay_main.cpp on the checked-in corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

// Ends the program when a property does not hold; works with and without a fuzzer around it.
#define FUZZ_CHECK(property)                                                             \
  do {                                                                                   \
    if (!(property)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #property); \
      std::abort();                                                                      \
    }                                                                                    \
  } while (false)

namespace fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// A zero-terminated copy in a heap block of exactly its size, so that AddressSanitizer sees the
// first byte read beyond it.
class Exact {
 public:
  explicit Exact(std::string_view text) : bytes_(new char[text.size() + 1]) {
    std::memcpy(bytes_.get(), text.data(), text.size());
    bytes_[text.size()] = '\0';
  }

  char* Get() const { return bytes_.get(); }

 private:
  std::unique_ptr<char[]> bytes_;
};

}  // namespace fuzz
