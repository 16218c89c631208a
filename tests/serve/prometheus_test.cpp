// Prometheus scrapes the server, with what packaging/prometheus has for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/testing.h"
#include "tests/serve/demo.h"
#include "tests/serve/server.h"
#include "tests/support/golden.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using nlohmann::json;
using test_serve::Eventually;
using test_serve::Server;
using test_support::ReadSource;
using test_support::RunProgram;
using testing::HasSubstr;

std::string Packaged(const std::string& name) {
  return sandbox::SourcePath("packaging/prometheus/" + name).string();
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

TEST(Prometheus, AcceptsConfigurationAndRules) {
  const auto configuration =
      RunProgram({"promtool", "check", "config", Packaged("prometheus.yml")});
  EXPECT_EQ(configuration.ExitCode, 0) << configuration.Output << configuration.Errors;
  const auto rules = RunProgram({"promtool", "check", "rules", Packaged("rules.yml")});
  EXPECT_EQ(rules.ExitCode, 0) << rules.Output << rules.Errors;
}

TEST(Prometheus, ProvesTheRulesByTheirTests) {
  const auto tests = RunProgram({"promtool", "test", "rules", Packaged("rules_test.yml")});
  EXPECT_EQ(tests.ExitCode, 0) << tests.Output << tests.Errors;
}

TEST(Prometheus, HasATestForEachRule) {
  const std::string rules = ReadSource("packaging/prometheus/rules.yml");
  const std::string tests = ReadSource("packaging/prometheus/rules_test.yml");
  std::istringstream lines(rules);
  int count = 0;
  for (std::string line; std::getline(lines, line);) {
    for (const std::string kind : {"- alert: ", "- record: "}) {
      const std::size_t at = line.find(kind);
      if (at != std::string::npos) {
        const std::string name = line.substr(at + kind.size());
        EXPECT_THAT(tests, HasSubstr(kind == "- alert: " ? "alertname: " + name + "\n"
                                                         : "expr: " + name + "\n"));
        ++count;
      }
    }
  }
  EXPECT_EQ(count, 13);
}

// Prometheus looks its own name up when it starts, for 40 seconds where no name server answers.
std::string HostName() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  return name;
}

// A real one, which scrapes 127.0.0.1:9877 each second by the packaged configuration.
class Scraper {
 public:
  explicit Scraper(const std::string& folder) {
    const std::string configuration =
        Replaced(Replaced(ReadSource("packaging/prometheus/prometheus.yml"), "30s", "1s"),
                 "rules.yml", Packaged("rules.yml"));
    std::ofstream(folder + "/prometheus.yml") << configuration;
    const std::vector<std::string> words = {
        "prometheus", "--config.file=" + folder + "/prometheus.yml",
        "--storage.tsdb.path=" + folder + "/data", "--web.listen-address=127.0.0.1:9090",
        "--log.level=error"};
    process_ = fork();
    if (process_ == 0) {
      std::vector<char*> argv;
      for (const std::string& word : words) {
        argv.push_back(const_cast<char*>(word.c_str()));
      }
      argv.push_back(nullptr);
      execvp(argv[0], argv.data());
      _exit(127);
    }
  }
  Scraper(const Scraper&) = delete;
  Scraper& operator=(const Scraper&) = delete;
  ~Scraper() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  // The result of a query; null when it is refused.
  static json Query(const std::string& query) {
    const auto answer = RunProgram({"curl", "-s", "--get", "--data-urlencode", "query=" + query,
                                    "http://127.0.0.1:9090/api/v1/query"});
    const json parsed = json::parse(answer.Output, nullptr, false);
    return parsed.is_object() && parsed.value("status", "") == "success"
               ? parsed.at("data").at("result")
               : json();
  }

 private:
  pid_t process_;
};

TEST(Prometheus, ReadsTheDemosTemperaturesAndAllThatTheDashboardAsks) {
  SANDBOX_NEEDS_DEVICES();
  test_serve::Demo()
      .Row("Sensor_08_Connected", "false")  // something needs attention
      .Row("DimmingMode", "Manual")
      .File("/etc/hosts", "127.0.0.1 localhost " + HostName() + "\n")
      .Apply();
  const Server server;
  const test_support::TemporaryFolder folder;
  const Scraper scraper(folder.Path());
  ASSERT_TRUE(Eventually([] { return Scraper::Query("up == 1").size() == 1; }));
  std::set<std::string> temperatures;
  for (const json& sample : Scraper::Query("statuscollector_temperature_celsius")) {
    temperatures.insert(sample.at("value").at(1));
  }
  EXPECT_THAT(temperatures, testing::IsSupersetOf({"41.5", "28.75", "36.5"}));
  EXPECT_THAT(temperatures, testing::Not(testing::Contains("31.5")));  // of the disconnected one
  // Rates need two scrapes, recorded series an evaluation.
  EXPECT_TRUE(Eventually([] {
    return Scraper::Query("instance:statuscollector_temperature_celsius:max").size() == 1 &&
           Scraper::Query("rate(statuscollector_cycles_total[1m])").size() == 1;
  }));

  const json dashboard = json::parse(ReadSource("packaging/prometheus/dashboard.json"));
  int queries = 0;
  for (const json& panel : dashboard.at("panels")) {
    for (const json& target : panel.at("targets")) {
      const std::string query =
          Replaced(Replaced(target.at("expr"), "$__rate_interval", "1m"), "$instance", ".+");
      const json result = Scraper::Query(query);
      EXPECT_TRUE(result.is_array() && !result.empty())
          << panel.at("title") << ": " << query << " gives " << result;
      ++queries;
    }
  }
  EXPECT_GE(queries, 20);
}

}  // namespace
