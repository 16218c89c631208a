// docs/library.md against the example that it shows.
#include <gtest/gtest.h>

#include <string>

#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

TEST(LibraryReference, ShowsTheExampleThatIsBuilt) {
  const std::string host = test_support::ReadSource("examples/host/host.cpp");
  const std::size_t code = host.find("#include");
  ASSERT_NE(code, std::string::npos);
  const auto blocks = markdown::Blocks(test_support::ReadSource("docs/library.md"));
  ASSERT_FALSE(blocks.empty());
  EXPECT_EQ(blocks[0].Language, "cpp");
  EXPECT_EQ(blocks[0].Text, host.substr(code));
}

}  // namespace
