// Reading and filling objects by their listings, for the sources of this project alone. The caller
// sees to it that an object is of the class whose listing it is used with; nothing asks.
#pragma once

#include <cstddef>

#include "model/listed_object.h"
#include "model/listing.h"

namespace QtSts {

class FieldAccess {
 public:
  // Calls `visit` with each field of `object`, whose class is `info`, and with the part of the
  // object that Read and Make take for it: first the fields of its base, then its own. Stops when
  // `visit` returns false. Returns whether it never did.
  template <class Visitor>
  static bool Visit(const ClassInfo& info, void* object, const Visitor& visit) {
    return ListedObject::VisitParts(info, object, visit);
  }

  // The value of a field; null when it is absent.
  static const void* Read(const Field& field, const void* part) { return field.read_(part); }
  // The same, made when it is absent.
  static void* Make(const Field& field, void* part) { return field.make_(part); }

  // The part of an object of class `info` that its base is. The class has one.
  static void* ToBase(const ClassInfo& info, void* object) { return info.to_base_(object); }

  // What an object has its listing for.
  static const void* AddressOf(const ListedObject& object) { return object.object_; }

  static std::size_t Count(const ListAccess& list, const void* of) { return list.count_(of); }
  static CBaseStatus* At(const ListAccess& list, const void* of, std::size_t position) {
    return list.at_(of, position);
  }
  // Takes ownership.
  static void Add(const ListAccess& list, void* to, CBaseStatus* element) {
    list.add_(to, element);
  }

  // For what makes listings.
  static constexpr ListAccess List(std::size_t (*count)(const void*),
                                   CBaseStatus* (*at)(const void*, std::size_t),
                                   void (*add)(void*, CBaseStatus*)) {
    ListAccess list;
    list.count_ = count;
    list.at_ = at;
    list.add_ = add;
    return list;
  }
  static constexpr void Set(Field* field, const void* (*read)(const void*), void* (*make)(void*)) {
    field->read_ = read;
    field->make_ = make;
  }
  static constexpr void SetFields(ClassInfo* info, const Field* fields, std::size_t count) {
    info->fields_ = fields;
    info->field_count_ = count;
  }
  static constexpr void SetBase(ClassInfo* info, const ClassInfo& base, void* (*to_base)(void*)) {
    info->Base = &base;
    info->to_base_ = to_base;
  }
};

}  // namespace QtSts
