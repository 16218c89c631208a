#include "hardware/descriptor.h"

#include <unistd.h>

#include <utility>

namespace hardware {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (IsOpen()) {
    close(number_);
  }
}

int Descriptor::Release() { return std::exchange(number_, -1); }

}  // namespace hardware
