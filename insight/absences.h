// What a controller in use has and this one lacks. Private to this library.
#pragma once

#include <vector>

#include "insight/snapshot.h"
#include "insight/wrong_rows.h"

namespace insight {

// Of the network: links, devices, gateway. `findings` are those of the sources before.
void FindInNetwork(const Snapshot& snapshot, std::vector<Finding>* findings);

// Of the rows of a display: sensors, T-table.
void FindAbsentRows(const Snapshot& snapshot, const WrongRows& wrong_rows,
                    std::vector<Finding>* findings);

}  // namespace insight
