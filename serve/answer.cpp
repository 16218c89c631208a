#include "serve/answer.h"

#include <algorithm>
#include <array>

#include "serve/history_json.h"
#include "serve/host_check.h"

namespace serve {
namespace {

constexpr unsigned int kNotModified = 304;
constexpr unsigned int kBadRequest = 400;
constexpr unsigned int kNotFound = 404;
constexpr unsigned int kMethodNotAllowed = 405;
constexpr unsigned int kTooLarge = 413;
constexpr unsigned int kMisdirected = 421;
constexpr unsigned int kOk = 200;

constexpr const char* kText = "text/plain; charset=utf-8";

struct Endpoint {
  std::string_view Path;
  const char* Type;
  Page Of;
};

constexpr Endpoint kEndpoints[] = {
    {"/", "text/html; charset=utf-8", Page::kStart},
    {"/page.css", "text/css; charset=utf-8", Page::kStyle},
    {"/page.js", "text/javascript; charset=utf-8", Page::kScript},
    {"/curves.js", "text/javascript; charset=utf-8", Page::kCurves},
    {"/elements.js", "text/javascript; charset=utf-8", Page::kElements},
    {"/icon.svg", "image/svg+xml", Page::kIcon},
    {"/overview.json", "application/json", Page::kOverview},
    {"/status.xml", "application/xml", Page::kXml},
    {"/status.json", "application/json", Page::kJson},
    {"/insight.json", "application/json", Page::kInsight},
    {"/metrics", "text/plain; version=0.0.4; charset=utf-8", Page::kMetrics},
    {"/healthz", kText, Page::kHealth},
};
constexpr std::string_view kEvents = "/events";
constexpr std::string_view kHistory = "/history.json";

Answer Refusal(unsigned int status, const char* text) {
  return {.Status = status, .Text = std::make_shared<const std::string>(text)};
}

// A tag that is compared weakly, out of a list of them.
bool Names(std::string_view list, std::string_view tag) {
  constexpr std::string_view kBlanks = " \t";
  constexpr std::string_view kWeak = "W/";
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    std::string_view each = list.substr(0, comma);
    list = comma == std::string_view::npos ? "" : list.substr(comma + 1);
    each.remove_prefix(std::min(each.find_first_not_of(kBlanks), each.size()));
    each = each.substr(0, each.find_last_not_of(kBlanks) + 1);
    if (each.starts_with(kWeak)) {
      each.remove_prefix(kWeak.size());
    }
    if (each == tag || each == "*") {
      return true;
    }
  }
  return false;
}

// Whether the client has what is sent now.
bool IsKnown(const Request& request, const Bodies& bodies) {
  const auto named = [&bodies](std::string_view list) { return Names(list, bodies.Tag()); };
  return std::ranges::any_of(request.IfNoneMatch, named);
}

Answer Send(const char* type, const Body& body, const Request& request, const Bodies& bodies) {
  if (body.Status != kOk) {
    return {.Status = body.Status, .Text = body.Text};
  }
  if (IsKnown(request, bodies)) {
    return {.Status = kNotModified, .Type = type, .Tag = bodies.Tag()};
  }
  return {.Status = kOk, .Type = type, .Text = body.Text, .Tag = bodies.Tag()};
}

Answer SendHistory(const Request& request, Bodies* bodies) {
  std::vector<std::string_view> paths;
  for (const auto& [name, value] : request.Query) {
    if (name != "path" || value.empty()) {
      return Refusal(kBadRequest, "a query has nothing but path=PATH here, as often as it takes\n");
    }
    paths.push_back(value);
  }
  if (paths.size() > kMostPaths) {
    return Refusal(kBadRequest, "a query has 64 paths at most\n");
  }
  return Send("application/json", bodies->History(paths, IsKnown(request, *bodies)), request,
              *bodies);
}

}  // namespace

std::optional<Answer> RefusalAtOnce(const Request& request) {
  if (request.Method != "GET" && request.Method != "HEAD") {
    Answer answer = Refusal(kMethodNotAllowed, "only GET and HEAD\n");
    answer.Closes = true;
    return answer;
  }
  if (request.HasBody) {
    Answer answer = Refusal(kTooLarge, "a request has no body here\n");
    answer.Closes = true;
    return answer;
  }
  return std::nullopt;
}

Answer AnswerTo(const Request& request, const std::vector<std::string>& names, Bodies* bodies) {
  if (std::optional<Answer> refusal = RefusalAtOnce(request)) {
    return *std::move(refusal);
  }
  const HostVerdict verdict = request.Hosts.size() == 1
                                  ? JudgeHost(request.Hosts.front(), request.Local, names)
                                  : HostVerdict::kMalformed;
  if (verdict == HostVerdict::kMalformed) {
    return Refusal(kBadRequest, "the Host header is missing or malformed, or there are several\n");
  }
  if (verdict == HostVerdict::kForeign) {
    return Refusal(kMisdirected,
                   "this server does not know the name in the Host header; --host adds it\n");
  }
  if (request.Path == kEvents) {
    return {.Status = kOk, .Type = "text/event-stream", .IsEvents = true};
  }
  if (request.Path == kHistory) {
    return SendHistory(request, bodies);
  }
  const auto* const endpoint = std::ranges::find(kEndpoints, request.Path, &Endpoint::Path);
  if (endpoint == std::end(kEndpoints)) {
    return Refusal(kNotFound, "there is nothing of this name\n");
  }
  return Send(endpoint->Type, bodies->Get(endpoint->Of), request, *bodies);
}

}  // namespace serve
