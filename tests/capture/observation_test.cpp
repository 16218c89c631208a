#include "capture/observation.h"

#include <gtest/gtest.h>

namespace {

using capture::Decoder;
using capture::Encode;
using capture::Observation;
using capture::Saw;

Observation Sample() {
  return {.What = Saw::kAnswers,
          .Call = 3,
          .Error = 5,
          .Result = -1,
          .Number = 1,
          .Offset = 2,
          .Limit = std::uint64_t{1} << 40,
          .Texts = {"/proc/meminfo", std::string("a\0b", 3), ""}};
}

void ExpectSample(const Observation& seen) {
  EXPECT_EQ(seen.What, Saw::kAnswers);
  EXPECT_EQ(seen.Call, 3U);
  EXPECT_EQ(seen.Error, 5);
  EXPECT_EQ(seen.Result, -1);
  EXPECT_EQ(seen.Number, 1U);
  EXPECT_EQ(seen.Offset, 2U);
  EXPECT_EQ(seen.Limit, std::uint64_t{1} << 40);
  EXPECT_EQ(seen.Texts, Sample().Texts);
}

TEST(Observations, ComeOutOfAStreamThatIsCutAnywhere) {
  const std::string bytes = Encode(Sample()) + Encode(Sample());
  for (std::size_t block = 1; block <= bytes.size(); ++block) {
    Decoder decoder;
    int found = 0;
    for (std::size_t at = 0; at < bytes.size(); at += block) {
      decoder.Take(std::string_view(bytes).substr(at, block));
      while (const auto seen = decoder.Next()) {
        ExpectSample(*seen);
        ++found;
      }
    }
    EXPECT_EQ(found, 2) << block;
  }
}

TEST(Observations, ThatAreNotThereWholeAreNone) {
  const std::string bytes = Encode(Sample());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    Decoder decoder;
    decoder.Take(std::string_view(bytes).substr(0, size));
    EXPECT_FALSE(decoder.Next()) << size;
  }
}

}  // namespace
