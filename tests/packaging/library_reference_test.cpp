// docs/library.md against the examples that it shows, and against what the libraries export and
// their headers declare.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
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
       {"examples/host/host.cpp", "examples/watch/watch.cpp", "examples/insight/insight.cpp",
        "examples/sensors/sensors.cpp", "examples/serve_copies/serve_copies.cpp",
        "examples/test_row/test_row.cpp"}) {
    const std::string source = test_support::ReadSource(file);
    built.push_back(source.substr(std::min(source.find("#include"), source.size())));
  }
  EXPECT_EQ(shown, built);
}

// The functions among the symbols that a library exports, without what the compiler adds, and
// without constructors, destructors and assignments. `space`: the namespace that is left out of
// their names.
std::set<std::string> ExportedFunctions(const std::string& library, const std::string& space) {
  std::istringstream symbols(test_support::ReadSource("tests/exports/" + library + ".symbols"));
  std::set<std::string> functions;
  for (std::string symbol; std::getline(symbols, symbol);) {
    std::string name = symbol.substr(0, symbol.find_first_of("(["));
    const std::string member = name.substr(name.rfind(':') + 1);
    const bool is_function =
        symbol.find('(') != std::string::npos && name.find(' ') == std::string::npos;
    if (is_function && !member.starts_with('~') && !member.starts_with("operator") &&
        !name.ends_with(member + "::" + member)) {
      functions.insert(name.starts_with(space) ? name.substr(space.size()) : name);
    }
  }
  return functions;
}

// What stands in the first column of the tables below these headings.
std::set<std::string> NamedUnder(const std::vector<std::string>& headings) {
  const std::string page = test_support::ReadSource("docs/library.md");
  std::set<std::string> named;
  for (const std::string& heading : headings) {
    for (const auto& row : markdown::Table(page, heading)) {
      for (const std::string& name : markdown::Names(row.at(0))) {
        EXPECT_TRUE(named.insert(name).second) << name << " stands twice";
      }
    }
  }
  return named;
}

TEST(LibraryReference, NamesEveryFunctionOfTheLibraryOfSnapshots) {
  const std::set<std::string> named = NamedUnder({"Functions"});
  EXPECT_GT(named.size(), 5U);
  EXPECT_EQ(named, ExportedFunctions("libstatusinsight", "insight::"));
}

// The headers that are installed, as cmake/Install.cmake lists them.
std::string InstalledHeaders() {
  const std::string list = test_support::ReadSource("cmake/Install.cmake");
  const std::regex header("\n  ([a-z_/0-9]+\\.h)");
  std::string text = test_support::ReadSource("statuscollector/version.h.in");
  int count = 0;
  for (std::sregex_iterator match(list.begin(), list.end(), header), end; match != end; ++match) {
    const std::string source = test_support::ReadSource((*match)[1]);
    EXPECT_NE(source, "") << (*match)[1];
    text += source;
    ++count;
  }
  EXPECT_GT(count, 40);
  return text;
}

// Members that a class keeps for itself, and what the inline code of headers calls.
const std::set<std::string> kPrivate = {
    "CSQLdatabase::Run",          "CStatusInterface::QueryRows", "CStatusInterface::ReadRows",
    "CStatusInterface::RunCycle", "TreeElement::FindChild",      "TreeElement::FindStep",
};

// Whether an installed header declares a function of this name, of whatever class.
bool IsDeclared(const std::string& name, const std::string& headers) {
  const std::string last = name.substr(name.rfind(':') + 1) + "(";
  std::size_t place = headers.find(last);
  while (place != std::string::npos && place > 0 &&
         (std::isalnum(headers[place - 1]) != 0 || headers[place - 1] == '_')) {
    place = headers.find(last, place + 1);
  }
  return place != std::string::npos;
}

struct Page {
  const char* Library;
  const char* Space;
  std::vector<std::string> Headings;
};

TEST(LibraryReference, NamesEveryFunctionThatAnInstalledHeaderDeclares) {
  const std::string headers = InstalledHeaders();
  for (const Page& page :
       std::vector<Page>{{"libsqlitedb", "", {"Functions of the database"}},
                         {"libstatus", "QtSts::", {"Functions of the document"}},
                         {"libstatuscollector",
                          "",
                          {"Functions of the collector", "Functions inside a cycle"}}}) {
    SCOPED_TRACE(page.Library);
    std::set<std::string> expected;
    for (const std::string& name : ExportedFunctions(page.Library, page.Space)) {
      if (!kPrivate.contains(name) && IsDeclared(name, headers)) {
        expected.insert(name);
      }
    }
    EXPECT_GT(expected.size(), 10U);
    EXPECT_EQ(NamedUnder(page.Headings), expected);
  }
}

TEST(LibraryReference, SaysInWhichHeaderEachFunctionStands) {
  const std::string page = test_support::ReadSource("docs/library.md");
  for (const char* heading : {"Functions of the database", "Functions of the document",
                              "Functions of the collector", "Functions inside a cycle"}) {
    for (const auto& row : markdown::Table(page, heading)) {
      std::string header = markdown::Name(row.at(1));
      if (header == "collector/observer.h") {
        header = "collector/state/observer.h";  // which it includes
      } else if (header == "statuscollector/version.h") {
        header += ".in";  // of which it is made
      }
      const std::string source = test_support::ReadSource(header);
      for (const std::string& name : markdown::Names(row.at(0))) {
        EXPECT_TRUE(IsDeclared(name, source)) << name << " in " << header;
      }
    }
  }
}

}  // namespace
