// `statuscollector capture --redact`.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cctype>

#include "sandbox/devices.h"
#include "sandbox/files.h"
#include "sandbox/rows.h"
#include "tests/capture/capture_fixture.h"
#include "tests/reliability/controller.h"
#include "tests/reliability/random_controller.h"

namespace {

using captured::CaptureNow;
using captured::CaptureTest;
using captured::Comparable;
using captured::Description;
using captured::Entries;
using captured::Load;
using captured::ShowAgain;
using sandbox::Scenario;
using testing::HasSubstr;

std::string Upper(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

std::string Percent(const std::string& text) {
  std::string encoded;
  for (const char c : text) {
    char triple[8];
    std::snprintf(triple, sizeof triple, "%%%02X", static_cast<unsigned char>(c));
    encoded += std::isalnum(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : triple;
  }
  return encoded;
}

std::string Hexadecimal(const std::string& text) {
  std::string encoded;
  for (const char c : text) {
    char pair[8];
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(c));
    encoded += pair;
  }
  return encoded;
}

std::string Base64(const std::string& text) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string encoded;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    bits = bits << 8 | static_cast<unsigned char>(c);
    for (count += 8; count >= 6; count -= 6) {
      encoded += kDigits[bits >> (count - 6) & 63];
    }
  }
  if (count > 0) {
    encoded += kDigits[bits << (6 - count) & 63];
  }
  return encoded;
}

// The digits of base64 that all encodings of a text with `text` at one of three places share.
std::vector<std::string> InBase64(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t place = 0; place < 3; ++place) {
    const std::string encoded = Base64(std::string(place, '\0') + text);
    const std::size_t first = (place * 8 + 5) / 6;
    const std::size_t last = (place + text.size()) * 8 / 6;
    parts.push_back(encoded.substr(first, last - first));
  }
  return parts;
}

// A value of the controller, and how it may stand somewhere.
struct Secret {
  std::string Kind;
  std::string Text;
  std::vector<std::string> Others = {};  // other spellings

  std::vector<std::string> Encodings() const {
    std::vector<std::string> all;
    std::vector<std::string> spellings = Others;
    spellings.push_back(Text);
    for (const std::string& spelling : spellings) {
      for (const std::string& text : {spelling, Upper(spelling)}) {
        all.insert(all.end(), {text, Percent(text), Hexadecimal(text), Upper(Hexadecimal(text))});
        for (const std::string& part : InBase64(text)) {
          all.push_back(part);
        }
      }
    }
    return all;
  }
};

const std::vector<Secret>& Secrets() {
  static const std::vector<Secret> secrets = {
      {"GUID", "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8", {"6f1c0d528a3e4b7e9d3f2c51a0e4b7d8"}},
      {"serial number", "0x00012AF0", {"12AF0", "12af0", "76528"}},
      {"IPv4 address", "192.168.0.20", {"1400a8c0", "c0a80014", "335587520", "3232235540"}},
      {"IPv4 address", "192.168.0.1", {"0100a8c0", "c0a80001"}},
      {"IPv4 address", "192.168.0.2", {"0200a8c0", "c0a80002"}},
      {"IPv4 address", "10.50.0.1", {"0100320a", "0a320001"}},
      {"IPv6 address",
       "2001:db8::20",
       {"2001:0db8:0000:0000:0000:0000:0000:0020", "20010db8000000000000000000000020"}},
      {"hardware address",
       "00:1a:2b:3c:4d:5e",
       {"00-1a-2b-3c-4d-5e", "001a.2b3c.4d5e", "001a2b3c4d5e"}},
      {"hardware address", "00:1a:2b:3c:4d:5f", {"001a2b3c4d5f"}},
      {"domain", "display.example"},
  };
  return secrets;
}

// The demo, with its secrets in rows and files wherever they could stand.
Scenario Telling() {
  Scenario scenario = Load("demo");
  int number = 0;
  std::string log;
  for (const Secret& secret : Secrets()) {
    std::vector<std::string> texts = secret.Others;
    texts.push_back(secret.Text);
    for (const std::string& text : texts) {
      for (const std::string& said :
           {text, "of <" + text + ">, once", Upper(text), "http://x/?at=" + Percent(text) + "&b=c",
            Base64(text), Base64("at " + text), Base64("it: " + text + "!"),
            Hexadecimal("at " + text)}) {
        char key[32];
        std::snprintf(key, sizeof key, "Kept_%04d", number++);
        scenario.Row(key, said);
        log.append("# ").append(said).append("\n");
      }
    }
  }
  scenario.Row("TtableTitle", "at 192.168.0.20, <00:1A:2B:3C:4D:5E> & 2001:DB8::20");
  scenario.File("/etc/resolv.conf",
                "search display.example\nnameserver 192.168.0.1\nnameserver 192.168.0.2\n"
                "nameserver 2001:db8::20\n" +
                    log);
  scenario.Answer("zetdisplay", 0x8004DA5D, 76528);
  return scenario;
}

TEST_F(CaptureTest, LeavesNothingOfWhatIsReplacedInAnyEncoding) {
  Telling().Apply();
  const Entries plain = CaptureNow();
  const Entries capture = CaptureNow({"--redact"});
  for (const Secret& secret : Secrets()) {
    for (const std::string& encoding : secret.Encodings()) {
      for (const auto& [name, entry] : capture) {
        EXPECT_EQ(entry.Bytes.find(encoding), std::string::npos)
            << encoding << " of " << secret.Text << " in " << name;
      }
    }
    EXPECT_THAT(plain.at("rows.tsv").Bytes, HasSubstr(secret.Text));
  }
}

TEST_F(CaptureTest, SaysWhatStandsInPlaceOfWhatIsReplaced) {
  Telling().Apply();
  const Entries capture = CaptureNow({"--redact"});
  std::map<std::string, int> kinds;
  const nlohmann::json description = Description(capture);
  for (const auto& one : description.at("redacted")) {
    ++kinds[one.at("kind")];
    const std::string now = one.at("now");
    if (!now.ends_with(".0")) {  // a network, which stands among the routes, in hexadecimal
      EXPECT_THAT(capture.at("rows.tsv").Bytes + capture.at("interfaces").Bytes +
                      capture.at("root/home/Zet/.settings/serial#").Bytes,
                  HasSubstr(now));
    }
  }
  EXPECT_EQ(kinds["GUID"], 1);
  EXPECT_EQ(kinds["serial number"], 1);
  EXPECT_GE(kinds["IPv4 address"], 4);
  EXPECT_EQ(kinds["IPv6 address"], 1);
  EXPECT_EQ(kinds["hardware address"], 2);
  EXPECT_EQ(kinds["domain"], 1);
}

TEST_F(CaptureTest, ReplacesTheSameByTheSameEverywhere) {
  Telling().Apply();
  const Entries capture = CaptureNow({"--redact"});
  const auto interfaces = sandbox::ParseInterfaces(capture.at("interfaces").Bytes);
  const std::string& prefix = interfaces.at(0).Addresses.at(0).Prefix;
  const std::string address = prefix.substr(0, prefix.find('/'));
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("IPv4Address=\"" + address + "\""));
  EXPECT_THAT(capture.at("document.xml").Bytes,
              HasSubstr("Title=\"at " + address + ", &lt;" + interfaces.at(0).Mac + "&gt;"));
  EXPECT_THAT(capture.at("rows.tsv").Bytes, HasSubstr("\tof <" + address + ">, once\n"));
  EXPECT_THAT(capture.at("root/etc/resolv.conf").Bytes, HasSubstr("at=" + Percent(address) + "&"));
  const std::string guid = capture.at("root/home/Zet/.settings/uuid").Bytes.substr(0, 36);
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("GUID=\"" + guid + "\""));
  EXPECT_THAT(capture.at("rows.tsv").Bytes, HasSubstr("GUID\t" + guid + "\n"));
  const std::string serial =
      std::to_string(std::stoul(capture.at("root/home/Zet/.settings/serial#").Bytes, nullptr, 16));
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("SerialNumber=\"" + serial + "\""));
  EXPECT_THAT(capture.at("devices/zetdisplay").Bytes, HasSubstr("0x8004DA5D " + serial + "\n"));
}

TEST_F(CaptureTest, KeepsWhatEveryControllerHas) {
  Load("demo")
      .Row("Kept", "127.0.0.1 0.0.0.0 255.255.255.0 ::1 ff02::1 00:00:00:00:00:00 1.2.3.4.5")
      .Row("KeptVersion", "4.3.2.1")
      .Apply();
  const Entries capture = CaptureNow({"--redact"});
  EXPECT_THAT(capture.at("rows.tsv").Bytes,
              HasSubstr("Kept\t127.0.0.1 0.0.0.0 255.255.255.0 ::1 ff02::1 00:00:00:00:00:00 "
                        "1.2.3.4.5\n"));
  EXPECT_THAT(capture.at("rows.tsv").Bytes, HasSubstr("KeptVersion\t4.3.2.1\n"));
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("Title=\"North scoreboard\""));
  EXPECT_THAT(capture.at("interfaces").Bytes, HasSubstr("  address 192.168."));
  EXPECT_EQ(capture.at("root/var/lib/dpkg/status").Bytes,
            sandbox::ReadFile("/var/lib/dpkg/status"));
}

TEST_F(CaptureTest, ReplacesTheNameOfTheHostUnlessSomethingElseHasIt) {
  char before[256] = "";
  ASSERT_EQ(gethostname(before, sizeof before), 0);
  const auto document_of = [](const std::string& host, const std::string& title) {
    EXPECT_EQ(sethostname(host.c_str(), host.size()), 0);
    Load("demo").Row("TtableTitle", title).Apply();
    return CaptureNow({"--redact"}).at("document.xml").Bytes;
  };
  EXPECT_THAT(document_of("north-7", "host North-7 here"),
              testing::AllOf(HasSubstr("Title=\"host "), testing::Not(HasSubstr("orth-7"))));
  EXPECT_THAT(document_of("busybox", "busybox"), HasSubstr("Title=\"busybox\""));
  for (const std::string host :
       {"carrier", "network", "interface", "Title", "xml", "kernel", "goesOn", "Serial"}) {
    EXPECT_THAT(document_of(host, "of " + host), HasSubstr("Title=\"of " + host + "\"")) << host;
  }
  ASSERT_EQ(sethostname(before, std::strlen(before)), 0);
}

// Made the controller again, a capture gives its document: of generated controllers, too.
void ExpectTheDocumentAgain(const Entries& capture) {
  EXPECT_EQ(reliability::FirstDifference(Comparable(ShowAgain(capture)),
                                         Comparable(capture.at("document.xml").Bytes)),
            "");
}

TEST_F(CaptureTest, GivesTheDocumentOfItsSourcesWhenItIsRedacted) {
  Telling().Apply();
  ExpectTheDocumentAgain(CaptureNow({"--redact"}));
  for (const char* const name : {"faults", "minimal", "mistakes"}) {
    Load(name).Apply();
    ExpectTheDocumentAgain(CaptureNow({"--redact"}));
  }
  for (const char* const serial : {"0x1F", "12af0", "0x00000000", "A-17/3", "4294967295"}) {
    SCOPED_TRACE(serial);
    Load("demo")
        .File("/home/Zet/.settings/serial#", serial)
        .File("/home/Zet/.settings/uuid", std::string("<A&\"") + serial + "\">\n")
        .Row("GUID", nullptr)
        .Apply();
    sandbox::RemoveRow("GUID");
    ExpectTheDocumentAgain(CaptureNow({"--redact"}));
  }
}

// An interface that is called after its hardware address once kept its name.
TEST_F(CaptureTest, RenamesInterfacesThatAreCalledAfterTheirHardwareAddress) {
  Load("demo")
      .Interface({.Name = "enx0a1b2c3d4e5f",
                  .Mac = "02:00:00:00:00:05",
                  .Addresses = {{.Prefix = "10.77.0.5/24", .Broadcast = "10.77.0.255"}}})
      .File("/sys/class/net/enx0a1b2c3d4e5f/carrier", "1\n")
      .File("/dev/shm/netlink-enx0a1b2c3d4e5f", "100\n")
      .Row("TtableTitle", "at enx0A1B2C3D4E5F")
      .Apply();
  const Entries plain = CaptureNow();
  EXPECT_THAT(plain.at("document.xml").Bytes, HasSubstr("\"enx0a1b2c3d4e5f\""));
  const Entries capture = CaptureNow({"--redact"});
  for (const auto& [name, entry] : capture) {
    EXPECT_EQ(Upper(name + entry.Bytes).find("0A1B2C3D4E5F"), std::string::npos) << name;
  }
  EXPECT_THAT(capture.at("document.xml").Bytes, HasSubstr("\"enx"));
  ExpectTheDocumentAgain(capture);
}

// Of a value that a row is too long for, the document once had the beginning.
TEST_F(CaptureTest, LeavesNoBeginningOfAValueWhereARowIsCut) {
  const std::string guid = "6f1c0d52-8a3e-4b7e-9d3f-2c51a0e4b7d8";
  for (const std::string& value : {std::string("192.168.0.20"), guid}) {
    for (const std::size_t left : {std::size_t{9}, std::size_t{11}}) {
      Load("demo")
          .Row("TtableTitle", std::string(511 - left, 'x') + value + " and more")
          .File("/etc/resolv.conf", "nameserver 192.168.0.20\n")
          .Apply();
      const Entries capture = CaptureNow({"--redact"});
      EXPECT_THAT(
          capture.at("document.xml").Bytes,
          testing::AllOf(HasSubstr("xxx"), testing::Not(HasSubstr("xxx" + value.substr(0, left)))))
          << left;
      ExpectTheDocumentAgain(capture);
    }
  }
}

TEST_F(CaptureTest, LeavesNoBeginningOfAValueWhereAFileIsCut) {
  Load("demo").File("/proc/meminfo", std::string(2040, ' ') + "00:1a:2b:3c:4d:5e").Apply();
  EXPECT_THAT(CaptureNow().at("root/proc/meminfo").Bytes, testing::EndsWith("00:1a:2b"));
  EXPECT_THAT(CaptureNow({"--redact"}).at("root/proc/meminfo").Bytes,
              testing::Not(testing::EndsWith("00:1a:2b")));
}

TEST_F(CaptureTest, OfAGeneratedControllerGivesItsDocumentWhenItIsRedacted) {
  const unsigned count = static_cast<unsigned>(reliability::Repetitions(10, 200));
  for (unsigned seed = 1000; seed < 1000 + count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scenario().Apply();
    // A number as GUID is replaced wherever it stands, and what follows from numbers would differ.
    reliability::RandomController(seed).Row("GUID", "auto").Row("GUIDX", "7f-generated").Apply();
    ExpectTheDocumentAgain(CaptureNow({"--redact"}));
  }
}

}  // namespace
