#include "tests/serve/server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/support/paths.h"

namespace test_serve {
namespace {

constexpr std::uint16_t kPort = 9877;
constexpr int kPatienceMilliseconds = 10000;

sockaddr_in AddressOf(const std::string& text, std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  inet_pton(AF_INET, text.c_str(), &address.sin_addr);
  return address;
}

}  // namespace

Server::Server(const std::vector<std::string>& arguments)
    : errors_(memfd_create("errors", MFD_CLOEXEC)) {
  std::vector<std::string> words = {test_support::HostProgram(), "serve", "--interval", "1"};
  if (std::ranges::find(arguments, "--interval") != arguments.end()) {
    words.resize(2);
  }
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  process_ = fork();
  if (process_ == 0) {
    dup2(errors_, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  if (!Eventually([] { return Get("/healthz").Status != 0; })) {
    throw std::runtime_error("it does not answer: " + Errors());
  }
}

Server::~Server() {
  if (process_ > 0) {
    End(SIGKILL);
  }
  close(errors_);
}

int Server::End(int signal) {
  kill(process_, signal);
  int status = 0;
  waitpid(std::exchange(process_, -1), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string Server::Errors() const {
  std::string text(65536, '\0');
  const ssize_t count = pread(errors_, text.data(), text.size(), 0);
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return text;
}

Connection::Connection(const std::string& to, const std::string& from)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_in own = AddressOf(from.empty() ? "0.0.0.0" : from, 0);
  const sockaddr_in other = AddressOf(to, kPort);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0 ||
      connect(socket_, reinterpret_cast<const sockaddr*>(&other), sizeof other) != 0) {
    close(std::exchange(socket_, -1));
  }
}

Connection::Connection(Connection&& other) noexcept : socket_(std::exchange(other.socket_, -1)) {}

Connection::~Connection() {
  if (socket_ != -1) {
    close(socket_);
  }
}

bool Connection::Send(const std::string& bytes) const {
  return send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

std::string Connection::ReadUntil(const std::string& text) {
  std::string all;
  char block[65536];
  while (text.empty() || all.find(text) == std::string::npos) {
    pollfd asked = {.fd = socket_, .events = POLLIN, .revents = 0};
    if (poll(&asked, 1, kPatienceMilliseconds) != 1) {
      break;
    }
    const ssize_t count = recv(socket_, block, sizeof block, 0);
    if (count <= 0) {
      break;
    }
    all.append(block, static_cast<std::size_t>(count));
  }
  return all;
}

std::string Connection::ReadAll() { return ReadUntil(""); }

bool Connection::IsClosed(std::chrono::seconds within) const {
  pollfd asked = {.fd = socket_, .events = POLLRDHUP, .revents = 0};
  return poll(&asked, 1, static_cast<int>(within.count() * 1000)) == 1;
}

Response Ask(const std::string& request, const std::string& to, const std::string& from) {
  Connection connection(to, from);
  if (!connection.IsOpen()) {
    return {};
  }
  connection.Send(request);
  const std::string all = connection.ReadAll();
  Response response;
  const std::size_t end = all.find("\r\n\r\n");
  if (!all.starts_with("HTTP/1.1 ") || end == std::string::npos) {
    return response;
  }
  response.Status = std::stoi(all.substr(9, 3));
  response.Body = all.substr(end + 4);
  std::istringstream lines(all.substr(0, end));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(": ");
    if (colon != std::string::npos) {
      std::string name = line.substr(0, colon);
      std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
      response.Headers[name] = line.substr(colon + 2, line.find('\r') - colon - 2);
    }
  }
  return response;
}

Response Get(const std::string& path, const std::string& headers) {
  const bool has_host = headers.starts_with("Host:");
  return Ask("GET " + path + " HTTP/1.1\r\n" + (has_host ? "" : "Host: 127.0.0.1:9877\r\n") +
             headers + "Connection: close\r\n\r\n");
}

std::string HostileBytes(int number) {
  switch (number % 8) {
    case 0:
      return "";
    case 1:
      return "GET /status.json HT";
    case 2:
      return "GET /insight.json HTTP/1.1\r\nHost: 192.168.0.20\r\n\r\n";  // and does not read
    case 3:
      return "GET / HTTP/1.1\r\nHost: 192.168.0.20\r\nX: " + std::string(100000, 'x');
    case 4:
      return "GET /" + std::string(100000, 'a') + " HTTP/1.1\r\n";
    case 5:
      return std::string("\x16\x03\x01\x02\0\x01\0\x01\xfc\x03\x03\0\r\n\r\n", 15);
    case 6:
      return "GET / HTTP/9.9\r\n: \r\nHost\r\nHost: \xff\xfe\r\n\r\n\r\n\r\n";
    default:
      return "POST / HTTP/1.1\r\nHost: 192.168.0.20\r\nContent-Length: "
             "99999999999999999999\r\n\r\n";
  }
}

bool Eventually(const std::function<bool()>& holds, std::chrono::seconds within) {
  const auto end = std::chrono::steady_clock::now() + within;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

}  // namespace test_serve
