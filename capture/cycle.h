// What a cycle was given, put together.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "capture/observation.h"

namespace capture {

// What the file at a path gave when it was opened once.
struct Reading {
  std::string Probe = {};  // that opened it
  int OpenError = 0;       // errno, 0 when it was opened
  int StatusError = 0;
  int ReadError = 0;
  std::optional<std::uint32_t> Mode = {};  // st_mode
  std::string Bytes = {};
  bool GoesOn = false;  // there may be more than the cycle read

  // Whether the cycle got the same, whatever it asked for.
  bool Same(const Reading& other) const;
};

struct File {
  std::vector<Reading> Readings = {};  // in the order of the cycle
  // What looking for it without opening it gave first: its mode, or an errno.
  std::optional<std::uint32_t> LookedAt = {};
  int LookError = 0;
  bool LooksDiffer = false;
  std::vector<std::string> Links = {};  // that led to it: "/home/Zet/.settings -> /data"
};

// What a device node answered to a request, once.
struct Answer {
  std::string Probe = {};
  std::int64_t Result = 0;
  int Error = 0;  // errno when Result is -1

  bool Same(const Answer& other) const { return Result == other.Result && Error == other.Error; }
};

struct Device {
  std::vector<Answer> Openings = {};  // Result 0 for a node that was opened
  std::map<std::uint32_t, std::vector<Answer>> Answers = {};
};

// An entry of the interface list; its texts are those of an observation (capture/recorder.h).
struct InterfaceEntry {
  std::uint64_t Flags = 0;
  std::vector<std::string> Texts = {};
};

struct HardwareAddress {
  std::string Text = {};  // "00:1A:2B:3C:4D:5E", "" when asking failed
  int Error = 0;
};

struct Row {
  std::optional<std::string> Key = {};    // up to its first zero byte; nothing: NULL
  std::optional<std::string> Value = {};  // likewise
  bool KeyGoesOn = false;
  bool ValueGoesOn = false;
};

struct DatabaseFailure {
  std::uint64_t Stage = 0;  // observe::Stage
  int Code = 0;
  std::string Message = {};
};

struct Storage {
  std::uint64_t Blocks = 0;
  std::uint64_t Free = 0;
  std::uint64_t BlockSize = 0;
};

// What a source is asked.
struct Question {
  std::string Doing = {};   // "reading", "opening", "request of", "asking"
  std::string Source = {};  // a path, an interface, "the system"
};

struct Cycle {
  std::map<std::string, File> Files = {};      // by path, device nodes aside
  std::map<std::string, Device> Devices = {};  // by path
  std::vector<InterfaceEntry> Interfaces = {};
  int InterfacesError = 0;  // errno when they could not be listed
  std::map<std::string, HardwareAddress> HardwareAddresses = {};  // by interface
  std::vector<std::string> WithoutText = {};  // interfaces of which an address could not be written
  std::optional<capture::Storage> Storage = {};
  std::optional<std::uint64_t> Uptime = {};  // seconds
  std::string LocalTime = {};                // "2026-11-22T11:00:00", "" when it was not asked
  std::int64_t ZoneOffset = 0;               // seconds east of Greenwich
  bool DaylightSaving = false;
  bool AskedForRows = false;   // the query ran up to its first row
  std::vector<Row> Rows = {};  // in the order of the cycle
  std::vector<DatabaseFailure> Failures = {};
  bool Ended = false;
  bool Threw = false;
  int Result = 0;
  double Seconds = 0;
  std::optional<std::string> Document = {};  // as XML
};

}  // namespace capture
