// What is sent: each rendered once for a state of things, when it is first asked for.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "serve/cycle.h"

namespace serve {

enum class Page : std::size_t {
  kStart,
  kStyle,
  kScript,
  kIcon,
  kOverview,
  kXml,
  kJson,
  kInsight,
  kMetrics,
  kHealth,
};
inline constexpr std::size_t kPages = 10;

struct Body {
  unsigned int Status = 0;  // of HTTP
  std::shared_ptr<const std::string> Text;
};

// One thread at a time.
class Bodies {
 public:
  explicit Bodies(std::chrono::seconds interval);

  // From now on answers come from `state`.
  void Set(State state);
  const State& Now() const { return state_; }

  // Throws std::bad_alloc.
  const Body& Get(Page page);

  // The entity tag of all of them, in quotes: another one in each state of each process.
  const std::string& Tag() const { return tag_; }

 private:
  Body Render(Page page) const;

  const std::chrono::seconds interval_;
  const std::string process_;  // another one in each process
  State state_;
  std::string tag_;
  std::array<std::optional<Body>, kPages> rendered_;
};

// "2026-11-22T04:29:22Z"
std::string TimeText(SystemTime time);

}  // namespace serve
