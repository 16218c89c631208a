#include "views/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <unordered_map>
#include <vector>

#include "views/document_metrics.h"
#include "views/metric_table.h"

namespace views {
namespace {

using QtSts::ClassInfo;
using QtSts::TreeElement;
using QtSts::TreeValue;
using Fields = std::vector<const Metric*>;

// What there is to look for in elements of each class. Several metrics may be made of one field.
std::unordered_map<const ClassInfo*, Fields> FieldsByClass() {
  std::unordered_map<const ClassInfo*, Fields> all;
  for (const ClassInfo* const info : QtSts::Classes()) {
    Fields& fields = all[info];
    for (const Metric& metric : MetricTable()) {
      const auto is_same = [&metric](const Metric* known) {
        return std::string_view(known->Field) == metric.Field;
      };
      if (metric.Class != nullptr && metric.Collect != &CollectFlags &&
          QtSts::IsA(*info, *metric.Class) && std::ranges::none_of(fields, is_same)) {
        fields.push_back(&metric);
      }
    }
  }
  return all;
}

bool IsNumber(double number, const Metric& metric) {
  return std::isfinite(number) && number >= metric.Least;
}

}  // namespace

std::string FieldPath(const std::string& path, const std::string& field) {
  return path.empty() ? field : path + "/" + field;
}

void VisitNumbers(
    const insight::Snapshot& snapshot,
    const std::function<void(const TreeElement&, const std::string&, double)>& visit) {
  static const auto kFields = FieldsByClass();
  for (const TreeElement& element : snapshot.Document.Elements()) {
    const auto fields = kFields.find(element.Class());
    if (fields == kFields.end() || fields->second.empty()) {
      continue;
    }
    const bool connected = IsConnected(element);
    const std::string path = element.Path();
    for (const Metric* const metric : fields->second) {
      const TreeValue* const value = element.FindValue(metric->Field);
      if (value == nullptr || (!connected && !metric->AlsoDisconnected) ||
          !snapshot.IsReported(FieldPath(path, metric->Field))) {
        continue;
      }
      const std::span<const float> row =
          value->Kind() == QtSts::ValueKind::kReals ? value->Reals() : std::span<const float>();
      for (std::size_t at = 0; at < row.size(); ++at) {
        if (IsNumber(row[at], *metric)) {
          visit(element, std::string(metric->Field) + "[" + std::to_string(at) + "]", row[at]);
        }
      }
      const std::optional<double> number = NumberOf(*value);
      if (number && IsNumber(*number, *metric)) {
        visit(element, metric->Field, *number);
      }
    }
  }
}

}  // namespace views
