#include "hardware/parse_network.h"

#include <arpa/inet.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "collector/state/report.h"
#include "hardware/parse_hex.h"

namespace hardware {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::size_t kLongestLine = 255;

// Removes the next line from `text` and returns it with its line feed, or its first kLongestLine
// bytes.
std::string_view TakeLine(std::string_view* text) {
  const std::size_t length = std::min(text->find('\n'), text->size() - 1) + 1;
  const std::string_view line = text->substr(0, std::min(length, kLongestLine));
  text->remove_prefix(line.size());
  return line;
}

void SkipBlanks(std::string_view* text) {
  text->remove_prefix(std::min(text->find_first_not_of(kBlanks), text->size()));
}

// Removes the next word from `text` and returns it; empty when there is none.
std::string_view TakeWord(std::string_view* text) {
  SkipBlanks(text);
  const std::string_view word = text->substr(0, text->find_first_of(kBlanks));
  text->remove_prefix(word.size());
  return word;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Removes the next decimal number from `text` and returns it modulo 2^32; nothing when something
// else comes.
std::optional<std::uint32_t> TakeNumber(std::string_view* text) {
  SkipBlanks(text);
  const bool negative = text->starts_with('-');
  if (negative || text->starts_with('+')) {
    text->remove_prefix(1);
  }
  if (text->empty() || !IsDigit(text->front())) {
    return std::nullopt;
  }
  std::uint32_t value = 0;
  for (; !text->empty() && IsDigit(text->front()); text->remove_prefix(1)) {
    value = value * 10 + static_cast<std::uint32_t>(text->front() - '0');
  }
  return negative ? 0U - value : value;
}

// The kernel prints addresses as they stand in memory: in network byte order.
std::string DottedAddress(std::string_view hexadecimal) {
  const in_addr address{static_cast<in_addr_t>(HexValue(std::string(hexadecimal).c_str()))};
  return inet_ntoa(address);
}

}  // namespace

std::string BaseName(std::string_view interface) {
  return std::string(interface.substr(0, interface.find(':')));
}

std::string HardwareAddressText(const unsigned char* bytes) {
  char text[IFHWADDRLEN * 3 + 1];
  for (std::size_t i = 0; i < IFHWADDRLEN; ++i) {
    std::snprintf(text + i * 3, 4, "%.2X:", bytes[i]);
  }
  return {text, sizeof text - 2};
}

std::optional<std::string> ParseDefaultGateway(std::string_view routes,
                                               std::string_view interface) {
  while (!routes.empty()) {
    std::string_view line = TakeLine(&routes);
    line = line.substr(0, line.find('\0'));
    const std::string_view name = TakeWord(&line);
    const std::string_view destination = TakeWord(&line);
    if (name == interface && destination == "00000000") {
      return DottedAddress(TakeWord(&line));
    }
  }
  return std::nullopt;
}

std::int32_t ParseLinkErrors(const char* counters, const char* interface) {
  const char* found = std::strstr(counters, interface);
  if (!observe::ReportLabel(interface, found != nullptr)) {
    return 0;
  }
  std::string_view line = found;
  TakeWord(&line);
  constexpr std::size_t kColumns = 16;
  constexpr std::size_t kReceiveErrors = 2;
  constexpr std::size_t kTransmitErrors = 10;
  std::array<std::uint32_t, kColumns> columns{};
  for (std::uint32_t& column : columns) {
    const auto number = TakeNumber(&line);
    if (!number) {
      break;
    }
    column = *number;
  }
  return static_cast<std::int32_t>(columns[kReceiveErrors] + columns[kTransmitErrors]);
}

std::vector<std::string> ParseNameServers(std::string_view resolver) {
  constexpr const char* kLabelText = "nameserver ";
  constexpr std::string_view kLabel = kLabelText;
  std::vector<std::string> servers;
  for (;;) {
    const std::size_t label = resolver.find(kLabel);
    if (!observe::ReportLabel(kLabelText, label != std::string_view::npos)) {
      return servers;
    }
    resolver.remove_prefix(label + kLabel.size());
    const std::size_t end = resolver.find_first_not_of("0123456789.");
    if (end == std::string_view::npos) {
      return servers;
    }
    servers.emplace_back(resolver.substr(0, end));
    resolver.remove_prefix(end);
  }
}

}  // namespace hardware
