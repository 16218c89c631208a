#pragma once

namespace hardware {

// Owns a file descriptor, which may be absent.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }

  // Hands the number to the caller, who closes it.
  int Release();

 private:
  int number_;
};

}  // namespace hardware
