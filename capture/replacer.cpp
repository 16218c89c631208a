#include "capture/replacer.h"

#include <algorithm>
#include <utility>

namespace capture {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsHexadecimal(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string Small(std::string_view text) {
  std::string small(text);
  std::ranges::transform(small, small.begin(), Lower);
  return small;
}

bool Fits(Edge sides, std::string_view text, std::size_t begin, std::size_t end) {
  const char before = begin == 0 ? '\n' : text[begin - 1];
  const char after = end < text.size() ? text[end] : '\n';
  const auto neither = [&](auto is) { return !is(before) && !is(after); };
  switch (sides) {
    case Edge::kAnything:
      return true;
    case Edge::kNoDigit:
      return neither(IsDigit);
    case Edge::kNoNumber: {
      const bool fraction = after == '.' && end + 1 < text.size() && IsDigit(text[end + 1]);
      const bool whole = before == '.' && begin > 1 && IsDigit(text[begin - 2]);
      return neither(IsDigit) && !fraction && !whole;
    }
    case Edge::kNoHexadecimal:
      return neither(IsHexadecimal);
    case Edge::kNoGroup:
      return neither([](char c) { return IsHexadecimal(c) || c == ':'; });
    case Edge::kNoLetter:
      return neither([](char c) { return IsLetter(c) || IsDigit(c); });
  }
  return false;
}

}  // namespace

Replacer::Replacer(std::vector<Spelling> spellings) : spellings_(std::move(spellings)) {
  std::ranges::stable_sort(spellings_, [](const Spelling& one, const Spelling& next) {
    return one.Before.size() > next.Before.size();
  });
}

std::string Replacer::ReplaceEnd(std::string_view text) const {
  constexpr std::size_t kLeast = 4;  // characters that may say something
  const std::string small = Small(text);
  for (const Spelling& spelling : spellings_) {
    for (std::size_t length = std::min(spelling.Before.size() - 1, small.size());
         spelling.What == As::kText && length >= kLeast; --length) {
      const std::size_t begin = small.size() - length;
      const bool fits = spelling.Sides == Edge::kAnything || begin == 0 ||
                        Fits(spelling.Sides, small, begin, small.size());
      if (fits && small.ends_with(std::string_view(spelling.Before).substr(0, length))) {
        return std::string(text.substr(0, begin)) + spelling.Now.substr(0, length);
      }
    }
  }
  return std::string(text);
}

std::string Replacer::Replace(std::string_view text, bool with_numbers) const {
  std::string result(text);
  std::string small = Small(text);
  for (const Spelling& spelling : spellings_) {
    if (!with_numbers && spelling.What != As::kText) {
      continue;
    }
    const std::string& where = spelling.What == As::kBytes ? result : small;
    for (std::size_t at = where.find(spelling.Before); at != std::string::npos;
         at = where.find(spelling.Before, at)) {
      const std::size_t end = at + spelling.Before.size();
      if (!Fits(spelling.Sides, result, at, end)) {
        ++at;
        continue;
      }
      std::string now = spelling.Now;
      const std::string_view there = std::string_view(result).substr(at, end - at);
      if (std::ranges::any_of(there, [](char c) { return c >= 'A' && c <= 'Z'; }) &&
          spelling.What != As::kBytes) {
        std::ranges::transform(now, now.begin(), [](char c) {
          return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        });
      }
      result.replace(at, spelling.Before.size(), now);
      small.replace(at, spelling.Before.size(), Small(now));
      at += now.size();
    }
  }
  return result;
}

}  // namespace capture
