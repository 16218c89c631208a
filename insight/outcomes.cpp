#include "insight/outcomes.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace insight {
namespace {

constexpr OutcomeClass kFine = OutcomeClass::kFine;
constexpr OutcomeClass kNotice = OutcomeClass::kNotice;
constexpr OutcomeClass kError = OutcomeClass::kError;

constexpr OutcomeInfo kOutcomes[] = {
    {Outcome::kStored, "stored", kFine, "Stored in the document", ""},
    {Outcome::kParked, "parked", kFine, "Kept for the row that completes its element", ""},
    {Outcome::kCompleted, "completed", kFine, "Completes its element", ""},
    {Outcome::kUnused, "unused", kFine, "Known, and deliberately not used", ""},
    {Outcome::kMarkUnset, "mark-unset", kFine, "A mark that is not set", ""},

    {Outcome::kLongerName, "longer-name", kNotice, "Taken for a shorter key or attribute",
     "Write the name exactly as statuscollector-rows(5) has it"},
    {Outcome::kBlanksAfterNumber, "blanks-after-number", kNotice, "Blanks follow the number",
     "Write the number alone"},
    {Outcome::kMixedWidths, "mixed-widths", kNotice,
     "Numbers of several widths in one family of keys",
     "Pad all numbers of a family with zeros to one width"},
    {Outcome::kNull, "null", kNotice, "NULL is read as the empty text", "Write a value, or no row"},
    {Outcome::kZeroByte, "zero-byte", kNotice, "The text is cut at a zero byte",
     "Write texts without zero bytes"},
    {Outcome::kNotUtf8, "not-utf-8", kNotice, "Not UTF-8: what XML cannot carry becomes U+FFFD",
     "Write UTF-8"},
    {Outcome::kOverwritten, "overwritten", kNotice,
     "Overwritten by a later row before anything took it", "Write each key and attribute once"},
    {Outcome::kNotThePosition, "not-the-position", kNotice,
     "The number is not the position in the list", "Number without gaps, from 0"},
    {Outcome::kFractionDropped, "fraction-dropped", kNotice, "The fraction is dropped",
     "Write a whole number"},
    {Outcome::kWrapped, "wrapped", kNotice, "The number does not fit its width and wraps",
     "Write a number that fits"},
    {Outcome::kUntakenAttribute, "untaken-attribute", kNotice, "Its element does not take it",
     "Leave the attribute out, or write the right kind"},
    {Outcome::kInherited, "inherited", kNotice, "Its element takes a value that was left before",
     "Write every attribute of every element"},
    {Outcome::kSecondSpeed, "second-speed", kNotice, "A second speed of a fan: the first one stays",
     "Write each fan once"},
    {Outcome::kReplaced, "replaced", kNotice,
     "Replaced by 201, since the ambient light is overridden", "Clear the override"},
    {Outcome::kWaits, "waits", kNotice, "Waits for another board",
     "Write points, each with a Type, fans and voltages for boards that take them"},
    {Outcome::kPointOverwritten, "point-overwritten", kNotice, "The point is written twice",
     "Write each point once"},

    {Outcome::kUnknownKey, "unknown-key", kError, "No such key",
     "Write one of the keys of statuscollector-rows(5)"},
    {Outcome::kIgnoredKey, "ignored-key", kError, "Begins like a key, but is ignored",
     "Write the key exactly"},
    {Outcome::kOutOfOrder, "out-of-order", kError, "Comes too late: keys are not in byte order",
     "Declare the key column TEXT, collation BINARY, and write keys as texts"},
    {Outcome::kBadNumber, "bad-number", kError, "The number in the key is malformed or missing",
     "Write decimal digits after the prefix"},
    {Outcome::kNoAttribute, "no-attribute", kError, "The key ends before its attribute",
     "Add '_' and an attribute"},
    {Outcome::kUnknownAttribute, "unknown-attribute", kError, "No such attribute",
     "Write one of the attributes of statuscollector-rows(5)"},
    {Outcome::kAfterType, "after-type", kError,
     "Sorts after the Type of its own element, which is complete by then",
     "Spell the attribute as statuscollector-rows(5) has it"},
    {Outcome::kUnknownWord, "unknown-word", kError, "Not a word of the list",
     "Write one of the words of statuscollector-rows(5)"},
    {Outcome::kLooksTrue, "looks-true", kError, "Looks true, but is read as false",
     "Write true for a flag, 1 for a mark, and nothing else"},
    {Outcome::kNoNumber, "no-number", kError, "Not a number, or an infinite one",
     "Write a number that fits"},
    {Outcome::kTextAfterNumber, "text-after-number", kError,
     "Text follows the number, or it is hexadecimal",
     "Write the number alone, decimal, with a point"},
    {Outcome::kTooLong, "too-long", kError, "Too long: the text is cut",
     "Write at most 127 bytes as a key, 511 as a value"},
    {Outcome::kPositionTaken, "position-taken", kError,
     "The element is lost: its position is taken",
     "Write the number that the report says would do"},
    {Outcome::kRefusedKind, "refused-kind", kError,
     "The element is lost: its kind does not stand behind a display interface",
     "Write another Location, or another Type"},
    {Outcome::kPointOutsideTable, "point-outside-table", kError, "No point has this number",
     "Number inputs 0 to 23, outputs 0 to 11"},
    {Outcome::kPointIndex, "point-index", kError, "The board has no point of this index",
     "Write an index from 1 to the number of the board's points"},
    {Outcome::kPointType, "point-type", kError, "No such type of point",
     "Write one of the codes of statuscollector-rows(5)"},
    {Outcome::kNotVolts, "not-volts", kError, "A voltage without \"Volts\"",
     "End the attribute with _Volts"},
    {Outcome::kNoType, "no-type", kError, "No Type completes these rows",
     "Write a Type row for each element"},
};

// Found by position.
static_assert(std::ranges::all_of(kOutcomes, [](const OutcomeInfo& info) {
  return &info - kOutcomes == static_cast<std::ptrdiff_t>(info.What);
}));
static_assert(std::size(kOutcomes) == static_cast<std::size_t>(Outcome::kNoType) + 1);

}  // namespace

std::span<const OutcomeInfo> Outcomes() { return kOutcomes; }

const OutcomeInfo& InfoOf(Outcome outcome) { return kOutcomes[static_cast<std::size_t>(outcome)]; }

const char* NameOf(OutcomeClass outcome_class) {
  static constexpr const char* kNames[] = {"fine", "notice", "error"};
  return kNames[static_cast<std::size_t>(outcome_class)];
}

}  // namespace insight
