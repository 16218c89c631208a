// A scenario from its folder.
#include <algorithm>
#include <stdexcept>

#include "sandbox/format/limits.h"
#include "sandbox/format/text.h"
#include "sandbox/format/uptime.h"
#include "sandbox/scenario.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

// Names in a scenario folder.
constexpr const char* kBase = "base";
constexpr const char* kRoot = "root";
constexpr const char* kDevices = "devices";
constexpr const char* kInterfaces = "interfaces";
constexpr const char* kRows = "rows.tsv";
constexpr const char* kUptime = "uptime";
constexpr const char* kFaults = "faults";
constexpr const char* kSteps = "steps";
constexpr const char* kRemoved = "removed";

// Each costs the kernel two devices.
constexpr std::size_t kMostInterfaces = 1000;

// The first word of the file: the name of a scenario beside this one.
std::string ParseBase(std::string_view text) {
  std::string base;
  ForEachLine(text, [&base](const std::vector<std::string>& words) { base = words[0]; });
  if (base.empty()) {
    throw std::runtime_error("expected the name of a scenario");
  }
  return base;
}

// What `parse` makes of a file of the tree; its std::runtime_error gets the file's name. Nothing
// when there is no such file.
template <class Parse>
auto ParseNode(const Tree& tree, const std::string& path, const std::string& name,
               const Parse& parse) -> std::optional<decltype(parse(std::string_view()))> {
  const auto found = tree.find(path);
  if (found == tree.end()) {
    return std::nullopt;
  }
  try {
    if (found->second.What != Node::Kind::kFile) {
      throw std::runtime_error("not a file");
    }
    return parse(std::string_view(found->second.Bytes));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(name + "/" + path + ": " + error.what());
  }
}

// Calls `use` with the rest of the path of each node below `folder`, which ends with a slash.
template <class Use>
void ForEachBelow(const Tree& tree, const std::string& folder, const Use& use) {
  for (auto node = tree.lower_bound(folder); node != tree.end() && node->first.starts_with(folder);
       ++node) {
    use(node->first.substr(folder.size()), node->second);
  }
}

// "01"
std::string StepName(std::size_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

// Where a folder stands, whether or not its name ends with a slash.
fs::path FolderOf(const fs::path& folder) {
  const fs::path whole = fs::absolute(folder).lexically_normal();
  return (whole.has_filename() ? whole : whole.parent_path()).parent_path();
}

}  // namespace

Scenario Scenario::Load(const fs::path& folder) {
  if (!fs::is_directory(folder)) {
    throw std::runtime_error(folder.string() + ": not a scenario folder");
  }
  Scenario scenario;
  if (fs::exists(folder / kBase)) {
    const fs::path base = FolderOf(folder) / ParseFile(folder / kBase, ParseBase);
    if (fs::exists(base / kBase)) {
      throw std::runtime_error((folder / kBase).string() + ": the base has a base itself");
    }
    scenario = Load(base);
    scenario.steps_.clear();
  }
  const Tree tree = ReadTree(folder);
  scenario.Add(tree, "", folder.string());
  scenario.AddSteps(tree, folder.string());
  return scenario;
}

Scenario Scenario::FromTree(const Tree& tree, const std::string& name) {
  if (tree.contains(kBase)) {
    throw std::runtime_error(name + "/" + kBase + ": there is no scenario beside this one");
  }
  Scenario scenario;
  scenario.Add(tree, "", name);
  scenario.AddSteps(tree, name);
  return scenario;
}

void Scenario::Add(const Tree& tree, const std::string& folder, const std::string& name) {
  AddRoot(tree, folder + kRoot + "/");
  const std::string devices = folder + kDevices + "/";
  ForEachBelow(tree, devices, [&](const std::string& node, const Node&) {
    devices_[node] = *ParseNode(tree, devices + node, name, DeviceAnswers::Parse);
  });
  if (auto interfaces = ParseNode(tree, folder + kInterfaces, name, ParseInterfaces)) {
    interfaces_ = std::move(*interfaces);
    if (interfaces_.size() > kMostInterfaces) {
      throw std::runtime_error(name + "/" + folder + kInterfaces + ": more than " +
                               std::to_string(kMostInterfaces) + " interfaces");
    }
  }
  if (const auto rows = ParseNode(tree, folder + kRows, name, ParseRows)) {
    Database();
    for (const auto& [key, value] : *rows) {
      Row(key, value);
    }
  }
  if (const auto uptime = ParseNode(tree, folder + kUptime, name, ParseUptime)) {
    uptime_ = uptime;
  }
  if (auto faults = ParseNode(tree, folder + kFaults, name, ParseFaults)) {
    faults_ = std::move(*faults);
  }
}

void Scenario::AddRoot(const Tree& tree, const std::string& folder) {
  ForEachBelow(tree, folder, [this](const std::string& below, const Node& node) {
    const std::string path = "/" + below;
    switch (node.What) {
      case Node::Kind::kFile:
        File(path, node.Bytes, node.Mode);
        break;
      case Node::Kind::kFolder:
        Folder(path);
        break;
      case Node::Kind::kLink:
        Link(path, node.Bytes);
        break;
    }
  });
}

void Scenario::AddSteps(const Tree& tree, const std::string& name) {
  const std::string steps = name + "/" + kSteps + "/";
  std::map<std::uint64_t, Change> changes;
  ForEachBelow(tree, std::string(kSteps) + "/", [&](const std::string& below, const Node& node) {
    const std::string number = below.substr(0, below.find('/'));
    constexpr std::size_t kMostDigits = 9;
    if (number.size() > kMostDigits ||
        number.find_first_not_of("0123456789") != std::string::npos ||
        number != StepName(NumberOf(number))) {
      throw std::runtime_error(steps + number + ": steps are numbered 01, 02 and so on");
    }
    Change& change = changes[NumberOf(number)];
    change.Name = steps + number;
    if (below != number) {
      change.Contents.emplace(below.substr(number.size() + 1), node);
    }
  });
  Scenario after = *this;
  for (auto& [number, change] : changes) {
    if (number != steps_.size() + 1) {
      throw std::runtime_error(steps + StepName(steps_.size() + 1) + ": this step is missing");
    }
    if (number > kMostSteps) {
      throw std::runtime_error(steps + StepName(number) + ": more than " +
                               std::to_string(kMostSteps) + " steps");
    }
    after.Advance(change);  // every mistake is reported when the folder is read
    steps_.push_back(std::move(change));
  }
}

Scenario Scenario::Step(std::size_t n) const {
  if (n > steps_.size()) {
    throw std::out_of_range("there is no step " + std::to_string(n) + ", but " +
                            std::to_string(steps_.size()));
  }
  Scenario after = *this;
  after.steps_.clear();
  std::for_each_n(steps_.begin(), n, [&after](const Change& change) { after.Advance(change); });
  return after;
}

void Scenario::Advance(const Change& change) {
  ParseNode(change.Contents, kRemoved, change.Name, [this](std::string_view text) {
    ForEachLine(text, [this](const std::vector<std::string>& words) {
      Remove(words.size() == 1 ? words[0] : "");
    });
    return true;
  });
  if (change.Contents.contains(kRows)) {
    rows_.reset();
    faults_.Query = 0;
  }
  Add(change.Contents, "", change.Name);
}

// `what` is a name as in the folder, "root/etc/resolv.conf".
void Scenario::Remove(const std::string& what) {
  const std::string root = std::string(kRoot) + "/";
  const std::string devices = std::string(kDevices) + "/";
  const auto require = [&what](bool there) {
    if (!there) {
      throw std::runtime_error("there is nothing to remove: " + what);
    }
  };
  if (what.starts_with(root)) {
    const std::string path = what.substr(root.size() - 1);
    require(std::erase_if(files_, [&path](const auto& file) {
              return file.first == path || file.first.starts_with(path + "/");
            }) != 0);
  } else if (what.starts_with(devices)) {
    require(devices_.erase(what.substr(devices.size())) != 0);
  } else if (what == kInterfaces) {
    interfaces_.clear();
  } else if (what == kRows) {
    require(rows_.has_value());
    rows_.reset();
    NoTable();
  } else if (what == kUptime) {
    uptime_.reset();
  } else if (what == kFaults) {
    faults_ = {};
  } else {
    require(false);
  }
}

}  // namespace sandbox
