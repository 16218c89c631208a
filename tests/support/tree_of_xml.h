// Whether the tree of a document says what its XML says.
#pragma once

#include <string>

#include "model/document.h"

namespace test_support {

// The first place where the tree of `status` and `xml` say different things, with both; empty when
// they say the same: the same elements in the same order, each with the same values in the same
// order, letter by letter.
std::string TreeDiffersFromXml(const QtSts::CStatus& status, const std::string& xml);

}  // namespace test_support
