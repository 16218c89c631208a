// Files of the history, with a size and a checksum that are right: whatever else stands in them,
// they are read whole or refused, and what is read is written and read back, goes on and answers.
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"
#include "serve/history_file.h"
#include "serve/history_json.h"

namespace {

constexpr std::size_t kLargestInput = 16384;
constexpr std::size_t kHeadBytes = 20;  // magic, version, size
constexpr std::size_t kByteBits = 8;
constexpr std::size_t kChecksumBytes = 8;

void PutNumber(std::uint64_t number, std::string* bytes) {
  for (std::size_t at = 0; at < kChecksumBytes; ++at) {
    bytes->push_back(static_cast<char>(static_cast<std::uint8_t>(number >> (at * kByteBits))));
  }
}

std::string Written(const serve::HistoryData& data) {
  std::string bytes;
  serve::HistoryImage(data).Write([&bytes](std::string_view part) { bytes += part; });
  return bytes;
}

// A file that has `rest` after its size.
std::string FileOf(std::string_view rest) {
  constexpr std::size_t kVersionEnd = 12;
  std::string bytes = Written(serve::HistoryData(1)).substr(0, kVersionEnd);
  PutNumber(kHeadBytes + rest.size() + kChecksumBytes, &bytes);
  bytes += rest;
  PutNumber(serve::Checksum(bytes), &bytes);
  return bytes;
}

void CheckSeries(const serve::HistoryData& data) {
  std::vector<std::uint32_t> series;
  data.Names.Visit([&](std::string_view element, std::string_view field, std::uint32_t number) {
    FUZZ_CHECK(data.Names.Find(element, field) == number);
    series.push_back(number);
  });
  data.Rows.Read(series, [](const serve::HistoryRows::Row&, std::span<const float> numbers) {
    for (const float number : numbers) {
      FUZZ_CHECK(!std::isinf(number));
    }
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  try {
    serve::HistoryData history = serve::ParseHistory(FileOf(fuzz::Text(data, size)), 1);
    CheckSeries(history);
    const std::string written = Written(history);
    FUZZ_CHECK(written.size() == Written(serve::ParseHistory(written, 1)).size());
    const serve::UnixSeconds now = history.Now();
    for (std::size_t row = 0; row < history.Rows.All().size(); ++row) {
      static_cast<void>(history.IsOfToday(row));
    }
    history.Rows.Shift(1);
    history.Findings.Shift(1);
    history.Rows.Add(now, true, {}, 0, false);
    history.Findings.Forget(now, true);
    CheckSeries(history);
  } catch (const serve::NoHistory& reason) {
    FUZZ_CHECK(*reason.what() != '\0');
  }
  return 0;
}
