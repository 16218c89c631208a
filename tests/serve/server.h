// The server as a program, and what asks it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test_serve {

// `statuscollector serve`, which is killed at the latest with this object.
class Server {
 public:
  // Waits until it answers. Cycles are a second apart unless `arguments` say otherwise.
  explicit Server(const std::vector<std::string>& arguments = {});
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Sends the signal and waits for the end; the exit status, -1 when a signal ended it.
  int End(int signal);

  // What it has written to standard error.
  std::string Errors() const;

  pid_t Process() const { return process_; }

 private:
  int errors_;
  pid_t process_;
};

// A connection to port 9877. Reading waits for ten seconds at most, which is
// less than the server waits for those that say nothing.
class Connection {
 public:
  explicit Connection(const std::string& to = "127.0.0.1", const std::string& from = "");
  Connection(Connection&& other) noexcept;
  Connection& operator=(Connection&&) = delete;
  ~Connection();

  bool IsOpen() const { return socket_ != -1; }
  int Socket() const { return socket_; }

  // False: the other side has closed.
  bool Send(const std::string& bytes) const;

  // What comes until `text` is in it; less at the end of the connection or of the time.
  std::string ReadUntil(const std::string& text);
  // What comes until the connection is closed.
  std::string ReadAll();
  // Whether the other side closes the connection.
  bool IsClosed(std::chrono::seconds within) const;

 private:
  int socket_;
};

struct Response {
  int Status = 0;                              // 0: there is none
  std::map<std::string, std::string> Headers;  // names in small letters
  std::string Body;
};

// The answer to a whole request.
Response Ask(const std::string& request, const std::string& to = "127.0.0.1",
             const std::string& from = "");

// The answer to a GET of `path` with these header lines, each with its line end.
Response Get(const std::string& path, const std::string& headers = "");

// What the n-th of those who mean ill, or are broken, sends before it says nothing more; in turn
// nothing, half a request, one whose answer it does not read, too much, no HTTP.
std::string HostileBytes(int number);

// Whether `holds` returns true within the time, asked again and again.
bool Eventually(const std::function<bool()>& holds,
                std::chrono::seconds within = std::chrono::seconds(60));

}  // namespace test_serve
