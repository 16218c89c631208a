// Benchmarks, inside a controller in a box.
//
//   bench --rows=N [--benchmark_...]     a bare controller with about N rows
//   bench --mix=WHAT ...                 of one kind: parked, points, nodes, unknown (row_mix.h)
//   bench --interfaces=N ...             with so many display interfaces
//   bench --networks=N ...               with so many network interfaces
//   bench --scenario=DIR [...]           a scenario
//   bench --packages ...                 with a package database of Debian's size
//   bench --no-devices ...               without device nodes
//   bench ... --count=WHAT,WHAT:COUNT    runs each of these benchmarks once and then COUNT times;
//                                        callgrind, started with --instr-atstart=no, counts the
//                                        latter and writes one file for each benchmark
//   bench ... -- COMMAND                 becomes another program on the same controller
//
// Ends with 77 where the system allows no controller in a box. bodies.h has the benchmarks.
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "bench/bodies.h"
#include "bench/controller.h"
#include "sandbox/enter.h"
#include "tests/support/interposed/allocations.h"

namespace {

constexpr int kWrongArguments = 2;
constexpr int kCannotRun = 126;

struct Arguments {
  bench::Controller Controller;
  std::string Count;
  char** Command = nullptr;
};

// The text after `name` when `argument` begins with it, else null.
const char* ValueOf(const char* argument, std::string_view name) {
  return std::string_view(argument).starts_with(name) ? argument + name.size() : nullptr;
}

// Takes an argument of our own. False when it is none.
bool Take(const char* argument, Arguments* arguments) {
  bench::Controller& controller = arguments->Controller;
  const auto number = [](const char* text) { return std::strtoul(text, nullptr, 10); };
  if (const char* const rows = ValueOf(argument, "--rows=")) {
    controller.Rows.Rows = number(rows);
  } else if (const char* const mix = ValueOf(argument, "--mix=")) {
    controller.Rows.What = mix;
  } else if (const char* const interfaces = ValueOf(argument, "--interfaces=")) {
    controller.Rows.Interfaces = number(interfaces);
  } else if (const char* const networks = ValueOf(argument, "--networks=")) {
    controller.Networks = number(networks);
  } else if (const char* const scenario = ValueOf(argument, "--scenario=")) {
    controller.Scenario = scenario;
  } else if (std::string_view(argument) == "--packages") {
    controller.Packages = true;
  } else if (std::string_view(argument) == "--no-devices") {
    controller.Devices = false;
  } else if (const char* const count = ValueOf(argument, "--count=")) {
    arguments->Count = count;
  } else {
    return false;
  }
  return true;
}

// Takes the arguments of our own out of `values`.
Arguments TakeArguments(int* count, char** values) {
  Arguments arguments;
  int kept = 1;
  for (int i = 1; i < *count; ++i) {
    if (std::string_view(values[i]) == "--") {
      arguments.Command = values + i + 1;
      break;
    }
    if (!Take(values[i], &arguments)) {
      values[kept++] = values[i];
    }
  }
  *count = kept;
  return arguments;
}

// "Cycle,Probe:10" counts ten runs of each.
int Count(bench::Bodies& bodies, const std::string& request) {
  const std::size_t colon = std::min(request.find(':'), request.size());
  const long runs = std::strtol(request.c_str() + std::min(colon + 1, request.size()), nullptr, 10);
  std::istringstream names(request.substr(0, colon));
  for (std::string name; std::getline(names, name, ',');) {
    const auto benchmarks = bench::Benchmarks();
    const auto found = std::ranges::find(benchmarks, std::string_view(name),
                                         [](const auto& each) { return each.Name; });
    if (found == benchmarks.end()) {
      std::cerr << "bench: no such benchmark: " << name << '\n';
      return kWrongArguments;
    }
    (bodies.*found->Body)();
    CALLGRIND_START_INSTRUMENTATION;
    for (long run = 0; run < runs; ++run) {
      (bodies.*found->Body)();
    }
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(found->Name);
  }
  return 0;
}

void Measure(bench::Bodies& bodies, int count, char** values) {
  for (const auto& [name, body] : bench::Benchmarks()) {
    benchmark::RegisterBenchmark(name, [&bodies, body = body](benchmark::State& state) {
      const std::uint64_t before = interposed::g_allocations.Made;
      for (auto _ : state) {
        (bodies.*body)();
      }
      if (interposed::g_allocations.Made > 0) {  // not in the program that does not count them
        state.counters["allocations"] =
            benchmark::Counter(static_cast<double>(interposed::g_allocations.Made - before),
                               benchmark::Counter::kAvgIterations);
      }
      state.counters["written"] = static_cast<double>(bodies.Written());
    });
  }
  benchmark::Initialize(&count, values);
  benchmark::ConsoleReporter console;
  console.SetOutputStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&console);
}

int Run(int count, char** values, const Arguments& arguments) {
  bench::SetUp(arguments.Controller);
  if (arguments.Command != nullptr) {
    execvp(arguments.Command[0], arguments.Command);
    std::perror(arguments.Command[0]);
    return kCannotRun;
  }
  // The probe prints the names of the interfaces on standard output: the figures go elsewhere.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) {
    return kWrongArguments;
  }
  bench::Bodies bodies;
  if (!arguments.Count.empty()) {
    return Count(bodies, arguments.Count);
  }
  Measure(bodies, count, values);
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
