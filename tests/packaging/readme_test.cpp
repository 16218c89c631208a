// README.md's first screen against what the commands on it print.
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

// What the page shows as the output of the command.
std::string OutputOf(std::string_view command) {
  const std::string page = test_support::ReadSource("README.md");
  const std::size_t found = page.find("$ " + std::string(command));
  const std::size_t begin = page.find('\n', found) + 1;
  const std::size_t end = page.find("The same document as XML", begin);
  return found == std::string::npos || end == std::string::npos ? ""
                                                                : page.substr(begin, end - begin);
}

// The page used to show a heading that the program no longer writes.
TEST(Readme, ShowsWhatTheProgramPrints) {
  SANDBOX_NEEDS_DEVICES();
  sandbox::Scenario::Load(sandbox::SourcePath("scenarios/faults")).Apply();
  const test_support::ProgramResult shown = test_support::RunProgram({HOST_PROGRAM, "show"});
  EXPECT_EQ(shown.ExitCode, 0) << shown.Errors;
  const std::string output = OutputOf("./run faults");
  EXPECT_GE(markdown::Lines(output).size(), 10U);
  EXPECT_TRUE(markdown::Shows(shown.Output, output)) << shown.Output;
}

}  // namespace
