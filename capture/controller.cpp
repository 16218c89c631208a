#include "capture/controller.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "collector/observer.h"
#include "sandbox/format/uptime.h"

namespace capture {
namespace {

constexpr std::uint32_t kPermissions = 07777;

Entry FolderEntry() { return {"", 0755, true}; }

Entry EntryOf(const Reading& reading) {
  const std::uint32_t mode = reading.Mode.value_or(S_IFREG | 0644);
  return S_ISDIR(mode) ? FolderEntry() : Entry{reading.Bytes, mode & kPermissions};
}

// What opening the file and reading it met.
sandbox::FileFault FaultOf(const Reading& reading) {
  sandbox::FileFault fault;
  fault.Open = reading.OpenError;
  fault.Status = reading.StatusError;
  fault.Read = reading.ReadError;
  fault.ReadAfter = reading.ReadError == 0 ? 0 : reading.Bytes.size();
  fault.IsPipe = reading.Mode && !S_ISREG(*reading.Mode) && !S_ISDIR(*reading.Mode);
  return fault;
}

// A request that failed gives the errno, below zero.
std::int32_t ValueOf(const Answer& answer) {
  return static_cast<std::int32_t>(answer.Result == -1 && answer.Error != 0 ? -answer.Error
                                                                            : answer.Result);
}

// NULL is no handler's key, as "" is not.
std::string KeyOf(const Row& row) { return row.Key.value_or(""); }

// How far keys come in the order of their bytes.
auto EndOfOrder(std::vector<Row>::const_iterator begin, std::vector<Row>::const_iterator end) {
  return std::is_sorted_until(
      begin, end, [](const Row& one, const Row& next) { return KeyOf(one) < KeyOf(next); });
}

}  // namespace

void Controller::Take(const Cycle& cycle) {
  for (const auto& [path, file] : cycle.Files) {
    TakeFile(path, file);
  }
  for (const auto& [path, device] : cycle.Devices) {
    TakeDevice(path, device);
  }
  if (!cycle.Interfaces.empty()) {
    interfaces_ = InterfacesOf(cycle);
  }
  for (const auto& [interface, address] : cycle.HardwareAddresses) {
    if (address.Error != 0) {
      faults_.HardwareAddresses[interface] = address.Error;
    } else {
      faults_.HardwareAddresses.erase(interface);
      // An alias answers as its interface does.
      const std::string base = interface.substr(0, interface.find(':'));
      if (!cycle.HardwareAddresses.contains(base)) {
        faults_.HardwareAddresses.erase(base);
      }
    }
  }
  if (!uptime_) {  // afterwards it goes on by itself
    uptime_ = cycle.Uptime;
  }
  TakeDatabase(cycle);
}

void Controller::TakeFile(const std::string& path, const File& file) {
  files_.erase(path);
  faults_.Files.erase(path);
  sandbox::FileFault fault;
  if (!file.Readings.empty()) {
    const Reading& reading = file.Readings.front();
    if (reading.OpenError == ENOENT) {
      return;
    }
    fault = FaultOf(reading);
    if (fault.Open == 0 && !fault.IsPipe) {
      files_[path] = EntryOf(reading);
    }
  } else if (file.LookedAt) {
    files_[path] = EntryOf({.Mode = file.LookedAt});
  } else if (file.LookError != ENOENT) {
    fault.Status = file.LookError;
  }
  if (fault != sandbox::FileFault()) {
    faults_.Files[path] = fault;
  }
}

void Controller::TakeDevice(const std::string& path, const Device& device) {
  const std::string node = path.substr(path.rfind('/') + 1);
  if (!device.Openings.empty() && device.Openings.front().Error == ENOENT) {
    devices_.erase(node);
    return;
  }
  sandbox::DeviceAnswers& answers = devices_[node];
  if (!device.Openings.empty()) {
    answers.OpenError = device.Openings.front().Error;
  }
  for (const auto& [request, given] : device.Answers) {
    answers.Values[request] = ValueOf(given.front());
  }
}

void Controller::TakeDatabase(const Cycle& cycle) {
  using observe::Stage;
  int failure_of_opening = 0;
  int failure_of_query = 0;
  for (const DatabaseFailure& failure : cycle.Failures) {
    const auto stage = static_cast<Stage>(failure.Stage);
    if (stage == Stage::kOpen) {
      failure_of_opening = failure.Code;
    } else if (stage == Stage::kPrepare || stage == Stage::kExecute) {
      failure_of_query = failure.Code;
    }
  }
  if (cycle.AskedForRows) {
    rows_ = RowsOf(cycle.Rows);
    faults_.Query = 0;
  } else if (cycle.Ended || !cycle.Failures.empty()) {
    rows_.reset();
    faults_.Query = failure_of_opening == 0 ? failure_of_query : 0;
  }
}

Entries Controller::Scenario() const {
  Entries entries;
  for (const auto& [path, entry] : files_) {
    entries["root" + path] = entry;
  }
  for (const auto& [node, answers] : devices_) {
    entries["devices/" + node] = {answers.Text()};
  }
  entries["interfaces"] = {sandbox::InterfacesText(interfaces_)};
  if (rows_) {
    entries["rows.tsv"] = {sandbox::RowsText(*rows_)};
  }
  if (faults_ != sandbox::Faults()) {
    entries["faults"] = {sandbox::FaultsText(faults_)};
  }
  if (uptime_) {
    entries["uptime"] = {sandbox::UptimeText(std::chrono::seconds(*uptime_))};
  }
  return entries;
}

bool CanBeOrdered(const std::vector<Row>& rows) {
  const auto blobs = EndOfOrder(rows.begin(), rows.end());
  return EndOfOrder(blobs, rows.end()) == rows.end();
}

sandbox::Rows RowsOf(const std::vector<Row>& rows) {
  sandbox::Rows stored;
  const auto blobs = EndOfOrder(rows.begin(), rows.end());
  for (auto row = rows.begin(); row != rows.end(); ++row) {
    sandbox::RowKey key = KeyOf(*row);
    key.IsBlob = row >= blobs;
    if (stored.contains(key)) {
      char number[32];
      std::snprintf(number, sizeof number, "%010td", row - rows.begin());
      key.Bytes.append(1, '\0').append(number);
    }
    stored.emplace(key, row->Value ? sandbox::RowValue(*row->Value) : nullptr);
  }
  return stored;
}

}  // namespace capture
