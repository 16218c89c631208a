// Hands the rows of table "status" to their handlers.
#pragma once

#include <cstddef>
#include <string_view>

#include "collector/state/export.h"
#include "db/sql_database.h"
#include "model/document.h"

namespace rows {

// The statement of a cycle: every row, in byte order of key, which is the order of the key table.
inline constexpr char kSelect[] = "SELECT * FROM status ORDER BY address ASC;";

// Merges the rows of one cycle, which come in byte order of key, with the key table, which stands
// in byte order: the search for a row's key begins where the previous row's key was found. It
// deliberately never wraps. An unknown key is ignored, and so is a handler's result.
class Dispatcher {
 public:
  explicit Dispatcher(QtSts::CStatus* status) : status_(status) {}

  // A row as the database returns it: NULL, which is a null pointer here, is read as "", and a key
  // or value that is longer than the table's triggers allow is cut to that length.
  COLLECTOR_API void Dispatch(const char* key, const char* value);

  // A row that is not too long; the handler gets these texts, not copies.
  COLLECTOR_API void DispatchInPlace(char* key, char* value);

 private:
  friend COLLECTOR_API void DispatchAll(CSQLdatabase& database, CppSQLite3Query& query,
                                        QtSts::CStatus* status);

  // A row as it is stored, for the observer.
  struct Cells {
    const char* Key;
    const char* Value;
    std::size_t (*Bytes)(void* source, int column);
    void* Source;
  };

  int Find(std::string_view key);
  void DispatchCopy(const Cells& cells);
  void Call(const Cells& cells, std::string_view key, char* writable_key, char* value);

  QtSts::CStatus* status_;
  std::size_t resume_ = 0;
  char key_[CSQLdatabase::kMaxAddressBytes + 1] = {};
  char value_[CSQLdatabase::kMaxValueBytes + 1] = {};
};

// Hands every row of a running `query` to its handler and finalizes the query after the last one.
// Stops before a row when `database` holds an error code, and clears that. Throws
// CppSQLite3Exception when a row cannot be read.
COLLECTOR_API void DispatchAll(CSQLdatabase& database, CppSQLite3Query& query,
                               QtSts::CStatus* status);

}  // namespace rows
