// Which calls of the libraries into the system a test makes fail. The program defines functions of
// the same name in front of them, in the other sources of this folder: the libraries under test,
// SQLite, libxml2 and the C++ library all come through there; the C library's calls of itself do
// not. Not for several threads.
#pragma once

#include <set>
#include <string>

namespace interposed {

// A kind of call. The errno or result code is the one with which it fails unless a test wants
// another.
enum class Call {
  kMemory,       // malloc, calloc, realloc, operator new: no memory
  kOpen,         // open, open64, openat: EMFILE
  kRead,         // read, pread64: EIO
  kWrite,        // pwrite64, ftruncate64: ENOSPC
  kIoctl,        // ioctl: -1 with EIO, which is also how a driver says "not available"
  kSocket,       // EMFILE
  kGetifaddrs,   // ENOBUFS
  kGetnameinfo,  // EAI_MEMORY with ENOMEM
  kFileStatus,   // stat, lstat: EACCES; fstat, readlinkat: EIO
  kStatfs,       // EIO
  kSysinfo,      // EFAULT
  kSqlOpen,      // sqlite3_open_v2, which does its work all the same: SQLITE_CANTOPEN
  kSqlSet,       // sqlite3_db_config, sqlite3_busy_timeout, sqlite3_exec: SQLITE_ERROR;
                 // sqlite3_file_control: SQLITE_IOERR
  kSqlPrepare,   // sqlite3_prepare_v2: SQLITE_IOERR, as do the following
  kSqlStep,      // sqlite3_step
  kSqlReset,     // sqlite3_reset, which does its work all the same
  kSqlFinalize,  // sqlite3_finalize, which does its work all the same
  kSqlClose,     // sqlite3_close, which does its work all the same
};

// Name of the kind, such as "Memory".
const char* NameOf(Call call);

enum class Extent { kOnce, kFromThenOn };

// While it lives, the `nth` call of one kind fails, counted from 1; 0: none, they are only noted.
// `error` is the errno or result code; 0: the usual one.
class Failure {
 public:
  explicit Failure(Call call, unsigned long nth = 1, Extent extent = Extent::kOnce, int error = 0);
  Failure(const Failure&) = delete;
  Failure& operator=(const Failure&) = delete;
  ~Failure();

 private:
  Call call_;
};

// Makes the next call of the kind fail, whenever it comes, until FailNone().
void FailNext(Call call, int error = 0);
void FailNone();

// Whether a call has failed since a failure was last asked for.
bool Struck();

// The functions of this program that were called while a failure was asked for, whatever its kind.
std::set<std::string> Called();

// For the functions in front: the error with which this call is to fail, 0: it goes through.
// `function` is the __func__ of the caller.
int ErrorOf(Call call, int usual_error, const char* function);

// The same, with the error in errno.
bool Fails(Call call, int usual_error, const char* function);

}  // namespace interposed
