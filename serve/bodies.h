// What is sent: each rendered once for a state of things, when it is first asked for.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "serve/cycle.h"
#include "serve/history.h"
#include "serve/history_names.h"

namespace serve {

enum class Page : std::size_t {
  kStart,
  kStyle,
  kScript,
  kCurves,
  kElements,
  kIcon,
  kOverview,
  kXml,
  kJson,
  kInsight,
  kMetrics,
  kHealth,
};
inline constexpr std::size_t kPages = 12;

struct Body {
  unsigned int Status = 0;  // of HTTP
  std::shared_ptr<const std::string> Text;
};

// One thread at a time.
class Bodies {
 public:
  // `history` must outlive it.
  Bodies(std::chrono::seconds interval, const History& history);

  // From now on answers come from `state`.
  void Set(State state);
  const State& Now() const { return state_; }

  // Throws std::bad_alloc.
  const Body& Get(Page page);

  // The history of `paths`; without any, what there is a history of. With `is_known`, which says
  // that the client has what would be sent, a history of paths that there is has no text. Throws
  // std::bad_alloc.
  Body History(const std::vector<std::string_view>& paths, bool is_known);

  // How many answers of the history of paths were made so far: the work of that.
  std::uint64_t Made() const { return made_; }

  // Whether this text is what is sent now, to each who asks for it.
  bool IsSent(const std::string* text) const;

  // The entity tag of all of them, in quotes: another one in each state of each process.
  const std::string& Tag() const { return tag_; }

 private:
  Body Render(Page page) const;
  Body NoDocument() const;

  const std::chrono::seconds interval_;
  const serve::History& history_;
  const std::string process_;  // another one in each process
  State state_;
  std::string tag_;
  std::array<std::optional<Body>, kPages> rendered_;
  std::optional<Identities> identities_;  // of the latest document
  std::optional<Body> history_list_;
  std::uint64_t made_ = 0;
};

// "2026-11-22T04:29:22Z"
std::string TimeText(SystemTime time);

}  // namespace serve
