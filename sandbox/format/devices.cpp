#include "sandbox/format/devices.h"

#include <array>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <vector>

#include "sandbox/format/text.h"

namespace sandbox {
namespace {

// Requests and answers are 32 bits wide; both signs are accepted and the bits count.
std::uint32_t ParseNumber(const std::string& word) {
  std::size_t used = 0;
  const long long value = std::stoll(word, &used, word.find('x') == std::string::npos ? 10 : 16);
  if (used != word.size() || value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::uint32_t>::max()) {
    throw std::runtime_error("not a number of 32 bits: " + word);
  }
  return static_cast<std::uint32_t>(value);
}

}  // namespace

DeviceAnswers DeviceAnswers::Parse(std::string_view text) {
  DeviceAnswers answers;
  ForEachLine(text, [&answers](const std::vector<std::string>& words) {
    if (words.size() != 2) {
      throw std::runtime_error("expected a request and its answer, or \"open\" and an errno");
    }
    const auto value = static_cast<std::int32_t>(ParseNumber(words[1]));
    if (words[0] == "open") {
      answers.OpenError = value;
    } else {
      answers.Values[ParseNumber(words[0])] = value;
    }
  });
  return answers;
}

std::string DeviceAnswers::Text() const {
  std::string text;
  if (OpenError != 0) {
    text += "open " + std::to_string(OpenError) + "\n";
  }
  for (const auto& [request, value] : Values) {
    std::array<char, 40> line = {};
    std::snprintf(line.data(), line.size(), "0x%08X %d\n", request, value);
    text += line.data();
  }
  return text;
}

}  // namespace sandbox
