// What the text for people shows, and how: tables only.
#pragma once

#include <span>

#include "host/page.h"
#include "model/listing.h"

namespace host {

// A fact's label or a column's heading, and the template of its value.
struct Column {
  const char* Heading;
  const char* Template;
  Align Side = Align::kLeft;
};

using Columns = std::span<const Column>;

// One block of the page: the facts of a record, one a line, or a list as a table.
struct Block {
  const char* Title;  // null: belongs to the block before it
  const char* Path;   // from the element that is shown, to the record or list
  Columns Shown;
};

using Blocks = std::span<const Block>;

// What a sensor of a class, its heirs included, reads: the first that fits holds.
struct Reading {
  const QtSts::ClassInfo& Class;
  const char* Template;
};

extern const Blocks kDocumentBlocks;   // of the document, before the outputs
extern const Blocks kOutputBlocks;     // of each output
extern const Blocks kClosingBlocks;    // of the document, after the sensors
extern const Blocks kPointBlocks;      // of a board's points
extern const Columns kSensorReadings;  // of a list of sensors; the reading follows as last column
extern const Columns kSensorAddresses;
extern const Columns kFanSpeeds;

extern const std::span<const Reading> kReadings;

}  // namespace host
