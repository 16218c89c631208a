// The listing of a model class: every field once, with its name, unit and meaning. XML writing and
// reading, the schema, comparison and every other rendering of the document walk these tables, so
// no two of them can disagree about a field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "model/base_status.h"
#include "model/codes.h"
#include "model/export.h"

namespace QtSts {

struct ClassInfo;

// How values of one type are written as text and read back.
struct ScalarType {
  const char* SchemaType;                                // "xs:boolean", "xs:unsignedInt", ...
  void (*Format)(const void* value, std::string* text);  // appends; independent of the locale
  bool (*Parse)(std::string_view text, void* value);     // false: malformed or out of range
};

// How a list of any element type is walked and filled.
struct ListAccess {
  std::size_t (*Count)(const void* list);
  CBaseStatus* (*At)(const void* list, std::size_t position);
  void (*Add)(void* list, CBaseStatus* element);  // takes ownership
};

// One field of a class: exactly one of Scalar, Record and Elements says what it holds.
struct Field {
  const char* Name;   // the member's name; attribute or child element in XML
  const char* Unit;   // "" when it has none
  const char* About;  // one sentence without the closing stop
  CodeTable Codes;    // the names of its values, empty for a plain value
  bool Optional;      // may be absent (null)

  const ScalarType* Scalar = nullptr;
  const ClassInfo* Record = nullptr;     // a record, or a list's element class
  const ListAccess* Elements = nullptr;  // a list

  const void* (*Read)(const void* object) = nullptr;  // the value in `object`; null when absent
  void* (*Make)(void* object) = nullptr;              // the value in `object`, made when absent
};

// One class of the model. `Fields` are its own; those of `Base` come before them.
struct ClassInfo {
  const char* Name;   // element name in lists: the class name without its leading C
  const char* About;  // one sentence without the closing stop
  const std::type_info* Type;
  CBaseStatus* (*Create)();  // null for a class that no list makes on its own
  const ClassInfo* Base;
  void* (*ToBase)(void* object);
  const Field* Fields;
  std::size_t FieldCount;

  // Without those of its bases.
  constexpr std::span<const Field> OwnFields() const { return {Fields, FieldCount}; }
};

// Calls `visit` with each field of a class: first the fields of its base, then its own.
template <class Visit>
void VisitEveryField(const ClassInfo& info, const Visit& visit) {
  if (info.Base != nullptr) {
    VisitEveryField(*info.Base, visit);
  }
  for (const Field& field : info.OwnFields()) {
    visit(field);
  }
}

// Calls `visit` with each field of `object`, whose class is `info`, and with the part of the object
// that the field's Read and Make take: first the fields of its base, then its own. Stops when
// `visit` returns false; whether it never did.
template <class Visit>
bool VisitEveryField(const ClassInfo& info, void* object, const Visit& visit) {
  if (info.Base != nullptr && !VisitEveryField(*info.Base, info.ToBase(object), visit)) {
    return false;
  }
  for (const Field& field : info.OwnFields()) {
    if (!visit(field, object)) {
      return false;
    }
  }
  return true;
}

// The listing of an object's own class; null for a class that is not listed.
STATUS_API const ClassInfo* ClassOf(const CBaseStatus& object);

// The listing of the class with this element name; null when there is none.
STATUS_API const ClassInfo* ClassNamed(std::string_view name);

// The field of `info` or of one of its bases with this name; null when there is none.
STATUS_API const Field* FieldNamed(const ClassInfo& info, std::string_view name);

// Every listed class.
STATUS_API std::span<const ClassInfo* const> Classes();

// The same, ending with a null pointer.
STATUS_API const ClassInfo* const* AllClasses();

// True when `derived` is `base` or has it among its bases.
STATUS_API bool IsA(const ClassInfo& derived, const ClassInfo& base);

// The members below make rows of the tables from member pointers.
namespace listing {

STATUS_API extern const ScalarType kBool;
STATUS_API extern const ScalarType kUInt8;
STATUS_API extern const ScalarType kUInt16;
STATUS_API extern const ScalarType kUInt32;
STATUS_API extern const ScalarType kUInt64;
STATUS_API extern const ScalarType kInt32;
STATUS_API extern const ScalarType kInt64;
STATUS_API extern const ScalarType kFloat;
STATUS_API extern const ScalarType kDouble;
STATUS_API extern const ScalarType kText;
STATUS_API extern const ScalarType kFloats;

// Null for a type that has none; its type tells, since sanitizers compare no addresses in advance.
template <class T>
inline constexpr std::nullptr_t kScalarOf = nullptr;
template <>
inline constexpr const ScalarType* kScalarOf<bool> = &kBool;
template <>
inline constexpr const ScalarType* kScalarOf<std::uint8_t> = &kUInt8;
template <>
inline constexpr const ScalarType* kScalarOf<std::uint16_t> = &kUInt16;
template <>
inline constexpr const ScalarType* kScalarOf<std::uint32_t> = &kUInt32;
template <>
inline constexpr const ScalarType* kScalarOf<std::uint64_t> = &kUInt64;
template <>
inline constexpr const ScalarType* kScalarOf<std::int32_t> = &kInt32;
template <>
inline constexpr const ScalarType* kScalarOf<std::int64_t> = &kInt64;
template <>
inline constexpr const ScalarType* kScalarOf<float> = &kFloat;
template <>
inline constexpr const ScalarType* kScalarOf<double> = &kDouble;
template <>
inline constexpr const ScalarType* kScalarOf<std::string> = &kText;
template <>
inline constexpr const ScalarType* kScalarOf<std::vector<float>> = &kFloats;

template <class T>
concept Record = requires {
  { T::Class } -> std::convertible_to<const ClassInfo&>;
};

template <class T>
concept ElementList = requires {
  typename T::Element;
};

template <class T>
struct Member;
template <class C, class T>
struct Member<T C::*> {
  using Class = C;
  using Type = T;
};

template <class T>
struct Owned {
  static constexpr bool kIsPointer = false;
  using Type = T;
};
template <class T>
struct Owned<std::unique_ptr<T>> {
  static constexpr bool kIsPointer = true;
  using Type = T;
};

template <class T>
struct ElementOf {};
template <ElementList T>
struct ElementOf<T> {
  using Type = typename T::Element;
};
template <class E>
struct ElementOf<std::vector<E*>> {
  using Type = E;
};

template <class L>
inline constexpr ListAccess kListAccess = {
    [](const void* list) -> std::size_t { return static_cast<const L*>(list)->Count(); },
    [](const void* list, std::size_t position) -> CBaseStatus* {
      return (*static_cast<const L*>(list))[static_cast<unsigned int>(position)];
    },
    [](void* list, CBaseStatus* element) {
      static_cast<L*>(list)->Add(static_cast<typename L::Element*>(element));
    }};

// A plain vector of owned elements, as the point lists hold them.
template <class E>
inline constexpr ListAccess kListAccess<std::vector<E*>> = {
    [](const void* list) -> std::size_t {
      return static_cast<const std::vector<E*>*>(list)->size();
    },
    [](const void* list, std::size_t position) -> CBaseStatus* {
      return (*static_cast<const std::vector<E*>*>(list))[position];
    },
    [](void* list, CBaseStatus* element) {
      std::unique_ptr<CBaseStatus> owned(element);
      static_cast<std::vector<E*>*>(list)->push_back(static_cast<E*>(element));
      static_cast<void>(owned.release());
    }};

template <auto kMember>
const void* Read(const void* object) {
  using M = Member<decltype(kMember)>;
  const auto& member = static_cast<const typename M::Class*>(object)->*kMember;
  if constexpr (Owned<typename M::Type>::kIsPointer) {
    return member.get();
  } else {
    return &member;
  }
}

template <auto kMember>
void* Make(void* object) {
  using M = Member<decltype(kMember)>;
  auto& member = static_cast<typename M::Class*>(object)->*kMember;
  if constexpr (Owned<typename M::Type>::kIsPointer) {
    if (!member) {
      member = std::make_unique<typename Owned<typename M::Type>::Type>();
    }
    return member.get();
  } else {
    return &member;
  }
}

// One row: the member, its name, unit, meaning and, for a coded value, the names of its codes.
template <auto kMember>
constexpr Field Of(const char* name, const char* unit, const char* about, CodeTable codes = {}) {
  using Held = Owned<typename Member<decltype(kMember)>::Type>;
  using T = typename Held::Type;
  Field field{name, unit, about, codes, Held::kIsPointer};
  field.Read = &Read<kMember>;
  field.Make = &Make<kMember>;
  if constexpr (requires { typename ElementOf<T>::Type; }) {
    field.Record = &ElementOf<T>::Type::Class;
    field.Elements = &kListAccess<T>;
  } else if constexpr (Record<T>) {
    field.Record = &T::Class;
  } else if constexpr (std::is_enum_v<T>) {
    field.Scalar = kScalarOf<std::underlying_type_t<T>>;
  } else {
    static_assert(!std::is_null_pointer_v<std::remove_cv_t<decltype(kScalarOf<T>)>>,
                  "no way to write this type");
    field.Scalar = kScalarOf<T>;
  }
  return field;
}

// One row for a second base B of class C, as a record of its own.
template <class C, class B>
constexpr Field OfBase(const char* name, const char* unit, const char* about) {
  Field field{name, unit, about, {}, false};
  field.Record = &B::Class;
  field.Read = [](const void* object) -> const void* {
    return static_cast<const B*>(static_cast<const C*>(object));
  };
  field.Make = [](void* object) -> void* { return static_cast<B*>(static_cast<C*>(object)); };
  return field;
}

template <class C>
CBaseStatus* Create() {
  return new C;
}

template <class C, class B>
void* ToBase(void* object) {
  return static_cast<B*>(static_cast<C*>(object));
}

// The listing of class C, which has no listed base.
template <class C, std::size_t kCount>
constexpr ClassInfo Root(const char* name, const char* about, const Field (&fields)[kCount]) {
  CBaseStatus* (*create)() = nullptr;
  if constexpr (std::is_base_of_v<CBaseStatus, C> && !std::is_abstract_v<C>) {
    create = &Create<C>;
  }
  return {name, about, &typeid(C), create, nullptr, nullptr, fields, kCount};
}

// The listing of class C, whose base B is listed too.
template <class C, class B, std::size_t kCount>
constexpr ClassInfo Derived(const char* name, const char* about, const Field (&fields)[kCount]) {
  ClassInfo info = Root<C>(name, about, fields);
  info.Base = &B::Class;
  info.ToBase = &ToBase<C, B>;
  return info;
}

// The listing of class C, which adds no field to its base B.
template <class C, class B>
constexpr ClassInfo Derived(const char* name, const char* about) {
  return {name, about, &typeid(C), &Create<C>, &B::Class, &ToBase<C, B>, nullptr, 0};
}

}  // namespace listing
}  // namespace QtSts
