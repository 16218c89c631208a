// What became of a cycle's sources and rows, as text for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "insight/snapshot.h"

namespace host {

struct ExplainOptions {
  std::string Prefix;     // only rows whose key begins with it, and no sources; "": all
  bool Problems = false;  // only rows of class error
};

// The rows of a snapshot that the options ask for.
std::vector<const insight::Row*> WantedRows(const insight::Snapshot& snapshot,
                                            const ExplainOptions& options);

// For each of them whether it became something else than the row of its key in the snapshot before.
std::vector<bool> DifferingRows(const std::vector<const insight::Row*>& rows,
                                const insight::Snapshot& before);

// Sources, rows by family, problems with their cures, and a summary: of `snapshot`, with a mark at
// what differs from `before`. No byte of a row steers the terminal.
std::string ExplainInText(const insight::Snapshot& snapshot, const insight::Snapshot& before,
                          const ExplainOptions& options, std::size_t columns, bool colour);

// How a row is quoted: "Sensor_03_Zone = front", with carets in a second line below the bytes that
// the remark speaks of. Only printable text; the carets stand where the quoted bytes stand.
struct Quoted {
  std::string Text;
  std::string Carets;  // "" when the remark speaks of no bytes
};
Quoted Quote(const insight::Row& row, const insight::Remark& remark);

}  // namespace host
