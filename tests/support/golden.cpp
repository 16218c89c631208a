#include "tests/support/golden.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

#include "tests/support/paths.h"

namespace test_support {
namespace {

std::string FullPath(const std::string& path) { return SourceTree() + "/" + path; }

std::string_view LineAt(const std::string& text, std::size_t position) {
  const std::size_t begin = position == 0 ? 0 : text.rfind('\n', position - 1) + 1;
  return std::string_view(text).substr(begin, text.find('\n', position) - begin);
}

}  // namespace

std::string ReadSource(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(FullPath(path), std::ios::binary).rdbuf();
  return text.str();
}

testing::AssertionResult MatchesGolden(const std::string& actual, const std::string& path) {
  const std::string expected = ReadSource(path);
  if (actual == expected) {
    return testing::AssertionSuccess();
  }
  if (std::getenv("STATUS_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(FullPath(path), std::ios::binary) << actual;
    return ReadSource(path) == actual ? testing::AssertionSuccess()
                                      : testing::AssertionFailure() << path << " is not writable";
  }
  const auto difference =
      std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  const auto position = static_cast<std::size_t>(difference.first - actual.begin());
  const auto line = std::count(actual.begin(), difference.first, '\n') + 1;
  return testing::AssertionFailure()
         << path << ":" << line << " holds\n  "
         << LineAt(expected, std::min(position, expected.size())) << "\nbut it should be\n  "
         << LineAt(actual, position)
         << "\nSTATUS_UPDATE_GOLDEN=1 in the environment writes the file anew.";
}

}  // namespace test_support
