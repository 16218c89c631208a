// The limits of what a sensor measures, as text.
#pragma once

#include <string>

#include "host/text_sections.h"
#include "insight/limits.h"

namespace host {

// "-30 to 65 (-40 to 80)", "min 20 V, 90 % (50 %)": within, and in parentheses what is critical
// beyond.
std::string LimitText(const insight::Limits& limits, const Measured& measured);

}  // namespace host
