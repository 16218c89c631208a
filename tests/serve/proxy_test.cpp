// The server behind the reverse proxy of packaging/nginx.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "tests/serve/demo.h"
#include "tests/serve/server.h"
#include "tests/support/golden.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_folder.h"

namespace {

using test_serve::Eventually;
using test_serve::Get;
using test_serve::Server;
using test_support::ProgramResult;
using test_support::RunProgram;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kConfiguration[] = "packaging/nginx/statuscollector.conf";

// The commands of the comment that says how to make certificate and passwords.
std::string CommandsOfTheExample() {
  const std::string text = test_support::ReadSource(kConfiguration);
  const std::size_t begin = text.find("#     openssl");
  std::string commands = text.substr(begin, text.find("# The server behind") - begin);
  for (std::size_t at = 0; (at = commands.find("#     ", at)) != std::string::npos;) {
    commands.erase(at, 6);
  }
  // What asks for the password gets it from a pipe here.
  const std::size_t asks = commands.find("openssl passwd -6");
  EXPECT_NE(asks, std::string::npos);
  return commands.insert(asks + std::string("openssl passwd -6").size(), " secret");
}

// nginx with the example as it stands, at port 443 of the box.
class Proxy {
 public:
  Proxy() {
    for (const char* folder : {"/etc/nginx", "/etc/ssl", "/var/lib/nginx", "/run"}) {
      std::filesystem::create_directories(folder);
    }
    // What a machine has beyond a box.
    std::ofstream("/etc/ssl/openssl.cnf") << "[req]\ndistinguished_name = name\n[name]\n";
    std::ofstream("/etc/passwd") << "root:x:0:0::/:/bin/sh\n";
    std::ofstream("/etc/group") << "root:x:0:\nwww-data:x:33:\n";
    const ProgramResult made =
        RunProgram({"sh", "-ec", "cd /etc/nginx\n" + CommandsOfTheExample()});
    EXPECT_EQ(made.ExitCode, 0) << made.Errors;
    std::ofstream("/etc/nginx/nginx.conf")
        << "daemon off; user root; pid /run/nginx.pid; error_log stderr;\n"
           "events { worker_connections 1024; }\n"
           "http { access_log off; include "
        << sandbox::SourcePath(kConfiguration).string() << "; }\n";
    process_ = fork();
    if (process_ == 0) {
      execl("/usr/sbin/nginx", "nginx", "-e", "stderr", nullptr);
      _exit(127);
    }
  }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;
  ~Proxy() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_;
};

// What curl is given to ask the proxy by its name.
std::string Curl(const std::string& words) {
  return "curl -s --cacert /etc/nginx/display.crt --connect-to ::127.0.0.1:443 " + words;
}

std::string Asked(const std::string& words) { return RunProgram({"sh", "-c", Curl(words)}).Output; }

std::string Status(const std::string& words) {
  return Asked("-o /dev/null -w '%{http_code}' --max-time 20 " + words);
}

const std::string kUser = "-u operator:secret ";
const std::string kSite = "https://display-7.example";

class ReverseProxy : public test_serve::OnTheDemo {};

TEST_F(ReverseProxy, AddsEncryptionAndAPassword) {
  const Server server({"--host", "display-7.example"});
  const Proxy proxy;
  ASSERT_TRUE(Eventually([] { return Status(kUser + kSite + "/healthz") == "200"; }));
  for (const std::string path : {"/", "/metrics", "/status.xml", "/events", "/healthz", "/none"}) {
    EXPECT_EQ(Status(kSite + path), "401") << path;
    EXPECT_EQ(Status("-u operator:wrong " + kSite + path), "401") << path;
  }
  const std::string page = Asked("-i " + kUser + kSite + "/");
  EXPECT_THAT(page, AllOf(HasSubstr(" 200 "), HasSubstr("Content-Security-Policy: default-src"),
                          HasSubstr("<!DOCTYPE html>")));
  const std::string metrics = "-i " + kUser + kSite + "/metrics";
  EXPECT_THAT(Asked(metrics), HasSubstr("\nstatuscollector_rows 430\n"));
  EXPECT_THAT(Asked("--compressed " + metrics), AllOf(HasSubstr("Content-Encoding: gzip"),
                                                      HasSubstr("\nstatuscollector_rows 430\n")));
  EXPECT_EQ(Status(kUser + "-d x=1 " + kSite + "/"), "405");
}

TEST_F(ReverseProxy, PassesEventsOnAtOnce) {
  const Server server({"--host", "display-7.example"});
  const Proxy proxy;
  ASSERT_TRUE(Eventually([] { return Status(kUser + kSite + "/healthz") == "200"; }));
  // Within the time in which the stream stays open: it has no end.
  EXPECT_TRUE(Eventually([] {
    const std::string events = Asked("-N --max-time 5 " + kUser + kSite + "/events");
    return events.find("event: state") != events.rfind("event: state");
  }));
}

TEST_F(ReverseProxy, PassesOnTheNameThatWasAskedFor) {
  const Server server;
  const Proxy proxy;
  ASSERT_TRUE(Eventually([] { return Status(kUser + kSite + "/healthz") == "421"; }));
  // The proxy has no certificate for other names.
  const ProgramResult other = RunProgram({"sh", "-c", Curl("-k https://evil.example/")});
  EXPECT_EQ(other.ExitCode, 35) << other.Errors;
}

// Prometheus with the configuration for many displays.
TEST_F(ReverseProxy, LetsPrometheusInByThePassword) {
  char name[256] = "";  // of this machine: Prometheus asks for its address
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  std::ofstream("/etc/hosts") << "127.0.0.1 localhost display-7.example " << name << "\n";
  const Server server({"--host", "display-7.example"});
  const Proxy proxy;
  ASSERT_TRUE(Eventually([] { return Status(kUser + kSite + "/healthz") == "200"; }));
  const test_support::TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path() + "/displays");
  std::string configuration = test_support::ReadSource("packaging/prometheus/fleet.yml");
  for (std::size_t at = 0; (at = configuration.find(" 30s")) != std::string::npos;) {
    configuration.replace(at, 4, " 1s");  // no longer to be waited for
  }
  std::ofstream(folder.Path() + "/fleet.yml") << configuration;
  std::filesystem::copy_file(sandbox::SourcePath("packaging/prometheus/rules.yml"),
                             folder.Path() + "/rules.yml");
  std::filesystem::copy_file("/etc/nginx/display.crt", folder.Path() + "/displays.crt");
  std::ofstream(folder.Path() + "/displays.password") << "secret\n";
  std::string displays = test_support::ReadSource("packaging/prometheus/displays-example.yml");
  displays.replace(displays.find("north.displays.example"), 22, "display-7.example");
  std::ofstream(folder.Path() + "/displays/arena.yml") << displays;
  const ProgramResult checked =
      RunProgram({"promtool", "check", "config", folder.Path() + "/fleet.yml"});
  EXPECT_EQ(checked.ExitCode, 0) << checked.Output << checked.Errors;
  const pid_t prometheus = fork();
  if (prometheus == 0) {
    execlp("prometheus", "prometheus", ("--config.file=" + folder.Path() + "/fleet.yml").c_str(),
           ("--storage.tsdb.path=" + folder.Path() + "/data").c_str(), "--log.level=error",
           "--web.listen-address=127.0.0.1:9090", nullptr);
    _exit(127);
  }
  // The other display is not there.
  EXPECT_TRUE(Eventually([] {
    const ProgramResult answer =
        RunProgram({"curl", "-s", "--get", "--data-urlencode", "query=up == 1",
                    "http://127.0.0.1:9090/api/v1/query"});
    return answer.Output.find(
               "\"metric\":{\"__name__\":\"up\",\"instance\":\"north-scoreboard\","
               "\"job\":\"statuscollector\",\"model\":\"outdoor\","
               "\"region\":\"west\",\"site\":\"arena\"}") != std::string::npos;
  }));
  kill(prometheus, SIGKILL);
  waitpid(prometheus, nullptr, 0);
}

TEST_F(ReverseProxy, KeepsItsPasswordsFromOtherUsers) {
  const Proxy proxy;
  struct stat status = {};
  ASSERT_EQ(stat("/etc/nginx/display.passwords", &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
  EXPECT_EQ(status.st_gid, 33U);
}

// 64 of its connections are taken by streams: more than another address may have.
TEST_F(ReverseProxy, MayHaveMoreConnectionsThanAClient) {
  const Server server({"--host", "display-7.example"});
  const Proxy proxy;
  ASSERT_TRUE(Eventually([] { return Status(kUser + kSite + "/healthz") == "200"; }));
  const test_support::TemporaryFolder folder;
  std::string command;
  for (int client = 1; client <= 64; ++client) {  // each address has its share at the proxy
    command +=
        Curl(kUser + "-N --max-time 600 --interface 127.0.1." + std::to_string(client) + " -o " +
             folder.Path() + "/" + std::to_string(client) + " " + kSite + "/events &\n");
  }
  const pid_t streams = fork();
  if (streams == 0) {
    setpgid(0, 0);
    execl("/bin/sh", "sh", "-c", (command + "wait").c_str(), nullptr);
    _exit(127);
  }
  const auto begun = [&folder] {
    std::size_t count = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder.Path())) {
      count += std::filesystem::file_size(file) > 0 ? 1 : 0;
    }
    return count;
  };
  EXPECT_TRUE(Eventually([&begun] { return begun() == 64; })) << begun();
  EXPECT_EQ(Status(kUser + kSite + "/status.json"), "200");
  EXPECT_EQ(Status(kUser + kSite + "/events"), "502");  // the server has no more streams
  kill(-streams, SIGTERM);
  waitpid(streams, nullptr, 0);
}

}  // namespace
