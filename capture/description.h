// capture.json: what a capture says of itself.
#pragma once

#include <string>
#include <vector>

#include "capture/contents.h"

namespace capture {

std::string DescriptionOf(const Recording& recording, const std::vector<Replaced>& replaced,
                          const Machine& machine);

// Text for TZ that gives this offset, and this summer time, at any date.
std::string ZoneText(std::int64_t seconds_east, bool daylight_saving);

}  // namespace capture
