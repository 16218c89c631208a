// A test of rows, for a controller in a box: writes each as its writer does, runs a cycle and asks
// the document what became of it.
#include <statuscollector/statuscollector.h>

#include <iostream>
#include <string>

namespace {

struct Case {
  const char* Key;
  const char* Value;
  const char* Path;  // of what the row fills
  const char* Expected;
};

constexpr Case kCases[] = {
    {"DimmingLevel", "62.5", "Outputs[0]/Dimming/DimmingLevel", "62.5"},
    {"DimmingMode", "manual", "Outputs[0]/Dimming/DimmingMode", "1"},
    {"ErrorFlags", "0x0000000000000004", "ErrorFlags", "0x0000000000000004"},
    {"TtableColumns", "4 of them", "Outputs[0]/Ttable/Columns", "4"},
};

void Write(CppSQLite3DB& database, const Case& row) {
  const std::string sql =
      std::string("REPLACE INTO status VALUES ('") + row.Key + "', '" + row.Value + "')";
  CppSQLite3Statement statement = database.compileStatement(sql.c_str());
  statement.execQuery();
  statement.finalize();
}

}  // namespace

int main() {
  CStatusInterface collector;
  collector.InitDatabase(true);  // makes the database, which a box does not have
  int failures = 0;
  for (const Case& row : kCases) {
    Write(collector.m_DB, row);
    const bool good = collector.QueryDatabase() == 0;
    const auto value = FindValue(collector.m_Status, row.Path);
    const std::string actual = value ? value->Written() : "not reported";
    const bool passed = good && actual == row.Expected;
    failures += passed ? 0 : 1;
    std::cout << (passed ? "ok      " : "not ok  ") << row.Key << '=' << row.Value << ": "
              << row.Path << " is " << actual << '\n';
  }
  return failures == 0 ? 0 : 1;
}
