#pragma once

#include <sys/types.h>

#include <stdexcept>
#include <string>
#include <string_view>

// Fixture files, by absolute path. All that change something work in a sandbox only and throw
// std::logic_error elsewhere; failures are std::system_error.
namespace sandbox {

// Throws std::logic_error outside of a sandbox: fixtures must never land on a real machine.
void RequireInside();

// The bytes of a file, inside or outside.
std::string ReadFile(const std::string& path);

// What `parse` makes of the file's text; its std::runtime_error gets the file's name.
template <class Parse>
auto ParseFile(const std::string& path, const Parse& parse) {
  const std::string text = ReadFile(path);
  try {
    return parse(text);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

// Creates or overwrites a file; its folders are made as needed.
void WriteFile(const std::string& path, std::string_view bytes, mode_t mode = 0644);

void MakeFolder(const std::string& path);
void MakeLink(const std::string& path, const std::string& target);

// Makes something that exists (stat() succeeds) but that not even root can open: a socket node.
// (To make a file that opens but cannot be read, use MakeFolder().)
void MakeUnopenable(const std::string& path);

// Removes a file or a folder with its contents; nothing when it is absent. Refuses mounts.
void RemoveFile(const std::string& path);

}  // namespace sandbox
