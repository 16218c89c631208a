// The small records that inputs, outputs and network devices share.
#pragma once

#include <cstdint>

#include "model/listing.h"
#include "model/owning_list.h"

namespace QtSts {

class STATUS_API CArea : public CListedStatus {
 public:
  std::uint32_t Width = 0;   // pixels
  std::uint32_t Height = 0;  // pixels

  static const ClassInfo Class;
};

// Frequencies in hertz. A stopped clock is infinite or not a number, and is kept as it is.
class STATUS_API CFrequency : public CListedStatus {
 public:
  float Vertical = 0;  // of an output: the frame rate
  float Horizontal = 0;
  float PixelClock = 0;

  static const ClassInfo Class;
};

// A numbered pair of counters. The member that holds one says what they count.
class STATUS_API CStat : public CListedStatus {
 public:
  std::int32_t Number = 0;
  std::int32_t First = 0;
  std::int32_t Second = 0;

  static const ClassInfo Class;
};

class STATUS_API CStatList : public COwningList<CStat> {};

}  // namespace QtSts
