#include "replay/recording.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "sandbox/archive.h"
#include "sandbox/enter.h"
#include "sandbox/tree.h"

namespace replay {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using sandbox::Tree;

constexpr int kFormat = 1;

// Without what each source gave, which is for people; a value takes far more memory than its text.
json Parse(std::string_view text) {
  constexpr std::size_t kMostValues = 1'000'000;
  std::size_t values = 0;
  return json::parse(text, [&](int /*depth*/, json::parse_event_t event, const json& parsed) {
    if (event == json::parse_event_t::key) {
      return parsed != "sources";
    }
    if (++values > kMostValues) {
      throw std::runtime_error("more than " + std::to_string(kMostValues) + " values");
    }
    return true;
  });
}

std::vector<std::string> FieldsOf(const json& cycle) {
  std::vector<std::string> fields;
  for (const json& note : cycle.value("notes", json::array())) {
    fields.push_back(note.at("field").get<std::string>());
  }
  return fields;
}

std::optional<std::string> BytesOf(const Tree& tree, const std::string& path) {
  const auto found = tree.find(path);
  return found == tree.end() ? std::nullopt : std::optional(found->second.Bytes);
}

// Where what belongs to a cycle stands, the first one being 0.
std::string FolderOf(std::size_t cycle) {
  return cycle == 0 ? ""
                    : "steps/" + std::string(cycle < 10 ? "0" : "") + std::to_string(cycle) + "/";
}

// Blocks as the system counts them, so that StorageTotal is the same; the files have to fit in.
std::uint64_t RootBytesFor(std::uint64_t blocks, const Tree& tree) {
  constexpr std::uint64_t kBlock = 4096;
  constexpr std::uint64_t kMostBlocks = std::uint64_t{1} << 40;
  std::uint64_t bytes = sandbox::Options().RootBytes;
  for (const auto& [path, node] : tree) {
    bytes += node.Bytes.size() + kBlock;
  }
  return blocks > kMostBlocks ? bytes : std::max(bytes, blocks * kBlock);
}

Recording Make(const fs::path& path, const Tree& tree, sandbox::Scenario controller) {
  Description description;
  if (const auto text = BytesOf(tree, "capture.json")) {
    try {
      description = ParseDescription(*text);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(path.string() + "/capture.json: " + error.what());
    }
  }
  Recording recording = {path.string(),
                         std::move(controller),
                         {},
                         description.Zone,
                         RootBytesFor(description.StorageBlocks, tree)};
  for (std::size_t cycle = 0; cycle <= recording.Controller.Steps(); ++cycle) {
    recording.Cycles.push_back({BytesOf(tree, FolderOf(cycle) + "document.xml"), {}});
    if (cycle < description.LeftOut.size()) {
      recording.Cycles.back().LeftOut = description.LeftOut[cycle];
    }
  }
  return recording;
}

}  // namespace

Description ParseDescription(std::string_view text) {
  try {
    const json whole = Parse(text);
    if (!whole.is_object()) {
      throw std::runtime_error("JSON, but not an object");
    }
    const int format = whole.at("format").get<int>();
    if (format != kFormat) {
      throw std::runtime_error("format " + std::to_string(format) + " is newer than this program");
    }
    Description description;
    description.Zone = whole.value("zone", "");
    for (const json& cycle : whole.value("cycles", json::array())) {
      description.LeftOut.push_back(FieldsOf(cycle));
    }
    if (!description.LeftOut.empty()) {
      const json& first = whole.at("cycles").at(0);
      description.StorageBlocks = first.value("storage", json::object()).value("blocks", 0ULL);
    }
    return description;
  } catch (const json::exception& error) {
    const std::string_view words = error.what();  // "[json.exception.parse_error.101] parse ..."
    const std::size_t end = words.find("] ");
    throw std::runtime_error(std::string(end == words.npos ? words : words.substr(end + 2)));
  }
}

Recording Read(const fs::path& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) {
    return Make(path, sandbox::ReadTree(path), sandbox::Scenario::Load(path));
  }
  const Tree tree = sandbox::ReadArchive(path);
  return Make(path, tree, sandbox::Scenario::FromTree(tree, path.string()));
}

}  // namespace replay
