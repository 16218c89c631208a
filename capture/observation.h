// What a cycle was given, one piece at a time: an event of the observer as plain bytes that pass
// from the process of the cycle to the one that keeps them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

enum class Saw : std::uint32_t {
  kCycleBegins,
  kCycleEnds,      // Result of QueryDatabase; Number: 1 when an exception left it
  kProbeBegins,    // Texts: name
  kAsks,           // Call; Texts: source
  kAnswers,        // Call, Result, Error, Number, Offset, Limit; Texts: source, bytes
  kInterface,      // an entry of the list, before its answer; Number: flags; Texts: see TextsOf
  kAsksDatabase,   // Number: stage
  kDatabaseFails,  // Number: stage; Result: code; Texts: message
  kRow,            // Number: bit 0: key is NULL, 1: value is NULL, 2: key, 3: value goes on after a
                   // zero byte; Texts: key, value
  kDocument,       // Texts: the document of the cycle that ended
};

// Numbers of an answer:
//
//   kOpen                        Number: flags; Offset: 1 when in a folder that was opened before
//   kRequest                     Number: request
//   kRead                        Offset, Limit: as asked
//   kFileStatus, kPathStatus     Number: st_mode; Offset: st_uid
//   kSystem                      Number: uptime in seconds
//   kStorage                     Number: blocks; Offset: free blocks; Limit: bytes of a block
//   kLocalTime                   Number: seconds east of Greenwich; Offset: 1 in summer;
//                                Texts[1]: "2026-11-22T11:00:00"
struct Observation {
  Saw What = Saw::kCycleBegins;
  std::uint32_t Call = 0;  // of observe::Call
  std::int32_t Error = 0;
  std::int64_t Result = 0;
  std::uint64_t Number = 0;
  std::uint64_t Offset = 0;
  std::uint64_t Limit = 0;
  std::vector<std::string> Texts = {};
};

// `observation` as bytes, for a process of the same program.
std::string Encode(const Observation& observation);

// The pieces in a stream of bytes that comes in blocks, cut anywhere.
class Decoder {
 public:
  void Take(std::string_view block) { bytes_ += block; }

  // The next piece that is there whole; nothing when more has to come.
  std::optional<Observation> Next();

 private:
  std::string bytes_;
  std::size_t at_ = 0;  // what comes before was returned
};

}  // namespace capture
