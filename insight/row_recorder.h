// Makes the list of rows out of a cycle's events. Private to this library.
#pragma once

#include <vector>

#include "collector/observer.h"
#include "insight/snapshot.h"

namespace insight {

class RowRecorder {
 public:
  void BeginCycle(const QtSts::CStatus& status);
  void See(const observe::Event& event);

  // Once the cycle has ended; `document` is what came of it.
  std::vector<Row> EndCycle(const QtSts::DocumentTree& document);

 private:
  std::vector<Row> m_Rows;
};

}  // namespace insight
