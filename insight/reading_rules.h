// Where in a document readings stand: those with a limit, and what they can hold. Private to this
// library.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "insight/limits.h"
#include "insight/snapshot.h"
#include "insight/wrong_rows.h"
#include "model/tree.h"

namespace insight {

// What readings are compared with; each list is looked at once.
class Peers {
 public:
  Peers(const Snapshot& snapshot, const WrongRows& wrong_rows)
      : snapshot_(snapshot), wrong_rows_(wrong_rows) {}

  // Whether a source or row gave the value, and it is what that says.
  bool IsKnown(const QtSts::TreeElement& element, const QtSts::TreeValue& value) const;

  // The middle one of the values of `field`, 0 or more, in the elements of `list` that are
  // connected and of which it is known; nothing when fewer than three have: two do not say which
  // one is wrong.
  std::optional<double> MiddleOf(const QtSts::TreeElement& list, const char* field);

 private:
  const Snapshot& snapshot_;
  const WrongRows& wrong_rows_;
  std::map<std::pair<const QtSts::TreeElement*, std::string_view>, std::optional<double>> middles_;
};

struct ReadingRule {
  const QtSts::ClassInfo& Class;  // the classes derived from it included
  const char* Field;
  const char* Limit;  // its name; null: there is none
  Range Possible;     // what its kind can hold, in the unit of the field
  const char* What;   // "temperature"
  // Follows a reading of which not itself is compared with the limit: " is {} of its average"; null
  // when it is.
  const char* Share;
  const char* Hint;  // what to look at when it is outside of its limit; null without a limit
  // The reading in the unit of the limit; nothing when the value stands for none.
  std::optional<double> (*Read)(const QtSts::TreeElement& element, const QtSts::TreeValue& value,
                                Peers* peers);
  // What follows the reading in place of share and limit where a share says nothing; "" where it
  // says something. Null: it always does.
  std::string (*WithoutShare)(const QtSts::TreeElement& element) = nullptr;
};

std::span<const ReadingRule> ReadingRules();

// A value, and the element or record of which it is one.
struct FoundValue {
  const QtSts::TreeElement* Holder = nullptr;
  const QtSts::TreeValue* Value = nullptr;  // null: there is none
};

// As TreeElement::FindValue, only in elements of `info`.
FoundValue FindIn(const QtSts::TreeElement& element, const QtSts::ClassInfo& info,
                  std::string_view path);

// The value of a number of any kind; 0 for a text, a flag or a row of numbers.
double NumberOf(const QtSts::TreeValue& value);

// False for an element of a sensor that is not connected, which reports nothing.
bool IsOfConnected(const QtSts::TreeElement& element);

}  // namespace insight
