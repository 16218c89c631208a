#include "serve/host_check.h"

#include <algorithm>
#include <optional>

namespace serve {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whatever the locale.
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsOfName(char c) {
  return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'z') || c == '-' || c == '.' || c == '_';
}

bool SameName(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, &Lower, &Lower);
}

bool IsPort(std::string_view text) {
  constexpr std::size_t kMostDigits = 5;
  return text.size() <= kMostDigits && std::ranges::all_of(text, &IsDigit);
}

// The name or address without brackets and port; nothing when `host` is malformed.
std::optional<std::string_view> NameIn(std::string_view host) {
  const bool bracket = host.starts_with('[');
  const std::size_t end = bracket ? host.find(']') : host.find(':');
  const std::string_view name = host.substr(bracket ? 1 : 0, bracket ? end - 1 : end);
  std::string_view rest = end == std::string_view::npos ? "" : host.substr(end);
  if (bracket && !rest.empty()) {
    rest.remove_prefix(1);
  } else if (bracket) {
    return std::nullopt;
  }
  if (name.empty() || (!rest.empty() && (rest.front() != ':' || !IsPort(rest.substr(1))))) {
    return std::nullopt;
  }
  const bool well =
      bracket ? ParseIpAddress(name).has_value() : std::ranges::all_of(name, &IsOfName);
  return well ? std::optional(name) : std::nullopt;
}

}  // namespace

HostVerdict JudgeHost(std::string_view host, const IpAddress& local,
                      const std::vector<std::string>& names) {
  const std::optional<std::string_view> name = NameIn(host);
  if (!name) {
    return HostVerdict::kMalformed;
  }
  const bool known =
      ParseIpAddress(*name) == local || (local.IsLoopback() && SameName(*name, "localhost")) ||
      std::ranges::any_of(names, [&](const std::string& each) { return SameName(*name, each); });
  return known ? HostVerdict::kKnown : HostVerdict::kForeign;
}

}  // namespace serve
