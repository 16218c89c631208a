#include "model/owning_list.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>

#include "model/dcio_boards.h"
#include "model/io_points.h"

namespace QtSts::owning {
namespace {

// False when every pointer stands once; true also when there is no memory to find out.
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

std::size_t LowestBit(std::size_t number) { return number & (~number + 1); }

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

}  // namespace

// A list may be long, and there may be no memory for a copy: the part of the list whose elements
// are deleted is then sorted in place and searched.
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

template void DestroyEachOnce(std::vector<void*>&, void (*)(void*));
template void DestroyEachOnce(std::vector<BaseInputType*>&, void (*)(BaseInputType*));
template void DestroyEachOnce(std::vector<BaseOutputType*>&, void (*)(BaseOutputType*));
template void DestroyEachOnce(std::vector<FanRpm*>&, void (*)(FanRpm*));

}  // namespace QtSts::owning
