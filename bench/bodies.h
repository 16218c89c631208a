// Everything that is measured, by name.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bench/floors.h"
#include "collector/observer.h"
#include "collector/status_interface.h"
#include "insight/snapshot.h"

namespace bench {

// A cycle, its parts and what can be done with its document; each part beside its floor, which is
// the same work's system calls, SQLite steps and libxml2 calls, and nothing else. A cycle on a bare
// controller is its rows part and a probe that finds nothing, so the rows part is Cycle less Probe.
class Bodies {
 public:
  // Runs one cycle on the present controller. Throws std::runtime_error when it fails.
  Bodies();

  void Cycle();
  void Watched();  // Cycle with an observer that counts events
  void Floors();   // ProbeFloor, then RowsFloor, so that each finds the caches as in a cycle
  void RowsFloor();

  void Probe();
  void ProbeFloor();
  void Packages();  // the part of Probe that reads the package database
  void PackagesFloor();
  void Network();  // the part of Probe that reads the network's state
  void NetworkFloor();
  void ProbeJson();  // Probe, and what it found as JSON

  void Xml();
  void XmlFloor();
  void Json();
  void Parse();

  void Explained();  // Cycle with all that `show` says of it
  void Text();       // of Explained

  // Bytes of the text that was written last.
  std::size_t Written() const { return written_; }

 private:
  class Counter : public observe::Observer {
   public:
    void See(const observe::Event& event) override;

   private:
    std::array<std::uint64_t, 32> events_{};
  };

  void Write(const std::string& text);

  Counter counter_;
  CStatusInterface collector_;
  CTolmarHardware probe_;
  QtSts::CStatus status_;
  insight::Recorder recorder_{collector_};
  std::optional<insight::Snapshot> snapshot_;
  bench::RowsFloor rows_floor_;
  std::string xml_;
  std::vector<TreeStep> steps_;
  std::size_t written_ = 0;
};

struct Benchmark {
  const char* Name;
  void (Bodies::*Body)();
};

std::span<const Benchmark> Benchmarks();

}  // namespace bench
