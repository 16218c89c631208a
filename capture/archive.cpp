#include "capture/archive.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "sandbox/format/limits.h"

namespace capture {
namespace {

la_ssize_t Append(archive* /*writer*/, void* text, const void* bytes, std::size_t count) {
  static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), count);
  return static_cast<la_ssize_t>(count);
}

class Writer {
 public:
  explicit Writer(std::string* text) {
    Require(writer_ != nullptr ? ARCHIVE_OK : ARCHIVE_FATAL);
    Require(archive_write_add_filter_zstd(writer_.get()));
    // Names are bytes in it; others convert them, and fail where they are no text.
    Require(archive_write_set_format_gnutar(writer_.get()));
    Require(archive_write_set_bytes_in_last_block(writer_.get(), 1));
    Require(archive_write_open(writer_.get(), text, nullptr, &Append, nullptr));
  }

  void Add(const std::string& name, const Entry& entry) {
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> header(archive_entry_new(),
                                                                               &archive_entry_free);
    archive_entry_set_pathname(header.get(), name.c_str());
    archive_entry_set_filetype(header.get(), entry.IsFolder ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(header.get(), entry.Mode);
    archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.Bytes.size()));
    archive_entry_set_mtime(header.get(), 0, 0);
    Require(archive_write_header(writer_.get(), header.get()));
    const la_ssize_t count =
        archive_write_data(writer_.get(), entry.Bytes.data(), entry.Bytes.size());
    Require(count == static_cast<la_ssize_t>(entry.Bytes.size()) ? ARCHIVE_OK : ARCHIVE_FATAL);
  }

  void Close() { Require(archive_write_close(writer_.get())); }

 private:
  // A warning is a failure, too: something would not stand in the archive as it was.
  void Require(int result) {
    if (result != ARCHIVE_OK) {
      const char* const why = writer_ ? archive_error_string(writer_.get()) : nullptr;
      throw std::runtime_error(std::string("the capture cannot be packed: ") +
                               (why == nullptr ? "no memory" : why));
    }
  }

  std::unique_ptr<archive, decltype(&archive_write_free)> writer_{archive_write_new(),
                                                                  &archive_write_free};
};

void RequireAtMost(std::uint64_t most, std::uint64_t count, const std::string& what) {
  if (count > most) {
    throw std::runtime_error("the sources have " + std::to_string(count) + " " + what +
                             ", more than a capture holds (" + std::to_string(most) + ")");
  }
}

// Lines of a text that a replay has limits for.
void RequireLines(const std::string& name, const std::string& text) {
  const std::string last = name.substr(name.rfind('/') + 1);
  const auto lines = [&] { return static_cast<std::uint64_t>(std::ranges::count(text, '\n')); };
  if (last == "rows.tsv") {
    RequireAtMost(sandbox::kMostRows, lines(), "rows");
  } else if (last == "interfaces" || last == "faults" || last == "removed") {
    RequireAtMost(sandbox::kMostLines, lines(), "lines of " + last);
  }
}

// What a replay would not take is not written.
void RequireReplayable(const Entries& entries) {
  constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
  constexpr std::uint64_t kBlock = 512;
  std::uint64_t blocks = 64;  // what follows the last entry
  for (const auto& [name, entry] : entries) {
    // The header, that of a long name, and what they belong to, each in whole blocks.
    blocks += 4 + (name.size() + entry.Bytes.size()) / kBlock;
    RequireLines(name, entry.Bytes);
  }
  RequireAtMost(sandbox::kMostNodes - 1, entries.size(), "files");
  RequireAtMost(sandbox::kMostBytes / kMegabyte, (blocks * kBlock + kMegabyte - 1) / kMegabyte,
                "MiB");
}

}  // namespace

std::string Pack(const Entries& entries) {
  RequireReplayable(entries);
  std::string packed;
  Writer writer(&packed);
  writer.Add(kFolder, {"", 0755, true});
  for (const auto& [name, entry] : entries) {
    writer.Add(std::string(kFolder) + "/" + name, entry);
  }
  writer.Close();
  return packed;
}

}  // namespace capture
