// HTTP around what the cycles gave.
#pragma once

#include <microhttpd.h>
#include <poll.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "serve/bodies.h"
#include "serve/clients.h"
#include "serve/event_streams.h"
#include "serve/ip_address.h"

namespace serve {

// Answers requests whenever Run() is called. One thread, which makes and destroys it, too.
class HttpServer {
 public:
  // Listens on all of `addresses`; `names` are those by which requests may ask beside the address.
  // `history` must outlive it. Throws std::runtime_error, which says which address cannot be
  // listened on, and why.
  HttpServer(const std::vector<ListenAddress>& addresses, std::vector<std::string> names,
             std::chrono::seconds interval, const History& history);
  // Ends every connection.
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // From now on answers come from `state`; each stream of events is sent one.
  void Set(const State& state);

  // Adds what poll() has to look at.
  void AddDescriptors(std::vector<pollfd>* descriptors) const;
  // For how long poll() may wait.
  std::chrono::milliseconds MostWait() const;

  // Does what there is to do, without waiting.
  void Run();

  // How many answers of the history of paths were made so far.
  std::uint64_t BodiesMade() const { return bodies_.Made(); }

  // Takes no more connections, ends the streams, and lets answers that have begun end, but not for
  // longer than `at_most`.
  void Stop(std::chrono::milliseconds at_most);

 private:
  using Clock = std::chrono::steady_clock;

  struct Ender {
    void operator()(MHD_Daemon* daemon) const { MHD_stop_daemon(daemon); }
  };
  using Daemon = std::unique_ptr<MHD_Daemon, Ender>;

  Daemon Listen(const ListenAddress& address);
  MHD_Result Take(MHD_Connection* connection, const char* path, const char* method, void** known);
  MHD_Response* Respond(MHD_Connection* connection, const struct Answer& answer);

  static MHD_Result OnRequest(void* server, MHD_Connection* connection, const char* path,
                              const char* method, const char* version, const char* body,
                              std::size_t* body_bytes, void** known);
  static void OnEnd(void* server, MHD_Connection* connection, void** known,
                    MHD_RequestTerminationCode how);
  static void OnConnection(void* server, MHD_Connection* connection, void** client,
                           MHD_ConnectionNotificationCode what);
  static MHD_Result OnAccept(void* server, const sockaddr* address, socklen_t bytes);

  const std::vector<std::string> names_;
  Bodies bodies_;
  Clients clients_;
  EventStreams streams_;
  Clock::time_point next_sweep_ = Clock::now();
  Clock::time_point next_comment_ = Clock::now();
  std::vector<Daemon> daemons_;  // the last: what they call back is there until they have ended
};

}  // namespace serve
