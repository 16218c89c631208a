#include "sandbox/scenario.h"

#include <stdexcept>

#include "sandbox/format/text.h"
#include "sandbox/format/uptime.h"
#include "sandbox/root.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

// The first word of the file: the name of a scenario beside this one.
std::string ParseBase(std::string_view text) {
  std::string base;
  ForEachLine(text, [&base](const std::vector<std::string>& words) { base = words[0]; });
  if (base.empty()) {
    throw std::runtime_error("expected the name of a scenario");
  }
  return base;
}

mode_t ModeOf(const fs::path& path) {
  return static_cast<mode_t>(fs::status(path).permissions() & fs::perms::mask);
}

}  // namespace

Scenario Scenario::Load(const fs::path& folder) {
  if (!fs::is_directory(folder)) {
    throw std::runtime_error(folder.string() + ": not a scenario folder");
  }
  Scenario scenario;
  if (fs::exists(folder / "base")) {
    const fs::path base = fs::absolute(folder).lexically_normal().parent_path() /
                          ParseFile(folder / "base", ParseBase);
    if (fs::exists(base / "base")) {
      throw std::runtime_error((folder / "base").string() + ": the base has a base itself");
    }
    scenario = Load(base);
  }
  if (fs::exists(folder / "root")) {
    scenario.LoadRoot(folder / "root");
  }
  if (fs::exists(folder / "devices")) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder / "devices")) {
      scenario.devices_[entry.path().filename()] = ParseFile(entry.path(), DeviceAnswers::Parse);
    }
  }
  if (fs::exists(folder / "interfaces")) {
    scenario.interfaces_ = ParseFile(folder / "interfaces", ParseInterfaces);
  }
  if (fs::exists(folder / "rows.tsv")) {
    scenario.Database();
    for (const auto& [key, value] : ParseFile(folder / "rows.tsv", ParseRows)) {
      scenario.Row(key, value);
    }
  }
  if (fs::exists(folder / "uptime")) {
    scenario.uptime_ = ParseFile(folder / "uptime", ParseUptime);
  }
  return scenario;
}

void Scenario::LoadRoot(const fs::path& root) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    const std::string path = "/" + entry.path().lexically_relative(root).string();
    if (entry.is_symlink()) {
      Link(path, fs::read_symlink(entry.path()));
    } else if (entry.is_directory()) {
      Folder(path);
    } else {
      File(path, ReadFile(entry.path()), ModeOf(entry.path()));
    }
  }
}

Scenario& Scenario::File(const std::string& path, const std::string& bytes, mode_t mode) {
  files_[path] = {Kind::kFile, bytes, mode};
  return *this;
}

Scenario& Scenario::Folder(const std::string& path) {
  files_[path] = {Kind::kFolder, "", 0};
  return *this;
}

Scenario& Scenario::Link(const std::string& path, const std::string& target) {
  files_[path] = {Kind::kLink, target, 0};
  return *this;
}

Scenario& Scenario::Unopenable(const std::string& path) {
  files_[path] = {Kind::kUnopenable, "", 0};
  return *this;
}

Scenario& Scenario::NoFile(const std::string& path) {
  files_.erase(path);
  return *this;
}

Scenario& Scenario::Device(const std::string& node) {
  devices_[node];
  return *this;
}

Scenario& Scenario::Answer(const std::string& node, std::uint32_t request, std::int32_t value) {
  devices_[node].Values[request] = value;
  return *this;
}

Scenario& Scenario::NoDevice(const std::string& node) {
  devices_.erase(node);
  return *this;
}

Scenario& Scenario::Interface(const NetworkInterface& interface) {
  interfaces_.push_back(interface);
  return *this;
}

Scenario& Scenario::NoInterfaces() {
  interfaces_.clear();
  return *this;
}

Scenario& Scenario::Database() {
  if (!rows_) {
    rows_.emplace();
  }
  return *this;
}

Scenario& Scenario::Row(const RowKey& key, const RowValue& value) {
  Database();
  rows_->insert_or_assign(key, value);
  return *this;
}

Scenario& Scenario::NoDatabase() {
  rows_.reset();
  return *this;
}

Scenario& Scenario::Uptime(std::chrono::seconds uptime) {
  uptime_ = uptime;
  return *this;
}

void Scenario::Install(const std::string& path, const Entry& entry) {
  switch (entry.What) {
    case Kind::kFile:
      WriteFile(path, entry.Bytes, entry.Mode);
      break;
    case Kind::kFolder:
      MakeFolder(path);
      break;
    case Kind::kLink:
      MakeLink(path, entry.Bytes);
      break;
    case Kind::kUnopenable:
      MakeUnopenable(path);
      break;
  }
}

void Scenario::Apply() const {
  RequireInside();
  RemoveDevices();
  ClearRoot();
  for (const auto& [path, entry] : files_) {
    Install(path, entry);
  }
  for (const auto& [node, answers] : devices_) {
    SetDevice(node, answers);
  }
  SetInterfaces(interfaces_);
  if (rows_) {
    SetRows(*rows_);
  } else {
    RemoveDatabase();
  }
  if (uptime_) {
    SetUptime(*uptime_);
  }
  ClearDeviceLog();
}

}  // namespace sandbox
