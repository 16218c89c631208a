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
  const Field& Listed() const { return *m_Field; }
  ValueKind Kind() const { return m_Kind; }

  // Each is asked for values of its own kind only; Real is for floats, too.
  bool Flag() const { return m_Data.Unsigned != 0; }
  std::uint64_t Unsigned() const { return m_Data.Unsigned; }
  std::int64_t Signed() const { return m_Data.Signed; }
  double Real() const { return m_Kind == ValueKind::kFloat ? m_Data.Float : m_Data.Double; }
  std::string_view Text() const { return {m_Data.Text, m_Size}; }  // UTF-8 that XML can carry
  std::span<const float> Reals() const { return {m_Data.Reals, m_Size}; }

  // The value as XML and all other renderings write it, numbers in their shortest form.
  std::string Written() const;
  void AppendTo(std::string* text) const;

  // The name of an integer that is a code; null for another value, and for a code without a name.
  const char* CodeName() const;

 private:
  friend class DocumentTree;
  friend class TreeBuilder;

  const Field* m_Field;
  union {
    std::uint64_t Unsigned;
    std::int64_t Signed;
    float Float;
    double Double;
    const char* Text;
    const float* Reals;
  } m_Data;
  std::uint32_t m_Size;  // of a text or reals
  ValueKind m_Kind;
};

// A record, a list, or an element of a list. Lives as long as its tree.
class STATUS_API TreeElement {
 public:
  class Iterator {
   public:
    explicit Iterator(const TreeElement* element) : m_Element(element) {}
    const TreeElement& operator*() const { return *m_Element; }
    const TreeElement* operator->() const { return m_Element; }
    Iterator& operator++() {
      m_Element += m_Element->m_Extent;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    const TreeElement* m_Element;
  };

  // Records and lists in order of the fields, or the elements of a list.
  class Range {
   public:
    Range(const TreeElement* first, const TreeElement* last) : m_First(first), m_Last(last) {}
    Iterator begin() const { return Iterator(m_First); }
    Iterator end() const { return Iterator(m_Last); }
    bool empty() const { return m_First == m_Last; }

   private:
    const TreeElement* m_First;
    const TreeElement* m_Last;
  };

  // The name of the field that it is; of the root and of a list's elements, that of the class.
  const char* Name() const;
  // The field that it is; null for the root and for a list's elements.
  const Field* Listed() const { return m_Field; }
  // Null for a list.
  const ClassInfo* Class() const { return m_Class; }
  bool IsList() const { return m_Class == nullptr; }
  bool IsA(const ClassInfo& base) const;
  // In its list, from 0; otherwise 0.
  std::size_t Position() const { return m_Position; }

  std::span<const TreeValue> Values() const { return {m_Values, m_ValueCount}; }
  Range Children() const { return {this + 1, this + m_Extent}; }
  // Null for the root.
  // The parent stands in front of its children.
  // cppcheck-suppress thisSubtraction
  const TreeElement* Parent() const { return m_ToParent == 0 ? nullptr : this - m_ToParent; }

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

  const Field* m_Field;
  const ClassInfo* m_Class;
  const TreeValue* m_Values;
  std::uint32_t m_ValueCount;
  std::uint32_t m_Position;
  std::uint32_t m_ToParent;
  std::uint32_t m_Extent;  // elements from this one to the end of what it holds
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

  const TreeElement& Root() const { return m_Elements.front(); }

  // All of it in order of the document, the root first, each element before what it holds.
  std::span<const TreeElement> Elements() const { return m_Elements; }

 private:
  friend class TreeBuilder;

  std::vector<TreeElement> m_Elements;
  std::vector<TreeValue> m_Values;  // of the elements in their order
  std::vector<char> m_Texts;        // of the values in their order
  std::vector<float> m_Reals;       // likewise
};

}  // namespace QtSts
