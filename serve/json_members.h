// Members of JSON that events and overviews have alike. Private to this folder.
#pragma once

#include <charconv>
#include <cstddef>
#include <iterator>
#include <string>

#include "model/json_text.h"
#include "model/text.h"

namespace serve {

// Whatever bytes it has.
inline void AddText(const char* name, std::string text, QtSts::JsonText* json) {
  QtSts::CleanText(&text);
  json->Member(name);
  json->String(text);
}

template <class Number>
void AddNumber(const char* name, Number number, QtSts::JsonText* json) {
  char text[32];
  char* const end = std::to_chars(std::begin(text), std::end(text), number).ptr;
  json->Member(name);
  json->Literal({text, static_cast<std::size_t>(end - text)});
}

}  // namespace serve
