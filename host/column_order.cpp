#include "host/column_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

#include "collector/status_interface.h"
#include "host/printable.h"

namespace host {
namespace {

constexpr std::string_view kKey = "address";
constexpr std::string_view kValue = "value";
constexpr int kMostColumns = 100;  // that a table or view may have

// As SQLite compares names: without regard to the case of ASCII letters.
bool IsSame(std::string_view left, std::string_view right) {
  const auto small = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::ranges::equal(left, right, {}, small, small);
}

std::vector<std::string> Columns(CStatusInterface& collector) {
  CppSQLite3Statement statement = collector.m_DB.compileStatement("SELECT * FROM status LIMIT 0");
  const CppSQLite3Query query = statement.execQuery();
  std::vector<std::string> names;
  names.reserve(kMostColumns);
  for (int column = 0; column < kMostColumns; ++column) {
    names.emplace_back(query.getFieldName(column));
  }
  while (!names.empty() && names.back().empty()) {  // past the last one, too
    names.pop_back();
  }
  return names;
}

std::string InWords(const char* place, const std::string& name, std::string_view expected) {
  return std::string("the ") + place + " column of table status is " +
         (name.empty() ? "\"\"" : name) + ", not " + std::string(expected) +
         "; the first is read as the key, the second as the value, whatever their names; make the "
         "table anew with " +
         std::string(expected) + " as the " + place + " one";
}

}  // namespace

std::string ColumnTrouble(CStatusInterface& collector) {
  std::vector<std::string> names;
  try {
    names = Columns(collector);
  } catch (const CppSQLite3Exception&) {
    return "";  // who reads the rows reports why
  }
  if (names.size() < 2) {
    return "";
  }
  if (!IsSame(names[0], kKey)) {
    return InWords("first", names[0], kKey);
  }
  // A second column of any other name may be meant as the value, unless that comes later.
  const bool later = std::any_of(names.begin() + 2, names.end(),
                                 [](const std::string& name) { return IsSame(name, kValue); });
  return later ? InWords("second", names[1], kValue) : "";
}

void NameColumnTrouble(CStatusInterface& collector, insight::Snapshot* snapshot) {
  const auto unknown =
      static_cast<std::size_t>(std::ranges::count_if(snapshot->Rows, [](const insight::Row& row) {
        return row.What() == insight::Outcome::kUnknownKey;
      }));
  auto& findings = snapshot->Findings;
  const auto finding = std::ranges::find(findings, "row-errors", &insight::Finding::Id);
  if (finding == findings.end() || unknown * 2 <= snapshot->Rows.size()) {
    return;
  }
  const std::string trouble = ColumnTrouble(collector);
  if (trouble.empty()) {
    return;
  }
  const std::size_t cure = trouble.rfind("; ");
  finding->Message = trouble.substr(0, cure) + ": " + finding->Message;
  finding->Hint = "the program that creates the table: " + trouble.substr(cure + 2);
  const auto first = std::ranges::find(findings, finding->Level, &insight::Finding::Level);
  std::rotate(first, finding, finding + 1);
}

void WarnOfColumns(const std::string& trouble) {
  if (!trouble.empty()) {
    std::fprintf(stderr, "statuscollector: %s\n", Printable(trouble).c_str());
  }
}

}  // namespace host
