// Which handler turns a row of table "status" into the document, by the row's key.
#pragma once

#include <array>
#include <string>

#include "collector/state/export.h"
#include "model/document.h"

struct StatusKey {
  std::string Key;  // matches every row key that begins with it, byte by byte
  int (*Handler)(QtSts::CStatus* status, char* value, char* key);
};

inline constexpr std::size_t kStatusKeyCount = 32;

// In ascending byte order of key, like the rows: the cycle searches forward only. No key begins
// with another one. Filled when the library is loaded, before any CStatusInterface exists.
COLLECTOR_API extern const std::array<StatusKey, kStatusKeyCount> status_primary_keys;
