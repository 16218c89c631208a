// Where documents go.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Standard output, kept for the host's own text. While a cycle runs, the probe prints lines of its
// own to standard output ("Dev Name eth0"), as it has to. So that what comes out of the program is
// the document and nothing else, these are held back as long as this object lives, and the text
// goes to where descriptor 1 led before.
class StandardOutput {
 public:
  // Throws std::system_error.
  StandardOutput();
  ~StandardOutput();
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  // Throws std::system_error when not all of `text` could be written.
  void Write(std::string_view text) const;

  // Sends what was held back to standard error; Write does, after the text, and so does the end of
  // this object. On a terminal without the lines that name the network devices: they report no
  // trouble, and people read the text.
  void PassOn() const;

  // What was held back, which goes nowhere then; "" where nothing can be held.
  std::string Take() const;

  // Where the text goes, for what a terminal is asked.
  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
  int held_;  // a file in memory; -1: there is none, and standard error gets the lines at once
};

// `text` without the probe's lines that name network devices ("Dev Name eth0").
std::string WithoutDeviceNames(std::string_view text);

// Writes all of `text` to `descriptor`. Throws std::system_error, which names `where`.
void WriteAll(int descriptor, std::string_view text, const std::string& where);

// Makes the file at `path` hold `text`, whole or not at all: the text goes to a new file in the
// same folder, which takes the name only once it is safe on the disk. A symbolic link is followed,
// also to a file that is not there yet, unless another user has put it in a folder of everybody's.
// The permissions of a file that was there are kept: those to read, write and run it, and of
// another user's file not those to write it of group and others. Throws std::runtime_error, also
// when something else than a regular file stands there.
void WriteFile(const std::string& path, std::string_view text);

}  // namespace host
