// What the libraries show to a host, against lists in the source tree. STATUS_UPDATE_GOLDEN=1
// writes the lists anew; every line that comes or goes is a change of the public face.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "collector/key_table.h"
#include "hardware/rate_limit.h"
#include "tests/collector/scratch_variables.h"
#include "tests/support/golden.h"
#include "tests/support/run_program.h"

namespace {

using Names = std::set<std::string>;

// The dynamic symbols that the library defines, each once: constructors stand twice.
Names Exported(const std::string& library, const char* style) {
  const test_support::ProgramResult nm =
      test_support::RunProgram({"nm", "-D", "--defined-only", style, library});
  EXPECT_EQ(nm.ExitCode, 0) << nm.Errors;
  Names names;
  std::istringstream lines(nm.Output);
  for (std::string line; std::getline(lines, line);) {
    names.insert(line.substr(line.find_first_of(' ') + 3));  // "address letter name"
  }
  EXPECT_GT(names.size(), 10U) << nm.Output;
  return names;
}

struct Library {
  const char* Name;
  const char* File;
};
void PrintTo(const Library& library, std::ostream* out) { *out << library.Name; }

class ExportedSymbols : public testing::TestWithParam<Library> {};

TEST_P(ExportedSymbols, AreTheListedOnes) {
  const std::string path = std::string("tests/exports/") + GetParam().Name + ".symbols";
  const Names exported = Exported(GetParam().File, "--demangle");
  std::string list;
  for (const std::string& name : exported) {
    list += name + '\n';
  }
  if (!EXPORTS_INSTRUMENTED) {
    EXPECT_TRUE(test_support::MatchesGolden(list, path));
    return;
  }
  // Sanitizers and coverage show things of their own beside what ships.
  std::istringstream listed(test_support::ReadSource(path));
  for (std::string name; std::getline(listed, name);) {
    EXPECT_TRUE(exported.contains(name)) << name;
  }
}

TEST_P(ExportedSymbols, AreNoneOfTheStandardLibrary) {
  for (const std::string& name : Exported(GetParam().File, "--demangle")) {
    const std::string function = name.substr(0, name.find('('));
    for (const char* foreign : {"std::", "__gnu_cxx::"}) {
      // a parameter may be of the standard library, what is exported may not
      EXPECT_FALSE(function.starts_with(foreign) ||
                   function.find(std::string(" ") + foreign) != std::string::npos)
          << name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, ExportedSymbols,
                         testing::Values(Library{"libsqlitedb", SQLITEDB_FILE},
                                         Library{"libstatus", STATUS_FILE},
                                         Library{"libstatuscollector", COLLECTOR_FILE},
                                         Library{"libstatusinsight", INSIGHT_FILE}),
                         [](const auto& library) { return std::string(library.param.Name); });

TEST(ExportedData, HasPlainNames) {
  const Names names = Exported(COLLECTOR_FILE, "--no-demangle");
  for (const ScratchVariable& variable : ScratchVariables()) {
    EXPECT_TRUE(names.contains(variable.Name)) << variable.Name;
    EXPECT_EQ(dlsym(RTLD_DEFAULT, variable.Name), variable.Address) << variable.Name;
  }
  EXPECT_TRUE(names.contains("rs"));
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "rs"), &rs);
  EXPECT_TRUE(names.contains("status_primary_keys"));
}

}  // namespace
