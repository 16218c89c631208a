// What the tests of sensors/ share: a document, a clean scratch state, and rows fed as a cycle
// feeds them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "collector/state/scratch.h"
#include "model/compare.h"
#include "model/document.h"
#include "model/lookup/verify.h"
#include "sensors/attributes.h"
#include "sensors/sensor_keys.h"
#include "tests/collector/scratch_variables.h"

// By key, thus in the order in which a cycle reads them.
using Rows = std::map<std::string, std::string>;
// Attribute and value.
using Attributes = std::vector<std::pair<std::string, std::string>>;

inline void PrintTo(const DcioPoint& point, std::ostream* out) {
  *out << "{present " << int{point.Present} << ", type " << point.Type << ", index " << point.Index
       << ", state " << point.State << ", label \"" << point.Label << "\"}";
}

// The state of a fresh process but for the number of the sensor.
inline Scratch FreshBut(std::uint32_t sensor_number) {
  Scratch scratch;
  scratch.u32_SensorNumber = sensor_number;
  return scratch;
}

// Hands one row to the handler as a cycle does: in writable texts of its own. They are exactly as
// long as the row, so that a step beyond their end is found.
inline int Dispatch(QtSts::CStatus* status, const std::string& key, const std::string& value) {
  std::vector<char> key_text(key.c_str(), key.c_str() + key.size() + 1);
  std::vector<char> value_text(value.c_str(), value.c_str() + value.size() + 1);
  return Status_Sensor(status, value_text.data(), key_text.data());
}

// Adds the rows of one sensor: "Sensor_" + number + "_" + attribute.
inline void AddSensor(Rows* rows, const std::string& number, const Attributes& attributes) {
  for (const auto& [attribute, value] : attributes) {
    (*rows)["Sensor_" + number + "_" + attribute] = value;
  }
}

// A document beside a scratch state as in a fresh process.
class SensorTest : public testing::Test {
 protected:
  SensorTest() { ClearScratch(); }

  int Send(const std::string& key, const std::string& value) {
    return Dispatch(&status_, key, value);
  }

  // One row of the sensor with this number.
  int Send(int number, const std::string& attribute, const std::string& value) {
    return Send("Sensor_" + std::to_string(number) + "_" + attribute, value);
  }

  void Send(int number, const Attributes& attributes) {
    for (const auto& [attribute, value] : attributes) {
      Send(number, attribute, value);
    }
  }

  // What a cycle does with these rows.
  void Cycle(const Rows& rows) {
    Status_ClearLists(&status_);
    for (const auto& [key, value] : rows) {
      Send(key, value);
    }
  }

  QtSts::CStatus status_;
};

// The record of this class at `position`.
template <class Record>
Record& At(const QtSts::CSensorList& list, unsigned int position) {
  auto* const record = dynamic_cast<Record*>(list[position]);
  if (record == nullptr) {
    throw std::logic_error("no " + std::string(Record::Class.Name) + " at position " +
                           std::to_string(position));
  }
  return *record;
}

// The display interface at `position` of output 0.
inline QtSts::CDisplayInterface& InterfaceAt(const QtSts::CStatus& status, unsigned int position) {
  const QtSts::COutput* const output = status.Outputs[0];
  if (output == nullptr || output->DisplayInterfaces[position] == nullptr) {
    throw std::logic_error("no interface at position " + std::to_string(position));
  }
  return *output->DisplayInterfaces[position];
}

// The addresses of the CAN sensors of a list, by position.
inline std::vector<std::uint64_t> Addresses(const QtSts::CSensorList& list) {
  std::vector<std::uint64_t> addresses;
  for (unsigned int i = 0; i < list.Count(); ++i) {
    addresses.push_back(At<QtSts::CCANSensor>(list, i).Address);
  }
  return addresses;
}

// What two objects of the document differ in, as readable lines.
inline std::vector<std::string> DifferencesOf(const QtSts::CBaseStatus& left,
                                              const QtSts::CBaseStatus& right) {
  std::vector<std::string> texts;
  for (const QtSts::Difference& difference : QtSts::Compare(left, right)) {
    texts.push_back(difference.Text());
  }
  return texts;
}
