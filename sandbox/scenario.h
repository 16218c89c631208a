#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/devices.h"
#include "sandbox/files.h"
#include "sandbox/interfaces.h"
#include "sandbox/rows.h"
#include "sandbox/uptime.h"

namespace sandbox {

// A whole controller as a value: its files, device nodes, interfaces, uptime and database rows.
//
//     Scenario::Load(SourcePath("scenarios/demo"))
//         .File("/proc/driver/frame_control/registers", "pixel_tracker_bits: 0x8\n")
//         .Answer("travex", 0x8004DA0C, -1)
//         .Row("GUID", "abc")
//         .Apply();
//
// What changes afterwards, between two cycles, is set with the functions of the included headers.
class Scenario {
 public:
  // Reads a scenario folder; scenarios/README.md describes it. Throws std::runtime_error that
  // names the file and the line.
  static Scenario Load(const std::filesystem::path& folder);

  Scenario& File(const std::string& path, const std::string& bytes, mode_t mode = 0644);
  Scenario& Folder(const std::string& path);
  Scenario& Link(const std::string& path, const std::string& target);
  // Something that exists but cannot be opened.
  Scenario& Unopenable(const std::string& path);
  Scenario& NoFile(const std::string& path);

  // A node that answers no request yet.
  Scenario& Device(const std::string& node);
  Scenario& Answer(const std::string& node, std::uint32_t request, std::int32_t value);
  Scenario& NoDevice(const std::string& node);

  Scenario& Interface(const NetworkInterface& interface);
  Scenario& NoInterfaces();

  // A database without rows, unless Row() adds some.
  Scenario& Database();
  Scenario& Row(const RowKey& key, const RowValue& value);
  Scenario& NoDatabase();

  Scenario& Uptime(std::chrono::seconds uptime);

  // Makes the sandbox this controller and nothing else: what an earlier scenario left is removed.
  // A database that is open stays usable as long as this scenario has one, too.
  void Apply() const;

 private:
  enum class Kind { kFile, kFolder, kLink, kUnopenable };
  struct Entry {
    Kind What;
    std::string Bytes;  // of a file; of a link its target
    mode_t Mode;
  };

  static void Install(const std::string& path, const Entry& entry);
  void LoadRoot(const std::filesystem::path& root);

  std::map<std::string, Entry> files_;
  std::map<std::string, DeviceAnswers> devices_;
  std::vector<NetworkInterface> interfaces_;
  std::optional<Rows> rows_;
  std::optional<std::chrono::seconds> uptime_;
};

}  // namespace sandbox
