#include "db/reading.h"

#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "db/view_rules.h"

namespace sqlitedb {

namespace {

// A row whatever the schema, so that the transaction lasts until the statement is reset.
constexpr const char* kTouch = "SELECT EXISTS(SELECT 1 FROM sqlite_schema)";

// In KiB. The schema brings a size along that a writer gave the file, with PRAGMA
// default_cache_size; what is set after that holds.
constexpr const char* kCacheSize = "PRAGMA cache_size=-2000";

// What calls code that no limit can end: how the name of an operation begins, and what to call it
// where EXPLAIN gives no name of a function. A list of what is allowed would be safer, but a newer
// SQLite, whose operations go by other names, would then stop a host; a test asks the SQLite that
// is there for all of its functions instead.
constexpr struct {
  const char* Begin;
  const char* Function;
} kCalls[] = {
    {"Function", nullptr},
    {"PureFunc", nullptr},
    {"Agg", nullptr},
    {"Count", "count"},
};
constexpr const char* kVirtualTable = "VOpen";

constexpr struct {
  int Limit;
  int Value;
} kLimits[] = {
    {SQLITE_LIMIT_COLUMN, 100},
    {SQLITE_LIMIT_EXPR_DEPTH, 100},
    {SQLITE_LIMIT_COMPOUND_SELECT, 20},
    {SQLITE_LIMIT_FUNCTION_ARG, 16},
};

// What a statement that reads may have, while it is compiled. SQLite would ask the same of every
// table and view of the file when it reads the schema.
class Limits {
 public:
  explicit Limits(sqlite3* db) : db_(db) {
    for (std::size_t i = 0; i < std::size(kLimits); ++i) {
      before_[i] = sqlite3_limit(db, kLimits[i].Limit, kLimits[i].Value);
    }
  }
  Limits(const Limits&) = delete;
  Limits& operator=(const Limits&) = delete;
  ~Limits() {
    for (std::size_t i = 0; i < std::size(kLimits); ++i) {
      sqlite3_limit(db_, kLimits[i].Limit, before_[i]);
    }
  }

 private:
  sqlite3* db_;
  int before_[std::size(kLimits)];
};

// Refuses what SQLite reads with a schema beside the schema: the table of what ANALYZE found, whose
// generated columns it computes. SQLite does without. Its own statements have no text; that of the
// schema has five columns, that of the table three.
int SpendOnSchema(void* of_connection) noexcept {
  constexpr int kColumnsOfStatistics = 3;
  auto& connection = *static_cast<Connection*>(of_connection);
  sqlite3_stmt* const newest = sqlite3_next_stmt(connection.Db, nullptr);
  const bool statistics = newest != nullptr && sqlite3_sql(newest) == nullptr &&
                          sqlite3_column_count(newest) == kColumnsOfStatistics;
  return statistics ? 1 : Budget::SpendClosely(&connection.Budget);
}

class Rows {
 public:
  Rows(Connection& connection, const std::string& sql) : connection_(connection) {
    const int code = sqlite3_prepare_v2(connection.Db, sql.c_str(), -1, &stmt_, nullptr);
    if (code != SQLITE_OK) {
      throw connection.Failed(connection.Db, code);
    }
  }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() { sqlite3_finalize(stmt_); }

  bool Next() {
    const int code = sqlite3_step(stmt_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
      throw connection_.Failed(connection_.Db, code);
    }
    return code == SQLITE_ROW;
  }

  std::string Text(int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
    return text != nullptr ? text : "";
  }

 private:
  Connection& connection_;
  sqlite3_stmt* stmt_ = nullptr;
};

bool StartsWith(const std::string& text, const char* begin) { return text.rfind(begin, 0) == 0; }

struct Entry {
  std::string Type;
  std::string Name;
  std::string Table;
  std::string Sql;
};

// An index that a writer put on the schema's own table is not asked: it may hide entries.
template <class Look>
void ForEachEntry(Connection& connection, Look look) {
  Rows rows(connection, "SELECT type, name, tbl_name, sql FROM sqlite_schema NOT INDEXED");
  while (rows.Next()) {
    look(Entry{rows.Text(0), rows.Text(1), rows.Text(2), rows.Text(3)});
  }
}

bool IsView(const Entry& entry) { return entry.Type == "view"; }

// SQLite writes the text of a table anew, so that it begins in one way only.
bool IsVirtualTable(const Entry& entry) {
  constexpr const char* kTable = "CREATE TABLE ";
  return entry.Type == "table" &&
         sqlite3_strnicmp(entry.Sql.c_str(), kTable, static_cast<int>(std::strlen(kTable))) != 0;
}

// Only SQLite can have made such an index, and it does not.
void CheckIndex(const Entry& entry) {
  constexpr const char* kOwn = "sqlite_";
  if (entry.Type == "index" && !entry.Sql.empty() &&
      sqlite3_strnicmp(entry.Table.c_str(), kOwn, static_cast<int>(std::strlen(kOwn))) == 0) {
    throw CppSQLite3Exception(SQLITE_ERROR, "index " + entry.Name + " is on " + entry.Table);
  }
}

[[noreturn]] void RefuseVirtualTable() {
  throw CppSQLite3Exception(SQLITE_ERROR, "table or view reads a virtual table");
}

[[noreturn]] void RefuseNested(const std::string& view, const std::string& other) {
  throw CppSQLite3Exception(SQLITE_ERROR, "view " + view + " reads view " + other);
}

// Compiling a statement reads the text of its views, and asks its virtual tables, which then read
// tables and views of their own.
class Named {
 public:
  explicit Named(const std::string& sql) : sql_(Words(sql)) {}

  // What the statement names.
  void Look(const Entry& entry) {
    CheckIndex(entry);
    if (!IsView(entry) && !IsVirtualTable(entry)) {
      return;
    }
    std::string words = Words(entry.Name);
    if (sql_.find(words) == std::string::npos) {
      return;
    }
    if (IsVirtualTable(entry)) {
      RefuseVirtualTable();
    }
    if (const char* fault = FaultOfView(entry.Sql)) {
      throw CppSQLite3Exception(SQLITE_ERROR, "view " + entry.Name + " " + fault);
    }
    for (const View& view : views_) {
      if (view.Words == words) {
        RefuseNested(entry.Name, view.Name);  // which of the two is meant cannot be seen
      }
    }
    views_.push_back({entry.Name, std::move(words), Words(entry.Sql)});
  }

  bool HasViews() const noexcept { return !views_.empty(); }

  // What its views name.
  void LookIntoViews(const Entry& entry) const {
    if (!IsView(entry) && !IsVirtualTable(entry)) {
      return;
    }
    const std::string words = Words(entry.Name);
    for (const View& view : views_) {
      if (entry.Name != view.Name && view.Sql.find(words) != std::string::npos) {
        IsView(entry) ? RefuseNested(view.Name, entry.Name) : RefuseVirtualTable();
      }
    }
  }

 private:
  struct View {
    std::string Name;
    std::string Words;
    std::string Sql;  // Its words.
  };

  std::string sql_;
  std::vector<View> views_;  // Few, since no two have the same words.
};

void CheckSchema(Connection& connection, const std::string& sql) {
  Named named(sql);
  ForEachEntry(connection, [&](const Entry& entry) { named.Look(entry); });
  if (named.HasViews()) {
    ForEachEntry(connection, [&](const Entry& entry) { named.LookIntoViews(entry); });
  }
}

// A function that the statement itself names is its author's wish.
void CheckProgram(Connection& connection, const std::string& sql) {
  const Limits limits(connection.Db);
  const std::string wanted = Words(sql);
  for (Rows rows(connection, "EXPLAIN " + sql); rows.Next();) {
    const std::string operation = rows.Text(1);
    if (operation == kVirtualTable) {
      RefuseVirtualTable();
    }
    for (const auto& call : kCalls) {
      if (StartsWith(operation, call.Begin)) {
        const std::string shown = call.Function != nullptr ? call.Function : rows.Text(5);
        const std::string name = shown.substr(0, shown.find('('));
        if (wanted.find(Words(name)) == std::string::npos) {
          throw CppSQLite3Exception(SQLITE_ERROR, "table or view calls function " + name);
        }
      }
    }
  }
}

void Compile(Prepared& prepared, const std::string& sql) {
  Connection& connection = *prepared.Connection;
  const Limits limits(connection.Db);
  sqlite3_stmt* stmt = nullptr;
  const int code = sqlite3_prepare_v2(connection.Db, sql.c_str(), -1, &stmt, nullptr);
  if (code != SQLITE_OK) {
    throw connection.Failed(connection.Db, code);
  }
  sqlite3_finalize(std::exchange(prepared.Stmt, stmt));
  prepared.Schema = connection.SchemaNumber();
}

// For a Snapshot.
void CheckAndCompile(Prepared& prepared, const std::string& sql) {
  Connection& connection = *prepared.Connection;
  connection.Checked.clear();
  CheckSchema(connection, sql);
  CheckProgram(connection, sql);
  Compile(prepared, sql);
  connection.Checked = sql;
  connection.CheckedSchema = connection.SchemaNumber();
}

}  // namespace

bool Reads(const char* sql) noexcept {
  sql += std::strspn(sql, " \t\r\n\f");
  for (const char* word : {"select", "values", "with"}) {
    if (sqlite3_strnicmp(sql, word, static_cast<int>(std::strlen(word))) == 0) {
      return true;
    }
  }
  return false;
}

CloseLook::CloseLook(Connection& connection) : connection_(connection) {
  sqlite3_progress_handler(connection.Db, Budget::kStepsPerCloseCall, &SpendOnSchema, &connection);
}

CloseLook::~CloseLook() {
  sqlite3_progress_handler(connection_.Db, Budget::kStepsPerCall, &Budget::Spend,
                           &connection_.Budget);
}

Snapshot::Snapshot(Connection& connection) : connection_(connection) {
  const CloseLook look(connection);
  const bool first = connection.Touch == nullptr;
  int code = SQLITE_OK;
  if (first) {
    code = sqlite3_prepare_v2(connection.Db, kTouch, -1, &connection.Touch, nullptr);
  }
  if (code == SQLITE_OK) {
    code = sqlite3_step(connection.Touch);
  }
  if (code == SQLITE_ROW && first) {
    const int set = sqlite3_exec(connection.Db, kCacheSize, nullptr, nullptr, nullptr);
    code = set == SQLITE_OK ? code : set;
  }
  if (code != SQLITE_ROW) {
    const CppSQLite3Exception failure = connection.Failed(connection.Db, code);
    sqlite3_reset(connection.Touch);
    if (first) {
      connection.ForgetSchema();  // the size of the cache may not have been set
    }
    throw failure;
  }
}

Snapshot::~Snapshot() { sqlite3_reset(connection_.Touch); }

// What was checked last may be compiled at once: it is still the schema in SQLite's memory, since
// whatever else could have changed that has made `Checked` empty.
void CompileReading(Prepared& prepared, const char* sql) {
  Connection& connection = *prepared.Connection;
  prepared.Reads = true;
  if (connection.Checked == sql && connection.CheckedSchema == connection.SchemaNumber()) {
    Compile(prepared, sql);
    return;
  }
  const Snapshot snapshot(connection);
  CheckAndCompile(prepared, sql);
}

// Of a database that is not in memory this copies nothing, and asks for its number of pages.
void CheckSize(Connection& connection) {
  sqlite3_int64 size = -1;
  sqlite3_serialize(connection.Db, "main", &size, SQLITE_SERIALIZE_NOCOPY);
  if (size < 0) {
    const int code = sqlite3_errcode(connection.Db) & 0xff;
    const bool failed = code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE;
    throw connection.Failed(connection.Db, failed ? code : SQLITE_NOMEM);
  }
  if (size > kMaxDatabaseBytes) {
    throw CppSQLite3Exception(SQLITE_TOOBIG, "database is larger than " +
                                                 std::to_string(kMaxDatabaseBytes >> 20) + " MiB");
  }
}

void FollowSchema(Prepared& prepared) {
  if (prepared.Schema != prepared.Connection->SchemaNumber()) {
    CheckAndCompile(prepared, std::string(sqlite3_sql(prepared.Stmt)));
  }
}

}  // namespace sqlitedb
