// A class whose listing lacks a member: what the test of the listings has to find.
#pragma once

#include "model/listing.h"

class Forgetful : public QtSts::CListedStatus {
 public:
  std::int32_t Kept = 0;
  std::int32_t Forgotten = 0;

  static const QtSts::ClassInfo Class;
};
