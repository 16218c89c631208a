// The lines that the library writes to standard error when the database fails: code, ':', message.
// The program says the same in words.
#pragma once

#include <cstddef>
#include <cstdio>

namespace host {

// As long as it lives, the stream stderr leaves them out and passes on everything else, line by
// line. A file that root removed, which the library reports in the same way, is said in the
// program's own name. One at a time.
class LibraryLines {
 public:
  LibraryLines();
  ~LibraryLines();
  LibraryLines(const LibraryLines&) = delete;
  LibraryLines& operator=(const LibraryLines&) = delete;

 private:
  void Take(const char* text, std::size_t size);
  void End();

  std::FILE* before_;
  std::FILE* filter_;
  char line_[4096];  // longer ones are passed on in parts
  std::size_t length_ = 0;
};

}  // namespace host
