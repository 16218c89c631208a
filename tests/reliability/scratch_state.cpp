#include "tests/reliability/scratch_state.h"

#include "tests/collector/scratch_variables.h"

namespace reliability {

std::string ScratchText() {
  std::string text;
  for (const ScratchVariable& variable : ScratchVariables()) {
    text += variable.Text() + '\n';
  }
  return text;
}

}  // namespace reliability
