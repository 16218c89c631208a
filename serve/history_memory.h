// The memory of the history, as the allocator sees it.
#pragma once

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace serve {

// What the history may have in all.
inline constexpr std::size_t kMostHistoryBytes = std::size_t{16} << 20;

// What memory is used for.
enum class HistoryPart { kRows, kNames, kFindings };

// Bytes in use, with what the allocator itself needs for them. Any thread.
template <HistoryPart kPart>
inline std::atomic<std::size_t> history_bytes = 0;

inline std::size_t HistoryBytes() {
  return history_bytes<HistoryPart::kRows> + history_bytes<HistoryPart::kNames> +
         history_bytes<HistoryPart::kFindings>;
}

// Allocates as std::allocator does, and counts.
template <class T, HistoryPart kPart>
struct HistoryAllocator {
  using value_type = T;
  template <class Other>
  struct rebind {  // NOLINT(readability-identifier-naming): a name of the language
    using other = HistoryAllocator<Other, kPart>;
  };

  HistoryAllocator() = default;
  template <class Other>
  // NOLINTNEXTLINE(google-explicit-constructor): as allocators are
  HistoryAllocator(const HistoryAllocator<Other, kPart>& /*other*/) {}

  T* allocate(std::size_t count) {  // NOLINT(readability-identifier-naming)
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    void* const memory = ::operator new(count * sizeof(T));
    history_bytes<kPart> += Size(memory);
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t /*count*/) {  // NOLINT(readability-identifier-naming)
    history_bytes<kPart> -= Size(memory);
    ::operator delete(memory);
  }

  bool operator==(const HistoryAllocator& /*other*/) const { return true; }

 private:
  static std::size_t Size(void* memory) { return malloc_usable_size(memory) + sizeof(std::size_t); }
};

template <class T>
using HistoryVector = std::vector<T, HistoryAllocator<T, HistoryPart::kRows>>;

}  // namespace serve
