// Findings of the last 24 hours, with their beginnings and ends.
#pragma once

#include <cstddef>
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

// What makes findings of two cycles the same one, wherever its element stands.
std::string IdentityOf(const insight::Finding& finding, const Identities& identities);

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

  // What a cycle at `now` found. Returns for each finding of the snapshot when it began; nothing
  // for those that there is no room for. A finding that the cycle could not have seen does not end.
  // `first`: the program has not looked before.
  std::vector<std::optional<Beginning>> Update(const insight::Snapshot& snapshot,
                                               const Identities& identities, UnixSeconds now,
                                               bool first);

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

 private:
  bool MakeRoom();

  Episodes episodes_;  // in the order in which they began
};

}  // namespace serve
