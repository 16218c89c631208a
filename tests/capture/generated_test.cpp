// Captures of controllers that nobody has thought up: made the controller again, each gives the
// document that was captured.
#include <gmock/gmock.h>

#include <cerrno>
#include <random>

#include "sandbox/devices.h"
#include "sandbox/files.h"
#include "tests/capture/capture_fixture.h"
#include "tests/reliability/controller.h"
#include "tests/reliability/random_controller.h"

namespace {

using captured::CaptureNow;
using captured::CaptureTest;
using captured::Comparable;
using captured::Entries;
using captured::ShowAgain;
using sandbox::Scenario;

constexpr const char* kFiles[] = {"/proc/meminfo", "/etc/resolv.conf", "/proc/net/route",
                                  "/var/lib/dpkg/status", "/home/Zet/.settings/uuid"};

// What RandomController leaves out: other interfaces, failing calls, texts that are not UTF-8.
Scenario WithMore(Scenario controller, unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  if (below(2) == 0) {
    sandbox::NetworkInterface interface = {.Name = "wan0", .Mac = "02:00:00:00:00:07"};
    interface.State = static_cast<sandbox::LinkState>(below(3));
    interface.Addresses.push_back({.Prefix = "10.7.0.1/16", .Broadcast = "10.7.255.255"});
    if (below(2) == 0) {
      interface.Addresses.push_back({.Prefix = "10.8.0.1/24", .Label = "wan0:1"});
    }
    for (unsigned number = below(3); number > 0; --number) {
      interface.Addresses.push_back({.Prefix = "2001:db8:7::" + std::to_string(number) + "/64"});
    }
    if (below(2) == 0) {
      interface.Addresses.push_back({.Prefix = "fe80::7/64"});
    }
    controller.Interface(interface);
  }
  if (below(3) == 0) {
    controller.Interface({.Name = "ppp0",
                          .Mac = "02:00:00:00:00:08",
                          .Addresses = {{.Prefix = "172.16.0.5/16",
                                         .Peer = below(2) == 0 ? "0.0.0.0" : "172.16.0.6"}}});
  }
  const std::string file = kFiles[below(5)];
  switch (below(6)) {
    case 0:
      controller.File(file, "x").Fault(file, {.Open = EACCES});
      break;
    case 1:
      controller.File(file, "nameserver 1.2.3.4\nMemTotal: 7 kB\n")
          .Fault(file, {.Read = EIO, .ReadAfter = below(30)});
      break;
    case 2:
      controller.File(file, "x").Fault(file, {.Status = EACCES});
      break;
    case 3:
      controller.NoFile(file).Fault(file, {.IsPipe = true});
      break;
    case 4:
      controller.File(file, std::string("\xFF\xC3(\0\x1B[2J", 8));
      break;
    default:
      break;
  }
  return controller;
}

TEST_F(CaptureTest, OfAGeneratedControllerGivesTheDocumentAgain) {
  const unsigned count = static_cast<unsigned>(reliability::Repetitions(8, 500));
  for (unsigned seed = 0; seed < count; ++seed) {
    const Scenario controller = WithMore(reliability::RandomController(seed), seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scenario().Apply();
    controller.Apply();
    if (seed % 4 == 0 && std::filesystem::exists("/dev/travex")) {
      sandbox::SetOpenError("travex", EBUSY);
    }
    const Entries capture = CaptureNow();
    EXPECT_EQ(reliability::FirstDifference(Comparable(ShowAgain(capture)),
                                           Comparable(capture.at("document.xml").Bytes)),
              "");
  }
}

}  // namespace
