// The place of a virtual function in the table of its class.
#pragma once

#include <bit>
#include <cstddef>

// Counted from 0; a pointer to a virtual function is one more than its offset in the table. The
// destructor takes two slots.
template <class Function>
std::size_t Slot(Function function) {
  struct Pointer {
    std::size_t Offset;
    std::ptrdiff_t Adjustment;
  };
  return (std::bit_cast<Pointer>(function).Offset - 1) / sizeof(void*);
}
