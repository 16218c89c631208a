// Makes the list of sources out of a cycle's events. Private to this library.
#pragma once

#include <vector>

#include "collector/observer.h"
#include "insight/snapshot.h"

namespace insight {

class SourceRecorder {
 public:
  // Of the cycle that begins.
  void BeginCycle();
  void See(const observe::Event& event);

  // What the sources of the cycle gave, and the database's state. `document` is what came of it.
  std::vector<Source> EndCycle(const QtSts::DocumentTree& document, DatabaseState* database);
};

}  // namespace insight
