// The list of model elements: positional, growing, owning.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "model/export.h"
#include "model/list_iterator.h"

namespace QtSts {

// How lists delete what they own.
namespace owning {

// Calls `destroy` for the elements from front to back, for each distinct one once. Nothing is
// written into them. Made for the pointers that the lists of the model hold.
template <class Pointer>
STATUS_API void DestroyEachOnce(std::vector<Pointer>& elements, void (*destroy)(Pointer));

template <class T>
void Delete(T* element) {
  delete element;
}

}  // namespace owning

// Holds elements made with `new`, in order of Add, and deletes them. T needs a virtual destructor.
template <class T>
class COwningList {
 public:
  using Element = T;
  // NOLINTBEGIN(readability-identifier-naming): the names of the standard library
  using iterator = ListIterator<T, void*>;
  using const_iterator = ListIterator<const T, void*>;
  // NOLINTEND(readability-identifier-naming)

  COwningList() = default;
  COwningList(const COwningList&) = delete;
  COwningList& operator=(const COwningList&) = delete;
  virtual ~COwningList() { Clear(); }

  // Appends `element`, which belongs to the list from this call on, even if memory runs out in it.
  void Add(T* element) {
    std::unique_ptr<T> owned(element);
    elements_.push_back(element);
    static_cast<void>(owned.release());
  }

  // Deletes the elements from front to back, each distinct one once however often it was added, and
  // leaves the list empty.
  void Clear() noexcept {
    owning::DestroyEachOnce<void*>(elements_,
                                   [](void* element) { delete static_cast<T*>(element); });
    elements_.clear();
  }

  // The element at `position`, or null past the end. Never creates anything.
  T* operator[](const unsigned int& position) const {
    return position < elements_.size() ? static_cast<T*>(elements_[position]) : nullptr;
  }

  // The same for a position of any other integer type: null for a negative one, too.
  template <ListPosition Position>
  T* operator[](Position position) const {
    return IsWithin(position, size())
               ? static_cast<T*>(elements_[static_cast<std::size_t>(position)])
               : nullptr;
  }

  unsigned int Count() const { return static_cast<unsigned int>(elements_.size()); }
  std::size_t size() const { return elements_.size(); }
  bool empty() const { return elements_.empty(); }

  // The elements from front to back, null where null was added. Those of a list that is const are
  // const.
  iterator begin() { return iterator(elements_.data()); }
  iterator end() { return iterator(elements_.data() + elements_.size()); }
  const_iterator begin() const { return const_iterator(elements_.data()); }
  const_iterator end() const { return const_iterator(elements_.data() + elements_.size()); }

 private:
  std::vector<void*> elements_;  // of T; all lists share what handles plain pointers
};

}  // namespace QtSts
