// docs/document.md, whose tables follow from the listings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "model/document.h"
#include "model/listing.h"
#include "model/xml.h"
#include "tests/support/golden.h"

namespace {

using QtSts::ClassInfo;
using QtSts::Field;
namespace listing = QtSts::listing;

constexpr const char* kPage = "docs/document.md";
const std::string kBegin =
    "<!-- classes: written by the test DocumentReference, from the listings -->\n";
const std::string kEnd = "<!-- end of classes -->\n";

std::string TypeOf(const Field& field) {
  static const std::map<const QtSts::ScalarType*, const char*> names = {
      {&listing::kBool, "flag"},
      {&listing::kUInt8, "unsigned, 8 bits"},
      {&listing::kUInt16, "unsigned, 16 bits"},
      {&listing::kUInt32, "unsigned, 32 bits"},
      {&listing::kUInt64, "unsigned, 64 bits"},
      {&listing::kInt32, "signed, 32 bits"},
      {&listing::kInt64, "signed, 64 bits"},
      {&listing::kFloat, "float"},
      {&listing::kDouble, "double"},
      {&listing::kText, "text"},
      {&listing::kFloats, "floats in a row"},
  };
  std::string type = field.Scalar != nullptr ? names.at(field.Scalar)
                     : field.Elements != nullptr
                         ? std::string("list of `") + field.Record->Name + "`"
                         : std::string("record `") + field.Record->Name + "`";
  return field.Optional ? type + ", or absent" : type;
}

std::string Meaning(const Field& field) {
  std::string text = field.About;
  const char* separator = ": ";
  for (const QtSts::Code& code : field.Codes) {
    text += separator + std::to_string(code.Value) + " `" + code.Text + "`";
    separator = ", ";
  }
  return text;
}

std::string Table(const ClassInfo& info) {
  std::string text = "| field | type | unit | meaning |\n|---|---|---|---|\n";
  for (const Field& field : info.OwnFields()) {
    text += std::string("| `") + field.Name + "` | " + TypeOf(field) + " | " + field.Unit + " | " +
            Meaning(field) + " |\n";
  }
  return text;
}

std::string Classes() {
  std::string text;
  for (const QtSts::ClassInfo* const info : QtSts::Classes()) {
    text += std::string("\n### `") + info->Name + "`\n\n" + info->About + ".";
    if (info->Base != nullptr) {
      text += std::string(" Extends `") + info->Base->Name + "`";
      text += info->OwnFields().empty() ? " by no field." : ".";
    }
    text += "\n";
    if (!info->OwnFields().empty()) {
      text += "\n" + Table(*info);
    }
  }
  return text + "\n";
}

TEST(DocumentReference, DescribesEveryFieldAsTheListingsDo) {
  const std::string page = test_support::ReadSource(kPage);
  const std::size_t begin = page.find(kBegin);
  const std::size_t end = page.find(kEnd);
  ASSERT_NE(begin, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  EXPECT_TRUE(test_support::MatchesGolden(
      page.substr(0, begin + kBegin.size()) + Classes() + page.substr(end), kPage));
}

TEST(DocumentReference, NamesWhatStandsWhereNothingWasReported) {
  const QtSts::CStatus status;
  const QtSts::CNetworkDevice device;
  const QtSts::CSolarInfo sun;
  const auto code = [](const std::string& text) { return "`" + text + "`"; };
  const std::string page = test_support::ReadSource(kPage);
  for (const std::string& text :
       {code(device.IPv4Address) + " as its `IPv4Address`",
        code(device.Netmask) + " as its `Netmask`",
        code(device.IPv6Address) + " as\n  its `IPv6Address`",
        "its `Gateway` is " + code(device.Gateway),
        "The four resource fields start at " + std::to_string(status.MemoryTotal) + " kB",
        "the product family at " + std::to_string(status.ProductFamily),
        "`Uptime` at " + code(status.Uptime), "the sun events at " + code(sun.CalculatedSunrise),
        "the configuration timestamp at " + code(status.ConfigurationTimestamp)}) {
    EXPECT_THAT(page, testing::HasSubstr(text));
  }
  EXPECT_EQ(status.MemoryTotal, status.MemoryFree);
  EXPECT_EQ(status.StorageTotal, status.StorageFree);
}

TEST(DocumentReference, NamesTheBoundsOfReading) {
  EXPECT_THAT(test_support::ReadSource(kPage),
              testing::HasSubstr("at most " + std::to_string(QtSts::kMaximumDocumentSize >> 20U) +
                                 " MiB, 1000 attributes in an element"));
}

}  // namespace
