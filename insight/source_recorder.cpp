#include "insight/source_recorder.h"

namespace insight {

void SourceRecorder::BeginCycle() {}
void SourceRecorder::See(const observe::Event& /*event*/) {}

std::vector<Source> SourceRecorder::EndCycle(const QtSts::DocumentTree& /*document*/,
                                             DatabaseState* /*database*/) {
  return {};
}

}  // namespace insight
