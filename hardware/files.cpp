#include "hardware/files.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "hardware/open_file.h"
#include "hardware/system_calls.h"

namespace hardware {

TextFile::TextFile(const char* path, Access mode, Links links)
    : m_Path(path), m_Descriptor(OpenFile(path, mode, links)) {
  struct stat status;
  if (IsOpen() && calls::FileStatus(m_Descriptor.Number(), m_Path, &status) == 0) {
    m_Readable = S_ISREG(status.st_mode);
    m_ClaimedSize = static_cast<std::size_t>(status.st_size);
  }
}

std::size_t TextFile::Read(char* bytes, std::size_t limit) {
  if (!m_Readable) {
    return 0;
  }
  ssize_t count;
  do {
    count = calls::Read(m_Descriptor.Number(), m_Path, m_Offset, bytes, limit);
  } while (count == -1 && errno == EINTR);
  if (count <= 0) {
    return 0;
  }
  m_Offset += static_cast<std::size_t>(count);
  return static_cast<std::size_t>(count);
}

std::optional<std::string> ReadText(const TextSource& source) {
  TextFile file(source.Path, source.Mode, source.Followed);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  std::string text(source.Limit, '\0');
  text.resize(file.Read(text.data(), source.Limit));
  return text;
}

WholeText::WholeText(TextFile& file) {
  constexpr std::size_t kChunk = 4096;
  // Room for the size that the file claims and for the read that finds its end. A file of /proc
  // claims none, and one with holes may claim any: beyond this much the room grows with the bytes.
  constexpr std::size_t kTrusted = std::size_t{64} << 20;
  Grow(std::min(file.ClaimedSize(), kTrusted) + kChunk);
  while (const std::size_t count = file.Read(m_Bytes.get() + m_Size, kChunk)) {
    m_Size += count;
    if (m_Capacity - m_Size < kChunk) {
      Grow(2 * m_Capacity);
    }
  }
}

void WholeText::Grow(std::size_t capacity) {
  auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
  std::copy_n(m_Bytes.get(), m_Size, bytes.get());
  m_Bytes = std::move(bytes);
  m_Capacity = capacity;
}

std::optional<WholeText> ReadWhole(const char* path, Access mode) {
  TextFile file(path, mode, Links::kAnyones);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  return WholeText(file);
}

bool Exists(const char* path) {
  struct stat status;
  return calls::PathStatus(path, &status) == 0;
}

}  // namespace hardware
