// What is packed is what a replay takes.
#include "capture/archive.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using capture::Entries;
using testing::HasSubstr;

std::string Complaint(const Entries& entries) {
  try {
    capture::Pack(entries);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

std::string Lines(std::size_t count) { return std::string(count, '\n'); }

// A capture of 256 MiB, less what stands around its files, used to be written; no replay took it.
TEST(PackedCapture, HoldsNoMoreThanAReplayTakes) {
  constexpr std::size_t kMegabyte = std::size_t{1} << 20;
  EXPECT_EQ(Complaint({{"root/a", {std::string(255 * kMegabyte, 'a')}}}), "");
  EXPECT_THAT(Complaint({{"root/a", {std::string(256 * kMegabyte - 1, 'a')}}}),
              HasSubstr("the sources have 257 MiB, more than a capture holds (256)"));
  Entries many;
  for (int number = 0; number < 100'000; ++number) {
    many["root/" + std::to_string(number)] = {""};
  }
  EXPECT_THAT(Complaint(many), HasSubstr("the sources have 100000 files"));
}

TEST(PackedCapture, HoldsNoMoreRowsThanAReplayTakes) {
  EXPECT_EQ(Complaint({{"rows.tsv", {Lines(1'000'000)}}}), "");
  EXPECT_THAT(Complaint({{"steps/01/rows.tsv", {Lines(1'000'001)}}}),
              HasSubstr("the sources have 1000001 rows, more than a capture holds (1000000)"));
  EXPECT_THAT(Complaint({{"interfaces", {Lines(10'001)}}}), HasSubstr("10001 lines of interfaces"));
  EXPECT_EQ(Complaint({{"root/proc/net/dev", {Lines(10'001)}}}), "");
}

}  // namespace
