// The history as JSON; docs/host.md lists its members.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/json_text.h"
#include "serve/cycle.h"
#include "serve/history.h"
#include "serve/history_names.h"

namespace serve {

// What may be asked for at once.
inline constexpr std::size_t kMostPaths = 64;

// The paths of all series, and the findings. Elements of the document have their path in it; those
// that are gone their identity.
std::string HistoryListOf(const HistoryData& data, const Cycle& latest,
                          const Identities& identities);

// The series of `paths`, by the document of `identities` or by identity. Nothing, and `*unknown`
// set, when there is none for one of them.
std::optional<std::string> HistoryOf(const HistoryData& data, const Identities& identities,
                                     const std::vector<std::string_view>& paths,
                                     std::string_view* unknown);

// Whether HistoryOf() would return something.
bool HasHistoryOf(const HistoryData& data, const Identities& identities,
                  const std::vector<std::string_view>& paths, std::string_view* unknown);

// The path of a number of `latest` that differs least from `path`; "" for none, and for documents
// that have very many.
std::string NearestPath(const Cycle& latest, std::string_view path);

// The members of a finding that has ended, or has not.
void AddEpisode(const Episode& episode, QtSts::JsonText* json);

}  // namespace serve
