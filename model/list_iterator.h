// How the elements of lists are walked and numbered.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

namespace QtSts {

// Walks the elements of a list in order. The list holds a Held for each, which is a T*. Valid until
// something is added to the list or cleared.
template <class T, class Held>
class ListIterator {
 public:
  // NOLINTBEGIN(readability-identifier-naming): the names of the standard library
  using iterator_category = std::random_access_iterator_tag;
  using value_type = T*;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = T*;
  // NOLINTEND(readability-identifier-naming)

  ListIterator() = default;
  explicit ListIterator(const Held* place) : place_(place) {}
  // An iterator that may change elements is one that may not, too.
  template <class Other>
  requires std::same_as<T, const Other>
  // NOLINTNEXTLINE(google-explicit-constructor)
  ListIterator(const ListIterator<Other, Held>& other) : place_(other.place_) {}

  T* operator*() const { return static_cast<T*>(*place_); }
  T* operator[](std::ptrdiff_t offset) const { return *(*this + offset); }

  ListIterator& operator++() { return *this += 1; }
  ListIterator& operator--() { return *this -= 1; }
  ListIterator operator++(int) { return std::exchange(*this, *this + 1); }
  ListIterator operator--(int) { return std::exchange(*this, *this - 1); }
  ListIterator& operator+=(std::ptrdiff_t offset) {
    place_ += offset;
    return *this;
  }
  ListIterator& operator-=(std::ptrdiff_t offset) { return *this += -offset; }
  friend ListIterator operator+(ListIterator from, std::ptrdiff_t offset) { return from += offset; }
  friend ListIterator operator+(std::ptrdiff_t offset, ListIterator from) { return from += offset; }
  friend ListIterator operator-(ListIterator from, std::ptrdiff_t offset) { return from -= offset; }
  friend std::ptrdiff_t operator-(const ListIterator& to, const ListIterator& from) {
    return to.place_ - from.place_;
  }

  bool operator==(const ListIterator&) const = default;
  auto operator<=>(const ListIterator&) const = default;

 private:
  template <class, class>
  friend class ListIterator;

  const Held* place_ = nullptr;
};

// What a position in a list may be: an integer, or an enumerator that converts to one.
template <class T>
concept ListPosition = std::is_integral_v<T> ||
    (std::is_enum_v<T>&& std::is_convertible_v<T, long long>);

// Whether a list of `count` elements has one at `position`.
template <ListPosition Position>
constexpr bool IsWithin(Position position, std::size_t count) {
  if constexpr (std::is_enum_v<Position>) {
    return IsWithin(static_cast<std::underlying_type_t<Position>>(position), count);
  } else if constexpr (std::is_signed_v<Position>) {
    return position >= 0 && static_cast<unsigned long long>(position) < count;
  } else {
    return static_cast<unsigned long long>(position) < count;
  }
}

}  // namespace QtSts
