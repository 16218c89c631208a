#include "insight/origins.h"

#include <utility>

#include "insight/finding_rules.h"

namespace insight {

void Origins::Name(Finding* finding, const QtSts::TreeElement& holder, const char* key) {
  Collect();
  if (key == nullptr) {
    finding->Key = KeyOf(finding->Path, holder);
  } else if (const auto row = m_Keys.find(key); row != m_Keys.end()) {
    finding->Key = *row;
  }
  const auto source = m_Sources.find(finding->Path);
  if (!finding->Key.empty()) {
    finding->Source = kDatabaseSource;
  } else if (source != m_Sources.end()) {
    finding->Source = source->second;
  }
}

void Origins::Collect() {
  if (std::exchange(m_Collected, true)) {
    return;
  }
  for (const Row& row : m_Snapshot.Rows) {
    if (!row.Path.empty()) {
      m_Rows[row.Path] = row.Key;
      m_Keys.insert(row.Key);
    }
  }
  for (const Source& source : m_Snapshot.Sources) {
    for (const std::string& field : source.Fields) {
      const auto [entry, first] = m_Sources.emplace(field, source.Id);
      if (!first) {
        entry->second = "";  // of two it is not known which one
      }
    }
  }
}

// The row that wrote the value, or else the one that completed its element.
std::string Origins::KeyOf(const std::string& path, const QtSts::TreeElement& holder) const {
  if (const auto row = m_Rows.find(path); row != m_Rows.end()) {
    return std::string(row->second);
  }
  for (const QtSts::TreeElement* element = &holder; element != nullptr;
       element = element->Parent()) {
    if (const auto row = m_Rows.find(element->Path()); row != m_Rows.end()) {
      return std::string(row->second);
    }
  }
  return "";
}

}  // namespace insight
