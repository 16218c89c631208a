#include "hardware/parse_network.h"

#include <gmock/gmock.h>

#include "tests/hardware/exact.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(BaseName, EndsBeforeTheFirstColon) {
  EXPECT_EQ(hardware::BaseName("eth0"), "eth0");
  EXPECT_EQ(hardware::BaseName("eth0:1"), "eth0");
  EXPECT_EQ(hardware::BaseName("eth0:1:2"), "eth0");
  EXPECT_EQ(hardware::BaseName(":1"), "");
}

TEST(HardwareAddressText, IsSixUnsignedUpperCasePairs) {
  const unsigned char low[6] = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
  EXPECT_EQ(hardware::HardwareAddressText(low), "00:1A:2B:3C:4D:5E");
  const unsigned char high[6] = {0x80, 0x9F, 0xFF, 0xFE, 0xA0, 0x01};
  EXPECT_EQ(hardware::HardwareAddressText(high), "80:9F:FF:FE:A0:01");
}

constexpr char kRouteHeader[] = "Iface\tDestination\tGateway \tFlags\tRefCnt\n";

std::optional<std::string> Gateway(const std::string& routes, std::string_view interface) {
  return hardware::ParseDefaultGateway(ExactView(routes), interface);
}

TEST(DefaultGateway, IsThatOfTheFirstDefaultRouteThroughTheInterface) {
  const std::string routes = std::string(kRouteHeader) +
                             "eth0\t0001A8C0\t00000000\t0001\n"
                             "eth1\t00000000\t0100000A\t0003\n"
                             "eth0\t00000000\t0101A8C0\t0003\n"
                             "eth0\t00000000\t0201A8C0\t0003\n";
  EXPECT_EQ(Gateway(routes, "eth0"), "192.168.1.1");
  EXPECT_EQ(Gateway(routes, "eth1"), "10.0.0.1");
  EXPECT_EQ(Gateway(routes, "eth"), std::nullopt);
  EXPECT_EQ(Gateway(routes, "eth0:1"), std::nullopt);
  EXPECT_EQ(Gateway(routes, "ETH0"), std::nullopt);
}

TEST(DefaultGateway, IsFoundForAnInterfaceOfAnyName) {
  EXPECT_EQ(Gateway("eth~0.7-x 00000000 0101A8C0\n", "eth~0.7-x"), "192.168.1.1");
}

TEST(DefaultGateway, NeedsNoLineFeedAtTheEnd) {
  EXPECT_EQ(Gateway("eth0 00000000 0101A8C0", "eth0"), "192.168.1.1");
}

TEST(DefaultGateway, IsAbsentWithoutADefaultRoute) {
  EXPECT_EQ(Gateway("", "eth0"), std::nullopt);
  EXPECT_EQ(Gateway(kRouteHeader, "eth0"), std::nullopt);
  EXPECT_EQ(Gateway("eth0 0000000 0101A8C0\neth0 000000000 0101A8C0\n", "eth0"), std::nullopt);
  EXPECT_EQ(Gateway("eth0\n00000000\n0101A8C0\n", "eth0"), std::nullopt);
}

TEST(DefaultGateway, OfTheHeaderIsReadLikeAnyOther) {
  EXPECT_EQ(Gateway(kRouteHeader, "Iface"), std::nullopt);
}

TEST(DefaultGateway, ThatIsMissingReadsAsZero) {
  EXPECT_EQ(Gateway("eth0 00000000\neth0 00000000 0101A8C0\n", "eth0"), "0.0.0.0");
}

TEST(DefaultGateway, OfALongLineIsReadInPiecesOf255) {
  const std::string route = "eth0 00000000 0101A8C0\n";
  EXPECT_EQ(Gateway(std::string(255, 'x') + route, "eth0"), "192.168.1.1");
  EXPECT_EQ(Gateway(std::string(254, 'x') + route, "eth0"), std::nullopt);
  EXPECT_EQ(Gateway(std::string(256, 'x') + route, "eth0"), std::nullopt);
  EXPECT_EQ(Gateway(std::string(510, 'x') + route, "eth0"), "192.168.1.1");
}

TEST(DefaultGateway, LineEndsAtAZeroByte) {
  using namespace std::string_literals;
  EXPECT_EQ(Gateway("eth0 00000000\0 0101A8C0\n"s, "eth0"), "0.0.0.0");
  EXPECT_EQ(Gateway("\0eth0 00000000 0101A8C0\neth0 00000000 0100000A\n"s, "eth0"), "10.0.0.1");
}

// Text as the kernel prints it.
constexpr char kCounters[] =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop "
    "fifo colls carrier compressed\n"
    "veth10: 1 1 100 1 1 1 1 1 1 1 200 1 1 1 1 1\n"
    "  eth0: 100 2 3 0 0 0 0 0 200 4 5 0 0 0 0 0\n"
    "  eth1: 7 7 70 7 7 7 7 7 7 7 77 7 7 7 7 7\n";

struct ErrorRow {
  const char* Counters;
  const char* Interface;
  std::int32_t Errors;
};

constexpr ErrorRow kErrorRows[] = {
    {kCounters, "eth0", 8},
    {kCounters, "eth7", 0},
    {"", "eth0", 0},
    // The first occurrence wins, here "eth10:" of veth10.
    {kCounters, "eth1", 300},
    // A first counter without a blank before it shifts the columns by one.
    {"eth0:100 2 3 4 5 6 7 8 200 10 11 12 13 14 15 16\n", "eth0", 4 + 12},
    // Beyond the int range the low 32 bits count, and they are added as such.
    {"eth0: 0 0 2147483648 0 0 0 0 0 0 0 1 0 0 0 0 0\n", "eth0", -2147483647},
    {"eth0: 0 0 4294967297 0 0 0 0 0 0 0 18446744073709551615 0 0 0 0 0\n", "eth0", 0},
    {"eth0: 0 0 2147483647 0 0 0 0 0 0 0 1 0 0 0 0 0\n", "eth0", -2147483647 - 1},
    {"eth0: 0 0 -5 0 0 0 0 0 0 0 +3 0 0 0 0 0\n", "eth0", -2},
    // Missing counters are 0, and the first that is no number ends the line.
    {"eth0: 1 2 3 4", "eth0", 3},
    {"eth0: 1 2", "eth0", 0},
    {"eth0:", "eth0", 0},
    {"eth0", "eth0", 0},
    {"eth0: 1 x 3 4 5 6 7 8 9 10 11", "eth0", 0},
    {"eth0: 1 2 3x 4 5 6 7 8 9 10 11", "eth0", 3},
    {"eth0: 1 2 3:4 5 6 7 8 9 10 11", "eth0", 3},
    {"eth0: 1 2 - 3 4 5 6 7 8 9 10", "eth0", 0},
    {"eth0: 1 2 3 4 5 6 7 8 9 10 +", "eth0", 3},
    // Line ends are blanks like any other.
    {"eth0:\n1\t2\v3\f4\r5 6 7 8 9 10 11", "eth0", 14},
};

TEST(LinkErrors, AreReceivePlusTransmitErrors) {
  for (const ErrorRow& row : kErrorRows) {
    SCOPED_TRACE(testing::Message() << row.Interface << " in " << row.Counters);
    EXPECT_EQ(hardware::ParseLinkErrors(ExactText(row.Counters), row.Interface), row.Errors);
  }
}

std::vector<std::string> Servers(std::string_view resolver) {
  return hardware::ParseNameServers(ExactView(resolver));
}

TEST(NameServers, FollowTheirLabels) {
  EXPECT_THAT(Servers("nameserver 8.8.8.8\nnameserver 8.8.4.4\n"),
              ElementsAre("8.8.8.8", "8.8.4.4"));
  EXPECT_THAT(Servers("search example.com\n"), IsEmpty());
  EXPECT_THAT(Servers(""), IsEmpty());
}

TEST(NameServers, LastOneWithoutAnEndIsDropped) {
  EXPECT_THAT(Servers("nameserver 8.8.8.8\nnameserver 8.8.4.4"), ElementsAre("8.8.8.8"));
  EXPECT_THAT(Servers("nameserver "), IsEmpty());
}

TEST(NameServers, AreTakenAsTheyStand) {
  EXPECT_THAT(Servers("nameserver fe80::1\n"), ElementsAre(""));
  EXPECT_THAT(Servers("#nameserver 1.1.1.1\n"), ElementsAre("1.1.1.1"));
  EXPECT_THAT(Servers("nameserver 999.9..9#\n"), ElementsAre("999.9..9"));
  EXPECT_THAT(Servers("nameserver 8.8.8.8~9\n"), ElementsAre("8.8.8.8"));
  EXPECT_THAT(Servers("nameserver  8.8.8.8\n"), ElementsAre(""));
  EXPECT_THAT(Servers("nameserver\t8.8.8.8\nnameserver 1.1.1.1\n"), ElementsAre("1.1.1.1"));
  EXPECT_THAT(Servers("nameserver nameserver 1.2.3.4 \n"), ElementsAre("", "1.2.3.4"));
}

}  // namespace
