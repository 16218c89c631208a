// Database files as bytes: the whole database layer on a file with these contents, and what rows it
// gives through the handlers.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "collector/dispatch.h"
#include "db/sql_database.h"
#include "fuzz/fuzz.h"
#include "model/xml.h"
#include "tests/collector/scratch_variables.h"

namespace {

namespace fs = std::filesystem;

// Some pages; larger files are only slower.
constexpr std::size_t kLargestInput = std::size_t{64} << 10;
constexpr unsigned short kNoMutex = 32768;

// A folder in memory where there is one; gone at the end of the program.
class Folder {
 public:
  Folder() {
    std::string name = (fs::exists("/dev/shm") ? "/dev/shm" : "/tmp");
    name += "/fuzz_database_XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("cannot make " + name);
    }
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path_); }

  // A file of these bytes and nothing beside it.
  std::string Put(std::string_view bytes) const {
    for (const auto& entry : fs::directory_iterator(path_)) {
      fs::remove_all(entry.path());
    }
    const fs::path file = path_ / "status.db";
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

 private:
  fs::path path_;
};

// What a reader makes of the file: a document, "" when it fails. How it fails, and after how many
// rows, depends on what SQLite has seen of the file before; that it fails does not.
std::string Read(CSQLdatabase* database) {
  ClearScratch();
  QtSts::CStatus status;
  bool failed = false;
  try {
    CppSQLite3Statement statement = database->m_DB.compileStatement(rows::kSelect);
    CppSQLite3Query query = statement.execQuery();
    rows::DispatchAll(*database, query, &status);
    query.finalize();
    statement.finalize();
  } catch (const CppSQLite3Exception& exception) {
    FUZZ_CHECK(exception.errorCode() > 0 && exception.errorCode() <= 0xff);
    FUZZ_CHECK(*exception.errorMessage() != '\0');
    failed = true;
  }
  const std::string document = QtSts::WriteDocument(status);
  return failed ? "" : document;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  static const Folder folder;
  const std::string file = folder.Put(fuzz::Text(data, size));
  CSQLdatabase database;
  if (database.OpenDatabaseReadOnly(file.c_str(), kNoMutex) == 0) {
    const std::string first = Read(&database);
    FUZZ_CHECK(Read(&database) == first);
  }
  database.OpenDatabaseWrite(file.c_str(), kNoMutex, 0);
  if (database.CreateTable("status", 100) == 0) {
    database.CreateTrigger("status");
    Read(&database);
  }
  database.CloseDatabase();
  return 0;
}
