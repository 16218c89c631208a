#include "model/copy.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "model/field_access.h"
#include "model/io_points.h"
#include "model/own_points.h"

namespace QtSts {
namespace {

// How a scalar of each type is assigned.
struct Assignment {
  const ScalarType* Type;
  void (*Assign)(const void* from, void* to);
};

template <class T>
constexpr Assignment AssignmentOf() {
  return {listing::kScalarOf<T>,
          [](const void* from, void* to) { *static_cast<T*>(to) = *static_cast<const T*>(from); }};
}

constexpr Assignment kAssignments[] = {
    AssignmentOf<std::uint32_t>(),
    AssignmentOf<bool>(),
    AssignmentOf<float>(),
    AssignmentOf<std::string>(),
    AssignmentOf<std::uint16_t>(),
    AssignmentOf<std::uint64_t>(),
    AssignmentOf<std::int32_t>(),
    AssignmentOf<std::uint8_t>(),
    AssignmentOf<std::int64_t>(),
    AssignmentOf<double>(),
    AssignmentOf<std::vector<float>>(),
};

void AssignScalar(const ScalarType& type, const void* from, void* to) {
  std::ranges::find(kAssignments, &type, &Assignment::Type)->Assign(from, to);
}

// Takes away what a fresh object has and the original does not: of the optional fields, only point
// lists are there from the start.
void Drop(const Field& field, void* part) {
  if (field.Record == &InputListType::Class) {
    static_cast<IOList*>(part)->Inputs.reset();
  } else if (field.Record == &OutputListType::Class) {
    static_cast<IOList*>(part)->Outputs.reset();
  }
}

// NOLINTBEGIN(misc-no-recursion): the document's depth is that of its classes

void CopyFields(const ClassInfo& info, const void* from, void* to);

// Null for an element that does not belong to the document.
std::unique_ptr<CBaseStatus> CopyElement(const CBaseStatus& element) {
  const ListedObject listed(element);
  const ClassInfo* const info = listed.Class();
  if (info == nullptr) {
    return nullptr;
  }
  std::unique_ptr<CBaseStatus> copy = MakeOwnPoint(*info);
  if (copy == nullptr) {
    copy.reset(info->Create());
  }
  CopyFields(*info, FieldAccess::AddressOf(listed), dynamic_cast<void*>(copy.get()));
  return copy;
}

void CopyList(const ListAccess& list, const void* from, void* to) {
  const std::size_t count = FieldAccess::Count(list, from);
  for (std::size_t position = 0; position < count; ++position) {
    const CBaseStatus* const element = FieldAccess::At(list, from, position);
    FieldAccess::Add(list, to, element == nullptr ? nullptr : CopyElement(*element).release());
  }
}

// Into an object that is fresh.
void CopyFields(const ClassInfo& info, const void* from, void* to) {
  if (info.Base != nullptr) {
    CopyFields(*info.Base, FieldAccess::ToBase(info, const_cast<void*>(from)),
               FieldAccess::ToBase(info, to));
  }
  for (const Field& field : info.OwnFields()) {
    const void* const value = FieldAccess::Read(field, from);
    if (value == nullptr) {
      Drop(field, to);
    } else if (field.Scalar != nullptr) {
      AssignScalar(*field.Scalar, value, FieldAccess::Make(field, to));
    } else if (field.Elements != nullptr) {
      CopyList(*field.Elements, value, FieldAccess::Make(field, to));
    } else {
      CopyFields(*field.Record, value, FieldAccess::Make(field, to));
    }
  }
}

// NOLINTEND(misc-no-recursion)

}  // namespace

std::unique_ptr<CStatus> Copy(const CStatus& status) {
  auto copy = std::make_unique<CStatus>();
  CopyFields(CStatus::Class, &status, copy.get());
  return copy;
}

}  // namespace QtSts
