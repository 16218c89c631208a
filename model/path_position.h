// The positions in paths; private to this folder.
#pragma once

#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace QtSts {

// "[12]" as 12; nothing for any other text.
inline std::optional<std::size_t> ParsePosition(std::string_view text) {
  std::size_t position = 0;
  if (!text.starts_with('[') || !text.ends_with(']')) {
    return std::nullopt;
  }
  const char* const end = text.data() + text.size() - 1;
  const auto [stopped, error] = std::from_chars(text.data() + 1, end, position);
  return error == std::errc() && stopped == end ? std::optional(position) : std::nullopt;
}

}  // namespace QtSts
