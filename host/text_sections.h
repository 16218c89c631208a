// What the text for people shows, and how: tables only.
#pragma once

#include <cstddef>

#include "host/page.h"

namespace host {

// A fact's label or a column's heading, and the template of its value.
struct Column {
  const char* Heading;
  const char* Template;
  Align Side = Align::kLeft;
};

struct Columns {
  const Column* Begin;
  std::size_t Count;

  template <std::size_t kCount>
  constexpr Columns(const Column (&columns)[kCount]) : Begin(columns), Count(kCount) {}  // NOLINT

  constexpr const Column* begin() const { return Begin; }
  constexpr const Column* end() const { return Begin + Count; }
};

// One block of the page: the facts of a record, one a line, or a list as a table.
struct Block {
  const char* Title;  // null: belongs to the block before it
  const char* Path;   // from the element that is shown, to the record or list
  Columns Shown;
};

struct Blocks {
  const Block* Begin;
  std::size_t Count;

  constexpr const Block* begin() const { return Begin; }
  constexpr const Block* end() const { return Begin + Count; }
};

// What a sensor of a class, its heirs included, reads: the first that fits holds.
struct Reading {
  const char* Class;
  const char* Template;
};

extern const Blocks kDocumentBlocks;   // of the document, before the outputs
extern const Blocks kOutputBlocks;     // of each output
extern const Blocks kClosingBlocks;    // of the document, after the sensors
extern const Blocks kPointBlocks;      // of a board's points
extern const Columns kSensorReadings;  // of a list of sensors; the reading follows as last column
extern const Columns kSensorAddresses;
extern const Columns kFanSpeeds;

extern const Reading kReadings[];
extern const std::size_t kReadingCount;

}  // namespace host
