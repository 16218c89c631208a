#include "model/promises.h"

#include "model/dcio_boards.h"
#include "model/field_access.h"
#include "model/io_points.h"

namespace QtSts {
namespace {

// The part of an object that is a B; null when it has none.
template <class B>
B* PartOf(const ReadObject& object) {
  void* part = const_cast<void*>(object.Object);
  for (const ClassInfo* info = object.Class; info != nullptr; info = info->Base) {
    if (info == &B::Class) {
      return static_cast<B*>(part);
    }
    part = info->Base != nullptr ? FieldAccess::ToBase(*info, part) : nullptr;
  }
  return nullptr;
}

std::optional<BrokenPromise> BrokenByBoard(const ReadObject& object) {
  const auto* const board = PartOf<CCANDcio>(object);
  if (board == nullptr || board->BoardConnected == board->Connected) {
    return std::nullopt;
  }
  return BrokenPromise{"BoardConnected", "contradicts Connected"};
}

template <class List, class Point>
std::optional<BrokenPromise> BrokenByPoint(const ReadObject& object, const ReadObject& holder) {
  const auto* const list = PartOf<List>(holder);
  auto* const point = PartOf<Point>(object);
  if (list == nullptr || point == nullptr || list->IsValid(point)) {
    return std::nullopt;
  }
  const std::string refused = std::to_string(point->Index) + " is refused: the list takes ";
  if (list->OpenEnded) {
    return BrokenPromise{"Index", refused + "indices from 1 on"};
  }
  const std::string most = std::to_string(list->MaximumIndex);
  return BrokenPromise{"Index", refused + (most == "0" ? "no index" : "indices from 1 to " + most)};
}

}  // namespace

std::optional<BrokenPromise> BrokenBy(const ReadObject& object, const ReadObject* holder) {
  auto broken = BrokenByBoard(object);
  if (!broken && holder != nullptr) {
    broken = BrokenByPoint<InputListType, BaseInputType>(object, *holder);
  }
  if (!broken && holder != nullptr) {
    broken = BrokenByPoint<OutputListType, BaseOutputType>(object, *holder);
  }
  return broken;
}

}  // namespace QtSts
