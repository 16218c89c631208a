// What can become of a row: a closed list, each with its class and one line of cure. The table of
// statuscollector-rows(5) says the same, and a test compares them.
#pragma once

#include <cstdint>
#include <span>

#include "insight/export.h"

namespace insight {

enum class OutcomeClass : std::uint8_t {
  kFine,
  kNotice,  // taken, though perhaps not as it was meant
  kError,   // lost, or taken as something that it does not say
};

enum class Outcome : std::uint8_t {
  // Fine.
  kStored,
  kParked,     // waits for the row that completes its element, which took it
  kCompleted,  // completes its element
  kUnused,     // known, and deliberately not used
  kMarkUnset,  // a mark that is "0" or empty

  // Notices.
  kLongerName,         // taken for a shorter key or attribute: "GUIDX"
  kBlanksAfterNumber,  // only blanks
  kMixedWidths,        // numbers of several widths, without a loss
  kNull,               // NULL is read as the empty text
  kZeroByte,           // the text is cut at a zero byte
  kNotUtf8,
  kOverwritten,       // before anything took it
  kNotThePosition,    // "05" becomes position 1
  kFractionDropped,   // "44.9" where whole numbers are the format
  kWrapped,           // in its width
  kUntakenAttribute,  // no kind of its element takes it
  kInherited,         // its element takes a value that another row, or an earlier cycle, left
  kSecondSpeed,       // of a fan, whose first one stays
  kReplaced,          // "Ambient" while it is overridden
  kWaits,             // fans, voltages or points that wait for another board
  kPointOverwritten,

  // Errors.
  kUnknownKey,
  kIgnoredKey,   // a known key whose handler ignores it: "ErrorFlagsX"
  kOutOfOrder,   // keys in another collation
  kBadNumber,    // in the key: malformed or missing
  kNoAttribute,  // the key ends before its attribute
  kUnknownAttribute,
  kAfterType,  // the attribute sorts after the "Type" of its own element
  kUnknownWord,
  kLooksTrue,        // a flag or mark that is read as false
  kNoNumber,         // where one is wanted, or an infinite one: "6e400"
  kTextAfterNumber,  // text after the number: "62,5", "0x12", "20 C"
  kTooLong,
  kPositionTaken,      // the element is lost
  kRefusedKind,        // the kind does not stand behind a display interface
  kPointOutsideTable,  // the number of the point
  kPointIndex,         // out of the board's range
  kPointType,          // no such type of point
  kNotVolts,           // "PsrbVin_" without "Volts"
  kNoType,             // a group of rows that no "Type" completes
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the table of the page
struct OutcomeInfo {
  Outcome What;
  const char* Id;  // stable: "unknown-key"
  OutcomeClass Class;
  const char* Meaning;  // one sentence without the closing stop
  const char* Cure;     // what to do, one line; "" for what is fine
};

// Every outcome once, in the order of the enumeration.
INSIGHT_API std::span<const OutcomeInfo> Outcomes();

INSIGHT_API const OutcomeInfo& InfoOf(Outcome outcome);

// "fine", "notice" or "error".
INSIGHT_API const char* NameOf(OutcomeClass outcome_class);

}  // namespace insight
