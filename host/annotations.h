// What a snapshot says about the values of its document.
#pragma once

#include <unordered_map>

#include "host/page.h"
#include "host/text_template.h"
#include "insight/snapshot.h"

namespace host {

Mark MarkOf(insight::Severity severity);

// Values of the document of one snapshot, by their address in its tree.
struct Annotations {
  explicit Annotations(const insight::Snapshot& snapshot);

  // The worst finding of each value that has one, and a warning for one of a row with an error.
  std::unordered_map<const QtSts::TreeValue*, Mark> Marks;
  // What stands there is only what the field begins with.
  ValueSet Unreported;
  // No source fed it, whether or not a row wrote some of it.
  ValueSet Unfed;
};

}  // namespace host
