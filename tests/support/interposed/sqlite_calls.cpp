#include "tests/support/interposed/sqlite_calls.h"

#include <sqlite3.h>

#include <cstdarg>

#include "tests/support/interposed/real.h"

using interposed::Call;
using interposed::ErrorOf;

int g_open_flags = 0;
std::function<void(const char*)> g_on_compile;
std::function<void()> g_on_text;

#pragma GCC visibility push(default)
extern "C" {

int sqlite3_open_v2(const char* file, sqlite3** db, int flags, const char* vfs) {
  INTERPOSED_REAL(sqlite3_open_v2);
  g_open_flags = flags;
  const int code = real(file, db, flags, vfs);
  const int error = ErrorOf(Call::kSqlOpen, SQLITE_CANTOPEN, __func__);
  return error != 0 ? error : code;
}

int sqlite3_db_config(sqlite3* db, int option, ...) {
  INTERPOSED_REAL(sqlite3_db_config);
  std::va_list rest;
  va_start(rest, option);
  const int value = va_arg(rest, int);
  int* const result = va_arg(rest, int*);
  va_end(rest);
  const int error = ErrorOf(Call::kSqlSet, SQLITE_ERROR, __func__);
  return error != 0 ? error : real(db, option, value, result);
}

int sqlite3_busy_timeout(sqlite3* db, int milliseconds) {
  INTERPOSED_REAL(sqlite3_busy_timeout);
  const int error = ErrorOf(Call::kSqlSet, SQLITE_ERROR, __func__);
  return error != 0 ? error : real(db, milliseconds);
}

int sqlite3_exec(sqlite3* db, const char* sql, int (*row)(void*, int, char**, char**),
                 void* context, char** message) {
  INTERPOSED_REAL(sqlite3_exec);
  const int error = ErrorOf(Call::kSqlSet, SQLITE_ERROR, __func__);
  return error != 0 ? error : real(db, sql, row, context, message);
}

int sqlite3_file_control(sqlite3* db, const char* name, int operation, void* argument) {
  INTERPOSED_REAL(sqlite3_file_control);
  const int error = ErrorOf(Call::kSqlSet, SQLITE_IOERR, __func__);
  return error != 0 ? error : real(db, name, operation, argument);
}

int sqlite3_prepare_v2(sqlite3* db, const char* sql, int length, sqlite3_stmt** statement,
                       const char** tail) {
  INTERPOSED_REAL(sqlite3_prepare_v2);
  if (g_on_compile) {
    g_on_compile(sql);
  }
  if (const int error = ErrorOf(Call::kSqlPrepare, SQLITE_IOERR, __func__)) {
    *statement = nullptr;
    return error;
  }
  return real(db, sql, length, statement, tail);
}

int sqlite3_step(sqlite3_stmt* statement) {
  INTERPOSED_REAL(sqlite3_step);
  const int error = ErrorOf(Call::kSqlStep, SQLITE_IOERR, __func__);
  return error != 0 ? error : real(statement);
}

const unsigned char* sqlite3_column_text(sqlite3_stmt* statement, int column) {
  INTERPOSED_REAL(sqlite3_column_text);
  if (g_on_text) {
    g_on_text();
  }
  return real(statement, column);
}

#define WORKS_ALL_THE_SAME(name, handle, call)            \
  int name(handle* object) {                              \
    INTERPOSED_REAL(name);                                \
    const int code = real(object);                        \
    const int error = ErrorOf(call, SQLITE_IOERR, #name); \
    return error != 0 ? error : code;                     \
  }
WORKS_ALL_THE_SAME(sqlite3_reset, sqlite3_stmt, Call::kSqlReset)
WORKS_ALL_THE_SAME(sqlite3_finalize, sqlite3_stmt, Call::kSqlFinalize)
WORKS_ALL_THE_SAME(sqlite3_close, sqlite3, Call::kSqlClose)

}  // extern "C"
#pragma GCC visibility pop
