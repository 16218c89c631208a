#include "host/failure_text.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <system_error>

namespace host {
namespace {

// What to do where the system refused something.
constexpr struct {
  int Error;
  const char* Cure;
} kCures[] = {
    {EACCES, "see who may write there, and who may enter its folders"},
    {EBADF, "start the program with it open"},
    {EDQUOT, "make room, or write elsewhere"},
    {EFBIG, "raise the limit of file sizes (ulimit -f)"},
    {EISDIR, "give a file"},
    {ELOOP, "remove the symbolic links that lead in a circle"},
    {EMFILE, "raise the limit of open files (ulimit -n)"},
    {ENAMETOOLONG, "give a shorter name"},
    {ENOENT, "give a file in a folder that is there"},
    {ENOSPC, "make room, or write elsewhere"},
    {ENOTDIR, "give a file in a folder that is there"},
    {EPERM, "see who may write there, and who may enter its folders"},
    {EPIPE, "let its reader read to the end"},
    {EROFS, "write to another file system"},
};

const char* CureOf(int error) {
  const auto* const cure =
      std::ranges::find(kCures, error, [](const auto& each) { return each.Error; });
  return cure == std::end(kCures) ? "see the system log" : cure->Cure;
}

}  // namespace

std::string InWords(const std::exception& failure) {
  if (const auto* const refused = dynamic_cast<const std::system_error*>(&failure)) {
    return std::string(refused->what()) + "; " + CureOf(refused->code().value());
  }
  if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) {
    return "out of memory; see which program takes it";
  }
  return failure.what();  // it has its cure
}

}  // namespace host
