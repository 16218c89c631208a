#include "serve/clients.h"

#include <sys/socket.h>

#include <algorithm>

namespace serve {
namespace {

using GetName = int (*)(int, sockaddr*, socklen_t*) noexcept;

IpAddress NameOf(int socket, GetName get) {
  sockaddr_storage storage = {};
  socklen_t size = sizeof storage;
  auto* const address = reinterpret_cast<sockaddr*>(&storage);
  return get(socket, address, &size) == 0 ? AddressOf(address).value_or(IpAddress()) : IpAddress();
}

// All of the loopback are one.
IpAddress MachineOf(const IpAddress& address) {
  return address.IsLoopback() ? IpAddress() : address.Machine();
}

}  // namespace

bool Clients::MayEnter(const IpAddress& address) const {
  const auto machine = of_machine_.find(MachineOf(address));
  const std::size_t most = address.IsLoopback() ? kMostOfThisMachine : kMostOfOneMachine;
  return clients_.size() < kMostConnections &&
         (machine == of_machine_.end() || machine->second < most);
}

Client* Clients::Enter(int socket) {
  clients_.push_back({.Socket = socket,
                      .Address = NameOf(socket, &getpeername),
                      .Local = NameOf(socket, &getsockname)});
  ++of_machine_[MachineOf(clients_.back().Address)];
  return &clients_.back();
}

void Clients::Leave(Client* client) {
  const auto machine = of_machine_.find(MachineOf(client->Address));
  if (--machine->second == 0) {
    of_machine_.erase(machine);
  }
  clients_.remove_if([client](const Client& each) { return &each == client; });
}

void Clients::EndSlow(Client::Clock::time_point now) const {
  for (const Client& client : clients_) {
    if (!client.IsStream && now - client.Since > kMostForOneRequest) {
      shutdown(client.Socket, SHUT_RDWR);
    }
  }
}

std::size_t Clients::Busy() const {
  return static_cast<std::size_t>(std::ranges::count_if(clients_, &Client::IsBusy));
}

}  // namespace serve
