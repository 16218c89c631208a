// The examples of docs/rows.md, each through the shipped host in a controller of its own.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"
#include "tests/support/run_program.h"

namespace {

constexpr std::string_view kGap = "...";

// Whether `line` is `pattern`, in which "..." stands for anything.
bool Matches(std::string_view line, std::string_view pattern) {
  const std::size_t gap = pattern.find(kGap);
  if (gap == std::string_view::npos) {
    return line == pattern;
  }
  if (line.substr(0, gap) != pattern.substr(0, gap)) {
    return false;
  }
  const std::string_view rest = pattern.substr(gap + kGap.size());
  for (std::size_t skipped = gap; skipped <= line.size(); ++skipped) {
    if (Matches(line.substr(skipped), rest)) {
      return true;
    }
  }
  return false;
}

bool MatchesAt(const std::vector<std::string>& document, std::size_t at,
               const std::vector<std::string>& pattern, std::size_t from) {
  for (; from < pattern.size() && pattern[from] != kGap; ++from, ++at) {
    if (at == document.size() || !Matches(document[at], pattern[from])) {
      return false;
    }
  }
  if (from == pattern.size()) {
    return true;
  }
  for (; at < document.size(); ++at) {
    if (MatchesAt(document, at, pattern, from + 1)) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> WithoutIndent(std::string_view text) {
  std::vector<std::string> lines = markdown::Lines(text);
  for (std::string& line : lines) {
    line.erase(0, line.find_first_not_of(' '));
  }
  return lines;
}

// Whether the lines of `example` stand somewhere in `document`.
bool Shows(std::string_view document, std::string_view example) {
  std::vector<std::string> pattern = WithoutIndent(example);
  pattern.insert(pattern.begin(), std::string(kGap));
  return MatchesAt(WithoutIndent(document), 0, pattern, 0);
}

TEST(RowExamples, AreFoundOnlyWhereTheyStand) {
  constexpr std::string_view kDocument = "<A X=\"1\" Y=\"2\">\n  <B/>\n  <C/>\n</A>\n";
  EXPECT_TRUE(Shows(kDocument, "<B/>\n<C/>\n"));
  EXPECT_TRUE(Shows(kDocument, "<A ... Y=\"2\">\n...\n<C/>\n"));
  EXPECT_FALSE(Shows(kDocument, "<A ... Y=\"3\">\n"));
  EXPECT_FALSE(Shows(kDocument, "<C/>\n<B/>\n"));
  EXPECT_FALSE(Shows(kDocument, "<A X=\"1\" Y=\"2\">\n<C/>\n"));
}

TEST(RowExamples, GiveTheDocumentsThatThePageShows) {
  const std::vector<markdown::Block> blocks =
      markdown::Blocks(test_support::ReadSource("docs/rows.md"));
  int examples = 0;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (blocks[i].Language != "rows") {
      continue;
    }
    SCOPED_TRACE(blocks[i].Heading);
    ASSERT_LT(i + 1, blocks.size());
    ASSERT_EQ(blocks[i + 1].Language, "xml");
    sandbox::Scenario scenario;
    for (const auto& [key, value] : sandbox::ParseRows(blocks[i].Text)) {
      scenario.Row(key, value);
    }
    scenario.Apply();
    const test_support::ProgramResult shown =
        test_support::RunProgram({HOST_PROGRAM, "show", "--format", "xml"});
    EXPECT_EQ(shown.ExitCode, 0) << shown.Errors;
    EXPECT_TRUE(Shows(shown.Output, blocks[i + 1].Text)) << shown.Output;
    ++examples;
  }
  EXPECT_GE(examples, 7);
}

}  // namespace
