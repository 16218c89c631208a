// Calls of the libraries into the system that a test can make fail. This program puts itself in
// front of them by defining functions of the same name, so that the libraries under test, SQLite,
// libxml2 and the C++ library all come through here; the C library's calls of itself do not.
#pragma once

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <set>
#include <string>

namespace faults {

enum class Call {
  kMemory,  // malloc, calloc, realloc, operator new: no memory
  kOpen,    // open, openat: EMFILE
  kRead,    // read, pread: EIO
  kWrite,   // pwrite, ftruncate: ENOSPC
  kIoctl,   // ioctl: -1 with EIO, which is also how a driver says "not available"
  kSocket,
  kGetifaddrs,
  kGetnameinfo,
  kFileStatus,    // stat, lstat, fstat, readlinkat
  kSystemStatus,  // statfs, sysinfo
  kSqlOpen,       // sqlite3_open_v2
  kSqlSet,        // sqlite3_db_config, sqlite3_busy_timeout, sqlite3_exec, sqlite3_file_control
  kSqlPrepare,    // sqlite3_prepare_v2
  kSqlStep,       // sqlite3_step
  kSqlReset,      // sqlite3_reset, which does its work all the same
  kSqlFinalize,   // sqlite3_finalize, which does its work all the same
  kSqlClose,      // sqlite3_close, which does its work all the same
};

/// Name of the kind, such as "Memory".
const char* NameOf(Call call);

enum class Extent { kOnce, kFromThenOn };

/// While it lives, the `nth` call of one kind fails, counted from 1; 0: none, they are only
/// counted.
class Injection {
 public:
  Injection(Call call, unsigned long nth, Extent extent);
  Injection(const Injection&) = delete;
  Injection& operator=(const Injection&) = delete;
  ~Injection();
};

/// Whether the last injection made a call fail.
bool Struck();

/// The functions that this program stands in front of and that were called while an injection
/// lived, whatever its kind.
std::set<std::string> Called();

/// Blocks of memory that are allocated now. Not counted under AddressSanitizer, whose own functions
/// allocate elsewhere; there, the leak check at the end of the program takes over.
long LiveBlocks();

/// While it lives, what is allocated may be forgotten: the leak check passes it over.
#ifdef __SANITIZE_ADDRESS__
using LeaksAllowed = __lsan::ScopedDisabler;
inline constexpr bool kCountsBlocks = false;
#else
struct LeaksAllowed {
  LeaksAllowed() {}
};
inline constexpr bool kCountsBlocks = true;
#endif

}  // namespace faults
