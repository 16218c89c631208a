#include "sandbox/text.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace sandbox {
namespace {

std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream stream(line);
  for (std::string word; stream >> word && word.front() != '#';) {
    words.push_back(word);
  }
  return words;
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
  int number = 0;
  ForEachRawLine(text, [&](const std::string& line) {
    ++number;
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

}  // namespace sandbox
