// What the tests of db/ share: a folder of their own, a plain SQLite connection that plays the
// other programs, and child processes.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "db/sql_database.h"

constexpr unsigned short kNoMutex = 32768;
constexpr const char* kSelect = "SELECT * FROM status ORDER BY address ASC;";

using Rows = std::vector<std::pair<std::string, std::string>>;

// A fresh folder, gone after the test, and a database file name in it.
class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest();
  ~DatabaseTest() override;

  // Names of what is in the folder, sorted.
  std::vector<std::string> Files() const;

  std::filesystem::path dir_;
  std::string file_;
};

// Another program at the same file: SQLite's own interface, no defences, no waiting.
class Foreign {
 public:
  explicit Foreign(const std::string& file);
  Foreign(const Foreign&) = delete;
  Foreign& operator=(const Foreign&) = delete;
  ~Foreign();

  // "" when done, else "code:message".
  std::string Do(const std::string& sql);

  // First column of the first row; fails the test when there is none.
  std::string Get(const std::string& sql);

 private:
  sqlite3* db_ = nullptr;
};

// Makes `file` a database with `sql`, in rollback mode.
void MakeForeign(const std::string& file, const std::string& sql);

// A table `status` with the row a, 1.
constexpr const char* kTableWithARow =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
    "INSERT INTO status VALUES('a','1');";

// A database that another program has made, opened for reading.
class ForeignDatabaseTest : public DatabaseTest {
 protected:
  // Makes the file anew and opens it.
  void Make(const std::string& sql);

  CSQLdatabase database_;
};

// What stands in a file.
std::string Bytes(const std::string& file);

// All rows of `sql` through the layer. Throws as the layer does.
Rows ReadRows(CSQLdatabase& database, const char* sql = kSelect);

// "code:message" of the CppSQLite3Exception that `action` throws, "" when it throws none.
std::string Thrown(const std::function<void()>& action);

// What `action` writes to standard error.
std::string Stderr(const std::function<void()>& action);

// First column of the first row of `sql`, read through `database`.
std::string Setting(CSQLdatabase& database, const char* sql);

// A forked process that runs `action` and exits with its result; killed when this object goes.
class Child {
 public:
  explicit Child(const std::function<int()>& action);
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child();

  void Kill();

  // Exit status of the child, -1 when a signal ended it.
  int Wait();

 private:
  int pid_ = -1;
};

// Makes the calling process one that permission bits apply to.
bool BecomeUnprivileged();

// Reads a byte from, writes a byte to the other side; a pipe of two processes.
class Signal {
 public:
  Signal();
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;
  ~Signal();

  void Send() const;
  void Await() const;

 private:
  int ends_[2];
};

// Seconds that `action` takes.
double Seconds(const std::function<void()>& action);

// Number of descriptors that this process has open.
int OpenDescriptors();
