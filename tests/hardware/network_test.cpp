#include <gmock/gmock.h>
#include <sys/socket.h>

#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"
#include "tests/support/interposed/system_calls.h"

namespace {

using interposed::Call;
using interposed::Failure;
using interposed::InterfaceEdit;
using interposed::InterfaceListsHeld;
using sandbox::LinkState;
using sandbox::NetworkInterface;
using sandbox::Scenario;
using sandbox::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kNoAddress[] = "0.0.0.0";
constexpr char kEth0Carrier[] = "/sys/class/net/eth0/carrier";

// An interface with a link and one address of each family.
NetworkInterface Eth0() {
  return {"eth0",
          "00:1A:2B:3C:4D:5E",
          LinkState::kUp,
          {{"192.168.1.20/24", "192.168.1.255", ""}, {"2001:db8::20/64", "", ""}}};
}

NetworkInterface Plain(const std::string& name) { return {name, "", LinkState::kUp, {}}; }

class Network : public ProbeTest {
 protected:
  // The walk, whose result is to be `result`; gives standard output.
  std::string Walk(int result) {
    return OutputOf([&] { EXPECT_EQ(probe_.Network(), result); });
  }

  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (unsigned int i = 0; const QtSts::CNetworkDevice* device = Device(i); ++i) {
      EXPECT_EQ(device->Index, i);
      names.push_back(device->Name);
    }
    return names;
  }

  QtSts::CNetworkDevice* Device(unsigned int position) { return status_.Network.Devices[position]; }
};

TEST_F(Network, DescribesAnInterface) {
  Scenario()
      .Interface(Eth0())
      .File(kEth0Carrier, "1\n")
      .File(kRoutes, "Iface\tDestination\tGateway\neth0\t00000000\t0101A8C0\t0003\n")
      .File("/dev/shm/netlink-eth0", "17\n")
      .File(kLinkCounters, "  eth0: 100 2 3 0 0 0 0 0 200 4 5 0 0 0 0 0\n")
      .Apply();
  EXPECT_EQ(Walk(0), "Dev Name eth0\r\n");
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->Statistics.Number, 0);
  EXPECT_EQ(Device(0)->Statistics.First, 17);
  EXPECT_EQ(Device(0)->Statistics.Second, 8);
  EXPECT_EQ(Device(0)->IPv4Address, "192.168.1.20");
  EXPECT_EQ(Device(0)->Netmask, "255.255.255.0");
  EXPECT_EQ(Device(0)->IPv6Address, "2001:db8::20") << "without the length of its prefix";
  EXPECT_EQ(Device(0)->Gateway, "192.168.1.1");
  EXPECT_EQ(Device(0)->SpareText, "");
  EXPECT_EQ(Device(0)->MACAddress, "00:1A:2B:3C:4D:5E");
}

TEST_F(Network, WithoutInterfacesIsEmpty) {
  EXPECT_EQ(Walk(0), "");
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(Network, InterfaceWithoutAddressesKeepsTheDefaults) {
  Scenario().Interface(Plain("eth0")).Apply();
  Walk(0);
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->IPv6Address, "::1/128");
  EXPECT_EQ(Device(0)->IPv4Address, kNoAddress);
  EXPECT_EQ(Device(0)->Gateway, kNoAddress);
  EXPECT_EQ(Device(0)->Netmask, "255.255.255.0");
  EXPECT_EQ(Device(0)->MACAddress, "") << "filled for IPv4 entries only";
  EXPECT_EQ(Device(0)->Statistics.First, -1);
  EXPECT_EQ(Device(0)->Statistics.Second, -1);
}

TEST_F(Network, InterfaceWithoutRouteKeepsNoGateway) {
  Scenario().Interface(Eth0()).File(kRoutes, "eth1\t00000000\t0101A8C0\n").Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->Gateway, kNoAddress);
}

TEST_F(Network, ListsInterfacesInTheOrderOfTheirFirstEntries) {
  Scenario().Interface(Plain("zeta")).Interface(Plain("alpha")).Interface(Eth0()).Apply();
  EXPECT_EQ(Walk(0), "Dev Name zeta\r\nDev Name alpha\r\nDev Name eth0\r\n");
  EXPECT_THAT(Names(), ElementsAre("zeta", "alpha", "eth0"));
}

TEST_F(Network, LeavesOutInterfacesThatDoNotRun) {
  NetworkInterface unplugged = Plain("eth1");
  unplugged.State = LinkState::kUnplugged;
  NetworkInterface down = Plain("eth2");
  down.State = LinkState::kDown;
  Scenario().Interface(Eth0()).Interface(unplugged).Interface(down).Apply();
  Walk(0);
  EXPECT_THAT(Names(), ElementsAre("eth0"));
}

TEST_F(Network, LeavesOutLoopbackAndTunnelByTheirExactNames) {
  sandbox::RaiseLoopback();
  Scenario().Interface(Plain("sit1")).Interface(Plain("lo1")).Interface(Plain("sit")).Apply();
  Walk(0);
  EXPECT_THAT(Names(), ElementsAre("sit1", "lo1", "sit"));
}

TEST_F(Network, LeavesOutTheTunnelWhateverItIs) {
  Scenario().Interface(Plain("eth0")).Apply();
  const InterfaceEdit edit([](ifaddrs* list) {
    static char tunnel[] = "sit0";
    for (ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      if (std::string(entry->ifa_name) == "eth0") {
        entry->ifa_name = tunnel;
      }
    }
  });
  EXPECT_EQ(Walk(0), "");
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(Network, LeavesOutEntriesWithoutAddress) {
  Scenario().Interface(Plain("eth0")).Interface(Plain("eth1")).Apply();
  const InterfaceEdit edit([](ifaddrs* list) {
    for (ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      if (std::string(entry->ifa_name) == "eth0") {
        entry->ifa_addr = nullptr;
      }
    }
  });
  Walk(0);
  EXPECT_THAT(Names(), ElementsAre("eth1"));
}

TEST_F(Network, ListsADeviceForAnyAddressFamily) {
  Scenario().Interface(Plain("eth0")).Apply();
  const InterfaceEdit edit([](ifaddrs* list) {
    for (ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      entry->ifa_addr->sa_family = AF_BRIDGE;
    }
  });
  EXPECT_EQ(Walk(0), "");
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->Statistics.First, 0);
}

TEST_F(Network, LeavesOutInterfacesWhoseCarrierReadsZero) {
  struct {
    const char* Carrier;
    bool Listed;
  } const kRows[] = {
      {"0", false}, {"0\n", false}, {"no", false}, {"00", false}, {"1", true},    {"1\n", true},
      {"", true},   {"2", true},    {"-1", true},  {"01", true},  {"001", false}, {"a", false},
  };
  Scenario().Interface(Plain("eth0")).Apply();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Carrier);
    status_.Network.Devices.Clear();
    WriteFile(kEth0Carrier, row.Carrier);
    Walk(0);
    EXPECT_EQ(Names().size(), row.Listed ? 1U : 0U);
  }
}

TEST_F(Network, ListsInterfacesWhoseCarrierCannotBeRead) {
  Scenario().Interface(Plain("eth0")).Unopenable(kEth0Carrier).Apply();
  Walk(0);
  EXPECT_THAT(Names(), ElementsAre("eth0"));
  status_.Network.Devices.Clear();
  Scenario().Interface(Plain("eth0")).Folder(kEth0Carrier).Apply();
  Walk(0);
  EXPECT_THAT(Names(), ElementsAre("eth0"));
}

NetworkInterface WithAlias() {
  NetworkInterface interface = Eth0();
  interface.Addresses = {{"192.168.1.20/24", "192.168.1.255", ""},
                         {"10.0.0.5/8", "10.255.255.255", "eth0:1"}};
  return interface;
}

// The alias shares the device but is looked up by its own name: it has no route, so that it resets
// the gateway; the hardware address is that of its interface.
TEST_F(Network, AliasOverwritesItsInterface) {
  Scenario().Interface(WithAlias()).File(kRoutes, "eth0 00000000 0101A8C0\n").Apply();
  EXPECT_EQ(Walk(0), "Dev Name eth0\r\n");
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->IPv4Address, "10.0.0.5");
  EXPECT_EQ(Device(0)->Netmask, "255.0.0.0");
  EXPECT_EQ(Device(0)->Gateway, kNoAddress);
  EXPECT_EQ(Device(0)->MACAddress, "00:1A:2B:3C:4D:5E");
}

TEST_F(Network, AliasHasTheGatewayOfARouteInItsOwnName) {
  Scenario()
      .Interface(WithAlias())
      .File(kRoutes, "eth0 00000000 0101A8C0\neth0:1 00000000 0100000A\n")
      .Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->Gateway, "10.0.0.1");
}

TEST_F(Network, AliasPassesWithoutACarrierOfItsOwn) {
  Scenario().Interface(WithAlias()).File(kEth0Carrier, "0\n").Apply();
  EXPECT_EQ(Walk(0), "") << "the interface itself has no link";
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->IPv4Address, "10.0.0.5");
  EXPECT_EQ(Device(0)->Statistics.First, 0) << "counters are read for packet entries only";

  status_.Network.Devices.Clear();
  WriteFile("/sys/class/net/eth0:1/carrier", "0\n");
  Walk(0);
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(Network, LaterAddressOverwritesAnEarlierOne) {
  NetworkInterface interface = Eth0();
  interface.Addresses = {{"192.168.1.20/24", "192.168.1.255", ""},
                         {"10.0.0.5/8", "10.255.255.255", ""},
                         {"2001:db8::1/64", "", ""}};
  Scenario().Interface(interface).File(kRoutes, "eth0 00000000 0101A8C0\n").Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->IPv4Address, "10.0.0.5");
  EXPECT_EQ(Device(0)->Gateway, "192.168.1.1");
  EXPECT_EQ(Device(0)->IPv6Address, "2001:db8::1");
}

TEST_F(Network, LocalAddressNamesItsInterface) {
  NetworkInterface interface = Eth0();
  interface.Addresses = {{"fe80::5/64", "", ""}};
  Scenario().Interface(interface).Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->IPv6Address, "fe80::5%eth0");
}

TEST_F(Network, BytesOfAHardwareAddressAreUnsigned) {
  NetworkInterface interface = Eth0();
  interface.Mac = "FE:80:9f:ff:a0:01";
  Scenario().Interface(interface).Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->MACAddress, "FE:80:9F:FF:A0:01");
}

TEST_F(Network, HardwareAddressIsFoundByTheLongestName) {
  NetworkInterface interface = Eth0();
  interface.Name = "abcdefghijklmno";  // the kernel allows 15 characters
  Scenario().Interface(interface).Apply();
  Walk(0);
  ASSERT_THAT(Names(), ElementsAre("abcdefghijklmno"));
  EXPECT_EQ(Device(0)->MACAddress, "00:1A:2B:3C:4D:5E");
}

TEST_F(Network, HardwareAddressIsZeroWhenTheSocketIsRefused) {
  Scenario().Interface(Eth0()).Apply();
  const Failure failure(Call::kSocket);
  Walk(0);
  EXPECT_EQ(Device(0)->MACAddress, "00:00:00:00:00:00");
  EXPECT_EQ(Device(0)->IPv6Address, "2001:db8::20") << "the walk goes on";
}

TEST_F(Network, IsLeftAloneWhenTheInterfacesCannotBeListed) {
  Scenario().Interface(Eth0()).Apply();
  const Failure failure(Call::kGetifaddrs);
  EXPECT_EQ(Walk(1), "");
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(Network, AddressWithoutBroadcastStillHasOneForTheSystem) {
  NetworkInterface interface = Eth0();
  interface.Addresses = {{"192.168.1.20/24", "", ""}};
  Scenario().Interface(interface).Apply();
  Walk(0);
  EXPECT_EQ(Device(0)->MACAddress, "00:1A:2B:3C:4D:5E");
}

TEST_F(Network, WalkEndsAtAnAddressWithoutBroadcastOrDestination) {
  Scenario()
      .Interface({"eth0", "", LinkState::kUp, {{.Prefix = "10.9.8.7/24", .Peer = kNoAddress}}})
      .Interface({"eth1", "", LinkState::kUp, {{"10.1.1.1/8", "10.255.255.255", ""}}})
      .File(kRoutes, "eth0 00000000 0101A8C0\n")
      .Apply();
  EXPECT_EQ(Walk(1),
            "Dev Name eth0\r\nDev Name eth1\r\n"
            "getnameinfo() failed: ai_family not supported\n");
  ASSERT_THAT(Names(), ElementsAre("eth0", "eth1"));
  EXPECT_EQ(Device(0)->IPv4Address, "10.9.8.7");
  EXPECT_EQ(Device(0)->Netmask, "255.255.255.0");
  EXPECT_EQ(Device(0)->Gateway, kNoAddress);
  EXPECT_EQ(Device(0)->MACAddress, "");
  EXPECT_EQ(Device(1)->IPv4Address, kNoAddress) << "the rest of the walk is abandoned";
}

TEST_F(Network, WalkEndsAtAnAddressWithoutNetmask) {
  Scenario().Interface(Eth0()).Apply();
  const InterfaceEdit edit([](ifaddrs* list) {
    for (ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      entry->ifa_netmask = nullptr;
    }
  });
  EXPECT_THAT(Walk(1), HasSubstr("getnameinfo() failed: ai_family not supported\n"));
  EXPECT_EQ(Device(0)->IPv4Address, "192.168.1.20");
  EXPECT_EQ(Device(0)->Netmask, "255.255.255.0");
  EXPECT_EQ(Device(0)->MACAddress, "");
}

TEST_F(Network, WalkEndsAtTheFirstAddressThatHasNoText) {
  NetworkInterface interface = Eth0();
  interface.Addresses[0].Prefix = "192.168.1.20/16";
  Scenario().Interface(interface).Apply();
  struct {
    int Nth;
    const char* IPv4;
    const char* Netmask;
    const char* Mac;
    const char* IPv6;
  } const kRows[] = {
      {1, kNoAddress, "255.255.255.0", "", "::1/128"},
      {2, "192.168.1.20", "255.255.255.0", "", "::1/128"},
      {3, "192.168.1.20", "255.255.0.0", "", "::1/128"},
      {4, "192.168.1.20", "255.255.0.0", "00:1A:2B:3C:4D:5E", "::1/128"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Nth);
    status_.Network.Devices.Clear();
    const Failure failure(Call::kGetnameinfo, row.Nth);
    EXPECT_EQ(Walk(1), "Dev Name eth0\r\ngetnameinfo() failed: Memory allocation failure\n");
    EXPECT_EQ(Device(0)->IPv4Address, row.IPv4);
    EXPECT_EQ(Device(0)->Netmask, row.Netmask);
    EXPECT_EQ(Device(0)->MACAddress, row.Mac);
    EXPECT_EQ(Device(0)->IPv6Address, row.IPv6);
  }
}

TEST_F(Network, ListIsFreedUnlessTheWalkEndsEarly) {
  Scenario().Interface(Eth0()).Apply();
  const int held = InterfaceListsHeld();
  Walk(0);
  EXPECT_EQ(InterfaceListsHeld(), held);
  constexpr int kOfIPv4 = 1;
  constexpr int kOfIPv6 = 4;
  for (const int nth : {kOfIPv4, kOfIPv6}) {
    SCOPED_TRACE(nth);
    const Failure failure(Call::kGetnameinfo, nth);
    const int before = InterfaceListsHeld();
    Walk(1);
    EXPECT_EQ(InterfaceListsHeld(), before + 1);
  }
}

TEST_F(Network, OfTheNextCycleIsWholeAgain) {
  Scenario().Interface(Eth0()).Apply();
  {
    const Failure failure(Call::kGetnameinfo);
    Walk(1);
  }
  OutputOf([&] { probe_.UpdateStatus(&status_); });
  ASSERT_THAT(Names(), ElementsAre("eth0"));
  EXPECT_EQ(Device(0)->IPv4Address, "192.168.1.20");
}

}  // namespace
