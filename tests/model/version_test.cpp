#include <gtest/gtest.h>
#include <statuscollector/version.h>

#include <string>

namespace {

TEST(Version, IsThatOfTheProject) {
  EXPECT_STREQ(STATUSCOLLECTOR_VERSION, PROJECT_VERSION);
  EXPECT_STREQ(QtSts::LibraryVersion(), PROJECT_VERSION);
}

TEST(Version, IsTheSameInPartsAndInOneNumber) {
  EXPECT_EQ(std::to_string(STATUSCOLLECTOR_VERSION_MAJOR) + "." +
                std::to_string(STATUSCOLLECTOR_VERSION_MINOR) + "." +
                std::to_string(STATUSCOLLECTOR_VERSION_PATCH),
            STATUSCOLLECTOR_VERSION);
  EXPECT_EQ(QtSts::LibraryVersionNumber(), STATUSCOLLECTOR_VERSION_NUMBER);
#if STATUSCOLLECTOR_VERSION_NUMBER < 10000
  ADD_FAILURE() << "the preprocessor cannot compare it";
#endif
}

}  // namespace
