#include "serve/cycle.h"

#include <cstddef>
#include <map>
#include <tuple>
#include <utility>

namespace serve {
namespace {

// What makes two findings of two cycles the same one.
auto IdentityOf(const insight::Finding& finding) {
  return std::tie(finding.Id, finding.Path, finding.Source, finding.Key);
}

}  // namespace

void AddBeginnings(const Cycle* before, Cycle* cycle) {
  using Identity = decltype(IdentityOf(std::declval<insight::Finding>()));
  std::map<Identity, std::size_t> known;
  for (std::size_t at = 0; before != nullptr && at < before->FindingsSince.size(); ++at) {
    known.emplace(IdentityOf(before->Snapshot.Findings[at]), at);
  }
  for (const insight::Finding& finding : cycle->Snapshot.Findings) {
    const auto at = known.find(IdentityOf(finding));
    const bool is_new = before == nullptr || at == known.end();
    cycle->FindingsSince.push_back(is_new ? cycle->Snapshot.Began
                                          : before->FindingsSince[at->second]);
    cycle->FindingsBefore.push_back(is_new ? before == nullptr
                                           : before->FindingsBefore[at->second]);
  }
}

}  // namespace serve
