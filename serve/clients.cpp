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

void Clients::EndReadersOfOld(Client::Clock::time_point now,
                              const std::function<bool(const std::string*)>& is_sent) const {
  constexpr std::chrono::seconds kShort{2};
  std::map<std::shared_ptr<const std::string>, Client::Clock::time_point> old;
  for (const Client& client : clients_) {
    const std::shared_ptr<const std::string> text = client.Reading.lock();
    if (text != nullptr && now - client.ReadingSince > kShort && !is_sent(text.get())) {
      const auto known = old.emplace(text, client.ReadingSince).first;
      known->second = std::min(known->second, client.ReadingSince);
    }
  }
  std::size_t bytes = 0;
  for (const auto& [text, since] : old) {
    bytes += text->size();
  }
  while (bytes > kMostOldBytes) {
    const auto oldest =
        std::ranges::min_element(old, {}, [](const auto& each) { return each.second; });
    for (const Client& client : clients_) {
      if (client.Reading.lock() == oldest->first) {
        shutdown(client.Socket, SHUT_RDWR);
      }
    }
    bytes -= oldest->first->size();
    old.erase(oldest);
  }
}

std::size_t Clients::Busy() const {
  return static_cast<std::size_t>(std::ranges::count_if(clients_, &Client::IsBusy));
}

}  // namespace serve
