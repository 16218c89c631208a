// What is answered, and to whom, without sockets.
#include "serve/answer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "host/apart.h"
#include "host/serve.h"
#include "serve/clients.h"
#include "serve/event.h"
#include "serve/host_check.h"

namespace {

using serve::HostVerdict;
using serve::IpAddress;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

IpAddress Ip(const std::string& text) { return serve::ParseIpAddress(text).value(); }

// ---- Addresses

TEST(ListenAddress, IsAnAddressAndAPort) {
  EXPECT_EQ(serve::ParseListenAddress("127.0.0.1:9877").Port, 9877);
  EXPECT_TRUE(serve::ParseListenAddress("127.8.8.8:1").Address.IsLoopback());
  EXPECT_TRUE(serve::ParseListenAddress("[::1]:65535").Address.IsLoopback());
  EXPECT_TRUE(serve::ParseListenAddress("0.0.0.0:80").Address.IsAny());
  EXPECT_TRUE(serve::ParseListenAddress("[::]:80").Address.IsAny());
  EXPECT_FALSE(serve::ParseListenAddress("192.0.2.1:80").Address.IsLoopback());
}

TEST(ListenAddress, IsNothingElse) {
  for (const std::string text :
       {"", ":", "127.0.0.1", "9877", ":9877", "127.0.0.1:", "127.0.0.1:0", "127.0.0.1:65536",
        "127.0.0.1:-1", "127.0.0.1:80 ", "localhost:80", "::1:80", "[127.0.0.1]:80", "[::1]",
        "[::1]80", "127.1:80", "[fe80::1%eth0]:80"}) {
    EXPECT_THROW(serve::ParseListenAddress(text), std::runtime_error) << text;
  }
}

// ---- The Host header

struct HostCase {
  const char* Host;
  const char* Local;
  HostVerdict Verdict;
};

TEST(HostHeader, IsKnownByAddressAndByGivenNames) {
  const std::vector<std::string> names = {"display-7.example", "Status"};
  for (const HostCase& row : {
           HostCase{"127.0.0.1", "127.0.0.1", HostVerdict::kKnown},
           {"127.0.0.1:9877", "127.0.0.1", HostVerdict::kKnown},
           {"127.0.0.1:8000", "127.0.0.1", HostVerdict::kKnown},
           {"localhost", "127.0.0.1", HostVerdict::kKnown},
           {"LocalHost:9877", "::1", HostVerdict::kKnown},
           {"[::1]:9877", "::1", HostVerdict::kKnown},
           {"[0:0::1]", "::1", HostVerdict::kKnown},
           {"display-7.example", "192.0.2.1", HostVerdict::kKnown},
           {"DISPLAY-7.EXAMPLE:80", "192.0.2.1", HostVerdict::kKnown},
           {"status", "127.0.0.1", HostVerdict::kKnown},
           {"192.0.2.1:9877", "192.0.2.1", HostVerdict::kKnown},
           {"localhost", "192.0.2.1", HostVerdict::kForeign},
           {"192.0.2.2", "192.0.2.1", HostVerdict::kForeign},
           {"127.0.0.1.evil.example", "127.0.0.1", HostVerdict::kForeign},
           {"evil.example:9877", "127.0.0.1", HostVerdict::kForeign},
           {"localhost.", "127.0.0.1", HostVerdict::kForeign},
           {"127.1", "127.0.0.1", HostVerdict::kForeign},
           {"", "127.0.0.1", HostVerdict::kMalformed},
           {":9877", "127.0.0.1", HostVerdict::kMalformed},
           {"127.0.0.1:123456", "127.0.0.1", HostVerdict::kMalformed},
           {"127.0.0.1:80:80", "127.0.0.1", HostVerdict::kMalformed},
           {"localhost:x", "127.0.0.1", HostVerdict::kMalformed},
           {"local host", "127.0.0.1", HostVerdict::kMalformed},
           {"::1", "::1", HostVerdict::kMalformed},
           {"[::1", "::1", HostVerdict::kMalformed},
           {"[::1]x", "::1", HostVerdict::kMalformed},
           {"[localhost]", "127.0.0.1", HostVerdict::kMalformed},
           {"[]", "::1", HostVerdict::kMalformed},
           {"user@localhost", "127.0.0.1", HostVerdict::kMalformed},
       }) {
    EXPECT_EQ(serve::JudgeHost(row.Host, Ip(row.Local), names), row.Verdict) << row.Host;
  }
}

// ---- Answers

class Answers : public testing::Test {
 protected:
  serve::Answer To(serve::Request request) {
    if (request.Method.empty()) {
      request.Method = "GET";
    }
    if (request.Hosts.empty()) {
      request.Hosts = {"127.0.0.1"};
    }
    request.Local = Ip("127.0.0.1");
    return serve::AnswerTo(request, {}, &bodies_);
  }

  serve::History history_{std::chrono::seconds(10), ""};
  serve::Bodies bodies_{std::chrono::seconds(10), history_};
};

TEST_F(Answers, AreRefusalsWithAReasonWithoutAGoodRequest) {
  EXPECT_EQ(To({.Method = "POST", .Path = "/"}).Status, 405U);
  EXPECT_EQ(To({.Method = "get", .Path = "/"}).Status, 405U);
  EXPECT_EQ(To({.Path = "/", .HasBody = true}).Status, 413U);
  EXPECT_EQ(To({.Path = "/", .Hosts = {"evil.example"}}).Status, 421U);
  EXPECT_EQ(To({.Path = "/", .Hosts = {"127.0.0.1", "127.0.0.1"}}).Status, 400U);
  EXPECT_EQ(To({.Path = ""}).Status, 404U);
  EXPECT_EQ(To({.Path = "/status.xml/"}).Status, 404U);
  EXPECT_EQ(To({.Path = "//status.xml"}).Status, 404U);
  EXPECT_EQ(To({.Path = "/../etc/passwd"}).Status, 404U);
  EXPECT_EQ(To({.Path = "/history.json", .Query = {{"pat", "x"}}}).Status, 400U);
  EXPECT_EQ(To({.Path = "/history.json", .Query = {{"path", ""}}}).Status, 400U);
  serve::Request many = {.Path = "/history.json"};
  many.Query.assign(65, {"path", "x"});
  EXPECT_EQ(To(many).Status, 400U);
  EXPECT_THAT(*To({.Path = "/", .Hosts = {"evil.example"}}).Text, HasSubstr("--host"));
}

TEST_F(Answers, SayThatThereIsNoDocumentYet) {
  for (const char* path :
       {"/status.xml", "/status.json", "/insight.json", "/history.json", "/healthz"}) {
    const serve::Answer answer = To({.Path = path});
    EXPECT_EQ(answer.Status, 503U) << path;
    EXPECT_EQ(*answer.Text, "starting: the first cycle is not over\n") << path;
  }
  EXPECT_EQ(To({.Path = "/metrics"}).Status, 200U);
  EXPECT_EQ(To({.Path = "/"}).Status, 200U);
}

TEST_F(Answers, SayWhatHangsAndWhatFailed) {
  bodies_.Set({.Version = 1, .Hanging = serve::Hang{"reading /dev/\x1b[31m", serve::SystemTime()}});
  EXPECT_EQ(*To({.Path = "/healthz"}).Text,
            "hanging: reading /dev/\uFFFD[31m since 1970-01-01T00:00:00Z\n");
  EXPECT_THAT(*To({.Path = "/metrics"}).Text, HasSubstr("statuscollector_cycle_hanging 1\n"));
  bodies_.Set({.Version = 2, .Failure = "out of memory"});
  EXPECT_EQ(*To({.Path = "/healthz"}).Text, "failed: out of memory\n");
}

TEST_F(Answers, HaveAnEntityTagOfTheirState) {
  const std::string tag = To({.Path = "/metrics"}).Tag;
  EXPECT_THAT(tag, testing::MatchesRegex("\"[0-9a-f]{16}-0\""));
  for (const std::string& list :
       {tag, "W/" + tag, "\"x\", " + tag, "\t" + tag + " ,", std::string("*")}) {
    const serve::Answer answer = To({.Path = "/metrics", .IfNoneMatch = {list}});
    EXPECT_EQ(answer.Status, 304U) << list;
    EXPECT_EQ(answer.Text, nullptr) << list;
    EXPECT_EQ(answer.Tag, tag) << list;
  }
  for (const std::string& list :
       {std::string("\"x\""), tag.substr(1), std::string(","), tag + "x"}) {
    EXPECT_EQ(To({.Path = "/metrics", .IfNoneMatch = {list}}).Status, 200U) << list;
  }
  bodies_.Set({.Version = 1});
  EXPECT_EQ(To({.Path = "/metrics", .IfNoneMatch = {tag}}).Status, 200U);
  // What is not there has no tag.
  EXPECT_EQ(To({.Path = "/status.xml", .IfNoneMatch = {"*"}}).Status, 503U);
}

TEST_F(Answers, AreRenderedOnceForAState) {
  const serve::Answer first = To({.Path = "/metrics"});
  EXPECT_EQ(To({.Path = "/metrics"}).Text, first.Text);
  bodies_.Set({.Version = 1});
  EXPECT_NE(To({.Path = "/metrics"}).Text, first.Text);
}

// ---- Events

TEST(Event, IsOneObjectInLinesOfData) {
  const std::string event = serve::EventOf({}, {.Version = 3, .Failure = "a\nb\rc"});
  EXPECT_THAT(event, StartsWith("id: 3\nevent: state\ndata: {\n"));
  EXPECT_THAT(event, testing::EndsWith("\ndata: }\n\n"));
  EXPECT_EQ(event.find('\r'), std::string::npos);
  EXPECT_EQ(event.find("\n\n"), event.size() - 2);
}

// ---- Connections

TEST(Clients, OfOneMachineDoNotKeepOthersOut) {
  serve::Clients clients;
  std::size_t entered = 0;
  for (; clients.MayEnter(Ip("127.0.0.1")); ++entered) {
    clients.Enter(-1);  // no socket: all zero, which counts as the loopback does
  }
  EXPECT_EQ(entered, serve::kMostOfThisMachine);
  EXPECT_FALSE(clients.MayEnter(Ip("127.0.0.2")));
  EXPECT_FALSE(clients.MayEnter(Ip("::1")));
  EXPECT_TRUE(clients.MayEnter(Ip("192.0.2.1")));
  EXPECT_TRUE(clients.MayEnter(Ip("2001:db8::1")));
}

TEST(Clients, AreNotWaitedForLongerThanAMinute) {
  int sockets[2] = {};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  serve::Clients clients;
  serve::Client* const client = clients.Enter(sockets[0]);
  const auto is_closed = [&] {
    char byte = 0;
    return recv(sockets[1], &byte, 1, MSG_DONTWAIT) == 0;
  };
  clients.EndSlow(client->Since + std::chrono::seconds(59));
  EXPECT_FALSE(is_closed());
  client->IsStream = true;
  clients.EndSlow(client->Since + std::chrono::hours(1));
  EXPECT_FALSE(is_closed());
  client->IsStream = false;
  clients.EndSlow(client->Since + std::chrono::seconds(61));
  EXPECT_TRUE(is_closed());
  clients.Leave(client);
  close(sockets[0]);
  close(sockets[1]);
}

// The answers of a large display, one for each cycle, used to be kept for as many slow readers.
TEST(Clients, ThatReadSlowlyKeepFewOldAnswers) {
  serve::Clients clients;
  constexpr std::size_t kCount = 6;
  std::vector<std::array<int, 2>> sockets(kCount);
  std::vector<std::shared_ptr<const std::string>> texts;
  std::vector<serve::Client*> readers;
  for (std::size_t at = 0; at < kCount; ++at) {
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets[at].data()), 0);
    texts.push_back(std::make_shared<const std::string>(std::size_t{3} << 20, 'x'));
    readers.push_back(clients.Enter(sockets[at][0]));
    readers.back()->Reading = texts.back();
    readers.back()->ReadingSince += std::chrono::seconds(100 + at);
  }
  const auto closed = [&] {
    std::string marks;
    for (const auto& pair : sockets) {
      char byte = 0;
      marks += recv(pair[1], &byte, 1, MSG_DONTWAIT) == 0 ? 'c' : 'o';
    }
    return marks;
  };
  const auto end = [&](int seconds) {
    clients.EndReadersOfOld(serve::Client::Clock::time_point(std::chrono::seconds(seconds)),
                            [&](const std::string* text) { return text == texts[1].get(); });
  };
  end(102);
  EXPECT_EQ(closed(), "oooooo");  // they have just begun
  end(200);
  EXPECT_EQ(closed(), "coccoo");  // the second one is still sent to others
  for (std::size_t at = 0; at < kCount; ++at) {
    clients.Leave(readers[at]);
    close(sockets[at][0]);
    close(sockets[at][1]);
  }
}

TEST(IpAddress, OfOneMachineShareItsNetwork) {
  EXPECT_EQ(Ip("2001:db8::1").Machine(), Ip("2001:db8::ffff:1").Machine());
  EXPECT_NE(Ip("2001:db8::1").Machine(), Ip("2001:db8:0:1::1").Machine());
  EXPECT_NE(Ip("192.0.2.1").Machine(), Ip("192.0.2.2").Machine());
}

// ---- What the program is given

TEST(ProgramsApart, TakeTheWordsThatTheyAreGiven) {
  host::ServeOptions given = {.Listen = {"127.0.0.1:1", "[::1]:2"},
                              .Interval = 77,
                              .AllowRemote = true,
                              .Hosts = {"a=b", "--c"}};
  host::ServeOptions taken;
  host::TakeWords(host::WordsOf(host::ServeArguments(&given)), host::ServeArguments(&taken));
  EXPECT_EQ(taken.Listen, given.Listen);
  EXPECT_EQ(taken.Interval, 77);
  EXPECT_TRUE(taken.AllowRemote);
  EXPECT_EQ(taken.Hosts, given.Hosts);
  host::ServeOptions plain;
  host::ServeOptions same = {.Interval = 5};
  host::TakeWords(host::WordsOf(host::ServeArguments(&plain)), host::ServeArguments(&same));
  EXPECT_EQ(same.Interval, 10);
  EXPECT_FALSE(same.AllowRemote);
}

TEST(ProgramsApart, RefuseOtherWords) {
  for (const std::string word : {"--interval=x", "--interval=", "--interval=1x", "--interval",
                                 "--unknown=1", "word", "-i=1", "--allow-remote=no", ""}) {
    host::ServeOptions options;
    EXPECT_THROW(host::TakeWords(std::vector<std::string>{word}, host::ServeArguments(&options)),
                 std::runtime_error)
        << word;
  }
}

TEST(ProgramsApart, AreMissedWithThePackageThatHasThem) {
  try {
    host::RunApart("nothing", "statuscollector-nothing", {});
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("/nothing cannot be run: No such file or directory; "
                                        "install statuscollector-nothing"));
    return;
  }
}

}  // namespace
