// The examples of docs/rows.md, each through the shipped host in a controller of its own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

TEST(RowExamples, GiveTheDocumentsOfThePage) {
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
        test_support::RunProgram({test_support::HostProgram(), "show", "--format", "xml"});
    EXPECT_EQ(shown.ExitCode, 0) << shown.Errors;
    EXPECT_TRUE(markdown::Shows(shown.Output, blocks[i + 1].Text)) << shown.Output;
    ++examples;
  }
  EXPECT_GE(examples, 7);
}

}  // namespace
