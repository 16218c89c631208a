// What needs attention in a document, as tables. Private to this library.
#pragma once

#include <span>

#include "insight/snapshot.h"
#include "model/tree.h"

namespace insight {

// The Id of the database among the sources.
inline constexpr const char* kDatabaseSource = "database";

// A value that needs attention whatever the limits.
struct ValueRule {
  const char* Id;
  Severity Level;
  const QtSts::ClassInfo& Class;  // the classes derived from it included
  const char* Field;
  bool (*NeedsAttention)(const QtSts::TreeElement& element, const QtSts::TreeValue& value);
  // "{}" stands for the value with its unit, or the name of its code; "{0x}" for its hexadecimal
  // digits.
  const char* Message;
  const char* Hint;
  // A sensor that is not connected reports nothing, so that its zeros say nothing, nor do those of
  // its fans and points.
  bool OnlyWhileConnected = false;
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

}  // namespace insight
