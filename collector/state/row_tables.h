// The tables by which rows are stored: attributes go to variables of the scratch state, keys and
// parts go to members. Programs can look up in them where a value goes and which parser reads it.
#pragma once

#include <array>
#include <map>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "collector/state/scratch.h"
#include "collector/state/store.h"
#include "model/document.h"

namespace rows {

// A variable of the scratch state, or a field of beaconRoundel.
struct Place {
  const char* Name;
  Type Is;           // of a container: its elements
  bool IsContainer;  // fans, voltages and staged points
  void* Address;
};

template <class T>
struct ElementOf {
  static constexpr bool kIsContainer = false;
  static consteval Type Is() { return TypeOf<T>(); }
};
template <class K, class V>
struct ElementOf<std::map<K, V>> {
  static constexpr bool kIsContainer = true;
  static consteval Type Is() { return TypeOf<V>(); }
};
template <class T>
struct ElementOf<std::vector<T>> {
  static constexpr bool kIsContainer = true;
  static consteval Type Is() { return TypeOf<T>(); }
};
template <std::size_t kCount>
struct ElementOf<std::array<DcioPoint, kCount>> {
  static constexpr bool kIsContainer = true;
  static consteval Type Is() { return Type::kPoint; }
};

// The names, made from the lists: a variable that is not listed does not compile.
template <auto kVariableOrField>
struct ScratchName;
#define NAME_VARIABLE(name, ...)                \
  template <>                                   \
  struct ScratchName<&name> {                   \
    static constexpr const char* kText = #name; \
  };
SCRATCH_VARIABLES(NAME_VARIABLE)
#undef NAME_VARIABLE
#define NAME_FIELD(name, ...)                                    \
  template <>                                                    \
  struct ScratchName<&BeaconRoundel::name> {                     \
    static constexpr const char* kText = "beaconRoundel." #name; \
  };
BEACON_ROUNDEL_FIELDS(NAME_FIELD)
#undef NAME_FIELD

template <auto kVariableOrField>
constexpr Place PlaceOf() {
  const auto place = []<class T>(T* variable) -> Place {
    return {ScratchName<kVariableOrField>::kText, ElementOf<T>::Is(), ElementOf<T>::kIsContainer,
            variable};
  };
  if constexpr (std::is_member_pointer_v<decltype(kVariableOrField)>) {
    return place(&(beaconRoundel.*kVariableOrField));
  } else {
    return place(kVariableOrField);
  }
}

// The place of a variable (&u32_Address), or of a field of beaconRoundel
// (&BeaconRoundel::Humidity).
template <auto kVariableOrField>
inline constexpr Place kPlace = PlaceOf<kVariableOrField>();

// A row, split.
struct Row {
  QtSts::CStatus* Status;
  const char* Attribute;
  const char* Value;
};

// What happens to rows of one attribute.
struct Attribute : Entry {
  const Place* Where;
  // Null: the value is read and stored.
  void (*Handle)(const Attribute& attribute, const Row& row) = nullptr;
};

// The row of an attribute that is parked in this variable or field, by this parser.
template <auto kVariableOrField>
constexpr Attribute Parked(std::string_view name, const Parser* reader,
                           void (*handle)(const Attribute&, const Row&) = nullptr) {
  return {{name, reader}, &kPlace<kVariableOrField>, handle};
}

// The same with the usual parser: integers are read as such, everything else as a number.
template <auto kVariableOrField>
constexpr Attribute Parked(std::string_view name) {
  const Type type = kPlace<kVariableOrField>.Is;
  return Parked<kVariableOrField>(name, type == Type::kFloat ? &kNumber : &kInteger);
}

inline void StoreParked(const Attribute& attribute, const char* value) {
  Store(attribute, attribute.Where->Is, attribute.Where->Address, value);
}

inline void Take(const Attribute& attribute, const Row& row) {
  if (attribute.Handle == nullptr) {
    StoreParked(attribute, row.Value);
  } else {
    attribute.Handle(attribute, row);
  }
}

// A member that the value of a key or part is stored in.
template <class Owner>
struct Field : Entry {
  Type Is;
  void* (*Of)(Owner& owner);
};

template <class Owner, class First, class... Rest>
constexpr auto& MemberThrough(Owner& owner, First first, Rest... rest) {
  if constexpr (sizeof...(rest) == 0) {
    return owner.*first;
  } else {
    return MemberThrough(owner.*first, rest...);
  }
}

template <class Owner, auto... kMembers>
void* MemberOf(Owner& owner) {
  return &MemberThrough(owner, kMembers...);
}

// The row of a key or part that is stored in a member of Owner, or in one of a member's members.
template <class Owner, auto... kMembers>
constexpr Field<Owner> InMember(std::string_view name, const Parser* reader) {
  using Member =
      std::remove_reference_t<decltype(MemberThrough(std::declval<Owner&>(), kMembers...))>;
  return {{name, reader}, TypeOf<Member>(), &MemberOf<Owner, kMembers...>};
}

// The same for a word of 32 bits to which bits are added.
template <class Owner, auto... kMembers>
constexpr Field<Owner> InBits(std::string_view name, const Parser* reader) {
  return {{name, reader}, Type::kBits, &MemberOf<Owner, kMembers...>};
}

template <class Owner>
void StoreField(const Field<Owner>& field, Owner& owner, const char* value, Slot slot = {}) {
  Store(field, field.Is, field.Of(owner), value, slot);
}

// The rows of `table` with this name, which stand one after another; does not compile when there is
// none.
template <class Owner, std::size_t kCount>
consteval std::span<const Field<Owner>> RowsOf(const Field<Owner> (&table)[kCount],
                                               std::string_view name) {
  std::size_t begin = 0;
  while (table[begin].Name != name) {
    ++begin;
  }
  std::size_t end = begin + 1;
  while (end < kCount && table[end].Name == name) {
    ++end;
  }
  return {table + begin, end - begin};
}

}  // namespace rows
