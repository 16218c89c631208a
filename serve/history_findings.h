// Findings of the last 24 hours, with their beginnings and ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "insight/snapshot.h"
#include "serve/history_memory.h"
#include "serve/history_names.h"
#include "serve/history_rows.h"

namespace serve {

using FindingText =
    std::basic_string<char, std::char_traits<char>, HistoryAllocator<char, HistoryPart::kFindings>>;

// A finding from its beginning to its end.
struct Episode {
  UnixSeconds Begin = 0;
  std::optional<UnixSeconds> End = {};
  bool Before = false;    // it was there when the program first looked: it began before
  bool BeganHere = true;  // in this boot of the controller
  bool EndedHere = true;  // likewise
  insight::Severity Level = insight::Severity::kWarning;  // the worst that it was
  FindingText Identity = {};                              // what makes two findings the same one
  FindingText Id = {};
  FindingText Message = {};  // of the first cycle in which it was so
  FindingText Where = {};
  FindingText Path = {};  // in the latest document that had it
};

// For each finding of a cycle what makes it and one of another cycle the same one, wherever its
// element stands; all are different.
std::vector<std::string> IdentitiesOf(const std::vector<insight::Finding>& findings,
                                      const Identities& identities);

// One thread at a time.
class HistoryFindings {
 public:
  using Episodes = std::list<Episode, HistoryAllocator<Episode, HistoryPart::kFindings>>;

  static constexpr std::size_t kMost = 4000;
  static constexpr std::size_t kMostBytes = std::size_t{2} << 20;
  static constexpr std::size_t kMostTextBytes = 256;  // of each text

  struct Beginning {
    UnixSeconds Time;
    bool Before;
  };

  // What a cycle at `now` found. `identities` are those of its findings, by IdentitiesOf(). Returns
  // for each finding of the snapshot when it began; nothing for those that there is no room for. A
  // finding that the cycle could not have seen does not end. `first`: the program has not looked
  // before.
  std::vector<std::optional<Beginning>> Update(const insight::Snapshot& snapshot,
                                               const std::vector<std::string>& identities,
                                               UnixSeconds now, bool first);

  // Those that ended more than 24 hours ago, and with `others` those that ended in other boots.
  void Forget(UnixSeconds now, bool others);

  // Moves the times that are of this boot.
  void Shift(UnixSeconds seconds);

  // From a file, in order. False: there is no room.
  bool Restore(Episode episode);
  // The restored ones are of another boot; of those that began with a clock that was not set the
  // beginning is not known.
  void EndRestoring(UnixSeconds clock_set);

  const Episodes& All() const { return episodes_; }

  // How many findings were looked at so far to make room for others: the work of that.
  std::uint64_t LookedAt() const { return looked_at_; }

 private:
  // Takes the oldest that have ended away, from `*from` on, and moves it past those that have not.
  bool MakeRoom(Episodes::iterator* from);

  Episodes episodes_;  // in the order in which they began
  std::uint64_t looked_at_ = 0;
};

}  // namespace serve
