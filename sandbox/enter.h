#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

// A controller in a box: Linux namespaces in which everything that is read at fixed absolute
// paths is a fixture, while programs, libraries and this project's trees stay where they are.
namespace sandbox {

// The system does not allow what a sandbox needs; what() gives the step and the reason.
class Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Options {
  // Size of the root file system in bytes; statfs("/") reports it.
  std::uint64_t RootBytes = std::uint64_t{64} << 20;
  // Folders or files of the outside that are writable inside, at the same absolute path.
  std::vector<std::filesystem::path> Writable;
  // The last process, as the sandbox counts them, that has its folder in /proc. Each costs a link,
  // in every sandbox anew; a test starts at most 200.
  int LastProcess = 400;
};

// The default options plus what the environment asks for: STATUS_UPDATE_GOLDEN=1 makes the source
// tree writable, SANDBOX_BIND lists further writable folders, separated by ':'.
Options OptionsFromEnvironment();

// Runs `body` in a fresh sandbox and gives its result, 128 + n when signal n ended it.
//
// Inside, the process is an ordinary one below a small init (process 1). The root is an empty
// tmpfs with /usr and what belongs to it, the build tree of the running program and the source
// tree bound read-only; the environment and the open descriptors pass through. When `body` ends,
// or the calling process dies of whatever reason, everything goes: processes, mounts, namespaces.
//
// Throws Refused when the system does not allow a sandbox, and std::filesystem::filesystem_error
// when a writable path of `options` does not exist. Call it while the process has one thread.
int RunInside(const Options& options, const std::function<int()>& body);

// Whether this process runs in a sandbox. Everything that changes fixtures insists on it.
bool Inside();

// Absolute path of `relative` in the source tree; the same inside and outside.
std::filesystem::path SourcePath(const std::filesystem::path& relative);

}  // namespace sandbox
