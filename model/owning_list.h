// The list of model elements: positional, growing, owning.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <vector>

namespace QtSts {

// How lists delete what they own.
namespace owning {

// False when every pointer stands once; true also when there is no memory to tell.
template <class Pointer>
bool MayRepeat(const std::vector<Pointer>& elements) {
  constexpr std::size_t kFew = 64;
  Pointer few[kFew];
  std::unique_ptr<Pointer[]> many;
  if (elements.size() > kFew) {
    many.reset(new (std::nothrow) Pointer[elements.size()]);
    if (many == nullptr) {
      return true;
    }
  }
  Pointer* const sorted = many == nullptr ? few : many.get();
  Pointer* const end = std::copy(elements.begin(), elements.end(), sorted);
  std::sort(sorted, end, std::less<>());
  return std::adjacent_find(sorted, end) != end;
}

inline std::size_t LowestBit(std::size_t number) { return number & (~number + 1); }

// Whether `element` is among the first `count`, which lie in sorted runs: one for each bit of
// `count`, the longest first.
template <class Pointer>
bool IsAmong(const Pointer* elements, std::size_t count, Pointer element) {
  std::size_t end = count;
  while (end > 0) {
    const std::size_t begin = end - LowestBit(end);
    if (std::binary_search(elements + begin, elements + end, element, std::less<>())) {
      return true;
    }
    end = begin;
  }
  return false;
}

// Calls `destroy` for the elements from front to back, for each distinct one once. Nothing is
// written into them. A list may be long, and there may be no memory: the elements that are done
// with then make room for the search.
template <class Pointer>
void DestroyEachOnce(std::vector<Pointer>& elements, void (*destroy)(Pointer)) {
  if (!MayRepeat(elements)) {
    std::for_each(elements.begin(), elements.end(), destroy);
    return;
  }
  Pointer* const first = elements.data();
  for (std::size_t done = 0; done < elements.size();) {
    const Pointer element = first[done];
    if (!IsAmong(first, done, element)) {
      destroy(element);
    }
    ++done;
    std::sort(first + (done - LowestBit(done)), first + done, std::less<>());
  }
}

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

  COwningList() = default;
  COwningList(const COwningList&) = delete;
  COwningList& operator=(const COwningList&) = delete;
  virtual ~COwningList() { Clear(); }

  // Appends `element`, which belongs to the list from this call on, even if memory runs out in it.
  void Add(T* element) {
    std::unique_ptr<T> owned(element);
    m_Elements.push_back(element);
    static_cast<void>(owned.release());
  }

  // Deletes the elements from front to back, each distinct one once however often it was added, and
  // leaves the list empty.
  void Clear() noexcept {
    owning::DestroyEachOnce<void*>(m_Elements,
                                   [](void* element) { delete static_cast<T*>(element); });
    m_Elements.clear();
  }

  // The element at `position`, or null past the end. Never creates anything.
  T* operator[](unsigned int const& position) const {
    return position < m_Elements.size() ? static_cast<T*>(m_Elements[position]) : nullptr;
  }

  unsigned int Count() const { return static_cast<unsigned int>(m_Elements.size()); }

 private:
  std::vector<void*> m_Elements;  // of T; all lists share what handles plain pointers
};

}  // namespace QtSts
