#include "insight/limits.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace insight {
namespace {

constexpr double kNone = std::numeric_limits<double>::infinity();

constexpr LimitInfo kLimits[] = {
    {"database-age", "s", "For how long the database has not changed", {{0, 86400}, {0, kNone}}},
};

std::size_t PositionOf(std::string_view name) {
  const auto* const info = std::ranges::find(kLimits, name, &LimitInfo::Name);
  if (info == std::end(kLimits)) {
    throw std::out_of_range("no limit " + std::string(name));
  }
  return static_cast<std::size_t>(info - std::begin(kLimits));
}

}  // namespace

std::span<const LimitInfo> LimitTable() { return kLimits; }

Limits::Limits() {
  for (const LimitInfo& info : kLimits) {
    m_Limits.push_back(info.Default);
  }
}

const Limit& Limits::Of(std::string_view name) const { return m_Limits[PositionOf(name)]; }
Limit& Limits::Of(std::string_view name) { return m_Limits[PositionOf(name)]; }

}  // namespace insight
