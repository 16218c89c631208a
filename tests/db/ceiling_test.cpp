// How large a database may be, and how many rows of it are read.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::Pair;

constexpr const char* kTooManyRows = "18:table or view has more than 131072 rows";
constexpr const char* kTooLarge = "18:database is larger than 128 MiB";
constexpr int kMostRows = 131'072;
constexpr std::uint32_t kPageSize = 4096;
constexpr std::uint32_t kMostPages = (128 << 20) / kPageSize;

class Ceiling : public ForeignDatabaseTest {};

// Lets a database that has few pages of 4096 bytes have `pages`, which take no room on the disk.
void Grow(const std::string& file, std::uint32_t pages) {
  constexpr std::streamoff kCount = 28;  // of the header
  std::array<char, 4> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<char>(pages >> (24 - 8 * i) & 0xff);
  }
  fs::resize_file(file, std::uintmax_t{pages} * kPageSize);
  std::fstream(file, std::ios::in | std::ios::out | std::ios::binary)
      .seekp(kCount)
      .write(bytes.data(), bytes.size());
}

std::string Numbers(int count) {
  return "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT " +
         std::to_string(count) + ") ";
}

}  // namespace

TEST_F(Ceiling, RowsBeyondTheLimitFailAndThoseBeforeItAreRead) {
  Make("CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;" +
       Numbers(kMostRows) + "INSERT INTO status SELECT printf('%06d', x), 'v' FROM c");
  EXPECT_EQ(ReadRows(database_).size(), kMostRows);
  ASSERT_EQ(Foreign(file_).Do("INSERT INTO status VALUES('z','v')"), "");
  CppSQLite3Statement statement = database_.m_DB.compileStatement(kSelect);
  for (int run = 0; run < 2; ++run) {
    SCOPED_TRACE(run);
    CppSQLite3Query query = statement.execQuery();
    int rows = 0;
    EXPECT_EQ(Thrown([&] {
                for (; !query.eof(); query.nextRow()) {
                  ++rows;
                }
              }),
              kTooManyRows);
    EXPECT_EQ(rows, kMostRows);
    EXPECT_TRUE(query.eof());
    EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
  }
  EXPECT_EQ(Thrown([&] { statement.finalize(); }), "") << "it was reported already";
  ASSERT_EQ(Foreign(file_).Do("DELETE FROM status WHERE address='z'"), "");
  EXPECT_EQ(ReadRows(database_).size(), kMostRows);
}

// Unsorted, each row comes at once, so that none of the other limits is reached soon.
TEST_F(Ceiling, ViewWithoutAnEndIsNotReadBeyondTheLimit) {
  Make("CREATE TABLE t(x);" + Numbers(1000) +
       "INSERT INTO t SELECT x FROM c;"
       "CREATE VIEW status AS SELECT a.x AS address, b.x AS value FROM t a, t b, t c");
  EXPECT_EQ(Thrown([&] { ReadRows(database_, "SELECT * FROM status"); }), kTooManyRows);
}

TEST_F(Ceiling, DatabaseOfTheLimitIsReadAndALargerOneIsNot) {
  Make(kTableWithARow);
  Grow(file_, kMostPages);
  EXPECT_EQ(Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); }), "");
  Grow(file_, kMostPages + 1);
  // SQLite knows a change by the counter in the file, which is the same.
  ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), kTooLarge);
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), kTooLarge);
  EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
}

TEST_F(Ceiling, PagesInTheLogCountAsWell) {
  Make(std::string("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;") + kTableWithARow);
  CppSQLite3Statement kept = database_.m_DB.compileStatement(kSelect);
  Foreign writer(file_);
  ASSERT_EQ(writer.Do("PRAGMA wal_autocheckpoint=0; CREATE TABLE other(x);"
                      "INSERT INTO other VALUES(zeroblob(129 << 20))"),
            "");
  ASSERT_LT(fs::file_size(file_), 1U << 20);
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), kTooLarge);
  EXPECT_EQ(Thrown([&] { kept.execQuery(); }), kTooLarge);
  ASSERT_EQ(writer.Do("DROP TABLE other; VACUUM"), "");
  EXPECT_EQ(Thrown([&] { EXPECT_THAT(ReadRows(database_), ElementsAre(Pair("a", "1"))); }), "");
}

// SQLite copies a key of an index whole, before any of its own limits count.
TEST_F(Ceiling, KeyOfAnIndexCostsNoMoreMemoryThanTheLimitAllows) {
  Make(
      "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT);"
      "INSERT INTO status VALUES(zeroblob(400000000), '1')");
  sqlite3_memory_highwater(1);
  EXPECT_EQ(Thrown([&] { ReadRows(database_); }), kTooLarge);
  EXPECT_LT(sqlite3_memory_highwater(0), 256 << 20);
}
