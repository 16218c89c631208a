// DCIO boards: CAN sensors that carry input and output points. They are unrelated to the discrete
// I/O devices of model/dcio.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "model/io_points.h"
#include "model/owning_list.h"
#include "model/sensors.h"

namespace QtSts {

// What every DCIO board reports. Who makes a board gives it its two point lists.
class STATUS_API CCANDcio : public CCANSensor {
 public:
  IOList Points;
  bool BoardConnected = false;  // always agrees with Connected
  std::uint32_t PortStatus = 0;

  void SetConnected(bool connected) override {
    Connected = connected;
    BoardConnected = connected;
  }

  static const ClassInfo Class;
};

class STATUS_API CCANDcio16in3out8cfg : public CCANDcio {
 public:
  static const ClassInfo Class;
};

class STATUS_API CCANDcio2in1out : public CCANDcio {
 public:
  static const ClassInfo Class;
};

// The speed of one fan of a board.
class STATUS_API FanRpm : public CListedStatus {
 public:
  std::uint32_t Ordinal = 0;   // running number on the board, from 0
  std::uint8_t FanNumber = 0;  // from its row
  std::uint16_t Rpm = 0;       // revolutions per minute

  FanRpm() = default;
  FanRpm(std::uint32_t ordinal, std::uint8_t fan_number, std::uint16_t rpm)
      : Ordinal(ordinal), FanNumber(fan_number), Rpm(rpm) {}

  static const ClassInfo Class;
};

// The fans of a board, in order of addition. Owns them.
class STATUS_API FanRpmList {
 public:
  using Element = FanRpm;
  // NOLINTBEGIN(readability-identifier-naming): the names of the standard library
  using iterator = ListIterator<FanRpm, FanRpm*>;
  using const_iterator = ListIterator<const FanRpm, FanRpm*>;
  // NOLINTEND(readability-identifier-naming)

  std::vector<FanRpm*> Fans;

  FanRpmList() = default;
  FanRpmList(const FanRpmList&) = delete;
  FanRpmList& operator=(const FanRpmList&) = delete;
  virtual ~FanRpmList() { Clear(); }

  // Appends `fan`, which belongs to the list from this call on, even if memory runs out in it;
  // always true.
  bool Add(FanRpm* fan) {
    std::unique_ptr<FanRpm> owned(fan);
    Fans.push_back(fan);
    static_cast<void>(owned.release());
    return true;
  }

  // Deletes the fans from front to back, each distinct one once, and leaves the list empty.
  void Clear() noexcept {
    owning::DestroyEachOnce(Fans, &owning::Delete<FanRpm>);
    Fans.clear();
  }

  // The fan at `position`, or null past the end.
  FanRpm* operator[](const unsigned int& position) const {
    return position < Fans.size() ? Fans[position] : nullptr;
  }

  // The same for a position of any other integer type: null for a negative one, too.
  template <ListPosition Position>
  FanRpm* operator[](Position position) const {
    return IsWithin(position, size()) ? Fans[static_cast<std::size_t>(position)] : nullptr;
  }

  unsigned int Count() const { return static_cast<unsigned int>(Fans.size()); }
  std::size_t size() const { return Fans.size(); }
  bool empty() const { return Fans.empty(); }

  // The fans from front to back, those of a list that is const being const.
  iterator begin() { return iterator(Fans.data()); }
  iterator end() { return iterator(Fans.data() + Fans.size()); }
  const_iterator begin() const { return const_iterator(Fans.data()); }
  const_iterator end() const { return const_iterator(Fans.data() + Fans.size()); }
};

class STATUS_API CCANDcioAndFanRpm : public CCANDcio {
 public:
  FanRpmList FanRpms;

  static const ClassInfo Class;
};

// Every class of this header that has a listing.
inline constexpr const ClassInfo* kDcioBoardClasses[] = {
    &CCANDcio::Class,        &CCANDcio16in3out8cfg::Class,
    &CCANDcio2in1out::Class, &CCANDcioAndFanRpm::Class,
    &FanRpm::Class,
};

}  // namespace QtSts
