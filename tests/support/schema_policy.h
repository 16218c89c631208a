// The promise to those who read documents: from release to release fields are only added.
#pragma once

#include <string>
#include <vector>

namespace test_support {

// Where the schema `current` breaks the promise that the schema `released` made: a type, attribute
// or element that is gone or was renamed, that has another type or unit, or that was always there
// and now need not be; a code that is gone or has another name. Additions are none. Empty when the
// promise is kept.
std::vector<std::string> BrokenPromises(const std::string& released, const std::string& current);

}  // namespace test_support
