#include "sandbox/devices.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "sandbox/descriptor.h"
#include "sandbox/files.h"
#include "sandbox/testing.h"

namespace sandbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned long kRate = 0x8004DA0C;
constexpr unsigned long kLevel = 0x8004DA55;

Descriptor Open(const char* path) { return Descriptor(open(path, O_RDWR | O_CLOEXEC)); }

class Devices : public testing::Test {
 protected:
  void SetUp() override {
    SANDBOX_NEEDS_DEVICES();
    RemoveDevices();
    ClearDeviceLog();
  }
};

TEST_F(Devices, AnAnswerIsWhatIoctlReturns) {
  SetAnswer("travex", kRate, 59940);
  const Descriptor device = Open("/dev/travex");
  ASSERT_TRUE(device);
  EXPECT_EQ(59940, ioctl(device.Number(), kRate));
}

TEST_F(Devices, EveryKindOfRequestNumberIsAnsweredWithoutAnArgument) {
  for (const unsigned long request :
       {0x8004DA0CUL, 0x8004DA1CUL, 0x8004DA1EUL, 0x8004DA50UL, 0x8004DA5CUL, 0x8004DA65UL,
        0x8004DA70UL, 0x8004DB17UL, 0xDA01UL}) {
    SetAnswer("zetdisplay", static_cast<std::uint32_t>(request), 5);
    const Descriptor device = Open("/dev/zetdisplay");
    EXPECT_EQ(5, ioctl(device.Number(), request)) << std::hex << request;
  }
}

TEST_F(Devices, AnswersOfEverySizeAndSignArrive) {
  struct Row {
    std::int32_t Answer;
    int Result;
  };
  constexpr Row kRows[] = {{0, 0},         {1, 1},         {0x7FFFFFFF, 0x7FFFFFFF},
                           {-1, -1},       {-25, -1},      {-511, -1},
                           {-512, -1},     {-1000, -1},    {-4095, -1},
                           {-4096, -4096}, {-5000, -5000}, {INT32_MIN, INT32_MIN}};
  for (const Row& row : kRows) {
    SetAnswer("travex", kRate, row.Answer);
    const Descriptor device = Open("/dev/travex");
    EXPECT_EQ(row.Result, ioctl(device.Number(), kRate)) << row.Answer;
  }
}

TEST_F(Devices, ARequestThatIsNotListedFails) {
  SetAnswer("travex", kRate, 1);
  const Descriptor device = Open("/dev/travex");
  EXPECT_EQ(-1, ioctl(device.Number(), kLevel));
  EXPECT_EQ(ENOTTY, errno);
}

TEST_F(Devices, TheSameRequestMayBeAnsweredDifferentlyByEachNode) {
  SetAnswer("travex", kRate, 1);
  SetAnswer("zetdisplay", kRate, 2);
  EXPECT_EQ(1, ioctl(Open("/dev/travex").Number(), kRate));
  EXPECT_EQ(2, ioctl(Open("/dev/zetdisplay").Number(), kRate));
}

TEST_F(Devices, AnAnswerCanChangeWhileTheNodeIsOpen) {
  SetAnswer("travex", kRate, 1);
  const Descriptor device = Open("/dev/travex");
  EXPECT_EQ(1, ioctl(device.Number(), kRate));
  SetAnswer("travex", kRate, 2);
  EXPECT_EQ(2, ioctl(device.Number(), kRate));
}

TEST_F(Devices, AProgramMayEditTheAnswerFile) {
  SetAnswer("travex", kRate, 1);
  WriteFile("/.sandbox/devices/travex", "0x8004DA0C 0x10 # sixteen\n");
  EXPECT_EQ(16, ioctl(Open("/dev/travex").Number(), kRate));
}

TEST_F(Devices, ANodeWithoutAnswersDoesNotExist) {
  EXPECT_FALSE(Open("/dev/travex"));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(Devices, ANodeCanGoAndComeBack) {
  SetAnswer("travex", kRate, 1);
  EXPECT_TRUE(Open("/dev/travex"));
  RemoveDevice("travex");
  EXPECT_FALSE(Open("/dev/travex"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(std::filesystem::exists("/dev/travex"));
  SetAnswer("travex", kRate, 3);
  EXPECT_EQ(3, ioctl(Open("/dev/travex").Number(), kRate));
}

TEST_F(Devices, ANodeGoesAsSoonAsItsAnswerFileDoes) {
  SetAnswer("travex", kRate, 1);
  const Descriptor device = Open("/dev/travex");
  RemoveFile("/.sandbox/devices/travex");
  EXPECT_FALSE(Open("/dev/travex"));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, ioctl(device.Number(), kRate));
  EXPECT_EQ(ENODEV, errno);
}

TEST_F(Devices, ANodeCanRefuseToOpen) {
  SetAnswer("travex", kRate, 1);
  SetOpenError("travex", EACCES);
  EXPECT_FALSE(Open("/dev/travex"));
  EXPECT_EQ(EACCES, errno);
  struct stat status = {};
  EXPECT_EQ(0, stat("/dev/travex", &status));
  SetOpenError("travex", 0);
  EXPECT_EQ(1, ioctl(Open("/dev/travex").Number(), kRate));
}

TEST_F(Devices, EveryOpenRequestAndCloseIsLoggedInOrder) {
  SetAnswer("travex", kRate, 1);
  SetAnswer("zetdisplay", kLevel, 2);
  {
    const Descriptor device = Open("/dev/travex");
    ioctl(device.Number(), kRate);
    ioctl(device.Number(), kLevel);
  }
  ioctl(Open("/dev/zetdisplay").Number(), kLevel);
  SetOpenError("travex", EBUSY);
  EXPECT_FALSE(Open("/dev/travex"));
  EXPECT_THAT(DeviceLog(),
              ElementsAre("travex open", "travex ioctl 0x8004DA0C", "travex ioctl 0x8004DA55",
                          "travex close", "zetdisplay open", "zetdisplay ioctl 0x8004DA55",
                          "zetdisplay close", "travex open refused"));
  ClearDeviceLog();
  EXPECT_THAT(DeviceLog(), IsEmpty());
}

TEST_F(Devices, ACloseIsLoggedBeforeCloseReturns) {
  SetAnswer("travex", kRate, 1);
  for (int round = 0; round < 100; ++round) {
    ClearDeviceLog();
    Open("/dev/travex");
    ASSERT_THAT(DeviceLog(), ElementsAre("travex open", "travex close")) << round;
  }
}

TEST_F(Devices, AMalformedAnswerFileFailsTheRequestOnly) {
  SetAnswer("travex", kRate, 1);
  const Descriptor device = Open("/dev/travex");
  WriteFile("/.sandbox/devices/travex", "0x8004DA0C\n");
  EXPECT_EQ(-1, ioctl(device.Number(), kRate));
  EXPECT_EQ(EIO, errno);
  WriteFile("/.sandbox/devices/travex", "0x8004DA0C 7\n");
  EXPECT_EQ(7, ioctl(device.Number(), kRate));
}

}  // namespace
}  // namespace sandbox
