// Where a capture goes.
#pragma once

#include <string>
#include <string_view>

namespace capture {

// The place of a file that is going to be written: a name in a folder. Links on the way to the
// folder are followed when root or the effective user owns them; others could lead what root writes
// to where they like.
class OutputFile {
 public:
  // Throws std::runtime_error when there is no such folder, or the name stands for something that
  // is no regular file. Nothing is made yet.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Makes the file hold `bytes`, whole or not at all, for its owner only. Throws
  // std::runtime_error.
  void Write(std::string_view bytes);

 private:
  std::string path_;
  int folder_ = -1;
  std::string name_;
};

// Writes all to standard output. Throws std::runtime_error, also when that is a terminal.
void WriteToStandardOutput(std::string_view bytes);
void RequireNoTerminal();

}  // namespace capture
