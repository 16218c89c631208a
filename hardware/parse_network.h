// The kernel's and the resolver's texts about the network. None depends on the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hardware {

// The interface's name without an alias's suffix: "eth0" of "eth0:1".
std::string BaseName(std::string_view interface);

// Six bytes as upper-case pairs joined by ':', such as "00:1A:2B:3C:4D:5E".
std::string HardwareAddressText(const unsigned char* bytes);

// Dotted gateway of the first default route through exactly this interface, nothing without one.
// Lines of the kernel's table longer than 255 characters count as several.
std::optional<std::string> ParseDefaultGateway(std::string_view routes, std::string_view interface);

// Sum of receive and transmit errors of an interface, 0 when it is not listed. Deliberately the
// first occurrence of the name is taken, even within a longer name, and a counter that follows the
// name's colon without a blank shifts the columns. Counters and their sum keep their low 32 bits;
// missing counters are 0.
std::int32_t ParseLinkErrors(const char* counters, const char* interface);

// The addresses: the digits and dots after each "nameserver ", in order. Deliberately none is
// validated: one in a comment counts, of an IPv6 address only the digits that it begins with
// remain, perhaps none, and one that ends with the text is dropped.
std::vector<std::string> ParseNameServers(std::string_view resolver);

}  // namespace hardware
