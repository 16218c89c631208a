// Metrics of the cycles and of the program that runs them. Private to this folder.
#pragma once

#include "views/metric_table.h"

namespace views {

void CollectVersion(const Metric& metric, const Sources& from, Samples* samples);

// Of the program: there also before the first cycle is over.
void CollectInterval(const Metric& metric, const Sources& from, Samples* samples);
void CollectCycles(const Metric& metric, const Sources& from, Samples* samples);
void CollectFailed(const Metric& metric, const Sources& from, Samples* samples);
void CollectLastSuccess(const Metric& metric, const Sources& from, Samples* samples);
void CollectHanging(const Metric& metric, const Sources& from, Samples* samples);
void CollectHangingSince(const Metric& metric, const Sources& from, Samples* samples);

// Of the latest cycle.
void CollectSuccess(const Metric& metric, const Sources& from, Samples* samples);
void CollectBegan(const Metric& metric, const Sources& from, Samples* samples);
void CollectDuration(const Metric& metric, const Sources& from, Samples* samples);
void CollectRowCount(const Metric& metric, const Sources& from, Samples* samples);
void CollectRowErrors(const Metric& metric, const Sources& from, Samples* samples);
void CollectRowNotices(const Metric& metric, const Sources& from, Samples* samples);
void CollectUnchanged(const Metric& metric, const Sources& from, Samples* samples);
void CollectSources(const Metric& metric, const Sources& from, Samples* samples);
void CollectSeverities(const Metric& metric, const Sources& from, Samples* samples);
void CollectFindings(const Metric& metric, const Sources& from, Samples* samples);

}  // namespace views
