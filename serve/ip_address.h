// Addresses of the network, as values.
#pragma once

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace serve {

// An IPv6 address, or an IPv4 address in the form ::ffff:a.b.c.d.
struct IpAddress {
  std::array<std::uint8_t, 16> Bytes = {};

  bool operator==(const IpAddress&) const = default;
  bool operator<(const IpAddress& other) const { return Bytes < other.Bytes; }

  bool IsFour() const;
  bool IsLoopback() const;
  // 0.0.0.0 or ::
  bool IsAny() const;
  // What one machine has: the address, or the first 64 bits of one of IPv6.
  IpAddress Machine() const;
};

// "192.0.2.1", "2001:db8::1"; nothing for any other text, also for one with a scope.
std::optional<IpAddress> ParseIpAddress(std::string_view text);

// Of a socket; nothing for one that is not of IPv4 or IPv6.
std::optional<IpAddress> AddressOf(const sockaddr* address);

// Where a server listens.
struct ListenAddress {
  IpAddress Address;
  std::uint16_t Port = 0;
  std::string Text;  // as it was given

  // For bind(); returns its size.
  socklen_t Fill(sockaddr_storage* storage) const;
};

// "ADDRESS:PORT", an IPv6 address between brackets: "[::1]:9877". Throws std::runtime_error, which
// says what is wrong.
ListenAddress ParseListenAddress(const std::string& text);

}  // namespace serve
