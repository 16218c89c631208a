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
using testing::HasSubstr;
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
  EXPECT_EQ(capture::RewriteEscapes("a 10%2E0%2E0%2e1?x b%20c 100%", swap),
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

// A controller with one identity of each kind.
capture::Recording Known() {
  capture::Recording recording;
  capture::Cycle& cycle = recording.Cycles.emplace_back();
  const auto add = [&cycle](const std::string& path, const std::string& bytes) {
    cycle.Files[path].Readings.push_back({.Bytes = bytes});
  };
  add("/home/Zet/.settings/uuid", "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8\n");
  add("/home/Zet/.settings/serial#", "0x0047B1A2\n");
  add("/etc/resolv.conf", "search display.example\nnameserver 192.168.47.20\n");
  cycle.Interfaces.push_back({.Texts = {"enx001a2b3c4d5e", "link", "00:1A:2B:3C:4D:5E", "", ""}});
  cycle.Interfaces.push_back({.Texts = {"enx001a2b3c4d5e", "IPv6", "2001:db8::47:20", "64", ""}});
  return recording;
}

struct Form {
  std::string Text;    // as somebody writes it
  std::string Secret;  // what must not be left of it
};

// What is written in none of the forms that were looked for stayed once.
TEST(Redaction, ReplacesEveryFormInWhichSomebodyWritesAValue) {
  const Form forms[] = {
      {"192.168.047.020", "047.020"},
      {"host-192-168-47-20", "168-47-20"},
      {"host_192_168_47_20", "168_47_20"},
      {"192.168.47.20.443", "47.20"},
      {"1.192.168.47.20", "47.20"},
      {"[::ffff:192.168.47.20]", "47.20"},
      {"::ffff:c0a8:2f14", "2f14"},
      {"0xc0.0xa8.0x2f.0x14", "0x2f.0x14"},
      {"int -1062719724", "1062719724"},
      {"20.47.168.192.in-addr.arpa", "20.47.168.192"},
      {"sn_c0a82f14", "c0a82f14"},
      {"iC0A82F14x", "C0A82F14"},
      {"0:1a:2b:3c:4d:5e", "1a:2b:3c:4d:5e"},
      {"00 1a 2b 3c 4d 5e", "1a 2b 3c 4d 5e"},
      {"00_1A_2B_3C_4D_5E", "1A_2B_3C_4D_5E"},
      {"001a2b-3c4d5e", "3c4d5e"},
      {"enx001a2b3c4d5e", "001a2b3c4d5e"},
      {"mac001A2B3C4D5Eend", "001A2B3C4D5E"},
      {"number 112394521950", "112394521950"},
      {"id6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8x", "6f1c0d52"},
      {"id_6f1c0d528a3e4b7e9d3f2c51a0e4b7d8", "6f1c0d52"},
      {"{6F1C0D52-8A3E-4B7E-9D3F-2C51A0E4B7D8}", "6F1C0D52"},
      {"6f1c0d52 8a3e 4b7e 9d3f 2c51a0e4b7d8", "6f1c0d52"},
      {"SN0047B1A2", "47B1A2"},
      {"sn47b1a2", "47b1a2"},
      {"S4698530", "4698530"},
      {"display_example www_display.example_x", "display.example"},
      {"2001:db8:0:0:0:0:47:20", "47:20"},
      {"2001:0DB8::0047:0020", "0047:0020"},
      {"20010db8000000000000000000470020", "00470020"},
      {"x20010db8000000000000000000470020x", "00470020"},
      {"0.2.0.0.7.4.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.8.b.d.0.1.0.0.2.ip6.arpa", "0.2.0.0.7.4"},
      {"&#49;&#57;&#50;.168.47.20", "47.20"},
      {"31 39 32 2e 31 36 38 2e 34 37 2e 32 30", "34 37 2e 32 30"},
      {"31:39:32:2e:31:36:38:2e:34:37:2e:32:30", "34:37:2e:32:30"},
      {"\\x31\\x39\\x32\\x2e168\\x2e47\\x2e20", "47\\x2e20"},
      {std::string("1\0"
                   "9\0"
                   "2\0"
                   ".\0"
                   "1\0"
                   "6\0"
                   "8\0"
                   ".\0"
                   "4\0"
                   "7\0"
                   ".\0"
                   "2\0"
                   "0\0",
                   26),
       std::string("4\0"
                   "7\0"
                   ".\0"
                   "2\0"
                   "0",
                   9)},
      {std::string("\x14\x2f\xa8\xc0", 4), "\x14\x2f\xa8\xc0"},
      {std::string("\xc0\xa8\x2f\x14", 4), "\xc0\xa8\x2f\x14"},
      {std::string("a\x00\x1a\x2b\x3c\x4d\x5e", 7), "\x1a\x2b\x3c\x4d\x5e"},
      {"data/MTkyLjE2OC40Ny4yMA==", "E2OC40Ny4yM"},
      {"x+yMTkyLjE2OC40Ny4yMA==", "E2OC40Ny4yM"},
      {"f3139322e3136382e34372e3230", "34372e3230"},
      {"%2531%2539%2532%252e168%252e47%252e20", "47%252e20"},
  };
  std::mt19937_64 random(1);
  for (const Form& form : forms) {
    capture::Recording recording = Known();
    recording.Cycles[0].Rows.push_back({"Row", form.Text});
    recording.Cycles[0].Files["/proc/meminfo"].Readings.push_back({.Bytes = form.Text});
    const capture::Redaction redaction(recording, "", &random);
    redaction.Apply(&recording);
    EXPECT_THAT(*recording.Cycles[0].Rows[0].Value, testing::Not(HasSubstr(form.Secret)))
        << form.Text;
    EXPECT_THAT(recording.Cycles[0].Files["/proc/meminfo"].Readings[0].Bytes,
                testing::Not(HasSubstr(form.Secret)))
        << form.Text;
  }
}

// As docs/support.md says.
TEST(Redaction, ReplacesWhatIsEncodedTwiceAndLeavesWhatIsEncodedThreeTimes) {
  const std::string twice = "TVRreUxqRTJPQzQwTnk0eU1BPT0=";
  const std::string three_times = "VFZScmVVeHFSVEpQUXpRd1RuazBlVTFCUFQwPQ==";
  capture::Recording recording = Known();
  recording.Cycles[0].Rows = {{"Twice", twice}, {"ThreeTimes", three_times}};
  std::mt19937_64 random(1);
  capture::Redaction(recording, "", &random).Apply(&recording);
  EXPECT_NE(recording.Cycles[0].Rows[0].Value, twice);
  EXPECT_EQ(recording.Cycles[0].Rows[1].Value, three_times);
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
