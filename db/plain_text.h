// Text for a terminal or a log, made of what a writer of the database may have named as he likes;
// private to this folder.
#pragma once

#include <string>

namespace sqlitedb {

// `text` with U+FFFD in place of what could steer a terminal, end the line or turn the reading
// direction, and of stray bytes. What comes after the first 1000 bytes is left out.
std::string PlainText(std::string text);

}  // namespace sqlitedb
