// The listing of a model class: every field once, with its name, unit and meaning. XML writing and
// reading, the schema, comparison and every other rendering of the document walk these tables, so
// no two of them can disagree about a field.
#pragma once

#include <cstddef>
#include <cstdint>
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
class FieldAccess;  // of this project's sources: reads and fills objects by their listings
class ListedField;
class ListedObject;

// How values of one type are written as text and read back.
struct ScalarType {
  const char* SchemaType;                                // "xs:boolean", "xs:unsignedInt", ...
  void (*Format)(const void* value, std::string* text);  // appends; independent of the locale
  bool (*Parse)(std::string_view text, void* value);     // false: malformed or out of range
};

// A listing says what objects hold. What reads and fills them takes pointers to any object, and is
// private: programs walk objects with model/listed_object.h, where object and field belong
// together.

// How a list of any element type is walked and filled.
struct ListAccess {
 private:
  friend class FieldAccess;
  friend class ListedField;
  std::size_t (*count_)(const void* list) = nullptr;
  CBaseStatus* (*at_)(const void* list, std::size_t position) = nullptr;
  void (*add_)(void* list, CBaseStatus* element) = nullptr;  // takes ownership
};

// One field of a class: a scalar, a record, or a list, which has both Record and Elements.
struct Field {
  const char* Name = nullptr;   // the member's name; attribute or child element in XML
  const char* Unit = nullptr;   // "" when it has none
  const char* About = nullptr;  // one sentence without the closing stop
  CodeTable Codes;              // the names of its values, empty for a plain value
  bool Optional = false;        // may be absent (null)

  const ScalarType* Scalar = nullptr;
  const ClassInfo* Record = nullptr;     // the class of a record, or of what a list holds
  const ListAccess* Elements = nullptr;  // a list

 private:
  friend class FieldAccess;
  friend class ListedField;
  const void* (*read_)(const void* object) = nullptr;  // the value in `object`; null when absent
  void* (*make_)(void* object) = nullptr;              // the value in `object`, made when absent
};

// One class of the model. Its fields are its own; those of `Base` come before them.
struct ClassInfo {
  const char* Name = nullptr;   // element name in lists: the class name without its leading C
  const char* About = nullptr;  // one sentence without the closing stop
  const std::type_info* Type = nullptr;
  CBaseStatus* (*Create)() = nullptr;  // null for a class that no list makes on its own
  const ClassInfo* Base = nullptr;

  // Without those of its bases.
  constexpr std::span<const Field> OwnFields() const { return {fields_, field_count_}; }

 private:
  friend class FieldAccess;
  friend class ListedObject;
  void* (*to_base_)(void* object) = nullptr;
  const Field* fields_ = nullptr;
  std::size_t field_count_ = 0;
};

// Calls `visit` with each field of a class: first the fields of its base, then its own. Stops when
// `visit` returns false. Returns whether it never did.
template <class Visit>
bool VisitEveryField(const ClassInfo& info, const Visit& visit) {
  if (info.Base != nullptr && !VisitEveryField(*info.Base, visit)) {
    return false;
  }
  for (const Field& field : info.OwnFields()) {
    if (!visit(field)) {
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

// The same, ending with a null pointer, for programs that were built for it.
STATUS_API const ClassInfo* const* AllClasses();

// True when `derived` is `base` or has it among its bases.
STATUS_API bool IsA(const ClassInfo& derived, const ClassInfo& base);

// The types of scalars.
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

// The scalar type of values of type T; a null pointer's type for a T that is no scalar.
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
inline constexpr bool kIsScalar = !std::is_null_pointer_v<std::remove_cv_t<decltype(kScalarOf<T>)>>;

}  // namespace listing
}  // namespace QtSts
