// What needs attention in a document, as tables. Private to this library.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "insight/snapshot.h"
#include "model/tree.h"

namespace insight {

// A sensor that is not connected reports nothing, so that its zeros say nothing, nor do those of
// its fans and points.
enum class When : std::uint8_t {
  kAlways,
  kWhileConnected,
  kByDay,  // while connected and there is light at the display
};

// A value that needs attention whatever the limits.
struct ValueRule {
  const char* Id;
  Severity Level;
  When Counts;
  const QtSts::ClassInfo& Class;  // the classes derived from it included
  const char* Field;
  bool (*NeedsAttention)(const QtSts::TreeElement& element, const QtSts::TreeValue& value);
  // "{}" stands for the value with its unit, or the name of its code; "{0x}" for its hexadecimal
  // digits.
  const char* Message;
  const char* Hint;
  // The row that the value comes from, where another row may have written the same field; "" when
  // none does.
  const char* Key = nullptr;
};

std::span<const ValueRule> ValueRules();

// What the state of a required source means.
struct SourceRule {
  SourceState State;
  const char* Id;
  const char* Message;  // follows the source's name
  const char* Hint;
};

// Every state but kOk.
std::span<const SourceRule> SourceRules();

// What it means that a source is no file that can be read; its reason says no more.
const SourceRule& OtherFileRule();

// What to look at instead of the rule's hint, for a source that no driver makes.
struct SourceHint {
  std::string_view Id;
  std::span<const SourceState> States;
  const char* Hint;
};

std::span<const SourceHint> SourceHints();

// What people call a source that has the name of a system call.
struct SourceWords {
  std::string_view Id;
  const char* Words;
};

std::span<const SourceWords> SourcesInWords();

}  // namespace insight
