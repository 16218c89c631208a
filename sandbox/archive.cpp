#include "sandbox/archive.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <stdexcept>

#include "sandbox/files.h"
#include "sandbox/format/text.h"

namespace sandbox {
namespace {

constexpr std::size_t kLongestName = 4096;
constexpr std::size_t kTarEnd = 1024;  // zero bytes after the last entry
constexpr mode_t kModes = 0777;

[[noreturn]] void Refuse(const std::string& why) { throw std::runtime_error(why); }

// An archive in memory.
class Reader {
 public:
  using Support = int (*)(struct archive*);

  Reader(std::string_view bytes, Support filter, Support format)
      : archive_(archive_read_new(), archive_read_free) {
    if (archive_ == nullptr) {
      throw std::bad_alloc();
    }
    // What zstd can do without its library, it would do by starting a program.
    Require(filter(archive_.get()) == ARCHIVE_OK);
    Require(format(archive_.get()) == ARCHIVE_OK);
    Require(archive_read_open_memory(archive_.get(), bytes.data(), bytes.size()) == ARCHIVE_OK);
  }

  // Null at the end. What is only to be warned of is wrong, too.
  archive_entry* Next() {
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(archive_.get(), &entry);
    Require(result == ARCHIVE_OK || result == ARCHIVE_EOF);
    return result == ARCHIVE_OK ? entry : nullptr;
  }

  // The contents of the entry.
  std::string Read() {
    std::string bytes;
    std::array<char, 65536> block;
    for (;;) {
      const la_ssize_t count = archive_read_data(archive_.get(), block.data(), block.size());
      Require(count >= 0);
      if (count == 0) {
        return bytes;
      }
      bytes.append(block.data(), static_cast<std::size_t>(count));
      RequireWithinLimits(0, bytes.size());
    }
  }

 private:
  void Require(bool done) const {
    if (!done) {
      const char* const text = archive_error_string(archive_.get());
      Refuse(text != nullptr ? WordsOf(text) : "it cannot be read");
    }
  }

  // As it may be written to a terminal: it may have names of the archive.
  static std::string WordsOf(std::string_view text) {
    std::string words;
    for (const char c : text) {
      words += c >= ' ' && c <= '~' ? c : '?';
    }
    return words;
  }

  std::unique_ptr<struct archive, int (*)(struct archive*)> archive_;
};

// What stands after the end of a tar archive is more of it.
int SupportTar(struct archive* archive) {
  const int result = archive_read_support_format_tar(archive);
  return result == ARCHIVE_OK
             ? archive_read_set_format_option(archive, "tar", "read_concatenated_archives", "1")
             : result;
}

// To the end, so that a part of an archive is not taken for all of it.
std::string Decompressed(std::string_view bytes) {
  Reader reader(bytes, archive_read_support_filter_zstd, archive_read_support_format_raw);
  if (reader.Next() == nullptr) {
    Refuse("it is empty");
  }
  return reader.Read();
}

// The name below the first folder, "" for that folder.
std::string NameBelow(const archive_entry* entry, std::string* folder) {
  const char* const text = archive_entry_pathname(const_cast<archive_entry*>(entry));
  std::string name = text != nullptr ? text : "";
  const std::string shown = WordText(name.substr(0, 100));
  if (name.empty() || name.size() > kLongestName) {
    Refuse("a name is missing or too long: " + shown);
  }
  if (name.back() == '/') {
    name.pop_back();
  }
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find('/', begin), name.size());
    const std::string part = name.substr(begin, end - begin);
    if (part.empty() || part == "." || part == "..") {
      Refuse("a name leads out of the folder: " + shown);
    }
    begin = end + 1;
  }
  const std::string first = name.substr(0, name.find('/'));
  if (folder->empty()) {
    *folder = first;
  }
  if (first != *folder) {
    Refuse("a name stands beside the folder: " + shown);
  }
  return first == name ? "" : name.substr(first.size() + 1);
}

Node::Kind KindOf(archive_entry* entry, const std::string& name) {
  const auto type = archive_entry_filetype(entry);
  const bool plain =
      archive_entry_hardlink(entry) == nullptr && archive_entry_sparse_count(entry) == 0;
  if (!plain || (type != AE_IFREG && type != AE_IFDIR)) {
    Refuse("neither a file nor a folder: " + WordText(name));
  }
  return type == AE_IFREG ? Node::Kind::kFile : Node::Kind::kFolder;
}

// Everything stands in folders.
void RequireFolders(const Tree& tree) {
  for (auto node = tree.begin(); node != tree.end(); ++node) {
    const auto below = tree.lower_bound(node->first + "/");
    if (node->second.What != Node::Kind::kFolder && below != tree.end() &&
        below->first.starts_with(node->first + "/")) {
      Refuse("a name leads through a file: " + WordText(below->first));
    }
  }
}

Tree ParseTar(std::string_view tar) {
  if (tar.size() < kTarEnd ||
      tar.substr(tar.size() - kTarEnd).find_first_not_of('\0') != std::string_view::npos) {
    Refuse("its end is missing");
  }
  Tree tree;
  std::string folder;
  std::uint64_t bytes = 0;
  Reader reader(tar, archive_read_support_filter_none, SupportTar);
  while (archive_entry* const entry = reader.Next()) {
    const std::string name = NameBelow(entry, &folder);
    Node node = {KindOf(entry, name), "", archive_entry_perm(entry) & kModes};
    if (node.What == Node::Kind::kFile) {
      node.Bytes = reader.Read();
    }
    bytes += node.Bytes.size();
    RequireWithinLimits(tree.size() + 1, bytes);
    if (name.empty() ? node.What != Node::Kind::kFolder
                     : !tree.emplace(name, std::move(node)).second) {
      Refuse(name.empty() ? "it is a single file" : "a name stands twice: " + WordText(name));
    }
  }
  if (folder.empty()) {
    Refuse("it is empty");
  }
  RequireFolders(tree);
  return tree;
}

}  // namespace

Tree ParseArchive(std::string_view bytes) { return ParseTar(Decompressed(bytes)); }

Tree ReadArchive(const std::filesystem::path& file) {
  try {
    RequireWithinLimits(0, std::filesystem::file_size(file));
    return ParseArchive(ReadFile(file));
  } catch (const std::filesystem::filesystem_error& error) {
    throw std::runtime_error(file.string() + ": " + error.code().message());
  } catch (const std::system_error& error) {
    throw std::runtime_error(file.string() + ": " + error.code().message());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file.string() + ": not a capture: " + error.what());
  }
}

Scenario LoadScenario(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    return Scenario::Load(path);
  }
  return Scenario::FromTree(ReadArchive(path), path.string());
}

}  // namespace sandbox
