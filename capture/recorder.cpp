#include "capture/recorder.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/vfs.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <utility>

namespace capture {
namespace {

using observe::Call;

// Of any type: the list's addresses may stand anywhere in memory.
template <class T>
T As(const sockaddr* address) {
  T copy;
  std::memcpy(&copy, address, sizeof copy);
  return copy;
}

std::string LinkText(const sockaddr_ll& link) {
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(link.sll_halen, 6); ++i) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%s%02X", i == 0 ? "" : ":", link.sll_addr[i]);
    text += pair;
  }
  return text;
}

std::string Numeric(int family, const void* bytes) {
  char text[INET6_ADDRSTRLEN] = "";
  return inet_ntop(family, bytes, text, sizeof text) == nullptr ? "" : text;
}

// "" when there is no address.
std::string AddressText(const sockaddr* address) {
  if (address == nullptr) {
    return "";
  }
  switch (address->sa_family) {
    case AF_PACKET:
      return LinkText(As<sockaddr_ll>(address));
    case AF_INET: {
      const auto ipv4 = As<sockaddr_in>(address);
      return Numeric(AF_INET, &ipv4.sin_addr);
    }
    case AF_INET6: {
      const auto ipv6 = As<sockaddr_in6>(address);
      return Numeric(AF_INET6, &ipv6.sin6_addr);
    }
    default:
      return "";
  }
}

template <class T>
std::string PrefixOf(const T& mask) {
  unsigned char bytes[sizeof mask];
  std::memcpy(bytes, &mask, sizeof mask);
  int bits = 0;
  for (const unsigned char byte : bytes) {
    bits += std::popcount(byte);
  }
  return std::to_string(bits);
}

std::string PrefixText(const sockaddr* address, const sockaddr* mask) {
  if (address == nullptr || mask == nullptr) {
    return "";
  }
  switch (address->sa_family) {
    case AF_INET:
      return PrefixOf(As<sockaddr_in>(mask).sin_addr);
    case AF_INET6:
      return PrefixOf(As<sockaddr_in6>(mask).sin6_addr);
    default:
      return "";
  }
}

const char* FamilyName(const sockaddr* address) {
  switch (address == nullptr ? AF_UNSPEC : address->sa_family) {
    case AF_PACKET:
      return "link";
    case AF_INET:
      return "IPv4";
    case AF_INET6:
      return "IPv6";
    default:
      return "";
  }
}

Observation Entry(const ifaddrs& entry) {
  Observation seen = {.What = Saw::kInterface};
  seen.Number = entry.ifa_flags;
  seen.Texts.resize(entry::kCount);
  seen.Texts[entry::kName] = entry.ifa_name;
  seen.Texts[entry::kFamily] = FamilyName(entry.ifa_addr);
  seen.Texts[entry::kAddress] = AddressText(entry.ifa_addr);
  seen.Texts[entry::kPrefix] = PrefixText(entry.ifa_addr, entry.ifa_netmask);
  if (seen.Texts[entry::kFamily] == "IPv4") {
    seen.Texts[entry::kBroadcast] = AddressText(entry.ifa_broadaddr);
  }
  return seen;
}

std::string TimeText(const std::tm& time) {
  char text[64];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &time)};
}

// Sets what belongs to the call.
void Fill(const observe::Answers& answer, Observation* seen) {
  seen->Number = answer.Question->Number;
  seen->Offset = answer.Question->Offset;
  seen->Limit = answer.Question->Limit;
  if (answer.Question->What == Call::kOpen) {
    seen->Offset = answer.Question->Descriptor >= 0 ? 1 : 0;
  }
  seen->Texts.emplace_back(answer.Bytes);
  if (answer.Status != nullptr) {
    seen->Number = answer.Status->st_mode;
    seen->Offset = answer.Status->st_uid;
  } else if (answer.System != nullptr) {
    seen->Number = static_cast<std::uint64_t>(answer.System->uptime);
  } else if (answer.Storage != nullptr) {
    seen->Number = answer.Storage->f_blocks;
    seen->Offset = answer.Storage->f_bfree;
    seen->Limit = static_cast<std::uint64_t>(answer.Storage->f_bsize);
  } else if (answer.Time != nullptr) {
    seen->Number = static_cast<std::uint64_t>(answer.Time->tm_gmtoff);
    seen->Offset = answer.Time->tm_isdst != 0 ? 1 : 0;
    seen->Texts.back() = TimeText(*answer.Time);
  }
}

// What a row has, and whether it goes on after a zero byte.
Observation RowOf(const observe::RowBegins& row) {
  Observation seen = {.What = Saw::kRow};
  for (const int column : {0, 1}) {
    const char* const text = column == 0 ? row.Key : row.Value;
    seen.Texts.emplace_back(text == nullptr ? "" : text);
    if (text == nullptr) {
      seen.Number |= 1U << column;
    } else if (row.StoredBytes(column) > seen.Texts.back().size()) {
      seen.Number |= 4U << column;
    }
  }
  return seen;
}

}  // namespace

Recorder::Recorder(std::function<void(const Observation&)> take)
    : take_(std::move(take)), before_(observe::SetObserver(this)) {}

Recorder::~Recorder() { observe::SetObserver(before_); }

void Recorder::See(const observe::Event& event) {
  if (const auto* const answer = event.As<observe::Answers>()) {
    SeeAnswer(*answer);
  } else if (const auto* const asks = event.As<observe::Asks>()) {
    Observation seen = {.What = Saw::kAsks, .Call = static_cast<std::uint32_t>(asks->What)};
    seen.Texts.emplace_back(asks->Source);
    take_(seen);
  } else if (const auto* const row = event.As<observe::RowBegins>()) {
    take_(RowOf(*row));
  } else if (const auto* const probe = event.As<observe::ProbeBegins>()) {
    take_({.What = Saw::kProbeBegins, .Texts = {probe->Probe}});
  } else if (const auto* const stage = event.As<observe::AsksDatabase>()) {
    take_({.What = Saw::kAsksDatabase, .Number = static_cast<std::uint64_t>(stage->At)});
  } else if (const auto* const failure = event.As<observe::DatabaseFails>()) {
    take_({.What = Saw::kDatabaseFails,
           .Result = failure->Code,
           .Number = static_cast<std::uint64_t>(failure->At),
           .Texts = {failure->Message == nullptr ? "" : failure->Message}});
  } else if (event.As<observe::CycleBegins>() != nullptr) {
    take_({.What = Saw::kCycleBegins});
  } else if (const auto* const end = event.As<observe::CycleEnds>()) {
    take_({.What = Saw::kCycleEnds, .Result = end->Result, .Number = end->Threw ? 1U : 0U});
  }
}

void Recorder::SeeAnswer(const observe::Answers& answer) {
  for (const ifaddrs* entry = answer.Interfaces; entry != nullptr; entry = entry->ifa_next) {
    take_(Entry(*entry));
  }
  Observation seen = {.What = Saw::kAnswers,
                      .Call = static_cast<std::uint32_t>(answer.Question->What),
                      .Error = answer.Error,
                      .Result = answer.Result};
  seen.Texts.emplace_back(answer.Question->Source);
  Fill(answer, &seen);
  take_(seen);
}

}  // namespace capture
