// README.md's first screen and docs/host.md against what the commands on them print.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"
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
  const test_support::ProgramResult shown = test_support::RunProgram({HOST_PROGRAM, "show"});
  EXPECT_EQ(shown.ExitCode, 0) << shown.Errors;
  for (const std::string& output :
       {OutputOn("README.md", "./run faults", "The same document as XML"),
        OutputOn("docs/host.md", "statuscollector show\n", "\nThe first line has")}) {
    EXPECT_GE(markdown::Lines(output).size(), 10U);
    EXPECT_TRUE(markdown::Shows(shown.Output, output)) << output << "\nis not in\n" << shown.Output;
  }
}

}  // namespace
