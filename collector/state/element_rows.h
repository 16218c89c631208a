// The rows of tables of kinds: each says which member of an element is taken from which variable of
// the scratch state. A row has
//   Fill(element)  takes the value
//   Release()      empties a variable that an element uses up; runs after every Fill
//   kTaken         what it takes, for those who look it up
#pragma once

#include <array>
#include <memory>
#include <type_traits>

#include "collector/state/elements.h"
#include "collector/state/numbers.h"
#include "model/listing_rows.h"

namespace elements {

template <auto kMember>
using OwnerOf = typename QtSts::listing::Member<decltype(kMember)>::Class;

// The value of a variable, or of a field of beaconRoundel.
template <auto kFrom>
const auto& ValueOf() {
  if constexpr (std::is_member_pointer_v<decltype(kFrom)>) {
    return beaconRoundel.*kFrom;
  } else {
    return *kFrom;
  }
}

template <auto kMember>
const void* MemberIn(const QtSts::CBaseStatus& element) {
  return QtSts::listing::Read<kMember>(&static_cast<const OwnerOf<kMember>&>(element));
}

template <auto kMember, auto kFrom>
inline constexpr std::array<Taken, 1> kTakenOnce = {
    Taken{&rows::kPlace<kFrom>, &MemberIn<kMember>, false}};

// Integers wrap to the width of the member; an optional value is made.
template <class Member, class Value>
void Assign(Member& member, const Value& value) {
  using Held = QtSts::listing::Held<Member>;
  if constexpr (Held::kIsOptional) {
    if (member == nullptr) {
      member = std::make_unique<typename Held::Type>(value);
    } else {
      *member = value;
    }
  } else if constexpr (std::is_integral_v<Member> && std::is_integral_v<Value> &&
                       !std::is_same_v<Member, Value>) {
    member = numbers::Narrow<Member>(value);
  } else if constexpr (std::is_arithmetic_v<Member>) {
    member = static_cast<Member>(value);
  } else {
    member = value;
  }
}

// The member is the value.
template <auto kMember, auto kFrom>
struct From {
  static void Fill(OwnerOf<kMember>& element) { Assign(element.*kMember, ValueOf<kFrom>()); }
  static void Release() {}
  static constexpr auto kTaken = kTakenOnce<kMember, kFrom>;
};

// The same unless the value is kAbsent, which stands for one that is not reported.
template <auto kMember, auto kFrom, auto kAbsent>
struct Unless {
  static void Fill(OwnerOf<kMember>& element) {
    if (ValueOf<kFrom>() != kAbsent) {
      Assign(element.*kMember, ValueOf<kFrom>());
    }
  }
  static void Release() {}
  static constexpr auto kTaken = kTakenOnce<kMember, kFrom>;
};

// The member is a copy of the list, which is then emptied but keeps its room.
template <auto kMember, auto kFrom>
struct UsedUp {
  static void Fill(OwnerOf<kMember>& element) { Assign(element.*kMember, *kFrom); }
  static void Release() { kFrom->clear(); }
  static constexpr auto kTaken = kTakenOnce<kMember, kFrom>;
};

// The values of several tables of rows, one after the other.
template <std::size_t... kSizes>
consteval auto Joined(const std::array<Taken, kSizes>&... parts) {
  std::array<Taken, (kSizes + ... + 0)> all = {};
  std::size_t at = 0;
  const auto append = [&](const auto& part) {
    for (const Taken& taken : part) {
      all[at++] = taken;
    }
  };
  (append(parts), ...);
  return all;
}

// Several rows in their order.
template <class... Row>
struct Rows {
  template <class Element>
  static void Fill(Element& element) {
    (Row::Fill(element), ...);
  }
  static void Release() { (Row::Release(), ...); }
  static constexpr auto kTaken = Joined(Row::kTaken...);
};
template <>
struct Rows<> {
  static void Fill(QtSts::CBaseStatus& /*element*/) {}
  static void Release() {}
  static constexpr std::array<Taken, 0> kTaken = {};
};

}  // namespace elements
