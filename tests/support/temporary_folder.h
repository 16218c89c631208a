// A folder of one test.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace test_support {

// An empty folder that nobody else uses, below the folder for temporary files. It is removed with
// all that it holds. Throws std::system_error when it cannot be made.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(testing::TempDir() + "status_test_XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), path_);
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  // Without a slash at its end.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace test_support
