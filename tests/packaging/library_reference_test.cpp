// docs/library.md against the examples that it shows, and against what the library of snapshots
// exports.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
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
       {"examples/host/host.cpp", "examples/watch/watch.cpp", "examples/insight/insight.cpp"}) {
    const std::string source = test_support::ReadSource(file);
    built.push_back(source.substr(std::min(source.find("#include"), source.size())));
  }
  EXPECT_EQ(shown, built);
}

// The functions among the exported symbols, without what the compiler adds, and without
// constructors, destructors and assignments.
std::set<std::string> ExportedFunctions() {
  std::istringstream symbols(test_support::ReadSource("tests/exports/libstatusinsight.symbols"));
  std::set<std::string> functions;
  for (std::string symbol; std::getline(symbols, symbol);) {
    const std::string prefix = "insight::";
    const std::string name = symbol.substr(0, symbol.find_first_of("(["));
    const std::string member = name.substr(name.rfind(':') + 1);
    const bool is_function = symbol.starts_with(prefix) && symbol.find('(') != std::string::npos;
    if (is_function && !member.starts_with('~') && !member.starts_with("operator") &&
        !name.ends_with(member + "::" + member)) {
      functions.insert(name.substr(prefix.size()));
    }
  }
  return functions;
}

TEST(LibraryReference, NamesEveryFunctionOfTheLibraryOfSnapshots) {
  std::set<std::string> named;
  for (const auto& row :
       markdown::Table(test_support::ReadSource("docs/library.md"), "Functions")) {
    for (const std::string& name : markdown::Names(row.at(0))) {
      named.insert(name);
    }
  }
  EXPECT_GT(named.size(), 5U);
  EXPECT_EQ(named, ExportedFunctions());
}

}  // namespace
