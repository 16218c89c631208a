// The table of sources: which probe asks which, and which fields each of them feeds. The table of
// README.md says the same, and tests compare both with what cycles do. Private to this library.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "collector/observer.h"

namespace insight {

struct SourceInfo {
  const char* Id;    // of one bound to an interface what its Ids begin with: "carrier"
  std::string Name;  // path, or name of the call; "%s" stands for the interface
  observe::Call AskedBy;
  bool Required;
  bool Bound = false;    // to an interface
  bool Trusted = false;  // a path that is walked name by name, for the links on it
};

// In the order in which a cycle asks them first. The database is the last.
std::span<const SourceInfo> SourceTable();

const SourceInfo& SourceNamed(const char* id);

// Which part of what a source answers a field needs.
enum class Part : std::uint8_t {
  kAll,        // something was read, or the call has succeeded
  kOpened,     // no more than that it can be opened
  kRequest,    // the answer to Request
  kStatistic,  // the same, as a counter of the output's statistic Element
  kElement,    // that statistic Element is there
  // None: but without an answer to Request the output's flags have every bit set, and a value of
  // the name Field, which one of these bits replaces, is not its row's.
  kSpoils,
  kLabel,       // what follows Label
  kRow,         // the interface's row
  kInterfaces,  // one that is running
  kAddress,     // an address of the interface
};

// One field that a source feeds in one probe. A field that needs several parts has several rows.
struct Feed {
  const char* Probe;  // as the observer names it
  const char* Source;
  const char* Field;  // "%d" stands for the position of the network device; "" for none
  const char* Label = nullptr;
  unsigned long Request = 0;
  int Element = -1;
  Part Needs = Part::kAll;
  bool AddsBits = false;  // to what other sources give: without it the field still says something
};

// In the order in which a cycle asks.
std::span<const Feed> FeedTable();

// Those of one probe, which stand together.
std::span<const Feed> FeedsOf(std::string_view probe);

// Whether the source only adds bits to this field.
bool AddsBits(std::string_view source, std::string_view field);

}  // namespace insight
