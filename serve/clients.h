// The connections of a server, and how many of them each machine may have.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "serve/ip_address.h"

namespace serve {

// So many that one machine cannot keep others out.
inline constexpr std::size_t kMostConnections = 256;
inline constexpr std::size_t kMostOfOneMachine = 64;
inline constexpr std::size_t kMostOfThisMachine = 192;  // over the loopback: of reverse proxies

// For one request and its answer, and for the wait before it.
inline constexpr std::chrono::seconds kMostForOneRequest{60};

// What slow readers may keep of answers that have had their time.
inline constexpr std::size_t kMostOldBytes = std::size_t{8} << 20;

struct Client {
  using Clock = std::chrono::steady_clock;

  int Socket = -1;
  IpAddress Address;                       // the client's
  IpAddress Local;                         // where it came in
  Clock::time_point Since = Clock::now();  // of the connection or the latest answer
  bool IsBusy = false;                     // between a request and the end of its answer
  bool IsStream = false;                   // which ends with the connection
  // What it is sent, and since when.
  std::weak_ptr<const std::string> Reading = {};
  Clock::time_point ReadingSince = {};
};

// One thread at a time.
class Clients {
 public:
  // Whether one more connection of this address is taken.
  bool MayEnter(const IpAddress& address) const;

  // The client stays valid until Leave().
  Client* Enter(int socket);
  void Leave(Client* client);

  // Ends the connections of those that have taken too long by `now`, by shutting down their
  // sockets.
  void EndSlow(Client::Clock::time_point now) const;

  // Ends the connections of those that still read, after a few seconds, what nobody is sent any
  // more, when that is more than kMostOldBytes: the oldest go first.
  void EndReadersOfOld(Client::Clock::time_point now,
                       const std::function<bool(const std::string*)>& is_sent) const;

  std::size_t Busy() const;

 private:
  std::list<Client> clients_;
  std::map<IpAddress, std::size_t> of_machine_;
};

}  // namespace serve
