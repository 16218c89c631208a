// Benchmarks, inside a controller in a box.
//
//   bench --rows=N [--benchmark_...]     a bare controller with about N rows
//   bench --parked=N [...]               the same, but the rows complete no sensor or device
//   bench --scenario=DIR [...]           a scenario
//   bench --packages ...                 with a package database of Debian's size
//   bench --no-devices ...               without device nodes
//   bench ... --repeat=WHAT:COUNT        runs one benchmark's body COUNT times: for counting
//                                        instructions from outside
//   bench ... -- COMMAND                 becomes another program on the same controller
//
// Ends with 77 where the system allows no controller in a box.
//
// Watched is Cycle with an observer that counts events.
// Rows, Probe, Xml: what is measured. RowsFloor, ProbeFloor, XmlFloor: the same work's system
// calls, SQLite steps and libxml2 calls, and nothing else. A cycle on a bare controller is its rows
// part and a probe that finds nothing, so Rows is Cycle less Probe.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/floors.h"
#include "bench/row_mix.h"
#include "collector/observer.h"
#include "collector/status_interface.h"
#include "model/json.h"
#include "model/xml.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "tests/support/interposed/allocations.h"

namespace {

// The stanzas of a Debian package database of about three megabytes, the display's packages last.
std::string PackageDatabase(const std::string& last) {
  std::string packages;
  for (int number = 0; packages.size() < (std::size_t{3} << 20U); ++number) {
    packages += "Package: library" + std::to_string(number) +
                "\nStatus: install ok installed\nPriority: optional\nSection: libs\n"
                "Installed-Size: 214\nMaintainer: Somebody <somebody@example.org>\n"
                "Architecture: amd64\nMulti-Arch: same\nVersion: 1.2.3-4+deb12u1\n"
                "Depends: libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12)\n"
                "Description: shared library\n A library that many programs of the controller "
                "load.\n .\n It is here for its length.\nHomepage: https://example.org/\n\n";
  }
  return packages + last;
}

struct Arguments {
  std::vector<bench::Row> Rows = bench::MakeRows(100);
  std::string Scenario;
  bool Packages = false;
  bool Devices = true;
  std::string Repeat;
  char** Command = nullptr;
};

// Takes the arguments of our own out of argv.
Arguments TakeArguments(int* count, char** values) {
  Arguments arguments;
  int kept = 1;
  for (int i = 1; i < *count; ++i) {
    const std::string_view argument = values[i];
    if (argument.starts_with("--rows=")) {
      arguments.Rows = bench::MakeRows(std::strtoul(values[i] + 7, nullptr, 10));
    } else if (argument.starts_with("--parked=")) {
      arguments.Rows = bench::MakeParkedRows(std::strtoul(values[i] + 9, nullptr, 10));
    } else if (argument.starts_with("--scenario=")) {
      arguments.Scenario = argument.substr(11);
    } else if (argument == "--packages") {
      arguments.Packages = true;
    } else if (argument == "--no-devices") {
      arguments.Devices = false;
    } else if (argument.starts_with("--repeat=")) {
      arguments.Repeat = argument.substr(9);
    } else if (argument == "--") {
      arguments.Command = values + i + 1;
      break;
    } else {
      values[kept++] = values[i];
    }
  }
  *count = kept;
  return arguments;
}

void SetUp(const Arguments& arguments) {
  sandbox::Scenario scenario;
  if (arguments.Scenario.empty()) {
    for (const bench::Row& row : arguments.Rows) {
      scenario.Row(row.first, row.second);
    }
  } else {
    scenario = sandbox::Scenario::Load(arguments.Scenario);
  }
  if (!arguments.Devices) {
    scenario.NoDevice("travex").NoDevice("zetdisplay").NoDevice("diagnostics");
  }
  scenario.Apply();
  if (arguments.Packages) {
    constexpr char kPackages[] = "/var/lib/dpkg/status";
    sandbox::WriteFile(kPackages, PackageDatabase(sandbox::ReadFile(kPackages)));
  }
}

// Everything that is measured, by name.
class Bodies {
 public:
  Bodies() {
    collector_.InitDatabase(false);
    if (collector_.QueryDatabase() != 0) {
      throw std::runtime_error("the cycle fails");
    }
    xml_ = QtSts::WriteDocument(collector_.m_Status);
    steps_ = bench::TreeSteps(xml_);
  }

  void Cycle() { benchmark::DoNotOptimize(collector_.QueryDatabase()); }
  void Watched() {
    observe::Observer* const before = observe::SetObserver(&counter_);
    Cycle();
    observe::SetObserver(before);
  }
  void Probe() { benchmark::DoNotOptimize(probe_.UpdateStatus(&status_)); }
  void RowsFloor() { benchmark::DoNotOptimize(rows_floor_.Run()); }
  void ProbeFloor() { benchmark::DoNotOptimize(bench::ProbeFloor()); }
  void Xml() { benchmark::DoNotOptimize(QtSts::WriteDocument(collector_.m_Status)); }
  void XmlFloor() { benchmark::DoNotOptimize(bench::XmlFloor(steps_)); }
  void Json() { benchmark::DoNotOptimize(QtSts::WriteJson(collector_.m_Status)); }
  void Parse() {
    QtSts::XmlError error;
    benchmark::DoNotOptimize(QtSts::ReadDocument(xml_, &error));
  }

 private:
  class Counter : public observe::Observer {
   public:
    void See(const observe::Event& event) override {
      benchmark::DoNotOptimize(++events_[static_cast<std::size_t>(event.Tag)]);
    }

   private:
    std::array<std::uint64_t, 32> events_{};
  };

  Counter counter_;
  CStatusInterface collector_;
  CTolmarHardware probe_;
  QtSts::CStatus status_;
  bench::RowsFloor rows_floor_;
  std::string xml_;
  std::vector<bench::TreeStep> steps_;
};

constexpr struct {
  const char* Name;
  void (Bodies::*Body)();
} kBenchmarks[] = {
    {"Cycle", &Bodies::Cycle},           {"Watched", &Bodies::Watched},
    {"Probe", &Bodies::Probe},           {"RowsFloor", &Bodies::RowsFloor},
    {"ProbeFloor", &Bodies::ProbeFloor}, {"Xml", &Bodies::Xml},
    {"XmlFloor", &Bodies::XmlFloor},     {"Json", &Bodies::Json},
    {"Parse", &Bodies::Parse},
};

// "Cycle:10" runs Cycle ten times. 2 for a name that is none of ours.
int Repeat(Bodies& bodies, const std::string& request) {
  const std::size_t colon = request.find(':');
  const long count = std::strtol(request.c_str() + colon + 1, nullptr, 10);
  for (const auto& [name, body] : kBenchmarks) {
    if (request.substr(0, colon) == name) {
      for (long i = 0; i < count; ++i) {
        (bodies.*body)();
      }
      return 0;
    }
  }
  return 2;
}

int Run(int count, char** values, const Arguments& arguments) {
  SetUp(arguments);
  if (arguments.Command != nullptr) {
    execvp(arguments.Command[0], arguments.Command);
    std::perror(arguments.Command[0]);
    return 126;
  }
  // The probe prints the names of the interfaces on standard output: the figures go elsewhere.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) {
    return 2;
  }
  Bodies bodies;
  if (!arguments.Repeat.empty()) {
    return Repeat(bodies, arguments.Repeat);
  }
  for (const auto& [name, body] : kBenchmarks) {
    benchmark::RegisterBenchmark(name, [&bodies, body = body](benchmark::State& state) {
      const std::uint64_t before = interposed::g_allocations.Made;
      for (auto _ : state) {
        (bodies.*body)();
      }
      state.counters["allocations"] =
          benchmark::Counter(static_cast<double>(interposed::g_allocations.Made - before),
                             benchmark::Counter::kAvgIterations);
    });
  }
  benchmark::Initialize(&count, values);
  benchmark::ConsoleReporter console;
  console.SetOutputStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&console);
  return 0;
}

}  // namespace

int main(int count, char** values) {
  const Arguments arguments = TakeArguments(&count, values);
  const auto body = [&] { return Run(count, values, arguments); };
  if (sandbox::Inside()) {
    return body();
  }
  try {
    return sandbox::RunInside(sandbox::OptionsFromEnvironment(), body);
  } catch (const sandbox::Refused& refusal) {
    std::cerr << "bench: " << refusal.what() << '\n';
    return 77;
  }
}
