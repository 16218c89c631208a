// A controller as a scenario, as far as cycles have seen it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "capture/cycle.h"
#include "sandbox/format/devices.h"
#include "sandbox/format/faults.h"
#include "sandbox/format/interfaces.h"
#include "sandbox/format/rows.h"

namespace capture {

// A file or folder of a capture.
struct Entry {
  std::string Bytes = {};
  std::uint32_t Mode = 0644;
  bool IsFolder = false;

  bool operator==(const Entry&) const = default;
};

// By name, such as "root/proc/meminfo".
using Entries = std::map<std::string, Entry>;

class Controller {
 public:
  // What `cycle` was given holds from now on; what it did not ask for stays as it was.
  void Take(const Cycle& cycle);

  // As a scenario folder, without documents.
  Entries Scenario() const;

 private:
  void TakeFile(const std::string& path, const File& file);
  void TakeDevice(const std::string& path, const Device& device);
  void TakeDatabase(const Cycle& cycle);

  std::map<std::string, Entry> files_;  // by absolute path
  std::map<std::string, sandbox::DeviceAnswers> devices_;
  std::vector<sandbox::NetworkInterface> interfaces_;
  std::optional<sandbox::Rows> rows_;
  std::optional<std::uint64_t> uptime_;
  sandbox::Faults faults_;
};

// The interfaces of a list, besides lo.
std::vector<sandbox::NetworkInterface> InterfacesOf(const Cycle& cycle);

// The rows of a cycle, as a database has to have them that gives them in the order of the cycle. It
// gives texts in the order of their bytes, then blobs: where the order begins anew, blobs begin.
// Keys that are equal up to a zero byte are numbered after one.
sandbox::Rows RowsOf(const std::vector<Row>& rows);

// Whether a database can give them so: the order begins anew at most once.
bool CanBeOrdered(const std::vector<Row>& rows);

}  // namespace capture
