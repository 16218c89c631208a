// The server on a controller in a box.
#include "tests/serve/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "sandbox/rows.h"
#include "tests/serve/demo.h"
#include "tests/support/held_lease.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using test_serve::Ask;
using test_serve::Connection;
using test_serve::Demo;
using test_serve::Eventually;
using test_serve::Get;
using test_serve::Response;
using test_serve::Server;
using test_support::HostProgram;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class Serve : public test_serve::OnTheDemo {};

bool IsHealthy() { return Get("/healthz").Status == 200; }

ProgramResult Refused(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"timeout", "20", HostProgram(), "serve"});
  return RunProgram(arguments);
}

TEST_F(Serve, GivesTheDocumentThatShowShows) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  const test_support::TemporaryFolder folder;
  const Response xml = Get("/status.xml");
  EXPECT_EQ(xml.Headers.at("content-type"), "application/xml");
  std::ofstream(folder.Path() + "/served.xml", std::ios::binary) << xml.Body;
  const std::string shown = folder.Path() + "/shown.xml";
  ASSERT_EQ(RunProgram({HostProgram(), "show", "--format", "xml", "-o", shown}).ExitCode, 0);
  const ProgramResult differences = RunProgram(
      {HostProgram(), "diff", folder.Path() + "/served.xml", shown, "--ignore", "StorageFree"});
  EXPECT_EQ(differences.ExitCode, 0) << differences.Output << differences.Errors;

  const Response json = Get("/status.json");
  EXPECT_EQ(json.Headers.at("content-type"), "application/json");
  EXPECT_EQ(nlohmann::json::parse(json.Body).at("MemoryTotal"), 2062340);
  const auto insight = nlohmann::json::parse(Get("/insight.json").Body).at("Insight");
  EXPECT_EQ(insight.at("Result"), 0);
  EXPECT_EQ(insight.at("Rows").size(), 430U);
}

TEST_F(Serve, GivesMetricsAndAPageWithoutOutsideResources) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  const Response metrics = Get("/metrics");
  EXPECT_EQ(metrics.Headers.at("content-type"), "text/plain; version=0.0.4; charset=utf-8");
  EXPECT_THAT(metrics.Body, HasSubstr("\nstatuscollector_rows 430\n"));
  const Response page = Get("/");
  EXPECT_EQ(page.Headers.at("content-type"), "text/html; charset=utf-8");
  EXPECT_THAT(page.Headers.at("content-security-policy"), StartsWith("default-src 'none';"));
  EXPECT_THAT(page.Body, Not(HasSubstr("://")));
}

TEST_F(Serve, AnswersHeadWithoutABodyAndRefusesOtherMethods) {
  const Server server;
  const std::string host = " / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n";
  const Response head = Ask("HEAD" + host + "\r\n");
  EXPECT_EQ(head.Status, 200);
  EXPECT_EQ(head.Body, "");
  EXPECT_NE(head.Headers.at("content-length"), "0");
  for (const std::string method : {"POST", "PUT", "DELETE", "OPTIONS", "TRACE", "X"}) {
    const Response refused = Ask(method + host + "\r\n");
    EXPECT_EQ(refused.Status, 405) << method;
    EXPECT_EQ(refused.Headers.at("allow"), "GET, HEAD") << method;
  }
  // The body is not waited for.
  EXPECT_EQ(Ask("POST" + host + "Content-Length: 1000000000\r\n\r\nx").Status, 405);
  EXPECT_EQ(Ask("GET" + host + "Content-Length: 1000000000\r\n\r\nx").Status, 413);
  EXPECT_EQ(Ask("GET" + host + "Transfer-Encoding: chunked\r\n\r\n").Status, 413);
}

TEST_F(Serve, KnowsItselfByNamesThatAreGiven) {
  const Server server({"--host", "display-7.example"});
  EXPECT_EQ(Get("/", "Host: display-7.example\r\n").Status, 200);
  EXPECT_EQ(Get("/", "Host: localhost:1\r\n").Status, 200);
  EXPECT_EQ(Get("/", "Host: evil.example:9877\r\n").Status, 421);
  EXPECT_EQ(Get("/", "Host: localhost\r\nHost: evil.example\r\n").Status, 400);
  EXPECT_EQ(Ask("GET / HTTP/1.1\r\nConnection: close\r\n\r\n").Status, 400);
  EXPECT_EQ(Ask("GET / HTTP/1.0\r\n\r\n").Status, 400);
}

TEST_F(Serve, SendsNothingAgainThatAClientHas) {
  const Server server({"--interval", "3600"});
  ASSERT_TRUE(Eventually(&IsHealthy));
  const std::string tag = Get("/status.json").Headers.at("etag");
  const Response again = Get("/status.json", "If-None-Match: " + tag + "\r\n");
  EXPECT_EQ(again.Status, 304);
  EXPECT_EQ(again.Body, "");
  EXPECT_EQ(again.Headers.at("etag"), tag);
}

TEST_F(Serve, ShowsANewRowWithinAnInterval) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  sandbox::SetRow("Sensor_00_Celsius", "12");
  EXPECT_TRUE(Eventually([] {
    return Get("/metrics").Body.find("kind=\"OnboardTempSensor\"} 12\n") != std::string::npos;
  }));
}

TEST_F(Serve, SaysWhatIsWrongWithTheDatabaseUntilThereIsOne) {
  Demo().NoDatabase().Apply();
  const Server server;
  ASSERT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("failed: "); }));
  const Response health = Get("/healthz");
  EXPECT_EQ(health.Status, 503);
  EXPECT_THAT(health.Body, StartsWith("failed: /dev/shm/status.db does not exist; "));
  EXPECT_EQ(Get("/status.json").Status, 200);  // what the probes found
  EXPECT_THAT(Get("/metrics").Body, HasSubstr("\nstatuscollector_cycle_success 0\n"));
  Demo().Apply();
  EXPECT_TRUE(Eventually(&IsHealthy));
  EXPECT_THAT(server.Errors(), HasSubstr("statuscollector: /dev/shm/status.db does not exist; "));
}

// A host that keeps its database open would read the old one for ever.
TEST_F(Serve, FollowsADatabaseThatIsReplaced) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  sandbox::RemoveDatabase();
  sandbox::SetRows({{"GUID", "another"}});
  EXPECT_TRUE(Eventually(
      [] { return Get("/metrics").Body.find("guid=\"another\"") != std::string::npos; }));
}

TEST_F(Serve, NamesASourceThatHangsAndAnswersMeanwhile) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  {
    const test_support::HeldLease lease("/proc/meminfo");
    ASSERT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("hanging: "); }));
    const Response health = Get("/healthz");
    EXPECT_EQ(health.Status, 503);
    EXPECT_THAT(health.Body, MatchesRegex("hanging: [a-z]+ /proc/meminfo since [0-9T:-]+Z\n"));
    EXPECT_EQ(Get("/status.json").Status, 200);
    EXPECT_THAT(
        Get("/metrics").Body,
        AllOf(HasSubstr("\nstatuscollector_cycle_hanging 1\n"),
              HasSubstr("\nstatuscollector_cycle_hanging_since_timestamp_seconds{asked=\"")));
  }
  EXPECT_TRUE(Eventually(&IsHealthy));
  EXPECT_THAT(Get("/metrics").Body, HasSubstr("\nstatuscollector_cycle_hanging 0\n"));
}

TEST_F(Serve, EndsInTimeWhileACycleHangs) {
  Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  Connection stream;
  ASSERT_TRUE(stream.Send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n"));
  const test_support::HeldLease lease("/proc/meminfo");
  ASSERT_TRUE(Eventually([] { return Get("/healthz").Body.starts_with("hanging: "); }));
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(server.End(SIGTERM), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(15));  // the lease: 45
  EXPECT_THAT(stream.ReadAll(), testing::EndsWith("\r\n0\r\n\r\n"));
}

// The time since when each finding of the overview has been there, by its path.
std::map<std::string, std::string> Beginnings() {
  std::map<std::string, std::string> beginnings;
  const auto overview = nlohmann::json::parse(Get("/overview.json").Body);
  for (const auto& finding : overview.at("Findings")) {
    beginnings[finding.at("Path")] = finding.at("Since");
  }
  return beginnings;
}

TEST_F(Serve, KnowsSinceWhenAFindingHasBeenThere) {
  sandbox::SetRow("Sensor_07_Connected", "false");
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  const std::string first = Beginnings().begin()->second;
  EXPECT_EQ(nlohmann::json::parse(Get("/overview.json").Body).at("First"), first);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  sandbox::SetRow("Sensor_08_Connected", "false");
  ASSERT_TRUE(Eventually([] { return Beginnings().size() == 2; }));
  const std::map<std::string, std::string> both = Beginnings();
  EXPECT_EQ(both.begin()->second, first);
  EXPECT_GT(both.rbegin()->second, first);
  // One that goes and comes back begins anew.
  sandbox::SetRow("Sensor_07_Connected", "true");
  ASSERT_TRUE(Eventually([] { return Beginnings().size() == 1; }));
  sandbox::SetRow("Sensor_07_Connected", "false");
  ASSERT_TRUE(Eventually([] { return Beginnings().size() == 2; }));
  EXPECT_GT(Beginnings().begin()->second, first);
}

// It used to be noticed by a cycle that failed.
TEST_F(Serve, FollowsADatabaseThatTakesThePlaceOfTheOneItReads) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  const std::string made = "/dev/shm/made.db";
  std::filesystem::copy_file(sandbox::kDatabase, made);
  std::filesystem::rename(made, sandbox::kDatabase);
  sandbox::SetRow("GUID", "another");
  EXPECT_TRUE(Eventually(
      [] { return Get("/metrics").Body.find("guid=\"another\"") != std::string::npos; }));
  EXPECT_THAT(Get("/metrics").Body, HasSubstr("\nstatuscollector_cycles_failed_total 0\n"));
  EXPECT_EQ(server.Errors(), "");
}

// They used to be written after the end, one for each device and cycle.
TEST_F(Serve, WritesNoNamesOfNetworkDevicesInEachCycle) {
  Server server;
  ASSERT_TRUE(Eventually(
      [] { return nlohmann::json::parse(Get("/overview.json").Body).value("Cycle", 0) >= 3; }));
  EXPECT_EQ(server.End(SIGTERM), 0);
  EXPECT_EQ(server.Errors(), "");
}

TEST_F(Serve, EndsWithZeroOnSignals) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    Server server;
    EXPECT_EQ(server.End(signal), 0) << signal;
  }
}

TEST_F(Serve, TellsStreamsWhatEachCycleChanges) {
  const Server server;
  ASSERT_TRUE(Eventually(&IsHealthy));
  Connection stream;
  ASSERT_TRUE(stream.Send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n"));
  const std::string head = stream.ReadUntil("event: state");
  EXPECT_THAT(head, AllOf(StartsWith("HTTP/1.1 200 OK\r\n"),
                          HasSubstr("\r\nContent-Type: text/event-stream\r\n")));
  sandbox::SetRow("Sensor_00_Celsius", "12");
  const std::string change =
      "\"Path\": \"Sensors[0]/Celsius\",\ndata:       \"Before\": \"41.5\",\n"
      "data:       \"After\": \"12\"";
  EXPECT_THAT(stream.ReadUntil("\"After\": \"12\""), HasSubstr(change));
  const test_support::HeldLease lease("/proc/meminfo");
  EXPECT_THAT(stream.ReadUntil("\"Since\""), HasSubstr("\"Asked\": \"asking /proc/meminfo\""));
}

// Before they are sent anything.
TEST_F(Serve, ForgetsStreamsOfClientsThatAreGone) {
  const Server server({"--interval", "3600"});
  ASSERT_TRUE(Eventually(&IsHealthy));
  for (int round = 0; round < 3; ++round) {  // more than there may be at once
    std::vector<Connection> streams;
    for (int i = 0; i < 60; ++i) {
      streams.emplace_back();
      ASSERT_TRUE(streams.back().Send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n"));
    }
    for (Connection& stream : streams) {
      ASSERT_THAT(stream.ReadUntil("event: state"), HasSubstr("event: state"));
    }
    streams.clear();
    std::this_thread::sleep_for(std::chrono::seconds(2));
  }
}

TEST_F(Serve, ListensOnTheLoopbackUnlessItIsToldTo) {
  const ProgramResult remote = Refused({"--listen", "0.0.0.0:9877"});
  EXPECT_EQ(remote.ExitCode, 2);
  EXPECT_EQ(remote.Errors,
            "statuscollector: serve: --listen: other machines may reach 0.0.0.0:9877; if they are "
            "to, add --allow-remote\n");
  const Server server({"--listen", "0.0.0.0:9877", "--listen", "[::1]:9877", "--allow-remote"});
  EXPECT_THAT(server.Errors(),
              StartsWith("statuscollector: whoever reaches 0.0.0.0:9877 can read "));
  EXPECT_THAT(server.Errors(), Not(HasSubstr("[::1]")));
}

TEST_F(Serve, RefusesAddressesThatAreNoneOrTaken) {
  const ProgramResult none = Refused({"--listen", "localhost:80"});
  EXPECT_EQ(none.ExitCode, 2);
  EXPECT_THAT(none.Errors, HasSubstr("localhost:80 is not ADDRESS:PORT; examples are "));
  const Server server;
  const ProgramResult taken = Refused({});
  EXPECT_EQ(taken.ExitCode, 2);
  EXPECT_THAT(taken.Errors, HasSubstr("cannot listen on 127.0.0.1:9877: Address already in use; "));
  const ProgramResult usage = Refused({"--interval", "0"});
  EXPECT_EQ(usage.ExitCode, 2);
}

}  // namespace
