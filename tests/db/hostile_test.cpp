// A database file that somebody made to do harm: odd files, endless views, broken pages.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>

#include "db/sql_database.h"
#include "tests/db/database_fixture.h"
#include "tests/support/interposed/clocks.h"
#include "tests/support/interposed/sqlite_calls.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kCantOpen = "14:unable to open database file";
constexpr const char* kInterrupted =
    "9:interrupted after 100000000 steps, 10 seconds or 128 MiB: table or view too large";
constexpr const char* kTooBig =
    "18:string or blob too big: a value or row has more than 1048576 bytes";
constexpr const char* kTable =
    "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;"
    "INSERT INTO status VALUES('a','1');";

// More rows than there is time for: 1000 to the power of four.
constexpr const char* kEndless =
    "CREATE TABLE t(x);"
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
    "INSERT INTO t SELECT x FROM c;"
    "CREATE VIEW status AS SELECT d.x AS address, 'v' AS value FROM t a, t b, t c, t d";

class Hostile : public DatabaseTest {
 protected:
  void Make(const std::string& sql) {
    MakeForeign(file_, sql);
    ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0);
  }

  // Number of rows that the layer reads of `sql`.
  long Count(const char* sql = kSelect) {
    CppSQLite3Statement statement = database_.m_DB.compileStatement(sql);
    long rows = 0;
    for (CppSQLite3Query query = statement.execQuery(); !query.eof(); query.nextRow()) {
      query.getStringField(0, "");
      ++rows;
    }
    return rows;
  }

  CSQLdatabase database_;
};

// Seconds of processor time that `action` takes.
double WorkSeconds(const std::function<void()>& action) {
  const std::clock_t start = std::clock();
  action();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

std::string Numbers(int count) {
  return "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT " +
         std::to_string(count) + ") ";
}

std::string Times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

void MakeSocket(const std::string& path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << path;
  close(fd);
}

std::string NotRegular(const std::string& name) {
  return "14:" + name + " is not a regular file and belongs to user " + std::to_string(geteuid()) +
         ": remove it while no program has the database open";
}

// The files that SQLite opens while it lives.
class OpenedFiles {
 public:
  OpenedFiles() {
    g_names.clear();
    g_open = vfs_->xGetSystemCall(vfs_, "open");
    vfs_->xSetSystemCall(vfs_, "open", reinterpret_cast<sqlite3_syscall_ptr>(&Note));
  }
  OpenedFiles(const OpenedFiles&) = delete;
  OpenedFiles& operator=(const OpenedFiles&) = delete;
  ~OpenedFiles() { vfs_->xSetSystemCall(vfs_, "open", g_open); }

  static const std::vector<std::string>& Names() { return g_names; }

 private:
  using Open = int (*)(const char*, int, int);

  static int Note(const char* name, int flags, int mode) {
    g_names.emplace_back(name);
    return reinterpret_cast<Open>(g_open)(name, flags, mode);
  }

  static inline std::vector<std::string> g_names;
  static inline sqlite3_syscall_ptr g_open = nullptr;
  sqlite3_vfs* vfs_ = sqlite3_vfs_find(nullptr);
};

struct OddFile {
  const char* Name;
  std::function<void(const std::string&)> Make;
};

const OddFile kOddFiles[] = {
    {"pipe", [](const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0666), 0); }},
    {"folder", [](const std::string& path) { EXPECT_TRUE(fs::create_directory(path)); }},
    {"socket", [](const std::string& path) { MakeSocket(path); }},
    {"link to a file",
     [](const std::string& path) {
       std::ofstream(path + ".target") << "precious";
       fs::create_symlink(path + ".target", path);
     }},
    {"link to nothing",
     [](const std::string& path) { fs::create_symlink(path + ".target", path); }},
};

}  // namespace

TEST_F(Hostile, NothingButARegularFileIsOpened) {
  for (const OddFile& odd : kOddFiles) {
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
      SCOPED_TRACE(testing::Message() << odd.Name << " as " << suffix);
      if (*suffix != '\0') {
        MakeForeign(file_, kTable);
      }
      odd.Make(file_ + suffix);
      int read = -1;
      int write = -1;
      const std::string refusal = *suffix == '\0' ? kCantOpen : NotRegular(file_ + suffix);
      EXPECT_LT(Seconds([&] {
                  EXPECT_EQ(Stderr([&] {
                              read = database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex);
                              write = database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0);
                            }),
                            refusal + "\n" + refusal + "\n");
                }),
                1.0);
      EXPECT_EQ(read, 14);
      EXPECT_EQ(write, 14);
      const std::string target = file_ + suffix + ".target";
      EXPECT_TRUE(!fs::exists(target) || fs::file_size(target) == 8) << "the target was touched";
      for (const auto& name : Files()) {
        fs::remove(dir_ / name);
      }
    }
  }
}

TEST_F(Hostile, LinkInThePathIsNotFollowed) {
  fs::create_directory(dir_ / "real");
  MakeForeign(dir_ / "real" / "status.db", kTable);
  fs::create_directory_symlink(dir_ / "real", dir_ / "link");
  const std::string linked = dir_ / "link" / "status.db";
  EXPECT_EQ(Stderr([&] { database_.OpenDatabaseReadOnly(linked.c_str(), kNoMutex); }),
            std::string(kCantOpen) + "\n");
}

// SQLite opens a journal that it finds for reading, which on a pipe used to wait for ever.
TEST_F(Hostile, OddJournalThatComesAfterOpeningIsRefusedBeforeReading) {
  for (const OddFile& odd : kOddFiles) {
    SCOPED_TRACE(odd.Name);
    fs::remove(file_);
    Make(kTable);
    const std::string journal = file_ + "-journal";
    fs::remove(journal);
    odd.Make(journal);
    EXPECT_LT(Seconds([&] { EXPECT_EQ(Thrown([&] { Count(); }), NotRegular(journal)); }), 1.0);
    fs::remove(journal);
    EXPECT_EQ(Count(), 1);
  }
}

TEST_F(Hostile, EndlessViewEndsInterrupted) {
  Make(kEndless);
  EXPECT_LT(WorkSeconds([&] { EXPECT_EQ(Thrown([&] { Count(); }), kInterrupted); }), 20.0);
  EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
}

TEST_F(Hostile, BudgetIsThatOfAllRowsTogether) {
  Make(
      "CREATE TABLE t(x);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
      "INSERT INTO t SELECT x FROM c;"
      "CREATE VIEW status AS SELECT a.x AS address, b.x AS value "
      "FROM t a CROSS JOIN t b CROSS JOIN t c WHERE b.x + c.x = 2000");
  long rows = 0;
  CppSQLite3Statement statement = database_.m_DB.compileStatement("SELECT * FROM status");
  CppSQLite3Query query = statement.execQuery();
  EXPECT_EQ(Thrown([&] {
              for (; !query.eof(); query.nextRow()) {
                ++rows;
              }
            }),
            kInterrupted);
  EXPECT_GT(rows, 5);
  EXPECT_TRUE(query.eof());
  EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
}

TEST_F(Hostile, RowsOfAMegabyteEachEndByTheClock) {
  Make(
      "CREATE TABLE big(value); INSERT INTO big VALUES(zeroblob(1000000));"
      "CREATE TABLE t(x);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
      "INSERT INTO t SELECT x FROM c;"
      "CREATE VIEW status AS SELECT a.x AS address, value FROM t a, t b, t c, big "
      "WHERE value || a.x || b.x || c.x = ''");
  const double seconds =
      WorkSeconds([&] { EXPECT_EQ(Thrown([&] { Count("SELECT * FROM status"); }), kInterrupted); });
  EXPECT_GT(seconds, 8.5);
  EXPECT_LT(seconds, 20.0);
}

TEST_F(Hostile, BudgetIsFarAboveAnyRealTable) {
  const std::string fill =
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 100000) "
      "INSERT INTO status SELECT 'key'||x, 'value'||x FROM c;";
  for (const char* create : {"CREATE TABLE status(address TEXT PRIMARY KEY, value) WITHOUT ROWID;",
                             "CREATE TABLE status(address TEXT, value);"}) {
    SCOPED_TRACE(create);
    fs::remove(file_);
    Make(create + fill);
    EXPECT_EQ(Count(), 100'000);
    EXPECT_EQ(Setting(database_, "SELECT count(*) FROM status a, (SELECT 1 FROM status LIMIT 50)"),
              "5000000");
  }
}

// A table without an index on its keys is sorted.
TEST_F(Hostile, SortingAHundredThousandRowsOfFullLengthIsWithinTheBudget) {
  Make(
      "CREATE TABLE status(address TEXT, value TEXT);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 100000) "
      "INSERT INTO status SELECT printf('%0127d', x), printf('%0511d', x) FROM c");
  const OpenedFiles opened;
  EXPECT_EQ(Count(), 100'000);
  EXPECT_THAT(opened.Names(), testing::Each(testing::StartsWith(file_)));
}

// Such a view used to write 2.5 GB into temporary files in 4.5 seconds.
TEST_F(Hostile, SortingWritesNoFileAndEndsWhereItTakesTooMuchMemory) {
  const std::string fill =
      "CREATE TABLE t(x); WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 2000) "
      "INSERT INTO t SELECT printf('%0400d', x) FROM c;"
      "CREATE TABLE big(value); INSERT INTO big VALUES(zeroblob(1000000));";
  for (const char* select : {
           "SELECT a.x AS address, b.x AS value FROM t a, t b",
           "SELECT a.x AS address, value || '' AS value FROM t a, t b, big",
           "SELECT a.x AS address, b.x AS value FROM t a, t b UNION SELECT 1, 2",
           "SELECT DISTINCT a.x || b.x AS address, 1 AS value FROM t a, t b",
       }) {
    SCOPED_TRACE(select);
    fs::remove(file_);
    Make(fill + "CREATE VIEW status AS " + select);
    const OpenedFiles opened;
    const sqlite3_int64 before = sqlite3_memory_used();
    sqlite3_memory_highwater(1);
    EXPECT_EQ(Thrown([&] { Count(); }), kInterrupted);
    // Up to a hundred steps of a megabyte each may come between two looks.
    EXPECT_LT(sqlite3_memory_highwater(0) - before, 256 << 20);
    EXPECT_LT(sqlite3_memory_used() - before, 16 << 20);
    EXPECT_THAT(opened.Names(), testing::Each(testing::StartsWith(file_)));
    EXPECT_EQ(Foreign(file_).Do("BEGIN EXCLUSIVE; COMMIT"), "") << "a lock is left";
  }
}

// A table of a few rows used to be "too large" for a host that had been stopped, or whose handlers
// took long.
TEST_F(Hostile, PausesOfTheHostAreNotCounted) {
  Make(
      "CREATE TABLE status(address TEXT, value);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 1000) "
      "INSERT INTO status SELECT 'key'||x, 'value'||x FROM c;");
  constexpr int kHour = 3600;
  struct {
    const char* Pause;
    int Gain;  // of the coarse clock, within SQLite
    int Row;   // that a row lasts outside
    int Work;  // how much of that the thread works
    int Wait;  // between compiling and running, in which the thread works
  } const cases[] = {
      {"stopped within SQLite", kHour, 0, 0, 0},
      {"stopped in a handler", 0, kHour, 0, 0},
      {"worked in a handler", 0, kHour, kHour, 0},
      {"worked before the run", 0, 0, 0, kHour},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.Pause);
    int rows = 0;
    CppSQLite3Statement statement = database_.m_DB.compileStatement("SELECT * FROM status");
    g_coarse_clock_shift += one.Wait;
    g_thread_clock_shift += one.Wait;
    EXPECT_EQ(Thrown([&] {
                g_coarse_clock_gain = one.Gain;
                for (CppSQLite3Query query = statement.execQuery(); !query.eof(); query.nextRow()) {
                  ++rows;
                  g_coarse_clock_shift += one.Row;
                  g_thread_clock_shift += one.Work;
                }
              }),
              "");
    g_coarse_clock_gain = 0;
    EXPECT_EQ(rows, 1000);
  }
}

// Texts in UTF-16 are converted when they are asked for: 131,000 rows of 500,000 letters took 87
// seconds of work, with result 0.
TEST_F(Hostile, ConvertingTextsIsCounted) {
  Make("PRAGMA encoding='UTF-16'; CREATE TABLE status(address TEXT, value);" + Numbers(1000) +
       "INSERT INTO status SELECT 'key'||x, 'value'||x FROM c;");
  CppSQLite3Statement statement = database_.m_DB.compileStatement("SELECT * FROM status");
  g_on_text = [] {
    ++g_coarse_clock_shift;
    ++g_thread_clock_shift;
  };
  EXPECT_EQ(Thrown([&] {
              for (CppSQLite3Query query = statement.execQuery(); !query.eof(); query.nextRow()) {
                query.getStringField(0, "");
              }
            }),
            kInterrupted);
  g_on_text = nullptr;
}

// Each used to have a budget of its own, so that a cycle could take twice the limits.
TEST_F(Hostile, CompilingAndTheFirstRunShareABudget) {
  std::string tables;
  for (int i = 0; i < 100; ++i) {
    tables += "CREATE TABLE t" + std::to_string(i) + "(x);";
  }
  Make(tables + kTable + Numbers(1000) + "INSERT INTO status SELECT 'key'||x, x FROM c");
  CppSQLite3Statement other = database_.m_DB.compileStatement("SELECT 1");
  // Compiling lists the schema, and then the program.
  g_on_compile = [](const char* sql) {
    const std::string_view text = sql;
    if (text.find("FROM sqlite_schema NOT INDEXED") != std::string_view::npos) {
      g_coarse_clock_shift += 2;
    } else if (text.find("EXPLAIN") == 0) {
      g_coarse_clock_shift += 9;
      g_thread_clock_shift += 9;
    }
  };
  CppSQLite3Statement statement = database_.m_DB.compileStatement(kSelect);
  CppSQLite3Statement disturbed = database_.m_DB.compileStatement(kSelect);
  CppSQLite3Statement last = database_.m_DB.compileStatement("SELECT * FROM status, t0");
  g_on_compile = nullptr;
  const auto read = [](CppSQLite3Statement& one) {
    return Thrown([&] {
      for (CppSQLite3Query query = one.execQuery(); !query.eof(); query.nextRow()) {
      }
    });
  };
  EXPECT_EQ(read(last), kInterrupted);
  EXPECT_EQ(read(last), "") << "the second run has a budget of its own";
  EXPECT_EQ(read(other), "");
  EXPECT_EQ(read(disturbed), "") << "what other statements took is not its own";
  EXPECT_EQ(read(statement), "");
}

TEST_F(Hostile, EveryRunHasABudgetOfItsOwn) {
  Make(
      "CREATE TABLE t(x);"
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 2000) "
      "INSERT INTO t SELECT x FROM c;"
      "CREATE VIEW status AS SELECT a.x AS address, b.x AS value FROM t a, t b");
  CppSQLite3Statement statement = database_.m_DB.compileStatement("SELECT count(*) FROM status");
  for (int run = 0; run < 4; ++run) {
    EXPECT_STREQ(statement.execQuery().getStringField(0, ""), "4000000") << "run " << run;
  }
}

// The schema must not be read on what the interrupted run had left.
TEST_F(Hostile, EndlessViewIsForgottenOnceItIsReplacedByATable) {
  std::string tables;
  for (int i = 0; i < 100; ++i) {
    tables += "CREATE TABLE t" + std::to_string(i) + "(x);";
  }
  Make(tables + kEndless);
  EXPECT_EQ(Thrown([&] { Count(); }), kInterrupted);
  ASSERT_EQ(Foreign(file_).Do(std::string("DROP VIEW status;") + kTable), "");
  EXPECT_EQ(Thrown([&] { EXPECT_EQ(Count(), 1); }), "");
}

TEST_F(Hostile, RowLongerThanAMegabyteIsAnErrorAndAShorterOneIsNot) {
  Make(
      "CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT);"
      "INSERT INTO status VALUES('a', hex(zeroblob(500000)))");
  EXPECT_EQ(ReadRows(database_).front().second.size(), 1'000'000U);
  ASSERT_EQ(Foreign(file_).Do("INSERT INTO status VALUES('b', hex(zeroblob(600000)))"), "");
  EXPECT_EQ(Thrown([&] { Count(); }), kTooBig);
}

TEST_F(Hostile, DefencesAreUp) {
  MakeForeign(file_, kTable);
  ASSERT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
  const std::string library = dir_ / "evil.so";
  struct {
    std::string Sql;
    std::string Failure;
  } const rows[] = {
      {"UPDATE sqlite_schema SET sql=''", "1:table sqlite_master may not be modified"},
      {"SELECT load_extension('" + library + "')", "1:not authorized"},
      {"ATTACH '" + file_ + "2' AS other", "1:too many attached databases - max 0"},
      {"SELECT 'x' LIKE printf('%.*c', 101, 'x')", "1:LIKE or GLOB pattern too complex"},
      {"SELECT zeroblob(1048577)", kTooBig},
      {"SELECT '" + std::string(1 << 16, 'x') + "'", "18:string or blob too big"},
      {"SELECT 1" + Times(100, ",1"), "1:too many columns in result set"},
      {"SELECT 1" + Times(100, "+1"), "1:Expression tree is too large (maximum depth 100)"},
      {"SELECT 1" + Times(20, " UNION SELECT 1"), "1:too many terms in compound SELECT"},
      {"SELECT max(1" + Times(16, ",1") + ")", "1:too many arguments on function max"},
      {"SELECT ?101", "1:variable number must be between ?1 and ?100"},
      {"VALUES(1)" + Times(16'000, ",(1)"), "7:out of memory"},
  };
  EXPECT_EQ(Thrown([&] { Count("PRAGMA writable_schema=ON"); }), "");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Sql.substr(0, 80));
    EXPECT_EQ(Thrown([&] { Count(row.Sql.c_str()); }), row.Failure);
  }
  EXPECT_EQ(Setting(database_, "PRAGMA cell_size_check"), "1");
  EXPECT_EQ(Setting(database_, "PRAGMA trusted_schema"), "0");
  EXPECT_EQ(Setting(database_, "PRAGMA mmap_size"), "0");
}

TEST_F(Hostile, SchemaMayNotUseWhatIsUnsafe) {
  Make("CREATE VIEW status AS SELECT name AS address, file AS value FROM pragma_database_list");
  EXPECT_EQ(Foreign(file_).Get("SELECT address FROM status"), "main");
  EXPECT_EQ(Thrown([&] { Count(); }), "1:unsafe use of virtual table \"pragma_database_list\"");
}

TEST_F(Hostile, BrokenFilesGiveRowsOrAFailureAndNoHang) {
  MakeForeign(file_, std::string(kTable) +
                         "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 300) "
                         "INSERT INTO status SELECT 'key'||x, 'value'||x FROM c");
  std::ifstream in(file_, std::ios::binary);
  const std::string good{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  std::mt19937 random(20240229);
  int failures = 0;
  for (int i = 0; i < 1000; ++i) {
    std::string bytes = good;
    for (auto flips = 1 + random() % 20; flips > 0; --flips) {
      bytes[random() % bytes.size()] ^= static_cast<char>(1U << random() % 8);
    }
    if (i % 4 == 0) {
      bytes.resize(random() % bytes.size());
    }
    std::ofstream(file_, std::ios::binary) << bytes;
    ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0) << "file " << i;
    const std::string failure = Thrown([&] { Count(); });
    EXPECT_NE(failure.substr(0, 2), "0:") << "file " << i;
    failures += failure.empty() ? 0 : 1;
  }
  EXPECT_GT(failures, 100);
  EXPECT_LT(failures, 1000);
}

// The second read used to find the pages that the first had refused in SQLite's cache, where they
// are not checked again, and gave rows of them with no report.
TEST_F(Hostile, BrokenFileThatWasReportedOnceIsReportedEveryTime) {
  MakeForeign(file_, std::string("PRAGMA page_size=512; VACUUM;") + kTable +
                         "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c LIMIT 40) "
                         "INSERT INTO status SELECT 'key'||x, 'value'||x FROM c");
  std::ifstream in(file_, std::ios::binary);
  const std::string good{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  int failures = 0;
  for (std::size_t at = 100; at < good.size(); at += 4) {
    std::string bytes = good;
    bytes[at] = '\xff';
    std::ofstream(file_, std::ios::binary) << bytes;
    ASSERT_EQ(database_.OpenDatabaseReadOnly(file_.c_str(), kNoMutex), 0) << "byte " << at;
    const std::string failure = Thrown([&] { Count(); });
    EXPECT_EQ(Thrown([&] { Count(); }), failure) << "byte " << at;
    failures += failure.empty() ? 0 : 1;
  }
  EXPECT_GT(failures, 50);
}
