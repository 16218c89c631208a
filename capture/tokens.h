// Finds what identifies a controller in any text, by its form.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace capture {

// The first number is the highest byte: "10.0.0.1" is 0x0A000001.
using IPv4 = std::uint32_t;
using IPv6 = std::array<std::uint16_t, 8>;
// "00:1A:2B:3C:4D:5E" is 0x001A2B3C4D5E.
using StationAddress = std::uint64_t;

// What is to stand in place of a token; nothing: the token itself.
using Use = std::function<std::optional<std::string>(std::string_view token)>;

// Each returns `text` with the tokens that `use` replaces. What a token touches belongs to it:
// there is no address in a longer number.
std::string RewriteIPv4(std::string_view text, const Use& use);      // "10.0.0.1"
std::string RewriteIPv6(std::string_view text, const Use& use);      // "fe80::1", of any spelling
std::string RewriteStations(std::string_view text, const Use& use);  // "00:1A:2B:3C:4D:5E",
                                                                     // "00-1a-..", "001a.2b3c.4d5e"
// Digits after "0x"; without it those that have a letter among them, or are eight and more.
std::string RewriteHexadecimal(std::string_view text, const Use& use);
std::string RewriteDecimal(std::string_view text, const Use& use);  // whole numbers
std::string RewriteUuids(std::string_view text, const Use& use);
// Of `word`, in letters of either case.
std::string RewriteWord(std::string_view text, std::string_view word, const Use& use);

// What a token of these forms says.
std::optional<IPv4> ParseIPv4(std::string_view token);
std::optional<IPv6> ParseIPv6(std::string_view token);
StationAddress ParseStation(std::string_view token);

// As the system writes them.
std::string TextOf(IPv4 address);
std::string TextOf(const IPv6& address);

// `address` in the spelling of `token`: letters, leading zeros, separators. Without letters it is
// in those that the system writes.
std::string InTheSpellingOf(std::string_view token, const IPv6& address);
std::string InTheSpellingOf(std::string_view token, StationAddress address);

// `number` in hexadecimal digits as many as `token` has at least, with its letters.
std::string HexadecimalLike(std::string_view token, std::uint64_t number);

}  // namespace capture
