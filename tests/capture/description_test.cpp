#include "capture/description.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

TEST(ZoneText, GivesItsOffsetAndDaylightSavingAtAnyDate) {
  constexpr long kOffsets[] = {0, 3600, 7200, -18000, 19800, 20700, -12600, 45900};
  constexpr std::time_t kDates[] = {1767225600, 1767229200, 1775000000, 1782864000,
                                    1798761599, 1798757999, 1830297600};
  for (const long offset : kOffsets) {
    for (const bool daylight : {false, true}) {
      const std::string zone = capture::ZoneText(offset, daylight);
      setenv("TZ", zone.c_str(), 1);
      tzset();
      for (const std::time_t date : kDates) {
        std::tm local = {};
        localtime_r(&date, &local);
        EXPECT_EQ(local.tm_gmtoff, offset) << zone << " at " << date;
        EXPECT_EQ(local.tm_isdst != 0, daylight) << zone << " at " << date;
      }
    }
  }
  unsetenv("TZ");
}

}  // namespace
