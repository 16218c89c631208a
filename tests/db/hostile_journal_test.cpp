// A journal that a writer of the database made to do harm.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <iterator>

#include "tests/db/database_fixture.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kTable =
    "PRAGMA page_size=4096; CREATE TABLE status(address TEXT PRIMARY KEY, value TEXT) WITHOUT "
    "ROWID; INSERT INTO status VALUES('a','1');";

std::string Number(std::uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xff);
  }
  return bytes;
}

// Beside the database `file` a journal as SQLite leaves it of a transaction that was broken off.
// It has the first page as it is, and names `shared` as the file that all the journals of a
// transaction over several databases name.
void PutJournal(const std::string& file, const std::string& shared) {
  constexpr std::size_t kPageSize = 4096;
  constexpr std::size_t kSectorSize = 512;
  constexpr std::uint32_t kPageOfLocks = 0x40000000 / kPageSize + 1;
  const std::string magic = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
  std::ifstream in(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  std::string header = magic + Number(1) + Number(0);
  header += Number(static_cast<std::uint32_t>(bytes.size() / kPageSize)) + Number(kSectorSize) +
            Number(kPageSize);
  header.resize(kSectorSize);
  std::uint32_t page_sum = 0;
  for (std::size_t at = kPageSize - 200; at < kPageSize; at -= 200) {
    page_sum += static_cast<unsigned char>(bytes[at]);
  }
  std::uint32_t name_sum = 0;
  for (const char c : shared) {
    name_sum += static_cast<unsigned char>(c);
  }
  std::ofstream(file + "-journal", std::ios::binary)
      << header << Number(1) << bytes.substr(0, kPageSize) << Number(page_sum)
      << Number(kPageOfLocks) << shared << Number(static_cast<std::uint32_t>(shared.size()))
      << Number(name_sum) << magic;
}

class HostileJournal : public DatabaseTest {
 protected:
  // What a host throws that may write, in a process of its own; the database was changed and a
  // journal put beside it.
  void Open(const std::string& shared) {
    MakeForeign(file_, kTable);
    PutJournal(file_, shared);
    Child host([&] {
      alarm(20);  // of a host that waits for ever
      CSQLdatabase database;
      database.m_DB.open(file_.c_str(), SQLITE_OPEN_READWRITE | kNoMutex);
      return Thrown([&] { ReadRows(database); }) == "14:unable to open database file" ? 0 : 1;
    });
    EXPECT_EQ(host.Wait(), 0);
    EXPECT_FALSE(fs::exists(file_ + "-journal")) << "it was not rolled back";
    EXPECT_EQ(database_.OpenDatabaseWrite(file_.c_str(), kNoMutex, 0), 0);
    EXPECT_EQ(ReadRows(database_), (Rows{{"a", "1"}}));
  }

  CSQLdatabase database_;
};

}  // namespace

// SQLite would delete it, whatever it is.
TEST_F(HostileJournal, FileThatItNamesIsNotDeleted) {
  const std::string precious = dir_ / "precious";
  std::ofstream(precious) << "precious";
  Open(precious);
  EXPECT_TRUE(fs::exists(precious));
}

TEST_F(HostileJournal, PipeThatItNamesIsNotWaitedFor) {
  const std::string pipe = dir_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  Open(pipe);
}
