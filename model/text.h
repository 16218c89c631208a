// What texts must not hold, whatever the document is written as.
#pragma once

#include <string>
#include <string_view>

#include "model/export.h"

namespace QtSts {

// Replaces every byte of `text` that XML cannot carry by U+FFFD: control characters, broken UTF-8,
// surrogates, U+FFFE and U+FFFF. Every text of every rendering passes here.
STATUS_API void CleanText(std::string* text);

// Replaces each character of `text`, which is UTF-8, that steers terminals (U+007F to U+009F), ends
// lines (U+2028, U+2029) or turns the reading direction (U+061C, U+200E, U+200F, U+202A to U+202E,
// U+2066 to U+2069) by its code in four hexadecimal digits between `before` and `after`.
STATUS_API void EscapeSteering(std::string* text, std::string_view before, std::string_view after);

}  // namespace QtSts
