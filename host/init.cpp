// init: create the status database and its tables.
#include <cstdio>
#include <memory>
#include <string>

#include "collector/status_interface.h"
#include "host/access.h"
#include "host/column_order.h"
#include "host/commands.h"
#include "host/output.h"
#include "host/printable.h"
#include "host/trouble.h"

namespace host {
namespace {

struct Options {
  std::string Mode;
  std::string Group;
};

constexpr const char* kTables[] = {"status", "io", "packages"};

// Whether there is a `type`, "table" or "trigger", whose `column` of SQLite's schema is `name`.
bool Has(CStatusInterface& collector, const std::string& type, const std::string& column,
         const std::string& name) {
  const std::string sql = "SELECT 1 FROM sqlite_schema WHERE type = '" + type + "' AND " + column +
                          " = '" + name + "' COLLATE NOCASE";
  CppSQLite3Statement statement = collector.m_DB.compileStatement(sql.c_str());
  return !statement.execQuery().eof();
}

bool HasColumns(CStatusInterface& collector, const std::string& table, const std::string& names) {
  try {
    collector.m_DB.compileStatement(("SELECT " + names + " FROM " + table).c_str());
    return true;
  } catch (const CppSQLite3Exception&) {
    return false;
  }
}

// What the library makes has triggers, which it makes for such tables alone.
bool MayHaveTriggers(CStatusInterface& collector, const std::string& table) {
  return Has(collector, "table", "name", table) && HasColumns(collector, table, "address, value");
}

// What is wrong with the database after it was made ready; empty when all is there. The library
// reports what fails on the way, but says nothing about the outcome. What writers made themselves
// has to be such as a cycle can read.
std::string Fault(CStatusInterface& collector) {
  try {
    collector.m_DB.compileStatement("SELECT * FROM status ORDER BY address");  // as a cycle does
    for (const std::string table : kTables) {
      collector.m_DB.compileStatement(("SELECT * FROM " + table).c_str());
      if (MayHaveTriggers(collector, table) && !Has(collector, "trigger", "tbl_name", table)) {
        return "table " + table + " has no trigger; see the system log";
      }
    }
  } catch (const CppSQLite3Exception& failure) {
    return std::string(failure.errorMessage()) + "; see statuscollector-rows(5)";
  }
  return collector.m_DB.readOnly() ? "it cannot be written; see its owner, group and mode" : "";
}

// Says which tables take what is too long, since a writer made them.
void WarnOfLengths(CStatusInterface& collector) {
  for (const std::string table : kTables) {
    if (MayHaveTriggers(collector, table)) {
      continue;
    }
    const bool is_table = Has(collector, "table", "name", table);
    std::fprintf(stderr,
                 "statuscollector: %s %s refuses no key of more than %d bytes and no value of more "
                 "than %d: %s; let its writers keep to these lengths\n",
                 is_table ? "table" : "view", table.c_str(), CSQLdatabase::kMaxAddressBytes,
                 CSQLdatabase::kMaxValueBytes,
                 is_table ? "its columns are not address and value, which triggers are made for"
                          : "views have no such triggers");
  }
}

int Init(const Options& options) {
  const Access access = ParseAccess(options.Mode, options.Group);
  MakeWithAccess(access);
  const DatabaseTrouble trouble(Opened::kForWriting);
  CStatusInterface collector;
  collector.InitDatabase(true);
  const std::string fault = Fault(collector);
  const std::string columns = ColumnTrouble(collector);
  if (fault.empty()) {
    SetAccess(access);
    WarnOfLengths(collector);
  }
  collector.CloseDatabase();
  if (!fault.empty()) {
    const std::string words = trouble.InWords();
    std::fprintf(stderr, "statuscollector: the status database is not ready: %s\n",
                 Printable(words.empty() ? fault : words).c_str());
    return kFailed;
  }
  WarnOfColumns(columns);
  StandardOutput().Write("The status database is ready.\n");
  return kAllWell;
}

}  // namespace

Declaration DeclareInit() {
  const auto options = std::make_shared<Options>();
  return {{{.Name = "--mode",
            .Type = "MODE",
            .About = "Who may read and write it, such as 0660",
            .Value = &options->Mode},
           {.Name = "--group",
            .Type = "GROUP",
            .About = "Whose it is beside its owner: name or number",
            .Value = &options->Group}},
          [options] { return Init(*options); }};
}

}  // namespace host
