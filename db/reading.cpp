#include "db/reading.h"

#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "db/view_rules.h"

namespace sqlitedb {

namespace {

// A row whatever the schema, so that the transaction lasts until the statement is reset.
constexpr char const* kTouch = "SELECT EXISTS(SELECT 1 FROM sqlite_schema)";
constexpr char const* kViews = "SELECT name, sql FROM sqlite_schema WHERE type='view'";

// What calls code that no limit can end: how the name of an operation begins, and what to call it
// where EXPLAIN gives no name of a function. A list of what is allowed would be safer, but a newer
// SQLite, whose operations go by other names, would then stop a host; a test asks the SQLite that
// is there for all of its functions instead.
constexpr struct {
  char const* begin;
  char const* function;
} kCalls[] = {
    {"Function", nullptr},
    {"PureFunc", nullptr},
    {"Agg", nullptr},
    {"Count", "count"},
};
constexpr char const* kVirtualTable = "VOpen";

constexpr struct {
  int limit;
  int value;
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
      before_[i] = sqlite3_limit(db, kLimits[i].limit, kLimits[i].value);
    }
  }
  Limits(Limits const&) = delete;
  Limits& operator=(Limits const&) = delete;
  ~Limits() {
    for (std::size_t i = 0; i < std::size(kLimits); ++i) {
      sqlite3_limit(db_, kLimits[i].limit, before_[i]);
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
  sqlite3_stmt* const newest = sqlite3_next_stmt(connection.db, nullptr);
  bool const statistics = newest != nullptr && sqlite3_sql(newest) == nullptr &&
                          sqlite3_column_count(newest) == kColumnsOfStatistics;
  return statistics ? 1 : Budget::SpendClosely(&connection.budget);
}

// While SQLite reads the schema.
class CloseLook {
 public:
  explicit CloseLook(Connection& connection) : connection_(connection) {
    sqlite3_progress_handler(connection.db, Budget::kStepsPerCloseCall, &SpendOnSchema,
                             &connection);
  }
  CloseLook(CloseLook const&) = delete;
  CloseLook& operator=(CloseLook const&) = delete;
  ~CloseLook() {
    sqlite3_progress_handler(connection_.db, Budget::kStepsPerCall, &Budget::Spend,
                             &connection_.budget);
  }

 private:
  Connection& connection_;
};

class Rows {
 public:
  Rows(Connection& connection, std::string const& sql) : connection_(connection) {
    int const code = sqlite3_prepare_v2(connection.db, sql.c_str(), -1, &stmt_, nullptr);
    if (code != SQLITE_OK) {
      throw connection.Failed(connection.db, code);
    }
  }
  Rows(Rows const&) = delete;
  Rows& operator=(Rows const&) = delete;
  ~Rows() { sqlite3_finalize(stmt_); }

  bool Next() {
    int const code = sqlite3_step(stmt_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
      throw connection_.Failed(connection_.db, code);
    }
    return code == SQLITE_ROW;
  }

  std::string Text(int column) {
    auto const* text = reinterpret_cast<char const*>(sqlite3_column_text(stmt_, column));
    return text != nullptr ? text : "";
  }

 private:
  Connection& connection_;
  sqlite3_stmt* stmt_ = nullptr;
};

bool StartsWith(std::string const& text, char const* begin) { return text.rfind(begin, 0) == 0; }

void CheckViews(Connection& connection, std::string const& sql) {
  struct View {
    std::string name;
    std::string words;
    std::string sql;
  };
  std::vector<View> views;
  for (Rows rows(connection, kViews); rows.Next();) {
    std::string name = rows.Text(0);
    std::string words = Words(name);
    views.push_back({std::move(name), std::move(words), rows.Text(1)});
  }
  if (views.empty()) {
    return;
  }
  std::string const wanted = Words(sql);
  for (View const& view : views) {
    if (wanted.find(view.words) == std::string::npos) {
      continue;
    }
    if (char const* fault = FaultOfView(view.sql)) {
      throw CppSQLite3Exception(SQLITE_ERROR, "view " + view.name + " " + fault);
    }
    std::string const read = Words(view.sql);
    for (View const& other : views) {
      if (other.words != view.words && read.find(other.words) != std::string::npos) {
        throw CppSQLite3Exception(SQLITE_ERROR, "view " + view.name + " reads view " + other.name);
      }
    }
  }
}

// A function that the statement itself names is its author's wish.
void CheckProgram(Connection& connection, std::string const& sql) {
  Limits const limits(connection.db);
  std::string const wanted = Words(sql);
  for (Rows rows(connection, "EXPLAIN " + sql); rows.Next();) {
    std::string const operation = rows.Text(1);
    if (operation == kVirtualTable) {
      throw CppSQLite3Exception(SQLITE_ERROR, "table or view reads a virtual table");
    }
    for (auto const& call : kCalls) {
      if (StartsWith(operation, call.begin)) {
        std::string const shown = call.function != nullptr ? call.function : rows.Text(5);
        std::string const name = shown.substr(0, shown.find('('));
        if (wanted.find(Words(name)) == std::string::npos) {
          throw CppSQLite3Exception(SQLITE_ERROR, "table or view calls function " + name);
        }
      }
    }
  }
}

void Compile(Prepared& prepared, std::string const& sql) {
  Connection& connection = *prepared.connection;
  Limits const limits(connection.db);
  sqlite3_stmt* stmt = nullptr;
  int const code = sqlite3_prepare_v2(connection.db, sql.c_str(), -1, &stmt, nullptr);
  if (code != SQLITE_OK) {
    throw connection.Failed(connection.db, code);
  }
  sqlite3_finalize(std::exchange(prepared.stmt, stmt));
  prepared.schema = connection.SchemaNumber();
}

// For a Snapshot.
void CheckAndCompile(Prepared& prepared, std::string const& sql) {
  Connection& connection = *prepared.connection;
  connection.checked.clear();
  CheckViews(connection, sql);
  CheckProgram(connection, sql);
  Compile(prepared, sql);
  connection.checked = sql;
  connection.checked_schema = connection.SchemaNumber();
}

}  // namespace

bool Reads(char const* sql) noexcept {
  sql += std::strspn(sql, " \t\r\n\f");
  for (char const* word : {"select", "values", "with"}) {
    if (sqlite3_strnicmp(sql, word, static_cast<int>(std::strlen(word))) == 0) {
      return true;
    }
  }
  return false;
}

Snapshot::Snapshot(Connection& connection) : connection_(connection) {
  CloseLook const look(connection);
  int code = SQLITE_OK;
  if (connection.touch == nullptr) {
    code = sqlite3_prepare_v2(connection.db, kTouch, -1, &connection.touch, nullptr);
  }
  if (code == SQLITE_OK) {
    code = sqlite3_step(connection.touch);
  }
  if (code != SQLITE_ROW) {
    CppSQLite3Exception const failure = connection.Failed(connection.db, code);
    sqlite3_reset(connection.touch);
    throw failure;
  }
}

Snapshot::~Snapshot() { sqlite3_reset(connection_.touch); }

// What was checked last may be compiled at once: it is still the schema in SQLite's memory, since
// whatever else could have changed that has made `checked` empty.
void CompileReading(Prepared& prepared, char const* sql) {
  Connection& connection = *prepared.connection;
  prepared.reads = true;
  if (connection.checked == sql && connection.checked_schema == connection.SchemaNumber()) {
    Compile(prepared, sql);
    return;
  }
  Snapshot const snapshot(connection);
  CheckAndCompile(prepared, sql);
}

void FollowSchema(Prepared& prepared) {
  if (prepared.schema != prepared.connection->SchemaNumber()) {
    CheckAndCompile(prepared, std::string(sqlite3_sql(prepared.stmt)));
  }
}

}  // namespace sqlitedb
