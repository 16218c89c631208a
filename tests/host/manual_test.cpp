// docs/host.md, held to what the program does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "host/text.h"
#include "host/text_template.h"
#include "model/tree.h"
#include "tests/host/sample_documents.h"
#include "tests/support/golden.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using test_support::HostProgram;
using test_support::RunProgram;
using testing::HasSubstr;

std::string Manual() { return test_support::ReadSource("docs/host.md"); }

std::string Help(const std::string& command) {
  return RunProgram({HostProgram(), command, "--help"}).Output;
}

std::vector<std::string> Matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    found.push_back((*match)[1]);
  }
  return found;
}

TEST(Manual, HasASectionForEveryCommandAndARowForEveryOption) {
  const std::string help = RunProgram({HostProgram(), "--help"}).Output;
  const auto commands = Matches(help.substr(help.find("Subcommands:")), "\n  ([a-z]+) +[A-Z]");
  EXPECT_GE(commands.size(), 4U);
  for (const std::string& command : commands) {
    EXPECT_THAT(Manual(), HasSubstr("\n### " + command + "\n"));
    const auto options = Matches(Help(command), "(--[a-z-]+)");
    EXPECT_THAT(options, testing::Contains("--help")) << "of " << command;
    for (const std::string& option : options) {
      EXPECT_THAT(Manual(), HasSubstr("`" + option + "`")) << "of " << command;
    }
  }
}

TEST(Manual, ExplainsEverySectionOfTheText) {
  for (const std::string& section : host::SectionNames()) {
    EXPECT_THAT(Manual(), testing::ContainsRegex("\n\\| [a-z`, ]*`" + section + "`"));
  }
}

TEST(Manual, ExplainsEveryStatusFlag) {
  const auto status = sample::Troubled();
  const QtSts::DocumentTree document(*status);
  const QtSts::TreeElement& output = *document.Root().Find("Outputs[0]");
  const std::string flags = host::Fill("{StatusFlags:flags}", output).Text;
  const auto words = Matches(flags, "[:,] ([a-z ]+)");
  EXPECT_EQ(words.size(), 6U);
  for (const std::string& word : words) {
    EXPECT_THAT(Manual(), HasSubstr("\n| " + word + " | 0x"));
  }
}

}  // namespace
