// What finds, makes and replaces names and addresses.
#include <gmock/gmock.h>

#include <stdexcept>

#include "capture/encodings.h"
#include "capture/pseudonyms.h"
#include "capture/redact.h"
#include "capture/tokens.h"

namespace {

using capture::Identities;
using capture::MakePseudonyms;
using capture::Pseudonyms;
using capture::TextOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Rewriter = std::string (*)(std::string_view, const capture::Use&);

std::vector<std::string> Tokens(Rewriter rewrite, const std::string& text) {
  std::vector<std::string> tokens;
  const std::string same = rewrite(text, [&tokens](std::string_view token) {
    tokens.emplace_back(token);
    return std::nullopt;
  });
  EXPECT_EQ(same, text);
  return tokens;
}

TEST(Tokens, AreIPv4AddressesAndNothingLonger) {
  EXPECT_THAT(Tokens(&capture::RewriteIPv4, "1.2.3.4,(10.0.0.255)x=9.8.7.6/24."),
              ElementsAre("1.2.3.4", "10.0.0.255", "9.8.7.6"));
  EXPECT_THAT(Tokens(&capture::RewriteIPv4, "1.2.3.4.5 1.2.3 1.2.3.256 1.2.3.4567 0001.2.3.4"),
              IsEmpty());
  EXPECT_THAT(Tokens(&capture::RewriteIPv4, "ends with 1.2.3.4."), ElementsAre("1.2.3.4"));
}

TEST(Tokens, AreIPv6AddressesOfAnySpelling) {
  EXPECT_THAT(Tokens(&capture::RewriteIPv6, "fe80::1%eth0 [2001:DB8::20]:80 IP:fd00::7, ::1."),
              ElementsAre("fe80::1", "2001:DB8::20", "fd00::7", "::1"));
  EXPECT_THAT(Tokens(&capture::RewriteIPv6, "12:34:56 00:1A:2B:3C:4D:5E a:b xfe80::1 std::string"),
              IsEmpty());
}

TEST(Tokens, AreHardwareAddressesInEachOfTheirSpellings) {
  EXPECT_THAT(
      Tokens(&capture::RewriteStations, "00:1A:2B:3C:4D:5E 00-1a-2b-3c-4d-5e, 001a.2b3c.4d5e"),
      ElementsAre("00:1A:2B:3C:4D:5E", "00-1a-2b-3c-4d-5e", "001a.2b3c.4d5e"));
  EXPECT_THAT(
      Tokens(&capture::RewriteStations, "00:1A:2B:3C:4D 00:1A:2B:3C:4D:5E:6F 100:1A:2B:3C:4D:5E"),
      IsEmpty());
}

TEST(Tokens, AreNumbersWhereTheyStandAlone) {
  EXPECT_THAT(Tokens(&capture::RewriteDecimal, "12 a13 14b 1.5 (16) -17 1.2.3"),
              ElementsAre("12", "16", "17"));
  EXPECT_THAT(Tokens(&capture::RewriteHexadecimal, "0x12 12 1f face 01234567 0xfg xyz 1f_"),
              ElementsAre("12", "1f", "face", "01234567"));
}

TEST(Tokens, KeepTheirSpellingWhenTheyAreReplaced) {
  const capture::IPv6 other = *capture::ParseIPv6("fd0a::b");
  EXPECT_EQ(capture::InTheSpellingOf("2001:DB8::20", other), "FD0A::B");
  EXPECT_EQ(capture::InTheSpellingOf("2001:0db8:0000:0:0:0:0:0020", other),
            "fd0a:0000:0000:0:0:0:0:000b");
  EXPECT_EQ(capture::InTheSpellingOf("00-1a-2b-3c-4d-5e", 0x0A0B0C0D0E0FU), "0a-0b-0c-0d-0e-0f");
  EXPECT_EQ(capture::InTheSpellingOf("02:00:00:00:00:07", 0x0A0B0C0D0E0FU), "0A:0B:0C:0D:0E:0F");
}

TEST(Encodings, AreKeptWhereTheirTextIsReplaced) {
  const auto swap = [](std::string_view text) {
    std::string other(text);
    const std::size_t place = other.find("10.0.0.1");
    return place == std::string::npos ? other : other.replace(place, 8, "10.7.7.77");
  };
  EXPECT_EQ(capture::RewritePercent("a 10%2E0%2E0%2e1?x b%20c 100%", swap),
            "a 10%2E7%2E7%2E77?x b%20c 100%");
  EXPECT_EQ(capture::RewriteBase64("at MTAuMC4wLjE= ordinary", swap), "at MTAuNy43Ljc3= ordinary");
  EXPECT_EQ(capture::RewriteHexadecimalText("<31302e302e302e31>", swap), "<31302e372e372e3737>");
  EXPECT_EQ(capture::RewriteHexadecimalText("0123456789abcdef", swap), "0123456789abcdef");
}

Identities NetworksOf(int count, int hosts) {
  Identities identities;
  for (int network = 0; network < count; ++network) {
    for (int host = 1; host <= hosts; ++host) {
      identities.Version4.insert(0xC0A80000U | static_cast<unsigned>(network * 256 + host));
    }
  }
  return identities;
}

TEST(Pseudonyms, OfOneNetworkAreInOneNetworkAndOfTheSameLength) {
  std::mt19937_64 random(1);
  const Pseudonyms made = MakePseudonyms(NetworksOf(2, 254), &random);
  std::map<capture::IPv4, capture::IPv4> networks;
  std::set<capture::IPv4> used;
  for (const auto& [before, now] : made.Version4) {
    EXPECT_EQ(TextOf(before).size(), TextOf(now).size());
    EXPECT_TRUE(used.insert(now).second) << TextOf(now);
    EXPECT_FALSE(made.Version4.contains(now)) << TextOf(now);
    EXPECT_EQ(networks.emplace(before >> 8, now >> 8).first->second, now >> 8);
  }
  EXPECT_EQ(networks.size(), 2U);
}

TEST(Pseudonyms, AreFoundWhereNoneOfTheSameLengthIsLeft) {
  std::mt19937_64 random(1);
  const Pseudonyms made = MakePseudonyms(NetworksOf(10, 9), &random);
  for (const auto& [before, now] : made.Version4) {
    EXPECT_FALSE(made.Version4.contains(now)) << TextOf(now);
  }
}

TEST(Pseudonyms, AreOfTheKindOfWhatTheyStandFor) {
  std::mt19937_64 random(1);
  for (int turn = 0; turn < 200; ++turn) {
    Identities identities;
    identities.Version4 = {*capture::ParseIPv4("10.1.2.3"), *capture::ParseIPv4("172.31.0.255"),
                           *capture::ParseIPv4("8.8.8.8")};
    identities.Version6 = {*capture::ParseIPv6("fe80::1"), *capture::ParseIPv6("fd12::1"),
                           *capture::ParseIPv6("2001:db8::1")};
    identities.Stations = {0x001A2B3C4D5EU, 0x021A2B3C4D5EU};
    identities.Words["6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8"] = {"GUID", false};
    const Pseudonyms made = MakePseudonyms(identities, &random);
    EXPECT_EQ(made.Version4.at(*capture::ParseIPv4("10.1.2.3")) >> 24, 10U);
    EXPECT_EQ(made.Version4.at(*capture::ParseIPv4("172.31.0.255")) >> 16, 172U * 256 + 31);
    EXPECT_EQ(made.Version4.at(*capture::ParseIPv4("172.31.0.255")) & 0xFF, 255U);
    EXPECT_FALSE(capture::IsCommon(made.Version4.at(*capture::ParseIPv4("8.8.8.8"))));
    EXPECT_EQ(made.Version6.at(*capture::ParseIPv6("fe80::1"))[0], 0xFE80);
    EXPECT_EQ(made.Version6.at(*capture::ParseIPv6("fd12::1"))[0] & 0xFE00, 0xFC00);
    EXPECT_EQ(made.Version6.at(*capture::ParseIPv6("2001:db8::1"))[0] & 0xE000, 0x2000);
    EXPECT_EQ(made.Stations.at(0x001A2B3C4D5EU) >> 40 & 3, 0U);
    EXPECT_EQ(made.Stations.at(0x021A2B3C4D5EU) >> 40 & 3, 2U);
    EXPECT_THAT(made.Words.begin()->second,
                testing::MatchesRegex("[0-9a-f-]{14}4[0-9a-f]{3}-9[0-9a-f]{3}-[0-9a-f]{12}"));
  }
}

TEST(Redaction, FindsWhatIsLeftInACapture) {
  capture::Recording recording;
  capture::File uuid;
  uuid.Readings.push_back({.Bytes = "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8\n"});
  recording.Cycles.emplace_back();
  recording.Cycles.back().Files["/home/Zet/.settings/uuid"] = uuid;
  std::mt19937_64 random(1);
  const capture::Redaction redaction(recording, "", &random);
  EXPECT_NO_THROW(redaction.Check({{"rows.tsv", {"Key\tnothing of it\n"}}}));
  EXPECT_THROW(redaction.Check({{"rows.tsv", {"Key\t6F1C0D528A3E4B7E9D3F2C51A0E4B7D8\n"}}}),
               std::runtime_error);
}

}  // namespace
