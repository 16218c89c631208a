#include "insight/nearest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "collector/state/numbers.h"

namespace insight {
namespace {

// Longer texts are no misspelt names.
constexpr std::size_t kLongest = 64;

// What goes on from fewer letters is not near to them.
constexpr std::size_t kShortestBeginning = 3;

// The distances of candidates are weighed in tenths, so that lengths can decide between equals.
constexpr std::size_t kTenths = 10;

char Lower(char c) { return static_cast<char>(numbers::ToLower(static_cast<unsigned char>(c))); }

bool Same(char left, char right) { return Lower(left) == Lower(right); }

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return beginning.size() >= kShortestBeginning && beginning.size() <= text.size() &&
         std::equal(beginning.begin(), beginning.end(), text.begin(), &Same);
}

std::size_t Difference(std::size_t left, std::size_t right) {
  return left < right ? right - left : left - right;
}

// Which letters a text has, whatever their case; one bit for all other bytes.
std::uint32_t LettersOf(std::string_view text) {
  std::uint32_t letters = 0;
  for (const char c : text) {
    const auto at = static_cast<unsigned char>(Lower(c) - 'a');
    letters |= std::uint32_t{1} << (at < 26 ? at : 26U);
  }
  return letters;
}

// A difference removes one letter from a text that the other one lacks, so that there are this many
// differences at least.
std::size_t LeastDistance(std::uint32_t left, std::uint32_t right) {
  return static_cast<std::size_t>(
      std::max(std::popcount(left & ~right), std::popcount(right & ~left)));
}

}  // namespace

std::size_t Distance(std::string_view left, std::string_view right, std::size_t limit) {
  if (left.size() > kLongest || right.size() > kLongest ||
      Difference(left.size(), right.size()) >= limit) {
    return limit;
  }
  // Rows of the letters of `left` so far: the one being made, the one before it, and one more.
  std::array<std::array<std::size_t, kLongest + 1>, 3> rows;
  for (std::size_t at = 0; at <= right.size(); ++at) {
    rows[0][at] = at;
  }
  std::size_t least_before = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    auto& row = rows[(i + 1) % 3];
    const auto& last = rows[i % 3];
    const auto& before = rows[(i + 2) % 3];
    std::size_t least = row[0] = i + 1;
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t replaced = last[j] + (Same(left[i], right[j]) ? 0 : 1);
      row[j + 1] = std::min({replaced, last[j + 1] + 1, row[j] + 1});
      if (i > 0 && j > 0 && Same(left[i], right[j - 1]) && Same(left[i - 1], right[j])) {
        row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
      }
      least = std::min(least, row[j + 1]);
    }
    if (std::min(least, least_before + 1) >= limit) {
      return limit;
    }
    least_before = least;
  }
  return std::min(rows[left.size() % 3][right.size()], limit);
}

Names::Names(const std::vector<std::string_view>& names) {
  for (const std::string_view name : names) {
    names_.push_back({name, LettersOf(name)});
  }
}

std::string_view Names::Nearest(std::string_view text) const {
  const std::uint32_t letters = LettersOf(text);
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(text.size() / 3, 1) * kTenths + kTenths;
  for (const Name& name : names_) {
    std::size_t weight = 0;
    if (BeginsWith(text, name.Text) || BeginsWith(name.Text, text)) {
      weight = kTenths / 2 + std::min(Difference(text.size(), name.Text.size()), kTenths - 1);
    } else if (LeastDistance(letters, name.Letters) * kTenths >= least) {
      continue;
    } else {
      weight = Distance(text, name.Text, least / kTenths + 1) * kTenths;
    }
    if (weight < least) {
      least = weight;
      nearest = name.Text;
    }
  }
  return nearest;
}

}  // namespace insight
