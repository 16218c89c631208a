#include "sandbox/interfaces.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "sandbox/descriptor.h"
#include "sandbox/scenario.h"

namespace sandbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Text(const sockaddr* address, socklen_t length) {
  std::array<char, NI_MAXHOST> host = {};
  if (address == nullptr) {
    return "none";
  }
  return getnameinfo(address, length, host.data(), host.size(), nullptr, 0, NI_NUMERICHOST) == 0
             ? host.data()
             : "unreadable";
}

std::string Line(const ifaddrs& entry) {
  const std::string line = entry.ifa_name;
  switch (entry.ifa_addr->sa_family) {
    case AF_INET:
      return line + " " + Text(entry.ifa_addr, sizeof(sockaddr_in)) + " mask " +
             Text(entry.ifa_netmask, sizeof(sockaddr_in)) + " broadcast " +
             Text(entry.ifa_broadaddr, sizeof(sockaddr_in));
    case AF_INET6:
      return line + " " + Text(entry.ifa_addr, sizeof(sockaddr_in6));
    default:
      return line + " link";
  }
}

// What a program that lists the interfaces sees of them, besides lo.
std::vector<std::string> Listed() {
  std::vector<std::string> lines;
  ifaddrs* head = nullptr;
  EXPECT_EQ(0, getifaddrs(&head));
  const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(head, freeifaddrs);
  for (const ifaddrs* entry = head; entry != nullptr; entry = entry->ifa_next) {
    if (std::string(entry->ifa_name) != "lo") {
      lines.push_back(Line(*entry));
    }
  }
  return lines;
}

ifreq Ask(unsigned long request, const std::string& name) {
  const Descriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
  ifreq question = {};
  name.copy(question.ifr_name, IFNAMSIZ - 1);
  EXPECT_EQ(0, ioctl(socket.Number(), request, &question)) << name;
  return question;
}

int Flags(const std::string& name) {
  return Ask(SIOCGIFFLAGS, name).ifr_flags & (IFF_UP | IFF_RUNNING);
}

class Interfaces : public testing::Test {
 protected:
  ~Interfaces() override { SetInterfaces({}); }
};

TEST_F(Interfaces, AnInterfaceHasExactlyTheGivenAddresses) {
  SetInterfaces({{.Name = "eth0",
                  .Addresses = {{.Prefix = "192.168.1.20/24", .Broadcast = "192.168.1.255"},
                                {.Prefix = "2001:db8::20/64"}}}});
  EXPECT_THAT(Listed(), ElementsAre("eth0 link",
                                    "eth0 192.168.1.20 mask 255.255.255.0 broadcast 192.168.1.255",
                                    "eth0 2001:db8::20"));
}

// The C library gives the destination of a point-to-point link in the same place, and takes the
// address itself for one.
TEST_F(Interfaces, AnAddressWithoutBroadcastIsItsOwnDestination) {
  SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/8"}}}});
  EXPECT_THAT(Listed(),
              ElementsAre("eth0 link", "eth0 10.0.0.5 mask 255.0.0.0 broadcast 10.0.0.5"));
}

TEST_F(Interfaces, AnAddressWithAPeerOfZeroHasNeitherBroadcastNorDestination) {
  SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/8", .Peer = "0.0.0.0"}}}});
  EXPECT_THAT(Listed(), ElementsAre("eth0 link", "eth0 10.0.0.5 mask 255.0.0.0 broadcast none"));
}

TEST_F(Interfaces, ALabelledAddressIsListedAsAnAlias) {
  SetInterfaces(
      {{.Name = "eth0",
        .Mac = "02:00:00:00:00:01",
        .Addresses = {
            {.Prefix = "10.0.0.5/8", .Broadcast = "10.255.255.255"},
            {.Prefix = "172.16.0.5/16", .Broadcast = "172.16.255.255", .Label = "eth0:1"}}}});
  EXPECT_THAT(Listed(),
              ElementsAre("eth0 link", "eth0 10.0.0.5 mask 255.0.0.0 broadcast 10.255.255.255",
                          "eth0:1 172.16.0.5 mask 255.255.0.0 broadcast 172.16.255.255"));
  EXPECT_EQ(2, Ask(SIOCGIFHWADDR, "eth0:1").ifr_hwaddr.sa_data[0]);
}

TEST_F(Interfaces, TheMacAddressIsTheGivenOne) {
  SetInterfaces({{.Name = "eth0", .Mac = "00:1A:2b:FC:4D:5E"}});
  const ifreq answer = Ask(SIOCGIFHWADDR, "eth0");
  EXPECT_EQ(std::string("\x00\x1A\x2B\xFC\x4D\x5E", 6), std::string(answer.ifr_hwaddr.sa_data, 6));
}

TEST_F(Interfaces, TheLinkStateIsInTheFlagsAtOnce) {
  SetInterfaces(
      {{.Name = "up"},
       {.Name = "unplugged", .State = LinkState::kUnplugged},
       {.Name = "down", .State = LinkState::kDown, .Addresses = {{.Prefix = "10.0.0.5/8"}}}});
  EXPECT_EQ(IFF_UP | IFF_RUNNING, Flags("up"));
  EXPECT_EQ(IFF_UP, Flags("unplugged"));
  EXPECT_EQ(0, Flags("down"));
}

TEST_F(Interfaces, TheyAreListedInTheGivenOrder) {
  SetInterfaces({{.Name = "wlan0"}, {.Name = "eth1"}, {.Name = "eth0"}});
  EXPECT_THAT(Listed(), ElementsAre("wlan0 link", "eth1 link", "eth0 link"));
}

// The kernel used to list several addresses of IPv6 the other way round.
TEST_F(Interfaces, AddressesAreListedInTheGivenOrder) {
  SetInterfaces({{.Name = "eth0",
                  .Addresses = {{.Prefix = "2001:db8::20/64"},
                                {.Prefix = "10.0.0.5/8", .Broadcast = "10.255.255.255"},
                                {.Prefix = "2001:db8::10/64"},
                                {.Prefix = "10.0.0.4/8", .Broadcast = "10.255.255.255"},
                                {.Prefix = "2001:db8::30/64"}}}});
  EXPECT_THAT(Listed(),
              ElementsAre("eth0 link", "eth0 10.0.0.5 mask 255.0.0.0 broadcast 10.255.255.255",
                          "eth0 10.0.0.4 mask 255.0.0.0 broadcast 10.255.255.255",
                          "eth0 2001:db8::20", "eth0 2001:db8::10", "eth0 2001:db8::30"));
}

TEST_F(Interfaces, OneThatCannotHaveItsMacAddressGetsAnotherOne) {
  SetInterfaces(
      {{.Name = "ppp0", .Mac = "00:00:00:00:00:00"}, {.Name = "tun0", .Mac = "01:00:5E:00:00:01"}});
  EXPECT_THAT(Listed(), ElementsAre("ppp0 link", "tun0 link"));
}

// Six bytes, or the errno of the question.
std::string HardwareAddressOf(const std::string& name) {
  const Descriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
  ifreq question = {};
  name.copy(question.ifr_name, IFNAMSIZ - 1);
  if (ioctl(socket.Number(), SIOCGIFHWADDR, &question) != 0) {
    return std::to_string(errno);
  }
  return {question.ifr_hwaddr.sa_data, 6};
}

TEST_F(Interfaces, ThoseThatTheKernelWouldNotGiveAnswerWithTheirMacAddressAllTheSame) {
  const Scenario odd = Scenario()
                           .Interface({.Name = "ppp0", .Mac = "00:00:00:00:00:00"})
                           .Interface({.Name = "tun0", .Mac = "01:00:5E:00:00:01"})
                           .Interface({.Name = "eth0", .Mac = "02:00:00:00:00:01"});
  odd.Apply();
  if (!odd.NotReplayed().empty()) {
    GTEST_SKIP() << odd.NotReplayed().front();
  }
  EXPECT_EQ(std::string(6, '\0'), HardwareAddressOf("ppp0"));
  EXPECT_EQ(std::string("\x01\x00\x5E\x00\x00\x01", 6), HardwareAddressOf("tun0"));
  EXPECT_EQ(std::string("\x02\x00\x00\x00\x00\x01", 6), HardwareAddressOf("eth0"));
  EXPECT_EQ(std::to_string(ENODEV), HardwareAddressOf("eth1"));
  const Scenario even = Scenario().Interface({.Name = "ppp0", .Mac = "02:00:00:00:00:02"});
  even.Apply();
  EXPECT_EQ(std::string("\x02\x00\x00\x00\x00\x02", 6), HardwareAddressOf("ppp0"));
}

TEST_F(Interfaces, TheQuestionForAMacAddressFails) {
  const Scenario scenario = Scenario::FromTree(
      {{"interfaces",
        {.Bytes = "interface eth0\n  mac 02:00:00:00:00:01\ninterface eth1\n"
                  "  mac 02:00:00:00:00:02\n"}},
       {"faults", {.Bytes = "eth0 hardware-address 99\neth1:2 hardware-address 98\n"}}},
      "test");
  scenario.Apply();
  if (!scenario.NotReplayed().empty()) {
    GTEST_SKIP() << scenario.NotReplayed().front();
  }
  EXPECT_EQ("99", HardwareAddressOf("eth0"));
  EXPECT_EQ("99", HardwareAddressOf("eth0:1"));
  EXPECT_EQ("98", HardwareAddressOf("eth1:2"));
  EXPECT_EQ(std::string("\x02\x00\x00\x00\x00\x02", 6), HardwareAddressOf("eth1"));
  Scenario(scenario).NoFaults().ApplyAfter(scenario);
  EXPECT_EQ(std::string("\x02\x00\x00\x00\x00\x01", 6), HardwareAddressOf("eth0"));
}

TEST_F(Interfaces, NewOnesReplaceTheFormerOnes) {
  SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/8"}}}});
  SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.6/8"}}}, {.Name = "eth1"}});
  EXPECT_THAT(Listed(), ElementsAre("eth0 link", "eth1 link",
                                    "eth0 10.0.0.6 mask 255.0.0.0 broadcast 10.0.0.6"));
  SetInterfaces({});
  EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(Interfaces, TheOtherEndsAreOutOfSight) {
  SetInterfaces({{.Name = "eth0"}});
  EXPECT_THAT(Listed(), ElementsAre("eth0 link"));
}

TEST_F(Interfaces, WhatTheKernelRefusesIsAnErrorThatNamesIt) {
  try {
    SetInterfaces(
        {{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/8"}, {.Prefix = "10.0.0.5/8"}}}});
    FAIL() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_NE(std::string::npos, std::string(error.what()).find("10.0.0.5/8"));
  }
  EXPECT_THROW(SetInterfaces({{.Name = "a-name-that-is-too-long"}}), std::system_error);
}

TEST_F(Interfaces, AnAddressThatIsNoneIsAnError) {
  EXPECT_THROW(SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0/8"}}}}),
               std::runtime_error);
  EXPECT_THROW(SetInterfaces({{.Name = "eth0", .Addresses = {{.Prefix = "10.0.0.5/33"}}}}),
               std::runtime_error);
  EXPECT_THROW(SetInterfaces({{.Name = "eth0", .Mac = "00:1A"}}), std::runtime_error);
}

}  // namespace
}  // namespace sandbox
