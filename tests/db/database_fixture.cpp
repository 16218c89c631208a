#include "tests/db/database_fixture.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

DatabaseTest::DatabaseTest() {
  std::string name = testing::TempDir() + "db_test_XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no folder " + name);
  }
  dir_ = name;
  fs::permissions(dir_, fs::perms(0755));
  file_ = dir_ / "status.db";
}

DatabaseTest::~DatabaseTest() {
  fs::permissions(dir_, fs::perms(0755));
  fs::remove_all(dir_);
}

std::vector<std::string> DatabaseTest::Files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir_)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Foreign::Foreign(const std::string& file) {
  if (sqlite3_open(file.c_str(), &db_) != SQLITE_OK) {
    throw std::runtime_error("cannot open " + file);
  }
  Do("PRAGMA synchronous=OFF");
}

Foreign::~Foreign() { sqlite3_close(db_); }

std::string Foreign::Do(const std::string& sql) {
  const int code = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? "" : std::to_string(code) + ":" + sqlite3_errmsg(db_);
}

std::string Foreign::Get(const std::string& sql) {
  sqlite3_stmt* stmt = nullptr;
  std::string text = "no row";
  if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK &&
      sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_text(stmt, 0) != nullptr) {
    text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
  } else {
    ADD_FAILURE() << sql << ": " << sqlite3_errmsg(db_);
  }
  sqlite3_finalize(stmt);
  return text;
}

void MakeForeign(const std::string& file, const std::string& sql) {
  ASSERT_EQ(Foreign(file).Do(sql), "");
}

void ForeignDatabaseTest::Make(const std::string& sql) {
  database_.CloseDatabase();
  std::filesystem::remove(file_);
  MakeForeign(file_, sql);
  ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
}

std::string Bytes(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

Rows ReadRows(CSQLdatabase& database, const char* sql) {
  Rows rows;
  CppSQLite3Statement statement = database.m_DB.compileStatement(sql);
  for (CppSQLite3Query query = statement.execQuery(); !query.eof(); query.nextRow()) {
    std::string address = query.getStringField(0, "NULL");
    rows.emplace_back(std::move(address), query.getStringField(1, "NULL"));
  }
  return rows;
}

std::string Thrown(const std::function<void()>& action) {
  try {
    action();
    return "";
  } catch (const CppSQLite3Exception& failure) {
    return std::to_string(failure.errorCode()) + ":" + failure.errorMessage();
  }
}

std::string Stderr(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

std::string Setting(CSQLdatabase& database, const char* sql) {
  CppSQLite3Statement statement = database.m_DB.compileStatement(sql);
  return statement.execQuery().getStringField(0, "NULL");
}

Child::Child(const std::function<int()>& action) : pid_(fork()) {
  if (pid_ == 0) {
    _exit(action());
  }
}

Child::~Child() {
  Kill();
  Wait();
}

void Child::Kill() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
  }
}

int Child::Wait() {
  int status = -1;
  if (pid_ > 0) {
    waitpid(pid_, &status, 0);
    pid_ = -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool BecomeUnprivileged() {
  constexpr unsigned kNobody = 65534;
  return geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

Signal::Signal() {
  if (pipe(ends_) != 0) {
    throw std::runtime_error("no pipe");
  }
}

Signal::~Signal() {
  close(ends_[0]);
  close(ends_[1]);
}

void Signal::Send() const {
  const char byte = 0;
  if (write(ends_[1], &byte, 1) != 1) {
    throw std::runtime_error("pipe is closed");
  }
}

void Signal::Await() const {
  char byte = 0;
  if (read(ends_[0], &byte, 1) != 1) {
    throw std::runtime_error("pipe is closed");
  }
}

double Seconds(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int OpenDescriptors() {
  return static_cast<int>(
      std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}
