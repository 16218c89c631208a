#include "tests/capture/unpack.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace captured {
namespace {

constexpr std::string_view kFolder = "capture/";

std::string BytesOf(archive* reader) {
  std::string bytes;
  char block[65536];
  la_ssize_t count = 0;
  while ((count = archive_read_data(reader, block, sizeof block)) > 0) {
    bytes.append(block, static_cast<std::size_t>(count));
  }
  if (count < 0) {
    throw std::runtime_error(archive_error_string(reader));
  }
  return bytes;
}

}  // namespace

Entries Unpack(const std::string& archive) {
  const std::unique_ptr<struct archive, decltype(&archive_read_free)> reader(archive_read_new(),
                                                                             &archive_read_free);
  archive_read_support_filter_zstd(reader.get());
  archive_read_support_format_tar(reader.get());
  if (archive_read_open_memory(reader.get(), archive.data(), archive.size()) != ARCHIVE_OK) {
    throw std::runtime_error(archive_error_string(reader.get()));
  }
  Entries entries;
  archive_entry* header = nullptr;
  int result = ARCHIVE_OK;
  while ((result = archive_read_next_header(reader.get(), &header)) == ARCHIVE_OK) {
    const std::string name = archive_entry_pathname(header);
    const auto type = archive_entry_filetype(header);
    if (!name.starts_with(kFolder) || (type != AE_IFREG && type != AE_IFDIR)) {
      throw std::runtime_error("not an entry of a capture: " + name);
    }
    if (name != kFolder) {
      std::string inside = name.substr(kFolder.size());
      if (inside.ends_with('/')) {
        inside.pop_back();
      }
      entries[inside] = {BytesOf(reader.get()), archive_entry_perm(header), type == AE_IFDIR};
    }
  }
  if (result != ARCHIVE_EOF) {
    throw std::runtime_error(archive_error_string(reader.get()));
  }
  return entries;
}

void Write(const Entries& entries, const std::string& folder) {
  namespace fs = std::filesystem;
  fs::create_directories(folder);
  for (const auto& [name, entry] : entries) {
    const fs::path path = fs::path(folder) / name;
    if (entry.IsFolder) {
      fs::create_directories(path);
      continue;
    }
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << entry.Bytes;
    fs::permissions(path, static_cast<fs::perms>(entry.Mode));
  }
}

}  // namespace captured
