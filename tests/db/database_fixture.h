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
constexpr char const* kSelect = "SELECT * FROM status ORDER BY address ASC;";

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
  explicit Foreign(std::string const& file);
  Foreign(Foreign const&) = delete;
  Foreign& operator=(Foreign const&) = delete;
  ~Foreign();

  // "" when done, else "code:message".
  std::string Do(std::string const& sql);

  // First column of the first row; fails the test when there is none.
  std::string Get(std::string const& sql);

 private:
  sqlite3* db_ = nullptr;
};

// Makes `file` a database with `sql`, in rollback mode.
void MakeForeign(std::string const& file, std::string const& sql);

// What stands in a file.
std::string Bytes(const std::string& file);

// All rows of `sql` through the layer. Throws as the layer does.
Rows ReadRows(CSQLdatabase& database, char const* sql = kSelect);

// "code:message" of the CppSQLite3Exception that `action` throws, "" when it throws none.
std::string Thrown(std::function<void()> const& action);

// What `action` writes to standard error.
std::string Stderr(std::function<void()> const& action);

// First column of the first row of `sql`, read through `database`.
std::string Setting(CSQLdatabase& database, char const* sql);

// A forked process that runs `action` and exits with its result; killed when this object goes.
class Child {
 public:
  explicit Child(std::function<int()> const& action);
  Child(Child const&) = delete;
  Child& operator=(Child const&) = delete;
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
  Signal(Signal const&) = delete;
  Signal& operator=(Signal const&) = delete;
  ~Signal();

  void Send() const;
  void Await() const;

 private:
  int ends_[2];
};

// Seconds that `action` takes.
double Seconds(std::function<void()> const& action);

// Number of descriptors that this process has open.
int OpenDescriptors();
