#include "hardware/files.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "hardware/open_file.h"
#include "hardware/system_calls.h"

namespace hardware {
namespace {

class TextFile {
 public:
  // `path` stays the caller's, for as long as this lives.
  TextFile(const char* path, Access mode, Links links)
      : path_(path), descriptor_(OpenFile(path, mode, links)) {
    struct stat status;
    readable_ = IsOpen() && calls::FileStatus(descriptor_.Number(), path_, &status) == 0 &&
                S_ISREG(status.st_mode);
  }

  bool IsOpen() const { return descriptor_.IsOpen(); }

  // One read of at most `limit` bytes, repeated only when a signal interrupts it. Returns the
  // number of bytes, nothing when reading fails.
  std::optional<std::size_t> Read(char* bytes, std::size_t limit) {
    if (!readable_) {
      return std::nullopt;
    }
    ssize_t count;
    do {
      count = calls::Read(descriptor_.Number(), path_, offset_, bytes, limit);
    } while (count == -1 && errno == EINTR);
    if (count < 0) {
      return std::nullopt;
    }
    offset_ += static_cast<std::size_t>(count);
    return static_cast<std::size_t>(count);
  }

  // How much was read.
  std::size_t Offset() const { return offset_; }

 private:
  const char* path_;
  Descriptor descriptor_;
  std::size_t offset_ = 0;
  bool readable_;
};

}  // namespace

std::optional<std::string> ReadText(const TextSource& source) {
  TextFile file(source.Path, source.Mode, source.Followed);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  std::string text(source.Limit, '\0');
  text.resize(file.Read(text.data(), source.Limit).value_or(0));
  return text;
}

Reading ReadBlocks(const char* path, Access mode,
                   const std::function<bool(std::string_view block)>& take) {
  TextFile file(path, mode, Links::kAnyones);
  if (!file.IsOpen()) {
    return Reading::kNotOpened;
  }
  constexpr std::size_t kBlock = std::size_t{64} << 10;  // stays in the processor's cache
  const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
  while (file.Offset() < kLongestFile) {
    const auto count = file.Read(block.get(), std::min(kBlock, kLongestFile - file.Offset()));
    if (!count) {
      return Reading::kBroken;
    }
    if (*count == 0 || !take({block.get(), *count})) {
      break;
    }
  }
  return Reading::kDone;
}

std::optional<std::string> ReadWhole(const char* path, Access mode) {
  std::string text;
  const Reading reading = ReadBlocks(path, mode, [&text](std::string_view block) {
    text += block;
    return true;
  });
  return reading == Reading::kNotOpened ? std::nullopt : std::optional(std::move(text));
}

bool Exists(const char* path) {
  struct stat status;
  return calls::PathStatus(path, &status) == 0;
}

}  // namespace hardware
