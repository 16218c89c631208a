// The document as one tree of typed values, made once from the listings. JSON, text, comparison and
// every other rendering walk it, so that no two of them can disagree. XML says the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/export.h"
#include "model/listing.h"

namespace QtSts {

class CStatus;

// What a value is, whatever its width in the document's classes. A code is one of the integers.
enum class ValueKind : std::uint8_t { kFlag, kUnsigned, kSigned, kFloat, kDouble, kText, kReals };

// One value that is reported. Lives as long as its tree.
class STATUS_API TreeValue {
 public:
  // Name, unit, meaning, names of codes.
  const Field& Listed() const { return *field_; }
  ValueKind Kind() const { return kind_; }

  // Each is asked for values of its own kind only; Real is for floats, too.
  bool Flag() const { return data_.Unsigned != 0; }
  std::uint64_t Unsigned() const { return data_.Unsigned; }
  std::int64_t Signed() const { return data_.Signed; }
  double Real() const { return kind_ == ValueKind::kFloat ? data_.Float : data_.Double; }
  std::string_view Text() const { return {data_.Text, size_}; }  // UTF-8 that XML can carry
  std::span<const float> Reals() const { return {data_.Reals, size_}; }

  // The value as XML and all other renderings write it, numbers in their shortest form.
  std::string Written() const;
  void AppendTo(std::string* text) const;

  // The name of an integer that is a code; null for another value, and for a code without a name.
  const char* CodeName() const;

 private:
  friend class DocumentTree;
  friend class TreeBuilder;

  const Field* field_;
  union {
    std::uint64_t Unsigned;
    std::int64_t Signed;
    float Float;
    double Double;
    const char* Text;
    const float* Reals;
  } data_;
  std::uint32_t size_;  // of a text or reals
  ValueKind kind_;
};

// A record, a list, or an element of a list. Lives as long as its tree.
class STATUS_API TreeElement {
 public:
  class Iterator {
   public:
    explicit Iterator(const TreeElement* element) : element_(element) {}
    const TreeElement& operator*() const { return *element_; }
    const TreeElement* operator->() const { return element_; }
    Iterator& operator++() {
      element_ += element_->extent_;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    const TreeElement* element_;
  };

  // Records and lists in order of the fields, or the elements of a list.
  class Range {
   public:
    Range(const TreeElement* first, const TreeElement* last) : first_(first), last_(last) {}
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(last_); }
    bool empty() const { return first_ == last_; }

   private:
    const TreeElement* first_;
    const TreeElement* last_;
  };

  // The name of the field that it is; of the root and of a list's elements, that of the class.
  const char* Name() const;
  // The field that it is; null for the root and for a list's elements.
  const Field* Listed() const { return field_; }
  // Null for a list.
  const ClassInfo* Class() const { return class_; }
  bool IsList() const { return class_ == nullptr; }
  bool IsA(const ClassInfo& base) const;
  // In its list, from 0; otherwise 0.
  std::size_t Position() const { return position_; }

  std::span<const TreeValue> Values() const { return {values_, value_count_}; }
  Range Children() const { return {this + 1, this + extent_}; }
  // Null for the root.
  // The parent stands in front of its children.
  // cppcheck-suppress thisSubtraction
  const TreeElement* Parent() const { return to_parent_ == 0 ? nullptr : this - to_parent_; }

  // What a path of names leads to, positions in lists between brackets:
  // "Outputs[0]/Dimming/DimmingLevel", from a list "[0]/Dimming". The empty path leads to this
  // element. Null when there is nothing: not reported, no such position, or no such field.
  const TreeElement* Find(std::string_view path) const;
  const TreeValue* FindValue(std::string_view path) const;

  // The path from the root to this element, which is empty for the root, or to a value of it.
  std::string Path() const;
  std::string PathOf(const TreeValue& value) const;

 private:
  friend class DocumentTree;
  friend class TreeBuilder;

  const TreeElement* FindStep(std::string_view step) const;
  const TreeElement* FindChild(std::string_view name) const;

  const Field* field_;
  const ClassInfo* class_;
  const TreeValue* values_;
  std::uint32_t value_count_;
  std::uint32_t position_;
  std::uint32_t to_parent_;
  std::uint32_t extent_;  // elements from this one to the end of what it holds
};

// The tree of one object. Holds copies: the object may change or go. Moving leaves its values and
// elements where they are. Any thread may read it.
class STATUS_API DocumentTree {
 public:
  // The document, whatever class derived from CStatus it is. Throws std::bad_alloc.
  explicit DocumentTree(const CStatus& status);
  // Any object of a listed class; of another, a root without a class and without values.
  explicit DocumentTree(const CBaseStatus& object);

  DocumentTree(DocumentTree&&) = default;
  DocumentTree& operator=(DocumentTree&&) = default;

  const TreeElement& Root() const { return elements_.front(); }

  // All of it in order of the document, the root first, each element before what it holds.
  std::span<const TreeElement> Elements() const { return elements_; }

 private:
  friend class TreeBuilder;

  std::vector<TreeElement> elements_;
  std::vector<TreeValue> values_;  // of the elements in their order
  std::vector<char> texts_;        // of the values in their order
  std::vector<float> reals_;       // likewise
};

}  // namespace QtSts
