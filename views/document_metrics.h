// Metrics of values of the document. Private to this folder.
#pragma once

#include <optional>

#include "model/tree.h"
#include "views/metric_table.h"

namespace views {

// A number or a flag, as the document writes it; nothing for another value.
std::optional<double> NumberOf(const QtSts::TreeValue& value);

// A sensor that is not connected reports nothing.
bool IsConnected(const QtSts::TreeElement& element);

// Numbers and flags, with the labels "element" and "kind".
void CollectValues(const Metric& metric, const Sources& from, Samples* samples);

// The same for the devices of the network, with the label "device".
void CollectOfDevices(const Metric& metric, const Sources& from, Samples* samples);

// Each number in a row, with the label "index".
void CollectRows(const Metric& metric, const Sources& from, Samples* samples);

// A code as a set of states: 1 for the one that it has, 0 for the others, in the label "state".
void CollectCodes(const Metric& metric, const Sources& from, Samples* samples);

// Each known bit of the output's flags, in the label "state".
void CollectFlags(const Metric& metric, const Sources& from, Samples* samples);

// Output points, 1 when one is on: their stored state is deliberately the inverse.
void CollectOutputPoints(const Metric& metric, const Sources& from, Samples* samples);

// "P1DT2H3M4S" in seconds.
void CollectUptime(const Metric& metric, const Sources& from, Samples* samples);

// 1, with texts of the controller and its output as labels.
void CollectDisplay(const Metric& metric, const Sources& from, Samples* samples);

// 1, with the address, bus and face of the sensor as labels.
void CollectSensors(const Metric& metric, const Sources& from, Samples* samples);

}  // namespace views
