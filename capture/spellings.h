// Values as people and programs write them apart from their usual form.
#pragma once

#include <vector>

#include "capture/pseudonyms.h"
#include "capture/replacer.h"

namespace capture {

// All spellings of a controller's values that are found by their own letters, wherever they stand:
// between other letters, with other separators, as numbers, as the bytes themselves.
std::vector<Spelling> SpellingsOf(const Identities& identities, const Pseudonyms& pseudonyms);

}  // namespace capture
