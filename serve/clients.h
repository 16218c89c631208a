// The connections of a server, and how many of them each machine may have.
#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <map>

#include "serve/ip_address.h"

namespace serve {

// So many that one machine cannot keep others out.
inline constexpr std::size_t kMostConnections = 256;
inline constexpr std::size_t kMostOfOneMachine = 64;
inline constexpr std::size_t kMostOfThisMachine = 192;  // over the loopback: of reverse proxies

// For one request and its answer, and for the wait before it.
inline constexpr std::chrono::seconds kMostForOneRequest{60};

struct Client {
  using Clock = std::chrono::steady_clock;

  int Socket = -1;
  IpAddress Address;                       // the client's
  IpAddress Local;                         // where it came in
  Clock::time_point Since = Clock::now();  // of the connection or the latest answer
  bool IsBusy = false;                     // between a request and the end of its answer
  bool IsStream = false;                   // which ends with the connection
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

  std::size_t Busy() const;

 private:
  std::list<Client> clients_;
  std::map<IpAddress, std::size_t> of_machine_;
};

}  // namespace serve
