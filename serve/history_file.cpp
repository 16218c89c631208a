#include "serve/history_file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <concepts>
#include <optional>
#include <type_traits>
#include <utility>

namespace serve {
namespace {

constexpr std::string_view kMagic = "\x89SCHIST\n";
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kByteBits = 8;
constexpr std::size_t kSizeAt = 12;  // of the size of the file
constexpr std::uint16_t kSameElement = 0xFFFF;
constexpr std::size_t kMostTextBytes = 4096;
constexpr UnixSeconds kFarthest = UnixSeconds{1} << 40;  // times beyond are none

// Flags of findings.
constexpr std::uint8_t kEnded = 1;
constexpr std::uint8_t kBefore = 2;
constexpr std::uint8_t kBeganHere = 4;
constexpr std::uint8_t kEndedHere = 8;
constexpr std::uint8_t kAllFlags = 15;

template <std::integral Number>
void Put(Number number, std::string* bytes) {
  const auto bits = static_cast<std::uint64_t>(number);
  for (std::size_t at = 0; at < sizeof number; ++at) {
    bytes->push_back(static_cast<char>(static_cast<std::uint8_t>(bits >> (at * kByteBits))));
  }
}

void Put(std::string_view text, std::string* bytes) {
  const std::size_t size = std::min(text.size(), kMostTextBytes);
  Put(static_cast<std::uint16_t>(size), bytes);
  bytes->append(text.substr(0, size));
}

void PutNames(const HistoryData& data, std::string* bytes) {
  Put(static_cast<std::uint32_t>(data.Names.size()), bytes);
  const char* before = nullptr;
  data.Names.Visit([&](std::string_view element, std::string_view field, std::uint32_t series) {
    if (element.data() == before) {
      Put(kSameElement, bytes);
    } else {
      Put(element, bytes);
    }
    before = element.data();
    Put(field, bytes);
    Put(series, bytes);
  });
}

void PutFindings(const HistoryData& data, std::string* bytes) {
  Put(static_cast<std::uint32_t>(data.Findings.All().size()), bytes);
  for (const Episode& episode : data.Findings.All()) {
    Put(episode.Begin, bytes);
    Put(episode.End.value_or(0), bytes);
    const int flags = (episode.End ? kEnded : 0) | (episode.Before ? kBefore : 0) |
                      (episode.BeganHere ? kBeganHere : 0) | (episode.EndedHere ? kEndedHere : 0);
    Put(static_cast<std::uint8_t>(flags), bytes);
    Put(static_cast<std::uint8_t>(episode.Level), bytes);
    for (const FindingText* const text :
         {&episode.Identity, &episode.Id, &episode.Message, &episode.Where, &episode.Path}) {
      Put(std::string_view(*text), bytes);
    }
  }
}

// Takes parts off the front of bytes.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  std::string_view Bytes(std::size_t count) {
    if (count > bytes_.size()) {
      throw NoHistory("is damaged: it ends too early");
    }
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  template <std::integral Number>
  Number Take() {
    std::uint64_t bits = 0;
    std::uint32_t shift = 0;
    for (const char byte : Bytes(sizeof(Number))) {
      bits |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(byte)) << shift;
      shift += kByteBits;
    }
    return static_cast<Number>(bits);
  }

  // How many parts of at least `bytes` follow.
  std::uint32_t Count(std::size_t bytes, std::size_t most) {
    const auto count = Take<std::uint32_t>();
    if (count > most || count > bytes_.size() / bytes) {
      throw NoHistory("is damaged: it has an impossible number");
    }
    return count;
  }

  std::string_view Text(std::uint16_t size) {
    Require(size <= kMostTextBytes);
    return Bytes(size);
  }
  std::string_view Text() { return Text(Take<std::uint16_t>()); }

  UnixSeconds Time() {
    const auto time = Take<std::int64_t>();
    Require(time > -kFarthest && time < kFarthest);
    return time;
  }

  static void Require(bool holds) {
    if (!holds) {
      throw NoHistory("is damaged: it contradicts itself");
    }
  }

  bool AtEnd() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
};

// What is in the file after its size, without the checksum.
Reader Checked(std::string_view file) {
  if (!file.starts_with(kMagic)) {
    throw NoHistory("is no history");
  }
  Reader reader(file.substr(kMagic.size()));
  if (reader.Take<std::uint32_t>() != kVersion) {
    throw NoHistory("is of another version");
  }
  if (reader.Take<std::uint64_t>() != file.size()) {
    throw NoHistory("is damaged: it has another size");
  }
  const std::string_view all =
      file.substr(0, file.size() - std::min(file.size(), sizeof(std::uint64_t)));
  if (Reader(file.substr(all.size())).Take<std::uint64_t>() != Checksum(all)) {
    throw NoHistory("is damaged: its checksum is another one");
  }
  return Reader(all.substr(std::min(all.size(), kSizeAt + sizeof(std::uint64_t))));
}

void TakeClocks(Reader* reader, HistoryData* data) {
  constexpr std::int64_t kFarthestMilliseconds = kFarthest * 1000;
  data->Latest.System = reader->Take<std::int64_t>();
  data->Latest.Steady = reader->Take<std::int64_t>();
  for (const std::int64_t time : {data->Latest.System, data->Latest.Steady}) {
    Reader::Require(time > -kFarthestMilliseconds && time < kFarthestMilliseconds);
  }
  data->Latest.Boot = reader->Text();
}

void TakeBase(Reader* reader, HistoryData* data) {
  std::vector<float> base(reader->Count(sizeof(float), HistoryRows::kMostSeries));
  for (float& number : base) {
    number = std::bit_cast<float>(reader->Take<std::uint32_t>());
    Reader::Require(!std::isinf(number));
    number = std::isnan(number) ? kNoNumber : number;
  }
  data->Rows.SetBase(base);
}

void TakeNames(Reader* reader, HistoryData* data) {
  constexpr std::size_t kLeast = 8;  // bytes of a name
  std::vector<bool> named(data->Rows.SeriesCount());
  std::string_view element;
  for (std::uint32_t left = reader->Count(kLeast, named.size()); left > 0; --left) {
    const auto size = reader->Take<std::uint16_t>();
    element = size == kSameElement ? element : reader->Text(size);
    const std::string_view field = reader->Text();
    const auto series = reader->Take<std::uint32_t>();
    Reader::Require(series < named.size() && !named[series] && !data->Names.Find(element, field));
    Reader::Require(HistoryBytesOf<HistoryPart::kNames>() <= 2 * HistoryNames::kMostBytes);
    named[series] = true;
    data->Names.Add(element, field, series);
  }
}

void TakeFindings(Reader* reader, HistoryData* data) {
  constexpr std::size_t kLeast = 28;  // bytes of a finding
  for (std::uint32_t left = reader->Count(kLeast, HistoryFindings::kMost); left > 0; --left) {
    Episode episode = {.Begin = reader->Time()};
    const UnixSeconds end = reader->Time();
    const auto flags = reader->Take<std::uint8_t>();
    const auto level = reader->Take<std::uint8_t>();
    Reader::Require(flags <= kAllFlags &&
                    level <= static_cast<std::uint8_t>(insight::Severity::kWarning));
    episode.End = (flags & kEnded) != 0 ? std::optional(end) : std::nullopt;
    episode.Before = (flags & kBefore) != 0;
    episode.BeganHere = (flags & kBeganHere) != 0;
    episode.EndedHere = (flags & kEndedHere) != 0;
    episode.Level = static_cast<insight::Severity>(level);
    for (FindingText* const text :
         {&episode.Identity, &episode.Id, &episode.Message, &episode.Where, &episode.Path}) {
      *text = reader->Text();
    }
    Reader::Require(data->Findings.Restore(std::move(episode)));
  }
}

void TakeRows(Reader* reader, HistoryData* data) {
  constexpr std::size_t kLeast = 13;  // bytes of a row
  const std::uint32_t count = reader->Count(kLeast, HistoryRows::kMostRows + 1);
  const auto own = reader->Take<std::uint32_t>();
  Reader::Require(own <= count);
  for (std::uint32_t left = count; left > 0; --left) {
    const UnixSeconds time = reader->Time();
    const auto gap = reader->Take<std::uint8_t>();
    const std::string_view changes = reader->Bytes(reader->Take<std::uint32_t>());
    Reader::Require(gap <= 1);
    Reader::Require(data->Rows.Restore(
        time, gap == 1, {reinterpret_cast<const std::uint8_t*>(changes.data()), changes.size()}));
  }
  data->Rows.SetOfThisBoot(own);
}

std::string RowHead(const HistoryRows::Row& row) {
  std::string bytes;
  Put(row.Time, &bytes);
  Put(static_cast<std::uint8_t>(row.Gap ? 1 : 0), &bytes);
  Put(row.Size, &bytes);
  return bytes;
}

}  // namespace

std::uint64_t Checksum(std::string_view bytes, std::uint64_t begun) {
  constexpr std::uint64_t kPrime = 0x100000001B3U;
  for (const char byte : bytes) {
    begun = (begun ^ static_cast<std::uint8_t>(byte)) * kPrime;
  }
  return begun;
}

HistoryImage::HistoryImage(const HistoryData& data)
    : head_(kMagic), rows_(data.Rows.All().begin(), data.Rows.All().end()) {
  Put(kVersion, &head_);
  Put(std::uint64_t{0}, &head_);  // the size
  Put(data.Latest.System, &head_);
  Put(data.Latest.Steady, &head_);
  Put(data.Latest.Boot, &head_);
  Put(data.Rows.SeriesCount(), &head_);
  for (const float number : data.Rows.Base()) {
    Put(std::bit_cast<std::uint32_t>(number), &head_);
  }
  PutNames(data, &head_);
  PutFindings(data, &head_);
  Put(static_cast<std::uint32_t>(rows_.size()), &head_);
  Put(static_cast<std::uint32_t>(data.Rows.OfThisBoot()), &head_);
  std::uint64_t size = head_.size() + sizeof(std::uint64_t);
  for (const HistoryRows::Row& row : rows_) {
    size += RowHead(row).size() + row.Size;
  }
  std::string size_bytes;
  Put(size, &size_bytes);
  head_.replace(kSizeAt, size_bytes.size(), size_bytes);
}

void HistoryImage::Write(const std::function<void(std::string_view)>& write) const {
  constexpr std::size_t kBlock = 65536;
  std::uint64_t checksum = Checksum("");
  std::string block;
  const auto put = [&](std::string_view bytes, std::size_t most) {
    checksum = Checksum(bytes, checksum);
    block += bytes;
    if (block.size() >= most) {
      write(block);
      block.clear();
    }
  };
  put(head_, 0);
  for (const HistoryRows::Row& row : rows_) {
    put(RowHead(row), kBlock);
    put({reinterpret_cast<const char*>(row.Changes.get()), row.Size}, kBlock);
  }
  Put(checksum, &block);
  write(block);
}

HistoryData ParseHistory(std::string_view file, std::uint32_t interval) {
  Reader reader = Checked(file);
  HistoryData data(interval);
  TakeClocks(&reader, &data);
  TakeBase(&reader, &data);
  TakeNames(&reader, &data);
  TakeFindings(&reader, &data);
  TakeRows(&reader, &data);
  Reader::Require(reader.AtEnd());
  return data;
}

}  // namespace serve
