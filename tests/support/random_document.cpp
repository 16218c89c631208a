#include "tests/support/random_document.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "model/dcio_boards.h"
#include "model/field_access.h"

namespace test_support {
namespace {

using QtSts::CBaseStatus;
using QtSts::ClassInfo;
using QtSts::Field;
using QtSts::ScalarType;
namespace listing = QtSts::listing;

std::uint64_t Below(std::uint64_t bound, const Choices& next) { return next() % bound; }

template <class T>
std::string Written(T number) {
  char digits[64];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr};
}

// Any bits of the type, its limits more often than chance would have it.
template <class T>
std::string Integer(const Choices& next) {
  constexpr T kLimits[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), 0, 1};
  const std::uint64_t choice = Below(8, next);
  return Written(choice < std::size(kLimits) ? kLimits[choice] : static_cast<T>(next()));
}

template <class T, class Bits>
std::string Real(const Choices& next) {
  constexpr const char* kSpecial[] = {"NaN", "INF", "-INF", "0", "-0", "21.6", "0.1"};
  const std::uint64_t choice = Below(2 * std::size(kSpecial), next);
  if (choice < std::size(kSpecial)) {
    return kSpecial[choice];
  }
  const T number = std::bit_cast<T>(static_cast<Bits>(next()));
  return std::isfinite(number) ? Written(number) : "NaN";
}

std::string Bool(const Choices& next) { return Below(2, next) == 0 ? "false" : "true"; }

std::string Floats(const Choices& next) {
  std::string text;
  for (std::uint64_t left = Below(4, next); left > 0; --left) {
    text += (text.empty() ? "" : " ") + Real<float, std::uint32_t>(next);
  }
  return text;
}

// Bytes of all kinds: letters, blanks, markup, control characters, NUL, whole and broken UTF-8,
// surrogates, noncharacters, escape sequences of terminals.
std::string Text(const Choices& next) {
  static const std::vector<std::string> pieces = {"a",
                                                  "Z9",
                                                  " ",
                                                  "  ",
                                                  "\t",
                                                  "\n",
                                                  "\r\n",
                                                  "<",
                                                  ">",
                                                  "&",
                                                  "&amp;",
                                                  "\"",
                                                  "'",
                                                  "]]>",
                                                  "\\",
                                                  std::string(1, '\0'),
                                                  "\x01",
                                                  "\x1b[31m",
                                                  "\x7f",
                                                  "\x80",
                                                  "\xff",
                                                  "\xc3\xa4",
                                                  "\xc3",
                                                  "\xe2\x82\xac",
                                                  "\xe2\x82",
                                                  "\xf0\x9f\x92\xa1",
                                                  "\xf0\x9f",
                                                  "\xed\xa0\x80",
                                                  "\xef\xbf\xbe",
                                                  "\xef\xbf\xbd",
                                                  "\xc0\x80",
                                                  "\xf4\x90\x80\x80",
                                                  "\xc2\x9b",
                                                  "\xe2\x80\xae",
                                                  "NaN",
                                                  "absent",
                                                  "nil"};
  std::string text;
  for (std::uint64_t left = Below(12, next); left > 0; --left) {
    const std::uint64_t choice = Below(pieces.size() + 8, next);
    if (choice < pieces.size()) {
      text += pieces[choice];
    } else {
      text += static_cast<char>(next());
    }
  }
  return text;
}

std::string RandomText(const ScalarType& type, const Choices& next) {
  static const std::map<const ScalarType*, std::string (*)(const Choices&)> makers = {
      {&listing::kBool, &Bool},
      {&listing::kUInt8, &Integer<std::uint8_t>},
      {&listing::kUInt16, &Integer<std::uint16_t>},
      {&listing::kUInt32, &Integer<std::uint32_t>},
      {&listing::kUInt64, &Integer<std::uint64_t>},
      {&listing::kInt32, &Integer<std::int32_t>},
      {&listing::kInt64, &Integer<std::int64_t>},
      {&listing::kFloat, &Real<float, std::uint32_t>},
      {&listing::kDouble, &Real<double, std::uint64_t>},
      {&listing::kText, &Text},
      {&listing::kFloats, &Floats},
  };
  return makers.at(&type)(next);
}

void FillScalar(const Field& field, void* object, const Choices& next) {
  const std::string text = RandomText(*field.Scalar, next);
  if (!field.Scalar->Parse(text, QtSts::FieldAccess::Make(field, object))) {
    throw std::logic_error(std::string(field.Name) + " does not take \"" + text + "\"");
  }
}

void FillList(const Field& field, void* object, const Choices& next) {
  std::vector<const ClassInfo*> classes;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    if (info->Create != nullptr && QtSts::IsA(*info, *field.Record)) {
      classes.push_back(info);
    }
  }
  void* const list = QtSts::FieldAccess::Make(field, object);
  for (std::uint64_t left = Below(4, next); left > 0; --left) {
    const ClassInfo& info = *classes[Below(classes.size(), next)];
    std::unique_ptr<CBaseStatus> element(info.Create());
    FillAtRandom(info, dynamic_cast<void*>(element.get()), next);
    QtSts::FieldAccess::Add(*field.Elements, list, element.release());
  }
}

// What the list would refuse gets an index that it takes.
template <class List>
void KeepIndices(List* list) {
  for (auto* const point : list->Points) {
    if (list->IsValid(point)) {
      continue;
    }
    list->OpenEnded = list->OpenEnded || list->MaximumIndex == 0;
    constexpr std::uint32_t kHighest = std::numeric_limits<std::int32_t>::max();
    const std::uint32_t most = list->OpenEnded ? kHighest : std::min(list->MaximumIndex, kHighest);
    point->Index = static_cast<std::int32_t>(1 + static_cast<std::uint32_t>(point->Index) % most);
  }
}

// What documents promise beyond the types of their values.
void KeepPromises(const ClassInfo& info, void* object) {
  if (&info == &QtSts::InputListType::Class) {
    KeepIndices(static_cast<QtSts::InputListType*>(object));
  } else if (&info == &QtSts::OutputListType::Class) {
    KeepIndices(static_cast<QtSts::OutputListType*>(object));
  } else if (&info == &QtSts::CCANDcio::Class) {
    auto* const board = static_cast<QtSts::CCANDcio*>(object);
    board->BoardConnected = board->Connected;
  } else if (info.Base != nullptr) {
    KeepPromises(*info.Base, QtSts::FieldAccess::ToBase(info, object));
  }
}

}  // namespace

Choices SeededChoices(std::uint64_t seed) {
  return std::mt19937_64(seed);  // its numbers are the same everywhere, by the language's rules
}

void FillAtRandom(const ClassInfo& info, void* object, const Choices& next) {
  QtSts::FieldAccess::Visit(info, object, [&next](const Field& field, void* part) {
    if (field.Optional && Below(2, next) == 0) {
      return true;
    }
    if (field.Scalar != nullptr) {
      FillScalar(field, part, next);
    } else if (field.Elements != nullptr) {
      FillList(field, part, next);
    } else {
      FillAtRandom(*field.Record, QtSts::FieldAccess::Make(field, part), next);
    }
    return true;
  });
  KeepPromises(info, object);
}

std::unique_ptr<QtSts::CStatus> RandomDocument(const Choices& next) {
  auto document = std::make_unique<QtSts::CStatus>();
  FillAtRandom(QtSts::CStatus::Class, document.get(), next);
  return document;
}

}  // namespace test_support
