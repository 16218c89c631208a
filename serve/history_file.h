// The history as the bytes of a file.
//
// All numbers are little endian; a text is its size in two bytes and its bytes:
//
//   magic of 8 bytes, version (4), size of the file (8)
//   clocks of the latest cycle: system, steady (8 each, milliseconds), boot (text)
//   number of series (4); of each the number before the first row (float of 4 bytes)
//   number of names (4); of each the element (text; 0xFFFF alone: that of the name before), the
//     field (text), the series (4)
//   number of findings (4); of each begin, end (8 each), flags (1), severity (1), five texts
//   number of rows (4), of those of this boot (4); of each its time (8), gap (1), size (4), changes
//   FNV-1a of 64 bits over all before it (8)
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "serve/history.h"

namespace serve {

// Parts of a file, to be written one after the other. Holds the rows of the history, so that it can
// be written while there are new ones.
class HistoryImage {
 public:
  // Throws std::bad_alloc.
  explicit HistoryImage(const HistoryData& data);

  // Calls `write` with all bytes in their order, some at a time.
  void Write(const std::function<void(std::string_view)>& write) const;

 private:
  std::string head_;  // up to the rows
  std::vector<HistoryRows::Row> rows_;
};

// Why a text is no history.
class NoHistory : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The history in the bytes of a file, with cycles `interval` seconds apart to come. No number in it
// is believed before it is compared with the bytes that there are. Throws NoHistory:
// "is damaged: its checksum is another one".
HistoryData ParseHistory(std::string_view file, std::uint32_t interval);

// Larger files are none.
inline constexpr std::size_t kMostHistoryFileBytes = kMostHistoryBytes;

// FNV-1a of 64 bits; `begun` is that of what comes before. One byte that is another one always
// makes another number.
std::uint64_t Checksum(std::string_view bytes, std::uint64_t begun = 0xCBF29CE484222325U);

}  // namespace serve
