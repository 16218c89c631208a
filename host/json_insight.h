// What a snapshot says beside its document, as JSON. Private to the renderings.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "model/json_text.h"

namespace host {

// One object with sources, rows and findings; docs/host.md lists its members. `since` is empty or
// has the time when each finding began.
void AddInsight(const insight::Snapshot& snapshot, QtSts::JsonText* json,
                std::span<const std::chrono::system_clock::time_point> since = {});

// A member with any texts.
void AddTexts(const char* name, const std::vector<std::string>& texts, QtSts::JsonText* json);

}  // namespace host
