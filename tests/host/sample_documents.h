// Documents made by hand for the tests of the renderings.
#pragma once

#include <memory>

#include "model/document.h"

namespace sample {

// A small controller with at least one of everything that needs attention.
std::unique_ptr<QtSts::CStatus> Troubled();

}  // namespace sample
