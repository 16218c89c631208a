// Findings, and the words and numbers of what they say. Private to this library.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "insight/limits.h"
#include "insight/snapshot.h"
#include "model/tree.h"

namespace insight {

Finding MakeFinding(const char* id, Severity level, std::string message, const char* hint);

// At most two digits after the point, and no zeros at the end.
std::string Rounded(double number);

// "the program that writes the row: write a number that fits"
std::string CureOf(const Remark& mistake);

std::string WithUnit(const std::string& number, std::string_view unit);

// The unit of a limit as people write it: "°C".
std::string_view UnitOf(std::string_view limit);

// "3 d 4 h", "5 h 2 min", "40 s".
std::string Duration(std::chrono::seconds seconds);

// `value` with its unit, "24.05, 0, 19.2 V", or the name of its code.
std::string TextOf(const QtSts::TreeValue& value);

// `message` with the text of `value` in place of "{}", and its hexadecimal digits in place of
// "{0x}".
std::string WithValue(const char* message, const QtSts::TreeValue& value);

// `text` with the share in place of "{}".
std::string WithShare(const char* text, const std::string& share);

// "temperature 81 °C, above the limit of 65 °C", of which `text` is the beginning.
std::string OutsideOf(const Range& range, const std::string& text, double number,
                      std::string_view unit);

}  // namespace insight
