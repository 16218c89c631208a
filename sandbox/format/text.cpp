#include "sandbox/format/text.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

#include "sandbox/format/limits.h"

namespace sandbox {
namespace {

constexpr std::string_view kBlanks = " \t\v\f\r";
constexpr std::string_view kEscape = "\\x";
constexpr std::string_view kDigits = "0123456789ABCDEF";

std::string PlainWord(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    if (text.front() != '\\') {
      plain += text.front();
      text.remove_prefix(1);
    } else if (text.substr(0, kEscape.size()) == kEscape) {
      plain += ByteOf(text.substr(kEscape.size(), 2));
      text.remove_prefix(kEscape.size() + 2);
    } else {
      throw std::runtime_error("a backslash stands before x and two digits only");
    }
  }
  return plain;
}

std::vector<std::string> Words(std::string_view line) {
  std::vector<std::string> words;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    if (line.empty() || line.front() == '#') {
      return words;
    }
    const std::size_t length = std::min(line.find_first_of(kBlanks), line.size());
    words.push_back(PlainWord(line.substr(0, length)));
    line.remove_prefix(length);
  }
}

}  // namespace

void ForEachRawLine(std::string_view text, const std::function<void(const std::string&)>& use) {
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    use(std::string(text.substr(0, length)));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
}

void ForEachLine(std::string_view text,
                 const std::function<void(const std::vector<std::string>&)>& use) {
  std::size_t number = 0;
  ForEachRawLine(text, [&](const std::string& line) {
    if (++number > kMostLines) {
      throw std::runtime_error("more than " + std::to_string(kMostLines) + " lines");
    }
    try {
      const std::vector<std::string> words = Words(line);
      if (!words.empty()) {
        use(words);
      }
    } catch (const std::exception& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  });
}

std::string WordText(std::string_view plain) {
  constexpr unsigned char kLastControl = 0x20;
  constexpr unsigned char kDelete = 0x7F;
  std::string text;
  for (const char c : plain) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= kLastControl || byte == kDelete || c == '#' || c == '\\') {
      text.append(kEscape).append(Hexadecimal(c));
    } else {
      text += c;
    }
  }
  return text;
}

std::string Hexadecimal(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return {kDigits[value / kDigits.size()], kDigits[value % kDigits.size()]};
}

char ByteOf(std::string_view digits) {
  unsigned char value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [read, error] = std::from_chars(digits.data(), end, value, 16);
  if (digits.size() != 2 || error != std::errc() || read != end) {
    throw std::runtime_error("not two hexadecimal digits: " + std::string(digits));
  }
  return static_cast<char>(value);
}

std::uint64_t NumberOf(const std::string& word, std::uint64_t most) {
  std::uint64_t value = 0;
  const char* const end = word.data() + word.size();
  const auto [read, error] = std::from_chars(word.data(), end, value);
  if (word.empty() || error != std::errc() || read != end || value > most) {
    throw std::runtime_error("not a number up to " + std::to_string(most) + ": " + word);
  }
  return value;
}

}  // namespace sandbox
