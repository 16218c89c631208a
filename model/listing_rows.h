// Rows of the listings from member pointers. For the sources that define a listing.
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "model/field_access.h"
#include "model/listing.h"

namespace QtSts::listing {

template <class T>
concept Listed = requires {
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

// What a member holds: a T, or a T that may be absent.
template <class T>
struct Held {
  static constexpr bool kIsOptional = false;
  using Type = T;
};
template <class T>
struct Held<std::unique_ptr<T>> {
  static constexpr bool kIsOptional = true;
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
inline constexpr ListAccess kListAccess = FieldAccess::List(
    [](const void* list) -> std::size_t { return static_cast<const L*>(list)->Count(); },
    [](const void* list, std::size_t position) -> CBaseStatus* {
      return (*static_cast<const L*>(list))[position];
    },
    [](void* list, CBaseStatus* element) {
      static_cast<L*>(list)->Add(static_cast<typename L::Element*>(element));
    });

// A plain vector of owned elements, as the point lists hold them.
template <class E>
inline constexpr ListAccess kListAccess<std::vector<E*>> = FieldAccess::List(
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
    });

template <auto kMember>
const void* Read(const void* object) {
  using M = Member<decltype(kMember)>;
  const auto& member = static_cast<const typename M::Class*>(object)->*kMember;
  if constexpr (Held<typename M::Type>::kIsOptional) {
    return member.get();
  } else {
    return &member;
  }
}

template <auto kMember>
void* Make(void* object) {
  using M = Member<decltype(kMember)>;
  auto& member = static_cast<typename M::Class*>(object)->*kMember;
  if constexpr (Held<typename M::Type>::kIsOptional) {
    if (!member) {
      member = std::make_unique<typename Held<typename M::Type>::Type>();
    }
    return member.get();
  } else {
    return &member;
  }
}

// What every row says.
constexpr Field Row(const char* name, const char* unit, const char* about) {
  Field field;
  field.Name = name;
  field.Unit = unit;
  field.About = about;
  return field;
}

// One row: the member, its name, unit, meaning and, for a coded value, the names of its codes.
template <auto kMember>
constexpr Field Of(const char* name, const char* unit, const char* about, CodeTable codes = {}) {
  using H = Held<typename Member<decltype(kMember)>::Type>;
  using T = typename H::Type;
  Field field = Row(name, unit, about);
  field.Codes = codes;
  field.Optional = H::kIsOptional;
  FieldAccess::Set(&field, &Read<kMember>, &Make<kMember>);
  if constexpr (requires { typename ElementOf<T>::Type; }) {
    field.Record = &ElementOf<T>::Type::Class;
    field.Elements = &kListAccess<T>;
  } else if constexpr (Listed<T>) {
    field.Record = &T::Class;
  } else if constexpr (std::is_enum_v<T>) {
    field.Scalar = kScalarOf<std::underlying_type_t<T>>;
  } else {
    static_assert(kIsScalar<T>, "no way to write this type");
    field.Scalar = kScalarOf<T>;
  }
  return field;
}

// One row for a second base B of class C, as a record of its own.
template <class C, class B>
constexpr Field OfBase(const char* name, const char* unit, const char* about) {
  Field field = Row(name, unit, about);
  field.Record = &B::Class;
  FieldAccess::Set(
      &field,
      [](const void* object) -> const void* {
        return static_cast<const B*>(static_cast<const C*>(object));
      },
      [](void* object) -> void* { return static_cast<B*>(static_cast<C*>(object)); });
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

// What every listing says.
template <class C>
constexpr ClassInfo Named(const char* name, const char* about) {
  ClassInfo info;
  info.Name = name;
  info.About = about;
  info.Type = &typeid(C);
  if constexpr (std::is_base_of_v<CBaseStatus, C> && !std::is_abstract_v<C>) {
    info.Create = &Create<C>;
  }
  return info;
}

// The listing of class C, which has no listed base.
template <class C, std::size_t kCount>
constexpr ClassInfo Root(const char* name, const char* about, const Field (&fields)[kCount]) {
  ClassInfo info = Named<C>(name, about);
  FieldAccess::SetFields(&info, fields, kCount);
  return info;
}

// The listing of class C, which adds no field to its base B, whose listing there is.
template <class C, class B>
constexpr ClassInfo Derived(const char* name, const char* about) {
  ClassInfo info = Named<C>(name, about);
  FieldAccess::SetBase(&info, B::Class, &ToBase<C, B>);
  return info;
}

// The same with fields of its own.
template <class C, class B, std::size_t kCount>
constexpr ClassInfo Derived(const char* name, const char* about, const Field (&fields)[kCount]) {
  ClassInfo info = Derived<C, B>(name, about);
  FieldAccess::SetFields(&info, fields, kCount);
  return info;
}

}  // namespace QtSts::listing
