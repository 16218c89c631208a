// What an element of the document takes from the scratch state, for tables of kinds that can be
// asked.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "collector/state/row_tables.h"
#include "model/base_status.h"

namespace elements {

// One variable of the scratch state that an element takes.
struct Taken {
  const rows::Place* From;
  // What it becomes in an element of the kind; null when the element leaves it out.
  const void* (*Member)(const QtSts::CBaseStatus& element);
  bool OnlyBehindInterface;
};

// True when this variable or field is among `taken`.
inline bool Takes(std::span<const Taken> taken, const rows::Place& place) {
  return std::ranges::any_of(
      taken, [&place](const Taken& each) { return each.From->Address == place.Address; });
}

// An element of any kind takes at most so many variables.
inline constexpr std::size_t kMostTaken = 64;

using Variables = std::array<const void*, kMostTaken>;

// The addresses of what is taken, as an event names it, in `room`.
inline std::span<const void* const> VariablesOf(std::span<const Taken> taken, bool behind_interface,
                                                Variables& room) {
  std::size_t count = 0;
  for (const Taken& each : taken) {
    if (!each.OnlyBehindInterface || behind_interface) {
      room[count++] = each.From->Address;
    }
  }
  return std::span(room).first(count);
}

}  // namespace elements
