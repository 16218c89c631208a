// The order of the columns of table `status`, which decides which one is read as the key.
#pragma once

#include <string>

#include "insight/snapshot.h"

class CStatusInterface;

namespace host {

// What is wrong with it, in words; "" when nothing is, when there is no second column, and when the
// table cannot be read. For an interface that is open.
std::string ColumnTrouble(CStatusInterface& collector);

// For an interface of which `snapshot` is the last cycle: where most rows have unknown keys and the
// order of the columns is why, the finding that counts rows with errors says so, and stands before
// the others of its severity.
void NameColumnTrouble(CStatusInterface& collector, insight::Snapshot* snapshot);

// Writes such words as a line of this program to standard error; nothing for "".
void WarnOfColumns(const std::string& trouble);

}  // namespace host
