// How the value of a row is read and stored: the parsers, and the one function that stores.
#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "collector/state/observer.h"

namespace rows {

// What a parser makes of a text, before it is cut to the type of its place.
struct Reading {
  enum class Kind : std::uint32_t {
    kNothing,  // an unknown word: the place keeps what it holds
    kSigned,
    kUnsigned,
    kFraction,
    kText,
  };

  Kind Is = Kind::kNothing;
  std::uint32_t Consumed = 0;  // bytes of the text that were read
  union {
    long Signed = 0;
    unsigned long Unsigned;
    double Fraction;
    const char* Text;
  };
};

// A word and the code that it stands for.
struct Word {
  std::string_view Text;
  std::uint32_t Code;
};

// The words of a table of codes.
template <auto& kCodes>
consteval auto WordsOf() {
  std::array<Word, std::size(kCodes)> words = {};
  for (std::size_t i = 0; i < words.size(); ++i) {
    words[i] = {kCodes[i].Text, kCodes[i].Value};
  }
  return words;
}
template <auto& kCodes>
inline constexpr auto kWordsOf = WordsOf<kCodes>();

struct Parser {
  const char* Name;
  Reading (*Read)(const Parser& parser, const char* text);
  // For a parser of words: the words that it knows, and what any other text gives.
  std::span<const Word> Words = {};
  bool KnowsAny = false;  // false: any other text gives nothing
  std::uint32_t Otherwise = 0;
};

Reading ReadInteger(const Parser& parser, const char* text);
Reading ReadIntegerPlusOne(const Parser& parser, const char* text);
Reading ReadUnsigned(const Parser& parser, const char* text);
Reading ReadNumber(const Parser& parser, const char* text);
Reading ReadText(const Parser& parser, const char* text);
Reading ReadWord(const Parser& parser, const char* text);
Reading ReadNoWord(const Parser& parser, const char* text);

inline constexpr Parser kInteger = {"integer", &ReadInteger};
inline constexpr Parser kIntegerPlusOne = {"integer plus one", &ReadIntegerPlusOne};
inline constexpr Parser kUnsigned = {"unsigned integer", &ReadUnsigned};
inline constexpr Parser kNumber = {"number", &ReadNumber};
inline constexpr Parser kText = {"text", &ReadText};

// A word stands for its code; an unknown one gives nothing.
constexpr Parser Words(std::span<const Word> words) { return {"word", &ReadWord, words}; }

// The same, but every other text gives `otherwise`.
constexpr Parser WordsOr(std::span<const Word> words, std::uint32_t otherwise,
                         Reading (*read)(const Parser&, const char*) = &ReadWord) {
  return {"word", read, words, true, otherwise};
}

// The same code whatever the text is.
constexpr Parser Always(std::uint32_t code) { return {"any text", &ReadNoWord, {}, true, code}; }

inline constexpr Word kTrueWord[] = {{"true", 1}};
inline constexpr Parser kTrue = {"flag", &ReadWord, kTrueWord, true, 0};

// The types that values are stored as.
enum class Type : std::uint8_t {
  kBool,
  kUnsigned8,
  kUnsigned16,
  kUnsigned32,
  kSigned32,
  kFloat,
  kDouble,
  kString,
  kBits,   // 32 bits: those of the value are set, the others stay
  kPoint,  // a staged point, in parts
};

// How an object of this C++ type is stored. Does not compile for a type that cannot be stored.
template <class T>
consteval Type TypeOf() {
  if constexpr (std::is_enum_v<T>) {
    return TypeOf<std::underlying_type_t<T>>();
  } else if constexpr (std::is_same_v<T, bool>) {
    return Type::kBool;
  } else if constexpr (std::is_same_v<T, std::uint8_t>) {
    return Type::kUnsigned8;
  } else if constexpr (std::is_same_v<T, std::uint16_t>) {
    return Type::kUnsigned16;
  } else if constexpr (std::is_same_v<T, std::uint32_t>) {
    return Type::kUnsigned32;
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return Type::kSigned32;
  } else if constexpr (std::is_same_v<T, float>) {
    return Type::kFloat;
  } else if constexpr (std::is_same_v<T, double>) {
    return Type::kDouble;
  } else {
    static_assert(std::is_same_v<T, std::string>, "no way to store this type");
    return Type::kString;
  }
}

// Where in a container of the scratch state a value is stored.
struct Slot {
  const void* Container = nullptr;  // null: it is no container
  long Index = -1;
};

// What all tables of rows have in common: the name of a key, attribute or part, and how its values
// are read.
struct Entry {
  std::string_view Name;
  const Parser* Reader;
};

// Reads `text` as the entry says and stores the result in the object of this type at `address`;
// integers wrap to its width. Every value of a row is stored here. When it throws std::bad_alloc,
// nothing is stored.
void Store(const Entry& entry, Type type, void* address, const char* text, Slot slot = {});

// Reports to the observer that the value of a row is not stored, and why.
void ReportKept(observe::Fate fate, std::string_view attribute, const char* text, Slot slot = {});

}  // namespace rows
