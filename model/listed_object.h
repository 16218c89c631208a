// An object together with its listing: the way to walk what the object holds without knowing its
// type. Both come from one place, so that no listing is used with an object of another class.
//
//   for (const QtSts::CSensor* sensor : status.Sensors) {
//     if (sensor != nullptr) {
//       QtSts::ListedObject(*sensor).VisitFields([](const QtSts::ListedField& field) {
//         if (const float* celsius = field.As<float>()) { ... }
//         return true;
//       });
//     }
//   }
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "model/export.h"
#include "model/listing.h"

namespace QtSts {

class CStatus;
class ListedField;

// Refers to the object, which must outlive it.
class ListedObject {
 public:
  // The object with the listing of its own class, or with none when it is not listed. A point whose
  // class is not listed has the listing of the nearest class that is; an output point has it under
  // the name that its GetNodeName gives, where XML can have that as the name of an element and no
  // listed class has it.
  STATUS_API explicit ListedObject(const CBaseStatus& object);
  explicit ListedObject(const CBaseStatus&& object) = delete;

  // The document, whatever class derived from CStatus it is.
  STATUS_API static ListedObject OfDocument(const CStatus& status);
  static ListedObject OfDocument(const CStatus&& status) = delete;

  // Null when it is not listed; then it has no fields.
  const ClassInfo* Class() const { return class_; }

  // Calls `visit` with the ListedField of each field, those of bases first, until it returns false.
  // Returns whether it never did.
  template <class Visit>
  bool VisitFields(const Visit& visit) const;

 private:
  friend class FieldAccess;
  friend class ListedField;
  ListedObject(const ClassInfo* info, const void* object) : class_(info), object_(object) {}

  // The one walk over the fields of objects. Calls `visit` with each field of `object`, whose class
  // is `info`, and with the part of the object that the field belongs to.
  template <class Visit>
  static bool VisitParts(const ClassInfo& info, void* object, const Visit& visit);

  const ClassInfo* class_;
  const void* object_;
};

// One field of one object. Refers to the object, too.
class ListedField {
 public:
  // Name, unit, meaning, names of codes.
  const Field& Listed() const { return *field_; }

  // False when the value is absent.
  bool IsReported() const { return value_ != nullptr; }
  bool IsScalar() const { return field_->Scalar != nullptr; }
  bool IsList() const { return field_->Elements != nullptr; }
  bool IsRecord() const { return !IsScalar() && !IsList(); }

  // The value of a scalar that is reported and a T: bool, std::string, std::vector<float>, float,
  // double, std::int32_t, std::int64_t, or an unsigned integer of any width. Otherwise null.
  template <class T>
  const T* As() const {
    static_assert(listing::kIsScalar<T>, "no field is of this type");
    return static_cast<const T*>(ValueIf(*listing::kScalarOf<T>));
  }
  const void* ValueIf(const ScalarType& type) const {
    return field_->Scalar == &type ? value_ : nullptr;
  }

  // The value of a scalar as XML and all other renderings write it; "" for what is none, or is not
  // reported.
  STATUS_API std::string Written() const;
  // The same as its source gave it, appended.
  void Format(std::string* text) const {
    if (IsScalar() && IsReported()) {
      field_->Scalar->Format(value_, text);
    }
  }

  // Of a record that is reported; otherwise without a class.
  ListedObject Record() const {
    return IsRecord() && IsReported() ? ListedObject{field_->Record, value_}
                                      : ListedObject{nullptr, nullptr};
  }

  // Of a list: calls `visit` with the ListedObject of each element of a listed class, in order,
  // until it returns false. Returns whether it never did. Other elements do not belong to the
  // document. What is no list has no elements.
  template <class Visit>
  bool VisitElements(const Visit& visit) const;

 private:
  friend class ListedObject;
  ListedField(const Field& field, const void* part) : field_(&field), value_(field.read_(part)) {}

  const Field* field_;
  const void* value_;
};

// The scalar of the document that a path of names leads to, as `show`, `diff` and
// TreeElement::PathOf write it: "Outputs[0]/Dimming/DimmingLevel". Nothing when there is none: not
// reported, no such position, or no such field. Refers to the document, and costs no more than the
// way to the value.
STATUS_API std::optional<ListedField> FindValue(const CStatus& status, std::string_view path);
std::optional<ListedField> FindValue(const CStatus&& status, std::string_view path) = delete;

template <class Visit>
bool ListedObject::VisitParts(const ClassInfo& info, void* object, const Visit& visit) {
  if (info.Base != nullptr && !VisitParts(*info.Base, info.to_base_(object), visit)) {
    return false;
  }
  for (const Field& field : info.OwnFields()) {
    if (!visit(field, object)) {
      return false;
    }
  }
  return true;
}

template <class Visit>
bool ListedObject::VisitFields(const Visit& visit) const {
  static_assert(std::is_invocable_r_v<bool, const Visit&, const ListedField&>,
                "returns whether to go on");
  return class_ == nullptr || VisitParts(*class_, const_cast<void*>(object_),
                                         [&visit](const Field& field, const void* part) {
                                           return visit(ListedField(field, part));
                                         });
}

template <class Visit>
bool ListedField::VisitElements(const Visit& visit) const {
  static_assert(std::is_invocable_r_v<bool, const Visit&, const ListedObject&>,
                "returns whether to go on");
  const std::size_t count = IsList() && IsReported() ? field_->Elements->count_(value_) : 0;
  for (std::size_t position = 0; position < count; ++position) {
    const CBaseStatus* const element = field_->Elements->at_(value_, position);
    if (element == nullptr) {
      continue;
    }
    const ListedObject object(*element);
    if (object.Class() != nullptr && !visit(object)) {
      return false;
    }
  }
  return true;
}

}  // namespace QtSts
