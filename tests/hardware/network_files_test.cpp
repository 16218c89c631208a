#include <gmock/gmock.h>

#include "sandbox/scenario.h"
#include "tests/hardware/probe_fixture.h"

namespace {

using sandbox::WriteFile;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNoAddress[] = "0.0.0.0";
constexpr char kEth0Carrier[] = "/sys/class/net/eth0/carrier";

class Link : public ProbeTest {};

TEST_F(Link, IsReadFromTheCarrierFile) {
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), 0) << "no file";
  WriteFile(kEth0Carrier, "1\n");
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), 0);
  WriteFile(kEth0Carrier, "0\n");
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), -1);
  WriteFile(kEth0Carrier, "");
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), 0);
  WriteFile(kEth0Carrier, std::string_view("\0", 1));
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), -1) << "not empty, and no number";
  WriteFile(kEth0Carrier, "  1");
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), -1) << "two bytes are read";
  sandbox::MakeUnopenable(kEth0Carrier);
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), 1);
  sandbox::MakeFolder(kEth0Carrier);
  EXPECT_EQ(probe_.CheckHardwareLink("eth0"), 0) << "opens but cannot be read";
}

TEST_F(Link, TransitionsAreTheNumberInTheCountersFile) {
  constexpr char kTransitions[] = "/dev/shm/netlink-eth0";
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), -1);
  struct {
    std::string Text;
    int Count;
  } const kRows[] = {
      {"17\n", 17},
      {"", 0},
      {"many", 0},
      {"-3", -3},
      {" 5 6", 5},
      {"2147483647", 2147483647},
      {"4294967301", 5},
      {std::string(127, ' ') + "12", 1},  // 128 bytes are read
      {std::string(128, ' ') + "1", 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Text);
    WriteFile(kTransitions, row.Text);
    EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), row.Count);
  }
  sandbox::MakeUnopenable(kTransitions);
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), -1);
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth1"), -1);
  sandbox::MakeFolder(kTransitions);
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), 0) << "opens but cannot be read";
}

TEST_F(Link, ErrorsAreSummedFromTheKernelsList) {
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), -1);
  WriteFile(kLinkCounters, "  eth0: 100 2 3 0 0 0 0 0 200 4 5 0 0 0 0 0\n");
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), 8);
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth1"), 0);
  WriteFile(kLinkCounters, "");
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), 0);
  sandbox::MakeFolder(kLinkCounters);
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), 0) << "opens but cannot be read";
}

TEST_F(Link, ErrorsAreThoseOfTheFirstPlaceThatHoldsTheName) {
  WriteFile(kLinkCounters,
            "veth10: 1 1 100 1 1 1 1 1 1 1 200 1 1 1 1 1\n"
            "  eth1: 7 7 70 7 7 7 7 7 7 7 77 7 7 7 7 7\n"
            "  eth2:100 2 3 4 5 6 7 8 200 10 11 12 13 14 15 16\n"
            "  eth3: 0 0 4294967297 0 0 0 0 0 0 0 2147483647 0 0 0 0 0\n");
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth1"), 300) << "the tail of veth10";
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth2"), 4 + 12) << "a glued counter shifts the columns";
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth3"), -2147483647 - 1) << "the low 32 bits";
}

TEST_F(Link, ErrorsBeyondTheReadLimitAreNotSeen) {
  constexpr std::size_t kLimit = 2048;
  const std::string counters = "eth0: 0 0 12";
  WriteFile(kLinkCounters, Padded(kLimit - counters.size(), counters + "3 0 0 0 0 0 0 0 5\n"));
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), 12);
  WriteFile(kLinkCounters, Padded(kLimit - 3, counters));
  EXPECT_EQ(probe_.NetworkLinkErrorCount("eth0"), 0);
}

class Gateway : public ProbeTest {
 protected:
  std::string gateway_ = "former";
};

TEST_F(Gateway, IsThatOfTheDefaultRoute) {
  WriteFile(kRoutes,
            "Iface\tDestination\tGateway \tFlags\n"
            "eth0\t0001A8C0\t00000000\t0001\n"
            "eth0\t00000000\t0101A8C0\t0003\n");
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 0);
  EXPECT_EQ(gateway_, "192.168.1.1");
}

TEST_F(Gateway, IsReadFromATableOfAnyLength) {
  std::string routes;
  while (routes.size() < 20000) {
    routes += "eth9\t0001A8C0\t00000000\t0001\n";
  }
  WriteFile(kRoutes, routes + "eth0\t00000000\t0101A8C0");
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 0);
  EXPECT_EQ(gateway_, "192.168.1.1");
}

TEST_F(Gateway, OfALongLineIsReadInPiecesOf255) {
  const std::string route = "eth0 00000000 0101A8C0\n";
  WriteFile(kRoutes, std::string(255, 'x') + route);
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 0);
  EXPECT_EQ(gateway_, "192.168.1.1");
  WriteFile(kRoutes, std::string(256, 'x') + route);
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 1);
  EXPECT_EQ(gateway_, kNoAddress);
}

TEST_F(Gateway, WithoutDefaultRouteIsNone) {
  WriteFile(kRoutes, "eth1 00000000 0101A8C0\n");
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 1);
  EXPECT_EQ(gateway_, kNoAddress);
}

TEST_F(Gateway, WithoutTableIsNone) {
  EXPECT_EQ(probe_.GetGateway("eth0", &gateway_), 1);
  EXPECT_EQ(gateway_, kNoAddress);
}

class NameServers : public ProbeTest {
 protected:
  std::vector<std::string> Servers() {
    std::vector<std::string> servers;
    const QtSts::CAddressList& list = status_.Network.DNS.Addresses;
    for (unsigned int i = 0; const QtSts::CAddress* server = list[i]; ++i) {
      EXPECT_EQ(server->Index, i);
      servers.push_back(server->Address);
    }
    return servers;
  }
};

TEST_F(NameServers, AreListedInOrder) {
  WriteFile(kResolver, "search example.com\nnameserver 8.8.8.8\nnameserver 8.8.4.4\n");
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), ElementsAre("8.8.8.8", "8.8.4.4"));
}

TEST_F(NameServers, AreTakenAsTheyStandAndNeedAnEnd) {
  WriteFile(kResolver,
            "#nameserver 1.1.1.1\nnameserver fe80::1\nnameserver 8.8.8.8\nnameserver 8.8.4.4");
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), ElementsAre("1.1.1.1", "", "8.8.8.8"));
}

TEST_F(NameServers, AreReplacedNotAdded) {
  WriteFile(kResolver, "nameserver 8.8.8.8\nnameserver 8.8.4.4\n");
  probe_.DNS();
  WriteFile(kResolver, "nameserver 1.1.1.1\n");
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), ElementsAre("1.1.1.1"));
  WriteFile(kResolver, "");
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), IsEmpty());
}

TEST_F(NameServers, StayWhenTheResolverFileIsGone) {
  WriteFile(kResolver, "nameserver 8.8.8.8\n");
  probe_.DNS();
  sandbox::RemoveFile(kResolver);
  EXPECT_EQ(probe_.DNS(), 1);
  EXPECT_THAT(Servers(), ElementsAre("8.8.8.8"));
  EXPECT_EQ(probe_.UpdateStatus(&status_), 0);
  EXPECT_THAT(Servers(), ElementsAre("8.8.8.8"));
}

TEST_F(NameServers, GoWhenTheResolverFileCannotBeRead) {
  WriteFile(kResolver, "nameserver 8.8.8.8\n");
  probe_.DNS();
  sandbox::MakeFolder(kResolver);
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), IsEmpty());
}

TEST_F(NameServers, BeyondTheReadLimitOrAZeroByteAreNotSeen) {
  constexpr std::size_t kLimit = 2662;
  const std::string server = "nameserver 8.8.8.8\n";
  WriteFile(kResolver, Padded(kLimit - server.size(), server + server));
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), ElementsAre("8.8.8.8"));
  WriteFile(kResolver, Padded(kLimit - server.size() + 1, server));
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), IsEmpty()) << "the address runs to the end of what is read";
  WriteFile(kResolver, server + std::string(1, '\0') + server);
  EXPECT_EQ(probe_.DNS(), 0);
  EXPECT_THAT(Servers(), ElementsAre("8.8.8.8"));
}

}  // namespace
