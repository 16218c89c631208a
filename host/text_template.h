// Lines for people with the values of an element filled in.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "model/tree.h"

namespace host {

inline constexpr const char* kNotReported = "not reported";

using ValueSet = std::unordered_set<const QtSts::TreeValue*>;

struct Filled {
  std::string Text;
  std::vector<const QtSts::TreeValue*> Used;  // the values that the text has
};

// Fills the places of a template, all of whose text is printable afterwards:
//
//   {Celsius}               the value tied to its unit, code names for codes, yes and no for flags
//   {Dimming/DimmingMode}   a value of a record of the element
//   {Width:bare}            the value without its unit
//   {State:0=off,1=on}      with other names for some values; the empty name is "not reported"
//   {SerialNumber:hex8}     a number in hexadecimal, here of at least 8 digits
//   {Uptime:duration}       an ISO 8601 duration, spelled out
//   {StatusFlags:flags}     the names of the status flags that are set
//   {StatusFlags:power}     whether they say that the display's power is on or off
//   {TemperatureKelvin:celsius}
//   {Class} {#}             the element's class and its position in its list
//
// A value that is absent, one of `unreported`, or an empty text, is "not reported"; so is the whole
// when it has places and no value for any.
Filled Fill(std::string_view text_template, const QtSts::TreeElement& element,
            const ValueSet& unreported = {});

}  // namespace host
