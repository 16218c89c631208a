#include "collector/dispatch.h"

#include <cstring>
#include <string>

#include "collector/key_table.h"
#include "collector/state/report.h"

namespace rows {
namespace {

// Copies as much of `text` as fits, always terminated; returns the length of the copy.
template <std::size_t kSize>
std::size_t CopyText(char (&buffer)[kSize], const char* text) {
  const std::size_t length = strnlen(text, kSize - 1);
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
  return length;
}

const char* TextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

std::size_t BytesInDatabase(void* query, int column) {
  return static_cast<std::size_t>(static_cast<CppSQLite3Query*>(query)->getFieldBytes(column));
}

// For rows that do not come from a database: the length of the text.
std::size_t BytesOfTexts(void* texts, int column) {
  return std::strlen(TextOrEmpty(static_cast<const char**>(texts)[column]));
}

}  // namespace

// Every row passes through the next three. They are inline, since a shared library calls its own
// exported functions indirectly.

// The position in the key table; -1 when there is none.
inline int Dispatcher::Find(std::string_view key) {
  for (std::size_t i = resume_; i < status_primary_keys.size(); ++i) {
    const std::string& prefix = status_primary_keys[i].Key;
    if (prefix.size() <= key.size() && std::memcmp(prefix.data(), key.data(), prefix.size()) == 0) {
      resume_ = i;  // not the one after it: several rows may match one prefix
      return static_cast<int>(i);
    }
  }
  return -1;
}

inline void Dispatcher::Call(const Cells& cells, std::string_view key, char* writable_key,
                             char* value) {
  const std::size_t searched_from = resume_;
  const int entry = Find(key);
  observe::Report([&] {
    observe::RowBegins event;
    event.Key = cells.Key;
    event.Value = cells.Value;
    event.CutKey = writable_key;
    event.CutValue = value;
    event.Entry = entry;
    event.SearchedFrom = static_cast<int>(searched_from);
    event.Bytes = cells.Bytes;
    event.Cells = cells.Source;
    return event;
  });
  const int result =
      entry < 0 ? 0 : status_primary_keys[resume_].Handler(status_, value, writable_key);
  observe::Report([&] {
    observe::RowEnds event;
    event.Result = result;
    return event;
  });
}

inline void Dispatcher::DispatchCopy(const Cells& cells) {
  const std::size_t key_length = CopyText(key_, TextOrEmpty(cells.Key));
  CopyText(value_, TextOrEmpty(cells.Value));
  Call(cells, {key_, key_length}, key_, value_);
}

void Dispatcher::Dispatch(const char* key, const char* value) {
  const char* texts[] = {key, value};
  DispatchCopy({key, value, &BytesOfTexts, texts});
}

void Dispatcher::DispatchInPlace(char* key, char* value) {
  const char* texts[] = {key, value};
  Call({key, value, &BytesOfTexts, texts}, key, key, value);
}

void DispatchAll(CSQLdatabase& database, CppSQLite3Query& query, QtSts::CStatus* status) {
  Dispatcher dispatcher(status);
  while (database.m_LastError == 0 && !query.eof()) {
    const char* const key = query.getStringField(0, nullptr);
    const char* const value = query.getStringField(1, nullptr);
    dispatcher.DispatchCopy({key, value, &BytesInDatabase, &query});
    query.nextRow();
    if (query.eof()) {
      query.finalize();
    }
  }
  database.ReadAndClearLastError();
}

}  // namespace rows
