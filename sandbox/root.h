#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace sandbox {

// A file or folder of the outside that is seen inside at the same absolute path.
struct Bind {
  std::string Path;
  bool Writable;
};

// What a sandbox sees of the outside: programs and libraries, the build tree of the running
// program, the source tree, and `writable`. Parents come first, and what a parent contains already
// is left out.
std::vector<Bind> PlanBinds(const std::vector<std::filesystem::path>& writable);

// Makes a tmpfs of `bytes` the root of this process, which must be process 1 of fresh mount and
// pid namespaces. Processes have their folders in /proc up to the number `last_process`. Throws
// std::system_error; the process is then of no further use.
void EnterRoot(const std::vector<Bind>& binds, std::uint64_t bytes, int last_process);

// Removes every fixture: all files and folders that EnterRoot() did not make, of the root file
// system and of /dev. Mounts, and with them everything of the outside, are never touched; the
// status database and the log socket stay, since the running program may have them open.
void ClearRoot();

// Throws std::runtime_error unless a fixture at `path` lands on a file system of the sandbox's own:
// links and mounts lead to folders of the outside that are writable inside, and into the kernel's.
void RequireFixturePlace(const std::string& path);

// Removes a file or a folder with its contents, never crossing into a mount; nothing when it is
// absent.
void RemoveTree(const std::string& path);

}  // namespace sandbox
