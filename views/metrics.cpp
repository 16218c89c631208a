#include "views/metrics.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <set>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "model/text.h"
#include "views/metric_table.h"

namespace views {
namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;

constexpr std::string_view kPrefix = "statuscollector_";

// Rows with the name of the row before add to its samples.
bool GoesOn(const Metric& metric, const Metric* before) {
  return before != nullptr && std::string_view(before->Name) == metric.Name;
}

MetricFamily FamilyOf(const Metric& metric) {
  MetricFamily family;
  family.name = std::string(kPrefix) + metric.Name;
  family.help = metric.About;
  family.type = metric.IsCounter ? prometheus::MetricType::Counter : prometheus::MetricType::Gauge;
  return family;
}

ClientMetric Written(const Metric& metric, const Sample& sample) {
  ClientMetric written;
  for (const auto& [name, text] : sample.Labels) {
    std::string clean = text;
    QtSts::CleanText(&clean);
    written.label.push_back({name, std::move(clean)});
  }
  (metric.IsCounter ? written.counter.value : written.gauge.value) = sample.Value;
  return written;
}

// One series twice would cost the reader all of them.
void Add(const Metric& metric, const Samples& samples, MetricFamily* family) {
  std::set<std::vector<ClientMetric::Label>> known;
  for (const ClientMetric& each : family->metric) {
    known.insert(each.label);
  }
  for (const Sample& sample : samples) {
    ClientMetric written = Written(metric, sample);
    if (known.insert(written.label).second) {
      family->metric.push_back(std::move(written));
    }
  }
}

}  // namespace

std::string RenderMetrics(const insight::Snapshot* snapshot, const Served& served) {
  const Sources from = {snapshot, served};
  std::vector<MetricFamily> families;
  const Metric* before = nullptr;
  for (const Metric& metric : MetricTable()) {
    if (!GoesOn(metric, before)) {
      families.push_back(FamilyOf(metric));
    }
    before = &metric;
    Samples samples;
    metric.Collect(metric, from, &samples);
    Add(metric, samples, &families.back());
  }
  std::erase_if(families, [](const MetricFamily& family) { return family.metric.empty(); });
  std::ostringstream text;
  prometheus::TextSerializer().Serialize(text, families);
  return text.str();
}

std::string DescribeMetrics() {
  std::string rows;
  const Metric* before = nullptr;
  for (const Metric& metric : MetricTable()) {
    if (!GoesOn(metric, before)) {
      std::string labels;
      std::istringstream names(metric.Labels);
      for (std::string name; names >> name;) {
        labels += (labels.empty() ? "`" : ", `") + name + "`";
      }
      rows.append("| `").append(kPrefix).append(metric.Name).append("` | ");
      rows += metric.IsCounter ? "counter | " : "gauge | ";
      rows += labels + " | " + metric.About + " |\n";
    }
    before = &metric;
  }
  return rows;
}

}  // namespace views
