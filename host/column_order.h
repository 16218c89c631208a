// The order of the columns of table `status`, which decides which one is read as the key.
#pragma once

#include <string>

class CStatusInterface;

namespace host {

// What is wrong with it, in words; "" when nothing is, when there is no second column, and when the
// table cannot be read. For an interface that is open.
std::string ColumnTrouble(CStatusInterface& collector);

// Writes such words as a line of this program to standard error; nothing for "".
void WarnOfColumns(const std::string& trouble);

}  // namespace host
