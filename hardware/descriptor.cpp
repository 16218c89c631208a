#include "hardware/descriptor.h"

#include <unistd.h>

#include <utility>

namespace hardware {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(m_Number, other.m_Number);
  return *this;
}

Descriptor::~Descriptor() {
  if (IsOpen()) {
    close(m_Number);
  }
}

int Descriptor::Release() { return std::exchange(m_Number, -1); }

}  // namespace hardware
