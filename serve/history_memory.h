// The memory of the history, as the allocator sees it.
#pragma once

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace serve {

// What the history may have in all.
inline constexpr std::size_t kMostHistoryBytes = std::size_t{16} << 20;

// What memory is used for.
enum class HistoryPart { kRows, kNames, kFindings };

// Bytes in use, with what the allocator itself needs for them. Any thread.
template <HistoryPart kPart>
std::atomic<std::size_t>& HistoryBytesOf() {
  static std::atomic<std::size_t> bytes = 0;
  return bytes;
}

inline std::size_t HistoryBytes() {
  return HistoryBytesOf<HistoryPart::kRows>() + HistoryBytesOf<HistoryPart::kNames>() +
         HistoryBytesOf<HistoryPart::kFindings>();
}

// Allocates as std::allocator does, and counts. The names are those of the language.
// NOLINTBEGIN(readability-identifier-naming)
template <class T, HistoryPart kPart>
struct HistoryAllocator {
  using value_type = T;
  template <class Other>
  struct rebind {
    using other = HistoryAllocator<Other, kPart>;
  };

  HistoryAllocator() = default;
  template <class Other>
  // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): as allocators are
  HistoryAllocator(const HistoryAllocator<Other, kPart>& /*other*/) {}

  T* allocate(std::size_t count) {
    T* const memory = std::allocator<T>().allocate(count);
    HistoryBytesOf<kPart>() += Size(memory);
    return memory;
  }
  void deallocate(T* memory, std::size_t count) {
    HistoryBytesOf<kPart>() -= Size(memory);
    std::allocator<T>().deallocate(memory, count);
  }

  bool operator==(const HistoryAllocator& /*other*/) const { return true; }

 private:
  static std::size_t Size(T* memory) {
    return malloc_usable_size(static_cast<void*>(memory)) + sizeof(std::size_t);
  }
};
// NOLINTEND(readability-identifier-naming)

template <class T>
using HistoryVector = std::vector<T, HistoryAllocator<T, HistoryPart::kRows>>;

}  // namespace serve
