// How the probe reaches files and device nodes.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "hardware/descriptor.h"
#include "hardware/paths.h"
#include "hardware/system_calls.h"

namespace hardware {

// A file that is read as text, which may be absent. What is not a regular file (a folder, a pipe, a
// terminal) is open, but cannot be read.
class TextFile {
 public:
  // `path` stays the caller's, for as long as this lives.
  TextFile(const char* path, Access mode, Links links);

  bool IsOpen() const { return m_Descriptor.IsOpen(); }

  // One read of at most `limit` bytes, again only when a signal broke it off. The number of bytes,
  // 0 also when reading fails.
  std::size_t Read(char* bytes, std::size_t limit);

  // The size that the file claims to have, 0 when it claims none.
  std::size_t ClaimedSize() const { return m_ClaimedSize; }

 private:
  const char* m_Path;
  Descriptor m_Descriptor;
  std::size_t m_Offset = 0;
  bool m_Readable = false;
  std::size_t m_ClaimedSize = 0;
};

// What one read of `source` gives: "" when it is empty or cannot be read, nothing when it cannot be
// opened.
std::optional<std::string> ReadText(const TextSource& source);

// The text of a whole file; not zero-terminated.
class WholeText {
 public:
  // What can be read of `file`.
  explicit WholeText(TextFile& file);

  operator std::string_view() const { return {m_Bytes.get(), m_Size}; }  // NOLINT: is a text

 private:
  void Grow(std::size_t capacity);

  std::unique_ptr<char[]> m_Bytes;  // not initialised before it is read into
  std::size_t m_Size = 0;
  std::size_t m_Capacity = 0;
};

// The whole file, nothing when it cannot be opened.
std::optional<WholeText> ReadWhole(const char* path, Access mode);

bool Exists(const char* path);

// Opens the device node, puts the requests to it in order, closes it: the answers, nothing when it
// cannot be opened.
template <std::size_t kCount>
std::optional<std::array<int, kCount>> AskDevice(const char* path,
                                                 const unsigned long (&requests)[kCount]) {
  const Descriptor device(calls::Open(path, static_cast<int>(Access::kReadWrite)));
  if (!device.IsOpen()) {
    return std::nullopt;
  }
  std::array<int, kCount> answers;
  for (std::size_t i = 0; i < kCount; ++i) {
    answers[i] = calls::Request(device.Number(), path, requests[i]);
  }
  return answers;
}

}  // namespace hardware
