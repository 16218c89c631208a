// Captures that come from anywhere.
#include "sandbox/archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "sandbox/scenario.h"

namespace sandbox {
namespace {

using testing::HasSubstr;

struct Item {
  std::string Name;
  std::string Bytes = {};
  mode_t Type = S_IFREG;
  std::string Link = {};      // target of a symbolic link
  std::string HardLink = {};  // target of a hard link
  mode_t Mode = 0644;
};

enum class Packing { kZstd, kNone };

std::string Archive(const std::vector<Item>& items, Packing packing = Packing::kZstd) {
  std::string bytes(std::size_t{16} << 20, '\0');
  std::size_t used = 0;
  struct archive* const writer = archive_write_new();
  archive_write_set_format_gnutar(writer);
  if (packing == Packing::kZstd) {
    archive_write_add_filter_zstd(writer);
  }
  archive_write_set_bytes_in_last_block(writer, 1);
  EXPECT_EQ(ARCHIVE_OK, archive_write_open_memory(writer, bytes.data(), bytes.size(), &used));
  for (const Item& item : items) {
    archive_entry* const entry = archive_entry_new();
    archive_entry_copy_pathname(entry, item.Name.c_str());
    archive_entry_set_filetype(entry, item.Type);
    archive_entry_set_perm(entry, item.Mode);
    archive_entry_set_size(entry, static_cast<la_int64_t>(item.Bytes.size()));
    if (!item.Link.empty()) {
      archive_entry_copy_symlink(entry, item.Link.c_str());
    }
    if (!item.HardLink.empty()) {
      archive_entry_copy_hardlink(entry, item.HardLink.c_str());
    }
    EXPECT_EQ(ARCHIVE_OK, archive_write_header(writer, entry)) << archive_error_string(writer);
    archive_write_data(writer, item.Bytes.data(), item.Bytes.size());
    archive_entry_free(entry);
  }
  EXPECT_EQ(ARCHIVE_OK, archive_write_close(writer)) << archive_error_string(writer);
  archive_write_free(writer);
  bytes.resize(used);
  return bytes;
}

std::string Complaint(const std::string& bytes) {
  try {
    ParseArchive(bytes);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

const std::vector<Item> kSmall = {{.Name = "capture/", .Type = S_IFDIR},
                                  {.Name = "capture/root/etc/motto", .Bytes = "abc", .Mode = 0600},
                                  {.Name = "capture/rows.tsv", .Bytes = "GUID\tabc\n"}};

TEST(Archive, IsTheFolderBelowItsFirstName) {
  for (const Packing packing : {Packing::kZstd, Packing::kNone}) {
    const Tree tree = ParseArchive(Archive(kSmall, packing));
    ASSERT_EQ(2U, tree.size());
    EXPECT_EQ("abc", tree.at("root/etc/motto").Bytes);
    EXPECT_EQ(0600U, tree.at("root/etc/motto").Mode);
    EXPECT_EQ("GUID\tabc\n", tree.at("rows.tsv").Bytes);
  }
}

TEST(Archive, NamesOfAllBytesArrive) {
  std::string name;
  for (int byte = 1; byte < 256; ++byte) {
    name += byte == '/' ? "" : std::string(1, static_cast<char>(byte));
  }
  const Tree tree = ParseArchive(Archive({{.Name = "capture/root/" + name, .Bytes = "abc"}}));
  EXPECT_EQ("abc", tree.at("root/" + name).Bytes);
}

TEST(Archive, WhatIsHostileIsRefused) {
  struct Row {
    Item What;
    const char* Complaint;
  };
  const Row rows[] = {
      {{.Name = "/etc/motto"}, "leads out"},
      {{.Name = "capture/../etc/motto"}, "leads out"},
      {{.Name = "capture/root/.."}, "leads out"},
      {{.Name = "capture/root/./motto"}, "leads out"},
      {{.Name = "capture/root//motto"}, "leads out"},
      {{.Name = "../capture/root/motto"}, "leads out"},
      {{.Name = "other/root/motto"}, "beside the folder"},
      {{.Name = "capture/" + std::string(4096, 'a')}, "too long"},
      {{.Name = "capture/root/link", .Type = S_IFLNK, .Link = "/etc"}, "neither a file nor"},
      {{.Name = "capture/root/link", .HardLink = "/etc/passwd"}, "neither a file nor"},
      {{.Name = "capture/root/node", .Type = S_IFCHR}, "neither a file nor"},
      {{.Name = "capture/root/node", .Type = S_IFBLK}, "neither a file nor"},
      {{.Name = "capture/root/pipe", .Type = S_IFIFO}, "neither a file nor"},
      {{.Name = "capture/rows.tsv"}, "stands twice"},
      {{.Name = "capture/root", .Type = S_IFREG}, "leads through a file"},
      {{.Name = "capture/rows.tsv/inner"}, "leads through a file"},
      {{.Name = "capture", .Type = S_IFREG}, "a single file"},
  };
  for (const auto& [item, complaint] : rows) {
    std::vector<Item> items = kSmall;
    items.push_back(item);
    EXPECT_THAT(Complaint(Archive(items)), HasSubstr(complaint)) << item.Name;
  }
}

TEST(Archive, AMessageHasNoControlBytes) {
  const std::string complaint =
      Complaint(Archive({{.Name = "capture/a"}, {.Name = "\x1B[2Jother/\n/b"}}));
  EXPECT_EQ("a name stands beside the folder: \\x1B[2Jother/\\x0A/b", complaint);
}

TEST(Archive, ABombIsRefusedBeforeItIsWhole) {
  EXPECT_THAT(Complaint(Archive({{.Name = "capture/a", .Bytes = std::string(260 << 20, '\0')}})),
              HasSubstr("more than 256 MiB"));
}

TEST(Archive, TooManyEntriesAreRefused) {
  std::vector<Item> items;
  for (int number = 0; number <= 100'000; ++number) {
    items.push_back({.Name = "capture/root/" + std::to_string(number)});
  }
  EXPECT_THAT(Complaint(Archive(items)), HasSubstr("more than 100000 files"));
}

TEST(Archive, APartOfOneIsRefused) {
  std::vector<Item> items = kSmall;
  std::string noise;
  for (unsigned int number = 1; noise.size() < 20'000; number = number * 1103515245 + 12345) {
    noise += static_cast<char>(number >> 16);
  }
  items.push_back({.Name = "capture/root/etc/noise", .Bytes = noise});
  const std::string packed = Archive(items);
  ASSERT_EQ("", Complaint(packed));
  for (std::size_t length = 0; length < packed.size(); length += 97) {
    EXPECT_NE("", Complaint(packed.substr(0, length))) << length;
  }
  EXPECT_NE("", Complaint(packed.substr(0, packed.size() - 1)));
  // Zero bytes follow the end of a tar archive itself.
  const std::string plain = Archive(items, Packing::kNone);
  const std::size_t end = plain.find_last_not_of('\0') + 1;
  for (std::size_t length = 0; length < end; length += 97) {
    EXPECT_NE("", Complaint(plain.substr(0, length))) << length;
  }
}

// Only the first of two archives in a file used to be read.
TEST(Archive, NothingStandsAfterItsEndUnread) {
  const std::string other = Archive({{.Name = "other/rows.tsv"}}, Packing::kNone);
  const std::string garbage(10'240, 'a');
  for (const Packing packing : {Packing::kZstd, Packing::kNone}) {
    const std::string one = Archive(kSmall, packing);
    EXPECT_THAT(Complaint(one + one), HasSubstr("stands twice"));
    EXPECT_THAT(Complaint(one + Archive({{.Name = "other/rows.tsv"}}, packing)),
                HasSubstr("beside the folder"));
    EXPECT_NE("", Complaint(one + garbage));
  }
  const std::string plain = Archive(kSmall, Packing::kNone);
  EXPECT_NE("", Complaint(plain + garbage + std::string(1024, '\0')));
  EXPECT_EQ("", Complaint(plain + std::string(10'240, '\0')));
}

TEST(Archive, WhatIsNoneIsRefused) {
  EXPECT_NE("", Complaint("GUID\tabc\n"));
  EXPECT_NE("", Complaint(std::string(10'240, 'a')));
  EXPECT_NE("", Complaint(""));
  // Once an empty controller.
  EXPECT_EQ("it is empty", Complaint(std::string(1024, '\0')));
  EXPECT_EQ("it is empty", Complaint(Archive({})));
}

TEST(Archive, AFileIsNamedInWhatIsWrongWithIt) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  try {
    ReadArchive(folder / "no-such-capture");
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("no-such-capture: No such file or directory"));
  }
  EXPECT_THROW(ReadArchive(folder), std::runtime_error);
}

}  // namespace
}  // namespace sandbox
