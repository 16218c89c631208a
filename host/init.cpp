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

// Whether `sql` runs and gives a row.
bool HasRow(CStatusInterface& collector, const std::string& sql) {
  CppSQLite3Statement statement = collector.m_DB.compileStatement(sql.c_str());
  return !statement.execQuery().eof();
}

// What is wrong with the database after it was made ready; empty when all is there. The library
// reports what fails on the way, but says nothing about the outcome.
std::string Fault(CStatusInterface& collector) {
  try {
    for (const std::string table : kTables) {
      collector.m_DB.compileStatement(("SELECT address, value FROM " + table).c_str());
      if (!HasRow(collector, "SELECT 1 FROM sqlite_master WHERE type = 'trigger' AND tbl_name = '" +
                                 table + "'")) {
        return "table " + table + " has no trigger; see the lines above";
      }
    }
  } catch (const CppSQLite3Exception& failure) {
    return std::string(failure.errorMessage()) + "; see statuscollector-rows(5)";
  }
  return collector.m_DB.readOnly() ? "it cannot be written; see its owner, group and mode" : "";
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
