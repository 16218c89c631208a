#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/devices.h"
#include "sandbox/faults.h"
#include "sandbox/files.h"
#include "sandbox/hardware_addresses.h"
#include "sandbox/interfaces.h"
#include "sandbox/rows.h"
#include "sandbox/tree.h"
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
// What changes afterwards, between two cycles, is a step of the folder, or another scenario that
// takes the place of the first one:
//
//     scenario.Apply();
//     scenario.Step(1).ApplyAfter(scenario);
//     Scenario(scenario).NoFile("/proc/meminfo").ApplyAfter(scenario.Step(1));
//
// The functions of the included headers do the same, one thing at a time.
class Scenario {
 public:
  // Reads a scenario folder; scenarios/README.md describes it. Throws std::runtime_error that
  // names the file and the line.
  static Scenario Load(const std::filesystem::path& folder);

  // The same from its contents, which have no base. `name` is that of the folder in messages.
  static Scenario FromTree(const Tree& tree, const std::string& name);

  // How many steps the folder has, and the controller after the first `n` of them. Throws
  // std::out_of_range when there are fewer.
  [[nodiscard]] std::size_t Steps() const { return steps_.size(); }
  [[nodiscard]] Scenario Step(std::size_t n) const;

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

  // What fails; a file of that name keeps its bytes as long as it can be read.
  Scenario& Fault(const std::string& path, const FileFault& fault);
  // The query of rows fails, though there is a database.
  Scenario& NoTable();
  Scenario& NoFaults();

  // Makes the sandbox this controller and nothing else: what an earlier scenario left is removed.
  // A database that is open stays usable as long as this scenario has one, too. Throws
  // std::runtime_error when a file would not land on a file system of the sandbox.
  void Apply() const;

  // The same where the sandbox is `before`: changes what differs and leaves everything else alone,
  // so that programs may go on meanwhile.
  void ApplyAfter(const Scenario& before) const;

  // Whether it takes the device file system, also in a step.
  [[nodiscard]] bool NeedsDevices() const;

  // What the kernel does not do here as the scenario has it, a line each, for people. Known once
  // the scenario is applied.
  [[nodiscard]] std::vector<std::string> NotReplayed() const;

 private:
  friend class StepByStep;

  enum class Kind { kFile, kFolder, kLink, kUnopenable };
  struct Entry {
    Kind What;
    std::string Bytes;  // of a file; of a link its target
    mode_t Mode;

    bool operator==(const Entry&) const = default;
  };
  // A step: what it brings, and the name of its folder.
  struct Change {
    Tree Contents;
    std::string Name;
  };

  static void Install(const std::string& path, const Entry& entry);
  // Adds what stands below `folder` of the tree: "", or a step.
  void Add(const Tree& tree, const std::string& folder, const std::string& name);
  void AddRoot(const Tree& tree, const std::string& folder);
  void AddSteps(const Tree& tree, const std::string& name);
  void Advance(const Change& change);
  void Remove(const std::string& what);
  void ApplyFiles(const Scenario& before) const;
  void ApplyDevices(const Scenario& before) const;
  void ApplyInterfaces(const Scenario& before) const;
  void ApplyRows(const Scenario& before) const;
  // What the kernel would answer otherwise.
  [[nodiscard]] std::map<std::string, HardwareAnswer> HardwareAnswers() const;

  std::map<std::string, Entry> files_;
  std::map<std::string, DeviceAnswers> devices_;
  std::vector<NetworkInterface> interfaces_;
  std::optional<Rows> rows_;
  std::optional<std::chrono::seconds> uptime_;
  Faults faults_;

  std::vector<Change> steps_;
};

// Goes through the steps of a scenario, which must outlive it, without making the steps before each
// of them once more.
class StepByStep {
 public:
  explicit StepByStep(const Scenario& whole, std::size_t first = 0);

  [[nodiscard]] const Scenario& Now() const { return now_; }
  [[nodiscard]] bool AtEnd() const { return made_ == whole_.Steps(); }

  // Makes the sandbox, which is Now(), the controller after the next step.
  void ApplyNext();

 private:
  const Scenario& whole_;
  std::size_t made_;
  Scenario now_;
};

}  // namespace sandbox
