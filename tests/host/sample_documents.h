// Documents made by hand for the tests of the renderings.
#pragma once

#include <memory>
#include <string>

#include "insight/snapshot.h"
#include "model/document.h"

namespace sample {

// A small controller with at least one of everything that needs attention.
std::unique_ptr<QtSts::CStatus> Troubled();

// A snapshot of a cycle that gave this document, of which nothing else is known.
insight::Snapshot SnapshotOf(const QtSts::CStatus& status);

// A finding with these members, the others empty.
insight::Finding FindingOf(insight::Severity level, const std::string& message,
                           const std::string& path = "");

// A snapshot of Troubled() with findings of every severity, sources, rows, and fields that are not
// reported.
insight::Snapshot TroubledSnapshot();

}  // namespace sample
