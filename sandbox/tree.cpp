#include "sandbox/tree.h"

#include <stdexcept>
#include <utility>

#include "sandbox/files.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

Node ReadNode(const fs::directory_entry& entry) {
  const auto mode = static_cast<mode_t>(entry.symlink_status().permissions() & fs::perms::mask);
  if (entry.is_symlink()) {
    return {Node::Kind::kLink, fs::read_symlink(entry.path()), mode};
  }
  if (entry.is_directory()) {
    return {Node::Kind::kFolder, "", mode};
  }
  if (!entry.is_regular_file()) {
    throw std::runtime_error(entry.path().string() + ": neither a file, a folder nor a link");
  }
  RequireWithinLimits(0, entry.file_size());
  return {Node::Kind::kFile, ReadFile(entry.path()), mode};
}

}  // namespace

void RequireWithinLimits(std::size_t nodes, std::uint64_t bytes) {
  if (nodes > kMostNodes) {
    throw std::runtime_error("more than " + std::to_string(kMostNodes) + " files and folders");
  }
  if (bytes > kMostBytes) {
    throw std::runtime_error("more than " + std::to_string(kMostBytes >> 20) + " MiB");
  }
}

Tree ReadTree(const fs::path& folder) {
  Tree tree;
  std::uint64_t bytes = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    Node node = ReadNode(entry);
    bytes += node.Bytes.size();
    tree.insert_or_assign(entry.path().lexically_relative(folder).string(), std::move(node));
    try {
      RequireWithinLimits(tree.size(), bytes);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(folder.string() + ": " + error.what());
    }
  }
  return tree;
}

}  // namespace sandbox
