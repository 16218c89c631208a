// docs/library.md against the examples that it shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

TEST(LibraryReference, HasTheExamplesThatAreBuilt) {
  std::vector<std::string> shown;
  for (const auto& block : markdown::Blocks(test_support::ReadSource("docs/library.md"))) {
    if (block.Language == "cpp") {
      shown.push_back(block.Text);
    }
  }
  std::vector<std::string> built;
  for (const char* file :
       {"examples/host/host.cpp", "examples/watch/watch.cpp", "examples/insight/insight.cpp",
        "examples/sensors/sensors.cpp", "examples/serve_copies/serve_copies.cpp",
        "examples/test_row/test_row.cpp"}) {
    const std::string source = test_support::ReadSource(file);
    built.push_back(source.substr(std::min(source.find("#include"), source.size())));
  }
  EXPECT_EQ(shown, built);
}

}  // namespace
