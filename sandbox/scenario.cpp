#include "sandbox/scenario.h"

#include <algorithm>

#include "sandbox/enter.h"
#include "sandbox/root.h"

namespace sandbox {

namespace fs = std::filesystem;

namespace {

// Why the kernel's own answers stay, of the scenario that was applied last; "": they do not.
std::string& RefusedAddresses() {
  static std::string why;
  return why;
}

}  // namespace

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

Scenario& Scenario::Fault(const std::string& path, const FileFault& fault) {
  faults_.Files[path] = fault;
  return *this;
}

Scenario& Scenario::NoTable() {
  constexpr int kMissingTable = 1;  // SQLITE_ERROR
  faults_.Query = kMissingTable;
  return *this;
}

Scenario& Scenario::NoFaults() {
  faults_ = {};
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
  SetFileFaults({});
  RemoveDevices();
  ClearRoot();
  SetInterfaces(interfaces_);
  if (!rows_ && faults_.Query == 0) {
    RemoveDatabase();
  }
  Scenario empty;
  empty.interfaces_ = interfaces_;
  ApplyAfter(empty);  // which sets the hardware addresses, too
  ClearDeviceLog();
}

void Scenario::ApplyAfter(const Scenario& before) const {
  RequireInside();
  const bool faulty = !faults_.Files.empty() || !before.faults_.Files.empty();
  if (faulty) {
    SetFileFaults({});  // what is covered may change
  }
  ApplyFiles(before);
  if (faulty) {
    for (const auto& [path, fault] : faults_.Files) {
      RequireFixturePlace(path);
    }
    SetFileFaults(faults_);
  }
  ApplyDevices(before);
  ApplyInterfaces(before);
  ApplyRows(before);
  if (uptime_ && uptime_ != before.uptime_) {
    SetUptime(*uptime_);
  }
}

// Files that are new or changed; before them, those that are gone go, the innermost first.
void Scenario::ApplyFiles(const Scenario& before) const {
  for (auto gone = before.files_.rbegin(); gone != before.files_.rend(); ++gone) {
    const auto& [path, entry] = *gone;
    // A folder of which something is left stays.
    if (!files_.contains(path) &&
        (entry.What != Kind::kFolder || !fs::exists(path) || fs::is_empty(path))) {
      RequireFixturePlace(path);
      RemoveFile(path);
    }
  }
  for (const auto& [path, entry] : files_) {
    const auto former = before.files_.find(path);
    if (former == before.files_.end() || former->second != entry) {
      RequireFixturePlace(path);
      Install(path, entry);
    }
  }
}

void Scenario::ApplyDevices(const Scenario& before) const {
  for (const auto& [node, answers] : before.devices_) {
    if (!devices_.contains(node)) {
      RemoveDevice(node);
    }
  }
  for (const auto& [node, answers] : devices_) {
    const auto former = before.devices_.find(node);
    if (former == before.devices_.end() || former->second.Text() != answers.Text()) {
      SetDevice(node, answers);
    }
  }
}

void Scenario::ApplyInterfaces(const Scenario& before) const {
  if (InterfacesText(interfaces_) != InterfacesText(before.interfaces_)) {
    SetInterfaces(interfaces_);
  }
  const auto answers = HardwareAnswers();
  try {
    SetHardwareAddresses(answers);
    RefusedAddresses().clear();
  } catch (const Refused& refusal) {
    RefusedAddresses() = refusal.what();
  }
}

std::map<std::string, HardwareAnswer> Scenario::HardwareAnswers() const {
  std::map<std::string, HardwareAnswer> answers;
  for (const NetworkInterface& interface : interfaces_) {
    if (!interface.Mac.empty() && !CanHaveMac(interface)) {
      answers[interface.Name].Mac = interface.Mac;
    }
  }
  for (const auto& [name, error] : faults_.HardwareAddresses) {
    answers[name].Error = error;
  }
  return answers;
}

void Scenario::ApplyRows(const Scenario& before) const {
  const bool same = rows_.has_value() == before.rows_.has_value() &&
                    (!rows_ || RowsText(*rows_) == RowsText(*before.rows_));
  if (same && faults_.Query == before.faults_.Query) {
    return;
  }
  if (faults_.Query != 0) {
    SetRows({});
    RunSql("DROP TABLE status;");
  } else if (rows_) {
    SetRows(*rows_);
  } else {
    RemoveDatabase();
  }
}

bool Scenario::NeedsDevices() const {
  const auto needs = [](const Scenario& one) {
    return !one.devices_.empty() || std::ranges::any_of(one.faults_.Files, [](const auto& file) {
      return !file.second.IsPipe;
    });
  };
  Scenario after = *this;
  after.steps_.clear();
  return needs(*this) || std::ranges::any_of(steps_, [&](const Change& change) {
           after.Advance(change);
           return needs(after);
         });
}

std::vector<std::string> Scenario::NotReplayed() const {
  std::vector<std::string> lines;
  if (RefusedAddresses().empty()) {
    return lines;
  }
  for (const auto& [name, answer] : HardwareAnswers()) {
    lines.push_back("interface " + name);
    lines.back() += " says another hardware address than it did; " + RefusedAddresses();
  }
  return lines;
}

StepByStep::StepByStep(const Scenario& whole, std::size_t first)
    : whole_(whole), made_(first), now_(whole.Step(first)) {}

void StepByStep::ApplyNext() {
  Scenario after = now_;
  after.Advance(whole_.steps_.at(made_));
  after.ApplyAfter(now_);
  now_ = std::move(after);
  ++made_;
}

}  // namespace sandbox
