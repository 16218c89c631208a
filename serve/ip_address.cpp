#include "serve/ip_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace serve {
namespace {

constexpr std::size_t kFourBytes = 4;
constexpr std::size_t kPrefixBytes = 8;
constexpr std::array<std::uint8_t, 12> kFourPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

IpAddress OfFour(const void* bytes) {
  IpAddress address;
  std::ranges::copy(kFourPrefix, address.Bytes.begin());
  std::memcpy(&address.Bytes[kFourPrefix.size()], bytes, kFourBytes);
  return address;
}

IpAddress OfSix(const void* bytes) {
  IpAddress address;
  std::memcpy(address.Bytes.data(), bytes, address.Bytes.size());
  return address;
}

[[noreturn]] void Refuse(const std::string& text) {
  throw std::runtime_error("--listen: " + text +
                           " is not ADDRESS:PORT; examples are 127.0.0.1:9877 and [::1]:9877");
}

}  // namespace

bool IpAddress::IsFour() const {
  return std::equal(kFourPrefix.begin(), kFourPrefix.end(), Bytes.begin());
}

bool IpAddress::IsLoopback() const {
  constexpr std::uint8_t kLoopbackNetwork = 127;
  return IsFour() ? Bytes[kFourPrefix.size()] == kLoopbackNetwork
                  : *this == OfSix(&in6addr_loopback);
}

bool IpAddress::IsAny() const {
  const in_addr any = {};
  return *this == IpAddress() || *this == OfFour(&any);
}

IpAddress IpAddress::Machine() const {
  IpAddress machine = *this;
  if (!IsFour()) {
    std::fill(machine.Bytes.begin() + kPrefixBytes, machine.Bytes.end(), std::uint8_t{0});
  }
  return machine;
}

std::optional<IpAddress> ParseIpAddress(std::string_view text) {
  const std::string whole(text);
  if (whole.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  in_addr four = {};
  in6_addr six = {};
  if (inet_pton(AF_INET, whole.c_str(), &four) == 1) {
    return OfFour(&four);
  }
  if (inet_pton(AF_INET6, whole.c_str(), &six) == 1) {
    return OfSix(&six);
  }
  return std::nullopt;
}

std::optional<IpAddress> AddressOf(const sockaddr* address) {
  if (address != nullptr && address->sa_family == AF_INET) {
    sockaddr_in four = {};
    std::memcpy(&four, address, sizeof four);
    return OfFour(&four.sin_addr);
  }
  if (address != nullptr && address->sa_family == AF_INET6) {
    sockaddr_in6 six = {};
    std::memcpy(&six, address, sizeof six);
    return OfSix(&six.sin6_addr);
  }
  return std::nullopt;
}

socklen_t ListenAddress::Fill(sockaddr_storage* storage) const {
  *storage = {};
  if (Address.IsFour()) {
    sockaddr_in four = {};
    four.sin_family = AF_INET;
    four.sin_port = htons(Port);
    std::memcpy(&four.sin_addr, &Address.Bytes[kFourPrefix.size()], kFourBytes);
    std::memcpy(storage, &four, sizeof four);
    return sizeof four;
  }
  sockaddr_in6 six = {};
  six.sin6_family = AF_INET6;
  six.sin6_port = htons(Port);
  std::memcpy(&six.sin6_addr, Address.Bytes.data(), Address.Bytes.size());
  std::memcpy(storage, &six, sizeof six);
  return sizeof six;
}

ListenAddress ParseListenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) {
    Refuse(text);
  }
  std::string_view address = std::string_view(text).substr(0, colon);
  const bool between_brackets = address.starts_with('[') && address.ends_with(']');
  if (between_brackets) {
    address = address.substr(1, address.size() - 2);
  }
  const std::optional<IpAddress> parsed = ParseIpAddress(address);
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [after, error] = std::from_chars(text.data() + colon + 1, end, port);
  if (!parsed || error != std::errc() || after != end || port == 0 ||
      between_brackets != (address.find(':') != std::string_view::npos)) {
    Refuse(text);
  }
  return {*parsed, port, text};
}

}  // namespace serve
