#include "insight/row_values.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "collector/state/numbers.h"
#include "insight/nearest.h"
#include "insight/row_remarks.h"
#include "insight/row_shadow.h"
#include "model/text.h"

namespace insight {
namespace {

using observe::Fate;
using observe::Number;
using observe::Stores;

// How the parsers of the collector are called.
constexpr std::string_view kNumberName = rows::kNumber.Name;
constexpr std::string_view kTextName = rows::kText.Name;
constexpr std::string_view kAnyTextName = rows::Always(0).Name;

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kDigits = "0123456789";

// A family that has no code of its own: what any other text gives is meant.
constexpr std::string_view kFamilyKey = "ProductFamily";
constexpr std::string_view kFamilyWithoutCode = "qtm2100";

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return static_cast<char>(numbers::ToLower(static_cast<unsigned char>(c)));
  });
  return lower;
}

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> words) {
  return std::ranges::find(words, text) != words.end();
}

std::string TextOf(const Number& number) {
  switch (number.Is) {
    case Number::Type::kSigned:
      return std::to_string(number.Signed);
    case Number::Type::kUnsigned:
      return std::to_string(number.Unsigned);
    case Number::Type::kFloating:
      return Written(QtSts::listing::kDouble, &number.Floating);
    case Number::Type::kNone:
      break;
  }
  return "nothing";
}

// What a floating number of 32 bits is written as.
std::string StoredText(const Stores& store, rows::Type type) {
  if (type == rows::Type::kFloat) {
    const auto stored = static_cast<float>(store.Stored.Floating);
    return Written(QtSts::listing::kFloat, &stored);
  }
  return TextOf(store.Stored);
}

// ---- Flags and marks

// A value that is not the one word that is true, or sets a mark; `what` says what becomes of it.
// False when it says that it is not true.
bool JudgeUntrue(std::string_view wanted, const char* what, Row* row) {
  const std::string word = Lower(Trimmed(row->Value));
  if (IsOneOf(word, {"false", "no", "off", "f", "n"}) ||
      word.find_first_not_of('0') == std::string::npos) {
    return false;
  }
  const bool is_number = word.find_first_not_of(kDigits) == std::string::npos;
  if (is_number || IsOneOf(word, {"true", "yes", "on", "t", "y", "\"true\"", "'true'"})) {
    AddRemark(
        row, Outcome::kLooksTrue,
        Quoted(row->Value) + " looks true, but " + what + ": only " + Quoted(wanted) + " does",
        WholeValue(*row));
  } else {
    AddRemark(row, Outcome::kUnknownWord, Quoted(row->Value) + " " + what, WholeValue(*row));
  }
  return true;
}

void JudgeFlag(std::string_view wanted, Row* row) {
  constexpr const char* kNotTrue = "does not mean true";
  if (row->Value == wanted || JudgeUntrue(wanted, kNotTrue, row)) {
    return;
  }
  // An empty value does not say false either. Of NULL there is a remark already.
  if (Trimmed(row->Value).empty() && !HasRemark(*row, Outcome::kNull)) {
    AddRemark(row, Outcome::kUnknownWord, Joined({Quoted(row->Value), " ", kNotTrue}),
              WholeValue(*row));
  }
}

void JudgeMark(std::string_view wanted, Row* row) {
  if (row->Value != wanted && !JudgeUntrue(wanted, "does not set the mark", row)) {
    AddRemark(row, Outcome::kMarkUnset, "the mark is not set");
  }
}

// ---- Words

std::string NameOfCode(const rows::Parser& parser, unsigned long long code) {
  for (const rows::Word& word : parser.Words) {
    if (word.Code == code) {
      return Quoted(word.Text);
    }
  }
  return std::to_string(code);
}

void JudgeWord(const Stores& store, const rows::Parser& parser, Row* row) {
  if (store.What == Fate::kStored ||
      (store.Attribute == kFamilyKey && row->Value.find(kFamilyWithoutCode) != std::string::npos)) {
    return;
  }
  std::vector<std::string_view> words;
  for (const rows::Word& word : parser.Words) {
    words.push_back(word.Text);
  }
  const char* const became = store.What == Fate::kOtherWord ? " is stored" : kStays;
  AddRemark(row, Outcome::kUnknownWord,
            Quoted(row->Value) + " is no word of the list" +
                NearestIs(Names(words).Nearest(Trimmed(row->Value))) + "; " +
                NameOfCode(parser, store.Stored.Unsigned) + became,
            WholeValue(*row));
}

// ---- Numbers

bool IsFraction(std::string_view rest) {
  return rest.size() > 1 && rest[0] == '.' &&
         rest.find_first_not_of(kDigits, 1) == std::string_view::npos;
}

double AsReal(const Number& number) {
  switch (number.Is) {
    case Number::Type::kSigned:
      return static_cast<double>(number.Signed);
    case Number::Type::kUnsigned:
      return static_cast<double>(number.Unsigned);
    default:
      return number.Floating;
  }
}

// Of whole numbers of any type.
bool IsSame(const Number& left, const Number& right) {
  const auto is_negative = [](const Number& number) {
    return number.Is == Number::Type::kSigned && number.Signed < 0;
  };
  const auto bits = [](const Number& number) {
    return number.Is == Number::Type::kSigned ? static_cast<unsigned long long>(number.Signed)
                                              : number.Unsigned;
  };
  return is_negative(left) == is_negative(right) && bits(left) == bits(right);
}

// Whether the destination holds another number than the text says. Digits that a floating number
// has no room for do not count.
bool IsWrapped(const Stores& store, std::string_view number) {
  if (store.Read.Is == Number::Type::kFloating) {
    return false;  // what becomes infinite is no number
  }
  if (store.Stored.Is == Number::Type::kFloating) {
    return AsReal(store.Read) != store.Stored.Floating;
  }
  return !IsSame(store.Read, store.Stored) ||
         (store.Read.Is == Number::Type::kUnsigned && number.find('-') != std::string_view::npos);
}

// What only the format of fractions reads: "0x12", "inf", "nan", "6e400".
void JudgeFraction(const Stores& store, std::string_view number, rows::Type type, Row* row) {
  if (store.Read.Is != Number::Type::kFloating) {
    return;
  }
  const Excerpt where = {RowPart::kValue, 0, store.Consumed};
  if (!std::isfinite(store.Stored.Floating)) {
    const bool is_digits = std::isinf(store.Stored.Floating) &&
                           number.find_first_of(kDigits) != std::string_view::npos;
    AddRemark(row, Outcome::kNoNumber,
              Quoted(Trimmed(number)) + (is_digits ? " is too large: " : " is no finite number: ") +
                  StoredText(store, type) + " is stored",
              where);
  } else if (number.find_first_of("xX") != std::string_view::npos) {
    AddRemark(
        row, Outcome::kTextAfterNumber,
        Quoted(Trimmed(number)) + " is hexadecimal: " + StoredText(store, type) + " is stored",
        where);
  }
}

void JudgeNumber(const Stores& store, const ValueFormat& format, Row* row) {
  const std::string_view value = row->Value;
  const std::string_view number = value.substr(0, store.Consumed);
  const std::string_view rest = value.substr(store.Consumed);
  const auto stored = [&] { return StoredText(store, format.Is); };
  if (number.empty()) {
    AddRemark(row, Outcome::kNoNumber,
              (value.empty() ? "the value is empty" : Quoted(value) + " is no number") + ": " +
                  stored() + " is stored",
              WholeValue(*row));
    return;
  }
  JudgeFraction(store, number, format.Is, row);
  const Excerpt after = {RowPart::kValue, store.Consumed, value.size()};
  const bool is_whole = format.Parser->Name != kNumberName;
  if (rest.empty()) {
    // Nothing is left over.
  } else if (Trimmed(rest).empty()) {
    AddRemark(row, Outcome::kBlanksAfterNumber,
              Counted(rest.size(), "blank") + " after the number " + stored(), after);
  } else if (is_whole && IsFraction(Trimmed(rest))) {
    AddRemark(row, Outcome::kFractionDropped,
              Quoted(rest) + " is dropped: " + stored() + " is stored", after);
  } else {
    AddRemark(row, Outcome::kTextAfterNumber,
              Quoted(rest) + " follows the number: " + stored() + " is stored", after);
  }
  if (IsWrapped(store, number)) {
    AddRemark(row, Outcome::kWrapped,
              Quoted(Trimmed(number)) + " does not fit: " + stored() + " is stored",
              {RowPart::kValue, 0, store.Consumed});
  }
}

void JudgeText(Row* row) {
  std::string clean = row->Value;
  QtSts::CleanText(&clean);
  if (clean != row->Value) {
    const auto [differs, in_clean] = std::ranges::mismatch(row->Value, clean);
    const auto begin = static_cast<std::size_t>(differs - row->Value.begin());
    AddRemark(row, Outcome::kNotUtf8,
              "the document has " + Quoted(clean) + ": byte " + std::to_string(begin + 1) +
                  " is not UTF-8 that XML can carry",
              {RowPart::kValue, begin, begin + 1});
  }
}

}  // namespace

void JudgeValue(const Stores& store, const ValueFormat& format, Row* row) {
  if (format.Parser == nullptr || std::string_view(format.Parser->Name) != store.Parser) {
    return;  // the mark of a point, which any text sets
  }
  const rows::Parser& parser = *format.Parser;
  if (!parser.Words.empty()) {
    const std::string_view first = parser.Words.front().Text;
    if (format.Is == rows::Type::kBool) {
      JudgeFlag(first, row);
    } else if (format.Is == rows::Type::kBits) {
      JudgeMark(first, row);
    } else {
      JudgeWord(store, parser, row);
    }
  } else if (parser.Name == kTextName) {
    JudgeText(row);
  } else if (parser.Name != kAnyTextName) {
    JudgeNumber(store, format, row);
  }
}

}  // namespace insight
