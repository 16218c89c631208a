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

// A part of the page that can be asked for by its name.
struct Section {
  const char* Name;
  Blocks Shown;
};

using Sections = std::span<const Section>;

// What a sensor of a class, the classes derived from it included, reads: the first that fits holds.
struct Reading {
  const QtSts::ClassInfo& Class;
  const char* Template;
};

// One of a sensor's temperatures and voltages, which stand beside their limits.
struct Measured {
  const QtSts::ClassInfo& Class;
  const char* Name;  // a template: what a technician calls the sensor
  const char* Template;
  const char* Limit;  // its name among the limits; one in percent is of a voltage, never to be 0
  const char* InVolts = nullptr;  // a second limit beside one in percent; null: there is none
};

extern const Sections kDocumentSections;  // of the document, before the outputs
extern const Sections kOutputSections;    // of each output
extern const Sections kClosingSections;   // of the document, after the sensors
extern const Columns kDisplayFacts;       // of each output, first of all
extern const Blocks kPointBlocks;         // of a board's points
extern const Columns kSensorReadings;  // of a list of sensors; the reading follows as last column
extern const Columns kSensorAddresses;
extern const Columns kFanSpeeds;

extern const std::span<const Reading> kReadings;
extern const std::span<const Measured> kMeasured;

}  // namespace host
