#include "serve/bodies.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <random>
#include <utility>

#include "host/json.h"
#include "host/printable.h"
#include "model/json.h"
#include "serve/history_json.h"
#include "serve/overview.h"
#include "serve/page.h"
#include "views/metrics.h"

namespace serve {
namespace {

constexpr unsigned int kOk = 200;
constexpr unsigned int kNotFound = 404;
constexpr unsigned int kUnavailable = 503;

std::string RandomText() {
  std::random_device device;
  char text[32];
  std::snprintf(text, sizeof text, "%08x%08x", device(), device());
  return text;
}

Body Make(unsigned int status, std::string text) {
  return {status, std::make_shared<const std::string>(std::move(text))};
}

std::string Line(const char* word, const std::string& rest) {
  return std::string(word) + ": " + host::Printable(rest) + "\n";
}

// Whether there is something to rely on, and if not, why.
Body Health(const State& state) {
  if (state.Hanging) {
    return Make(kUnavailable,
                Line("hanging", state.Hanging->Asked + " since " + TimeText(state.Hanging->Since)));
  }
  if (!state.Failure.empty()) {
    return Make(kUnavailable, Line("failed", state.Failure));
  }
  if (state.Latest == nullptr) {
    return Make(kUnavailable, Line("starting", "the first cycle is not over"));
  }
  if (state.Latest->Snapshot.Result != 0) {
    const std::string& trouble = state.Latest->Trouble;
    return Make(kUnavailable,
                Line("failed", trouble.empty() ? "the rows were not all read" : trouble));
  }
  return Make(kOk, "ok\n");
}

std::string Metrics(const State& state, std::chrono::seconds interval) {
  views::Served served = {.Interval = interval};
  if (state.Latest != nullptr) {
    served.Cycles = state.Latest->Number;
    served.Failed = state.Latest->Failed;
    served.LastSuccess = state.Latest->LastSuccess;
  }
  if (state.Hanging) {
    served.HangsSince = state.Hanging->Since;
    served.Asked = state.Hanging->Asked;
  }
  return views::RenderMetrics(state.Latest == nullptr ? nullptr : &state.Latest->Snapshot, served);
}

}  // namespace

Bodies::Bodies(std::chrono::seconds interval, const serve::History& history)
    : interval_(interval), history_(history), process_(RandomText()) {
  Set({});
}

void Bodies::Set(State state) {
  state_ = std::move(state);
  char text[64];
  std::snprintf(text, sizeof text, "\"%s-%" PRIu64 "\"", process_.c_str(), state_.Version);
  tag_ = text;
  rendered_ = {};
  identities_.reset();
  history_list_.reset();
}

const Body& Bodies::Get(Page page) {
  std::optional<Body>& body = rendered_[static_cast<std::size_t>(page)];
  if (!body) {
    body = Render(page);
  }
  return *body;
}

bool Bodies::IsSent(const std::string* text) const {
  const auto is_it = [text](const std::optional<Body>& body) {
    return body && body->Text.get() == text;
  };
  return std::ranges::any_of(rendered_, is_it) || is_it(history_list_);
}

Body Bodies::NoDocument() const {
  Body health = Health(state_);
  health.Status = kUnavailable;
  return health;
}

Body Bodies::History(const std::vector<std::string_view>& paths, bool is_known) {
  if (state_.Latest == nullptr) {
    return NoDocument();
  }
  const Cycle& latest = *state_.Latest;
  if (!identities_) {
    identities_.emplace(latest.Snapshot.Document);
  }
  if (paths.empty()) {
    if (!history_list_) {
      history_list_ = Make(kOk, history_.Look([&](const HistoryData& data) {
        return HistoryListOf(data, latest, *identities_);
      }));
    }
    return *history_list_;
  }
  std::string_view unknown;
  if (is_known && history_.Look([&](const HistoryData& data) {
        return HasHistoryOf(data, *identities_, paths, &unknown);
      })) {
    return {kOk, nullptr};
  }
  std::optional<std::string> text = history_.Look(
      [&](const HistoryData& data) { return HistoryOf(data, *identities_, paths, &unknown); });
  if (text) {
    ++made_;
    return Make(kOk, std::move(*text));
  }
  const std::string nearest = NearestPath(latest, unknown);
  return Make(kNotFound, "there is no history of " + host::Printable(unknown) +
                             (nearest.empty() ? "" : "; the nearest is " + nearest) + "\n");
}

Body Bodies::Render(Page page) const {
  switch (page) {
    case Page::kStart:
      return Make(kOk, kPageHtml);
    case Page::kStyle:
      return Make(kOk, kPageCss);
    case Page::kScript:
      return Make(kOk, kPageJs);
    case Page::kCurves:
      return Make(kOk, kCurvesJs);
    case Page::kElements:
      return Make(kOk, kElementsJs);
    case Page::kIcon:
      return Make(kOk, kIcon);
    case Page::kOverview:
      return Make(kOk, OverviewOf(state_, interval_, history_));
    case Page::kMetrics:
      return Make(kOk, Metrics(state_, interval_));
    case Page::kHealth:
      return Health(state_);
    default:
      break;
  }
  if (state_.Latest == nullptr) {
    return NoDocument();
  }
  const insight::Snapshot& snapshot = state_.Latest->Snapshot;
  switch (page) {
    case Page::kXml:
      return {kOk, state_.Latest->Xml};
    case Page::kJson:
      return Make(kOk, QtSts::WriteJson(snapshot.Document));
    default:
      return Make(kOk, host::RenderInsightJson(snapshot, state_.Latest->FindingsSince));
  }
}

std::string TimeText(SystemTime time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  char text[64];
  if (gmtime_r(&seconds, &parts) == nullptr) {
    return "-";
  }
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

}  // namespace serve
