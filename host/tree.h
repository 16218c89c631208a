// The document as its XML says it: the tree from which every other rendering is made, so that no
// two of them can disagree.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/document.h"
#include "model/listing.h"

namespace host {

// One attribute: what it is and its text.
struct Value {
  const QtSts::Field* Field;
  std::string Text;
};

// One element: a record, a list (it has no class), or an element of a list.
struct Element {
  const char* Name;  // of its field; of a list's element, its class
  const QtSts::ClassInfo* Class;
  std::size_t Position = 0;  // in its list
  std::vector<Value> Values;
  std::vector<Element> Children;

  bool IsList() const { return Class == nullptr; }
  bool IsA(std::string_view class_name) const;

  // Null when there is none: not reported, or no such field.
  const Value* FindValue(std::string_view name) const;
  const Element* FindChild(std::string_view name) const;

  // The same along a path of names parted by '/'; the empty path leads to this element.
  const Element* Find(std::string_view path) const;
};

// The tree of the document's XML. Throws std::bad_alloc when memory runs out.
Element ReadTree(QtSts::CStatus& status);

}  // namespace host
