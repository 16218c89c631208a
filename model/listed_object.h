// An object together with its listing: the way to walk what the object holds without knowing its
// type. Both come from one place, so that no listing is used with an object of another class.
#pragma once

#include <cstddef>

#include "model/listing.h"

namespace QtSts {

class ListedField;

class ListedObject {
 public:
  // The object with the listing of its own class, or with none when it is not listed. A point whose
  // class is not listed has the listing of the nearest class that is; an output point has it under
  // the name that its GetNodeName gives, where XML can have that as the name of an element.
  STATUS_API explicit ListedObject(const CBaseStatus& object);

  // The object as one of class C, whatever class derived from C it is.
  template <class C>
  static ListedObject As(const C& object) {
    return ListedObject(&C::Class, &object);
  }

  // Null when it is not listed; then it has no fields.
  const ClassInfo* Class() const { return class_; }

  // Calls `visit` with the ListedField of each field, those of bases first, until it returns false.
  // Returns whether it never did. The object must outlive what `visit` is called with.
  template <class Visit>
  bool VisitFields(const Visit& visit) const;

 private:
  friend class ListedField;
  ListedObject(const ClassInfo* info, const void* object) : class_(info), object_(object) {}

  const ClassInfo* class_;
  const void* object_;
};

// One field of one object.
class ListedField {
 public:
  ListedField(const Field& field, const void* part) : field_(&field), value_(field.Read(part)) {}

  const Field& Listed() const { return *field_; }

  // False when the value is absent. Then nothing below may be called.
  bool IsReported() const { return value_ != nullptr; }

  // Of a scalar: its text, appended, as its source gave it; and its value as a T, null when it is
  // of another type.
  void Format(std::string* text) const { field_->Scalar->Format(value_, text); }
  const void* ValueIf(const ScalarType& type) const {
    return field_->Scalar == &type ? value_ : nullptr;
  }

  // Of a record.
  ListedObject Record() const { return {field_->Record, value_}; }

  // Of a list: calls `visit` with the ListedObject of each element of a listed class, in order,
  // until it returns false. Returns whether it never did. Other elements do not belong to the
  // document.
  template <class Visit>
  bool VisitElements(const Visit& visit) const;

 private:
  const Field* field_;
  const void* value_;
};

template <class Visit>
bool ListedObject::VisitFields(const Visit& visit) const {
  return class_ == nullptr || VisitEveryField(*class_, const_cast<void*>(object_),
                                              [&visit](const Field& field, const void* part) {
                                                return visit(ListedField(field, part));
                                              });
}

template <class Visit>
bool ListedField::VisitElements(const Visit& visit) const {
  const std::size_t count = field_->Elements->Count(value_);
  for (std::size_t position = 0; position < count; ++position) {
    const CBaseStatus* const element = field_->Elements->At(value_, position);
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
