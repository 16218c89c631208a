#pragma once

namespace hardware {

// Owns a file descriptor, which may be absent.
class Descriptor {
 public:
  explicit Descriptor(int number) : m_Number(number) {}
  Descriptor(Descriptor&& other) noexcept : m_Number(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  bool IsOpen() const { return m_Number >= 0; }
  int Number() const { return m_Number; }

  // Hands the number to the caller, who closes it.
  int Release();

 private:
  int m_Number;
};

}  // namespace hardware
