#include "bench/bodies.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

#include "host/text.h"
#include "model/json.h"
#include "model/xml.h"

namespace bench {

using benchmark::DoNotOptimize;

Bodies::Bodies() {
  collector_.InitDatabase(false);
  if (collector_.QueryDatabase() != 0) {
    throw std::runtime_error("the cycle fails");
  }
  probe_.UpdateStatus(&status_);  // so that its parts may be called alone
  xml_ = QtSts::WriteDocument(collector_.m_Status);
  steps_ = TreeSteps(xml_);
}

void Bodies::Counter::See(const observe::Event& event) {
  DoNotOptimize(++events_[static_cast<std::size_t>(event.Tag)]);
}

void Bodies::Write(const std::string& text) { written_ = text.size(); }

void Bodies::Cycle() { DoNotOptimize(collector_.QueryDatabase()); }
void Bodies::Watched() {
  observe::Observer* const before = observe::SetObserver(&counter_);
  Cycle();
  observe::SetObserver(before);
}
void Bodies::Floors() {
  ProbeFloor();
  RowsFloor();
}
void Bodies::RowsFloor() { DoNotOptimize(rows_floor_.Run()); }

void Bodies::Probe() { DoNotOptimize(probe_.UpdateStatus(&status_)); }
void Bodies::ProbeFloor() { DoNotOptimize(bench::ProbeFloor()); }
void Bodies::Packages() { DoNotOptimize(probe_.FirmwareVersion()); }
void Bodies::PackagesFloor() { DoNotOptimize(bench::PackagesFloor()); }
void Bodies::Network() { DoNotOptimize(probe_.Network() + probe_.DNS()); }
void Bodies::NetworkFloor() { DoNotOptimize(bench::NetworkFloor()); }
void Bodies::ProbeJson() {
  Probe();
  Write(QtSts::WriteJson(status_));
}

void Bodies::Xml() { Write(QtSts::WriteDocument(collector_.m_Status)); }
void Bodies::XmlFloor() { Write(bench::XmlFloor(steps_)); }
void Bodies::Json() { Write(QtSts::WriteJson(collector_.m_Status)); }
void Bodies::Parse() {
  QtSts::XmlError error;
  DoNotOptimize(QtSts::ReadDocument(xml_, &error));
}

void Bodies::Explained() { snapshot_.emplace(recorder_.RunCycle()); }
void Bodies::Text() {
  if (!snapshot_) {
    Explained();
  }
  Write(host::RenderText(*snapshot_, {}));
}

std::span<const Benchmark> Benchmarks() {
  static constexpr Benchmark kBenchmarks[] = {
      {"Cycle", &Bodies::Cycle},         {"Watched", &Bodies::Watched},
      {"Floors", &Bodies::Floors},       {"RowsFloor", &Bodies::RowsFloor},
      {"Probe", &Bodies::Probe},         {"ProbeFloor", &Bodies::ProbeFloor},
      {"Packages", &Bodies::Packages},   {"PackagesFloor", &Bodies::PackagesFloor},
      {"Network", &Bodies::Network},     {"NetworkFloor", &Bodies::NetworkFloor},
      {"ProbeJson", &Bodies::ProbeJson}, {"Xml", &Bodies::Xml},
      {"XmlFloor", &Bodies::XmlFloor},   {"Json", &Bodies::Json},
      {"Parse", &Bodies::Parse},         {"Explained", &Bodies::Explained},
      {"Text", &Bodies::Text},
  };
  return kBenchmarks;
}

}  // namespace bench
