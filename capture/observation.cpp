#include "capture/observation.h"

#include <cstring>

namespace capture {
namespace {

struct Head {
  std::uint32_t What;
  std::uint32_t Call;
  std::int32_t Error;
  std::uint32_t Texts;
  std::int64_t Result;
  std::uint64_t Number;
  std::uint64_t Offset;
  std::uint64_t Limit;
  std::uint64_t Bytes;  // of the texts, with the length before each
};

template <class T>
void Append(const T& value, std::string* bytes) {
  bytes->append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <class T>
T Read(const char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

}  // namespace

std::string Encode(const Observation& observation) {
  std::string texts;
  for (const std::string& text : observation.Texts) {
    Append(std::uint64_t{text.size()}, &texts);
    texts += text;
  }
  const Head head = {static_cast<std::uint32_t>(observation.What),
                     observation.Call,
                     observation.Error,
                     static_cast<std::uint32_t>(observation.Texts.size()),
                     observation.Result,
                     observation.Number,
                     observation.Offset,
                     observation.Limit,
                     texts.size()};
  std::string bytes;
  bytes.reserve(sizeof head + texts.size());
  Append(head, &bytes);
  return bytes += texts;
}

std::optional<Observation> Decoder::Next() {
  const std::size_t left = bytes_.size() - at_;
  if (left < sizeof(Head)) {
    return std::nullopt;
  }
  const Head head = Read<Head>(bytes_.data() + at_);
  if (left - sizeof head < head.Bytes) {
    return std::nullopt;
  }
  Observation observation = {static_cast<Saw>(head.What),
                             head.Call,
                             head.Error,
                             head.Result,
                             head.Number,
                             head.Offset,
                             head.Limit};
  const char* text = bytes_.data() + at_ + sizeof head;
  for (std::uint32_t i = 0; i < head.Texts; ++i) {
    const auto length = Read<std::uint64_t>(text);
    text += sizeof length;
    observation.Texts.emplace_back(text, length);
    text += length;
  }
  at_ += sizeof head + head.Bytes;
  if (at_ > bytes_.size() / 2) {
    bytes_.erase(0, at_);
    at_ = 0;
  }
  return observation;
}

}  // namespace capture
