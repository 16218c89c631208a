// The floors: the same system calls, SQLite steps and libxml2 calls that the work cannot avoid, and
// nothing else. Every figure is given as a ratio to one of them.
#pragma once

#include <string>
#include <vector>

struct sqlite3;

namespace bench {

// Prepares the cycle's statement on a database of its own, steps through its rows and copies both
// columns into the cycle's two buffers. The sum of a byte of each, so that nothing is left out.
class RowsFloor {
 public:
  RowsFloor();
  ~RowsFloor();
  RowsFloor(const RowsFloor&) = delete;
  RowsFloor& operator=(const RowsFloor&) = delete;

  unsigned Run();

 private:
  sqlite3* database_ = nullptr;
};

// Every open, read, ioctl, stat, socket and interface look-up of the probe, without parsing. Large
// files are read as the probe reads them, 64 KiB at a time into one place.
unsigned ProbeFloor();

// The parts of it that read the package database and the network's state.
unsigned PackagesFloor();
unsigned NetworkFloor();

// One call that builds a tree.
struct TreeStep {
  enum class Kind { kOpen, kAttribute, kClose } What;
  std::string Name;
  std::string Value;
};

// The steps that build the tree of a document, from its text.
std::vector<TreeStep> TreeSteps(const std::string& xml);

// Builds the tree by plain libxml2 calls and dumps it.
std::string XmlFloor(const std::vector<TreeStep>& steps);

}  // namespace bench
