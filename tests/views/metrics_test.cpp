// The metrics of controllers in a box.
#include "views/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "insight/snapshot.h"
#include "sandbox/enter.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/golden.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using sandbox::Scenario;
using testing::HasSubstr;
using testing::Not;

Scenario Load(const std::string& name) {
  return Scenario::Load(sandbox::SourcePath("scenarios/" + name));
}

insight::Snapshot Cycle() {
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  return recorder.RunCycle();
}

std::string MetricsNow() {
  const insight::Snapshot snapshot = Cycle();
  return views::RenderMetrics(&snapshot, {.Interval = std::chrono::seconds(10), .Cycles = 1});
}

// Samples by name with labels: "statuscollector_rows",
// "statuscollector_findings{severity=\"unknown\"}".
std::map<std::string, double> SamplesOf(const std::string& metrics) {
  std::map<std::string, double> samples;
  std::istringstream lines(metrics);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with('#')) {
      const std::size_t blank = line.rfind(' ');
      double value = 0;  // written with a point, whatever the locale
      std::from_chars(line.data() + blank + 1, line.data() + line.size(), value);
      EXPECT_TRUE(samples.emplace(line.substr(0, blank), value).second)
          << line << " is there twice";
    }
  }
  return samples;
}

std::string Sample(const std::string& name, const std::string& labels = "") {
  return "statuscollector_" + name + (labels.empty() ? "" : "{" + labels + "}");
}

TEST(Metrics, AreAllInTheManual) {
  constexpr std::string_view kBegin =
      "<!-- metrics: written by the test Metrics.AreAllInTheManual -->\n";
  constexpr std::string_view kEnd = "<!-- end of metrics -->";
  const std::string page = test_support::ReadSource("docs/metrics.md");
  const std::size_t begin = page.find(kBegin);
  const std::size_t end = page.find(kEnd);
  ASSERT_NE(begin, std::string::npos);
  ASSERT_NE(end, std::string::npos);
  const std::string table = "\n| metric | type | labels | meaning |\n|---|---|---|---|\n" +
                            views::DescribeMetrics() + "\n";
  EXPECT_TRUE(test_support::MatchesGolden(
      page.substr(0, begin + kBegin.size()) + table + page.substr(end), "docs/metrics.md"));
}

TEST(Metrics, SayWhatTheDemoMeasures) {
  SANDBOX_NEEDS_DEVICES();
  Load("demo").Apply();
  const auto samples = SamplesOf(MetricsNow());
  const std::string router = "element=\"Outputs[0]/DisplayInterfaces[0]/";
  const std::string output = "element=\"Outputs[0]\",kind=\"Travex6Output\"";
  const std::map<std::string, double> expected = {
      {Sample("rows"), 430},
      {Sample("row_errors"), 0},
      {Sample("findings", "severity=\"critical\""), 0},
      {Sample("source_up", "source=\"travex\",required=\"true\""), 1},
      {Sample("cycle_success"), 1},
      {Sample("cycles_total"), 1},
      {Sample("cycle_interval_seconds"), 10},
      {Sample("cycle_hanging"), 0},
      {Sample("memory_size_bytes"), 2062340 * 1024.0},
      {Sample("temperature_celsius", "element=\"Sensors[0]\",kind=\"OnboardTempSensor\""), 41.5},
      {Sample("temperature_celsius", router + "Sensors[0]\",kind=\"CANTempSensor\""), 28.75},
      {Sample("humidity_ratio", "element=\"Sensors[5]\",kind=\"CANHumiditySensor\""), 0.4625},
      {Sample("power_supply_input_volts",
              "element=\"Sensors[6]\",kind=\"CANPsrbSensor\",index=\"1\""),
       229.8},
      {Sample("dimming_level_ratio", output), 0.65},
      {Sample("dimming_mode", output + ",state=\"auto\""), 1},
      {Sample("dimming_mode", output + ",state=\"manual\""), 0},
      {Sample("output_state", output + ",state=\"power_off\""), 0},
      {Sample("network_link_errors_total", "element=\"Network/Devices[0]\",device=\"eth0\""), 3},
  };
  for (const auto& [name, value] : expected) {
    const auto sample = samples.find(name);
    ASSERT_NE(sample, samples.end()) << name;
    EXPECT_DOUBLE_EQ(sample->second, value) << name;
  }
}

TEST(Metrics, SayWhatIsWrong) {
  SANDBOX_NEEDS_DEVICES();
  Load("faults").Apply();
  const auto samples = SamplesOf(MetricsNow());
  EXPECT_GE(samples.at(Sample("findings", "severity=\"critical\"")), 1);
  EXPECT_EQ(samples.at(Sample("finding", "id=\"power-off\",severity=\"critical\"")), 1);
  EXPECT_EQ(samples.at(Sample("output_state",
                              "element=\"Outputs[0]\",kind=\"Travex6Output\","
                              "state=\"power_off\"")),
            1);
}

TEST(Metrics, SayNothingOfWhatIsNotReported) {
  SANDBOX_NEEDS_DEVICES();
  Load("demo").NoFile("/proc/meminfo").Row("Sensor_00_Connected", "false").Apply();
  const std::string metrics = MetricsNow();
  EXPECT_THAT(metrics, Not(HasSubstr("statuscollector_memory_free_bytes")));
  EXPECT_THAT(metrics, HasSubstr("source_up{source=\"meminfo\",required=\"true\"} 0"));
  EXPECT_THAT(metrics, Not(HasSubstr("temperature_celsius{element=\"Sensors[0]\"")));
  EXPECT_THAT(metrics,
              HasSubstr("sensor_connected{element=\"Sensors[0]\",kind=\"OnboardTempSensor\"} 0"));
  EXPECT_THAT(metrics, HasSubstr("sensor_info{element=\"Sensors[0]\""));
}

TEST(Metrics, SayThatACycleFailed) {
  SANDBOX_NEEDS_DEVICES();
  Load("demo").NoDatabase().Apply();
  const insight::Snapshot snapshot = Cycle();
  const auto samples = SamplesOf(views::RenderMetrics(&snapshot, {.Cycles = 7, .Failed = 2}));
  EXPECT_EQ(samples.at(Sample("cycle_success")), 0);
  EXPECT_EQ(samples.at(Sample("cycles_failed_total")), 2);
  EXPECT_EQ(samples.at(Sample("source_up", "source=\"database\",required=\"true\"")), 0);
  EXPECT_FALSE(samples.contains(Sample("last_success_timestamp_seconds")));
}

TEST(Metrics, SayWhatHangsBeforeTheFirstCycleIsOver) {
  const auto then = std::chrono::system_clock::time_point(std::chrono::seconds(1795000000));
  const auto samples = SamplesOf(views::RenderMetrics(
      nullptr,
      {.Interval = std::chrono::seconds(5), .HangsSince = then, .Asked = "reading \"x\""}));
  EXPECT_EQ(samples.at(Sample("cycle_hanging")), 1);
  EXPECT_EQ(
      samples.at(Sample("cycle_hanging_since_timestamp_seconds", "asked=\"reading \\\"x\\\"\"")),
      1795000000);
  EXPECT_FALSE(samples.contains(Sample("rows")));
}

// The reader refuses all of it for one byte.
TEST(Metrics, AreTextWhateverTheRowsHold) {
  SANDBOX_NEEDS_DEVICES();
  std::string bytes = "\xff\xfe\"\\\n\x1b[31m";
  for (int i = 0; i < 40; ++i) {
    bytes += "ü€";
  }
  Load("demo").Row("TtableTitle", bytes).Row("Sensor_00_Celsius", "nan").Row("GUID", bytes).Apply();
  const std::string metrics = MetricsNow();
  const std::size_t line = metrics.find("statuscollector_display_info{");
  ASSERT_NE(line, std::string::npos);
  EXPECT_LT(metrics.find('\n', line) - line, 500U);
  EXPECT_THAT(metrics, Not(HasSubstr("\xff")));
  EXPECT_THAT(metrics, Not(HasSubstr("temperature_celsius{element=\"Sensors[0]\"")));
  const test_support::TemporaryFolder folder;
  std::ofstream(folder.Path() + "/metrics", std::ios::binary) << metrics;
  const auto converted = test_support::RunProgram(
      {"iconv", "-f", "UTF-8", "-t", "UTF-16", "-o", "/dev/null", folder.Path() + "/metrics"});
  EXPECT_EQ(converted.ExitCode, 0) << converted.Errors;
}

TEST(Metrics, AreCleanForPrometheus) {
  SANDBOX_NEEDS_DEVICES();
  for (const std::string name : {"demo", "faults", "mistakes", "bare", "minimal"}) {
    SCOPED_TRACE(name);
    Load(name).Apply();
    const test_support::TemporaryFolder folder;
    std::ofstream(folder.Path() + "/metrics", std::ios::binary) << MetricsNow();
    const auto checked = test_support::RunProgram(
        {"/bin/sh", "-c", "promtool check metrics <" + folder.Path() + "/metrics"});
    EXPECT_EQ(checked.ExitCode, 0);
    EXPECT_EQ(checked.Output + checked.Errors, "");
  }
}

}  // namespace
