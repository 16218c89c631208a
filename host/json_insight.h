// What a snapshot says beside its document, as JSON. Private to the renderings.
#pragma once

#include <string>
#include <vector>

#include "host/json_text.h"
#include "insight/snapshot.h"

namespace host {

// One object with sources, rows and findings; docs/host.md lists its members.
void AddInsight(const insight::Snapshot& snapshot, JsonText* json);

// A member with any texts.
void AddTexts(const char* name, const std::vector<std::string>& texts, JsonText* json);

}  // namespace host
