// README.md's first screen and docs/host.md against what the commands on them print.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

TEST(Examples, AreFoundOnlyWhereTheyStand) {
  constexpr std::string_view kDocument = "<A X=\"1\" Y=\"2\">\n  <B/>\n  <C/>\n</A>\n";
  EXPECT_TRUE(markdown::Shows(kDocument, "<B/>\n<C/>\n"));
  EXPECT_TRUE(markdown::Shows(kDocument, "<A ... Y=\"2\">\n...\n<C/>\n"));
  EXPECT_FALSE(markdown::Shows(kDocument, "<A ... Y=\"3\">\n"));
  EXPECT_FALSE(markdown::Shows(kDocument, "<C/>\n<B/>\n"));
  EXPECT_FALSE(markdown::Shows(kDocument, "<A X=\"1\" Y=\"2\">\n<C/>\n"));
}

// What stands on the page between the line with `command` and the text `end`.
std::string OutputOn(const std::string& path, std::string_view command, std::string_view end) {
  const std::string page = test_support::ReadSource(path);
  const std::size_t line = page.find("$ " + std::string(command));
  const std::size_t from = page.find('\n', line) + 1;
  const std::size_t to = page.find(end, from);
  return line == std::string::npos || to == std::string::npos ? "" : page.substr(from, to - from);
}

// The first screen used to show a heading that the program no longer wrote.
TEST(Pages, ShowWhatTheProgramPrints) {
  SANDBOX_NEEDS_DEVICES();
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/faults")).Apply();
  const test_support::ProgramResult shown =
      test_support::RunProgram({test_support::HostProgram(), "show"});
  EXPECT_EQ(shown.ExitCode, 0) << shown.Errors;
  for (const std::string& output :
       {OutputOn("README.md", "./run faults", "run: the same document as XML"),
        OutputOn("docs/host.md", "statuscollector show\n", "\nThe first line has")}) {
    EXPECT_GE(markdown::Lines(output).size(), 10U);
    EXPECT_TRUE(markdown::Shows(shown.Output, output)) << output << "\nis not in\n" << shown.Output;
  }
}

// One page named a function that was gone, another a folder.
TEST(Pages, NameFilesThatAreThere) {
  static const std::regex kPath(
      "`((?:bench|cmake|collector|db|docs|examples|fuzz|handlers|hardware|host|insight|model|"
      "packaging|sandbox|scenarios|sensors|tests)/[A-Za-z0-9_./-]*)`");
  int paths = 0;
  for (const char* page :
       {"README.md", "CONTRIBUTING.md", "docs/architecture.md", "docs/document.md", "docs/host.md",
        "docs/library.md", "docs/performance.md", "docs/reliability.md", "docs/rows.md",
        "scenarios/README.md"}) {
    const std::string text = test_support::ReadSource(page);
    ASSERT_FALSE(text.empty()) << page;
    for (std::sregex_iterator match(text.begin(), text.end(), kPath), end; match != end; ++match) {
      const std::string path = (*match)[1];
      if (path.find("MAJOR") == std::string::npos) {  // names what is to come
        EXPECT_TRUE(std::filesystem::exists(sandbox::SourcePath(path))) << page << ": " << path;
        ++paths;
      }
    }
  }
  EXPECT_GT(paths, 100);
}

// A page counted six of them when there were seven.
TEST(Pages, NameEveryFuzzTarget) {
  const std::string page = test_support::ReadSource("docs/reliability.md");
  const std::string list = test_support::ReadSource("fuzz/CMakeLists.txt");
  static const std::regex kTarget("\nfuzz_target\\(([a-z]+) ");
  int targets = 0;
  for (std::sregex_iterator match(list.begin(), list.end(), kTarget), end; match != end; ++match) {
    EXPECT_NE(page.find("\n| `" + (*match)[1].str() + "` |"), std::string::npos) << (*match)[1];
    ++targets;
  }
  EXPECT_GE(targets, 6);
}

// The lines that no test reaches stand there by the names of their functions.
TEST(Pages, NameFunctionsThatAreThere) {
  const std::string page = test_support::ReadSource("docs/reliability.md");
  const std::size_t begin = page.find("\n| line | why |");
  ASSERT_NE(begin, std::string::npos);
  const std::string table = page.substr(begin, page.find("\n## ", begin) - begin);
  std::string sources;
  for (const char* folder : {"collector", "db", "handlers", "hardware", "model", "sensors"}) {
    for (const auto& file :
         std::filesystem::recursive_directory_iterator(sandbox::SourcePath(folder))) {
      if (file.path().extension() == ".cpp") {
        std::ostringstream text;
        text << std::ifstream(file.path()).rdbuf();
        sources += text.str();
      }
    }
  }
  static const std::regex kName("`([A-Z][A-Za-z]+)`");
  int names = 0;
  for (std::sregex_iterator match(table.begin(), table.end(), kName), end; match != end; ++match) {
    EXPECT_NE(sources.find((*match)[1].str() + "("), std::string::npos) << (*match)[1];
    ++names;
  }
  EXPECT_GE(names, 4);
}

}  // namespace
