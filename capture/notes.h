// What a replay of a cycle cannot give the same.
#pragma once

#include <string>
#include <vector>

#include "capture/cycle.h"

namespace capture {

struct Note {
  // Path as DocumentTree spells it, for all that stands below it, too; "*": the whole document;
  // "Result": what QueryDatabase returns.
  std::string Field = {};
  std::string Why = {};
};

std::vector<Note> NotesOf(const Cycle& cycle);

}  // namespace capture
