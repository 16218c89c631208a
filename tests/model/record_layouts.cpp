#include "tests/model/record_layouts.h"

#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace record_layouts {
namespace {

// A source file that makes the compiler lay out every one of `classes`.
std::string Source(const std::vector<std::string>& headers,
                   const std::vector<std::string>& classes) {
  std::string source;
  for (const std::string& header : headers) {
    source += "#include \"" + header + "\"\n";
  }
  for (const std::string& name : classes) {
    source += "static_assert(sizeof(" + name + ") > 0);\n";
  }
  return source;
}

// The text after "  8 |   " is, for example, "std::uint32_t Width", "class X (primary base)" or
// "(X vtable pointer)".
Line ParseLine(int depth, std::string text) {
  static const std::regex marks(R"(( \((primary |virtual )*base\))|( \(empty\)))");
  const std::string bare = std::regex_replace(text, marks, "");
  const bool base = text.find("base)") != std::string::npos;
  if (base) {
    return {depth, true, bare.substr(bare.find(' ') + 1)};
  }
  return {depth, false, bare.substr(bare.rfind(' ') + 1)};
}

Layouts Parse(const std::string& dump) {
  static const std::regex row(R"(^ *[0-9:-]+ \|( +)(\S.*)$)");
  Layouts layouts;
  std::vector<Line>* current = nullptr;
  std::istringstream lines(dump);
  for (std::string text; std::getline(lines, text);) {
    std::smatch match;
    if (!std::regex_match(text, match, row)) {
      continue;
    }
    const int depth = static_cast<int>(match[1].length()) / 2;
    const std::string content = match[2];
    if (depth == 0) {
      current = &layouts[ParseLine(0, content + " (base)").Name];
      current->clear();
    } else if (content.find("vtable pointer)") == std::string::npos && current != nullptr) {
      current->push_back(ParseLine(depth, content));
    }
  }
  return layouts;
}

}  // namespace

Layouts Dump(const std::vector<std::string>& headers, const std::vector<std::string>& classes) {
  // The compiler looks for headers beside the source first.
  const test_support::TemporaryFolder folder;
  const std::string path = folder.Path() + "/layouts.cpp";
  std::ofstream(path) << Source(headers, classes);
  const test_support::ProgramResult result = test_support::RunProgram(
      {"clang++", "-fsyntax-only", "-std=c++20", "-I" + test_support::SourceTree(), "-Xclang",
       "-fdump-record-layouts", path});
  if (result.ExitCode != 0) {
    throw std::runtime_error("clang++ -fdump-record-layouts ended with " +
                             std::to_string(result.ExitCode) + ": " + result.Errors);
  }
  return Parse(result.Output);
}

}  // namespace record_layouts
