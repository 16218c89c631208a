#include <net/if.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "capture/controller.h"
#include "capture/recorder.h"

namespace capture {
namespace {

using sandbox::InterfaceAddress;
using sandbox::LinkState;
using sandbox::NetworkInterface;

constexpr const char* kLoopback = "lo";

// Interfaces that some kernels make by themselves, also in the network of a replay, and that no
// cycle reports before somebody sets them up.
constexpr std::string_view kKernels[] = {"sit0",    "tunl0",   "gre0",     "gretap0", "erspan0",
                                         "ip6tnl0", "ip6gre0", "ip6_vti0", "ip_vti0"};

const std::string& TextOf(const InterfaceEntry& entry, std::size_t which) {
  return entry.Texts.at(which);
}

LinkState StateOf(std::uint64_t flags) {
  if ((flags & IFF_RUNNING) != 0) {
    return LinkState::kUp;
  }
  return (flags & IFF_UP) != 0 ? LinkState::kUnplugged : LinkState::kDown;
}

bool IsOfKernel(const InterfaceEntry& entry) {
  return (entry.Flags & IFF_RUNNING) == 0 &&
         std::ranges::find(kKernels, TextOf(entry, entry::kName)) != std::end(kKernels);
}

NetworkInterface* Find(std::vector<NetworkInterface>* interfaces, const std::string& name) {
  const auto found = std::ranges::find(*interfaces, name, &NetworkInterface::Name);
  return found == interfaces->end() ? nullptr : &*found;
}

// Which interface has the address listed under `label`. That is its own name, or one that begins
// with it (eth10 where eth1 is there, too); any other label stands among the addresses of its
// interface.
NetworkInterface* OwnerOf(const std::string& label, NetworkInterface* owner_before,
                          std::vector<NetworkInterface>* interfaces) {
  if (NetworkInterface* const named = Find(interfaces, label)) {
    return named;
  }
  if (NetworkInterface* const based = Find(interfaces, label.substr(0, label.find(':')))) {
    return based;
  }
  NetworkInterface* longest = nullptr;
  for (NetworkInterface& one : *interfaces) {
    if (label.starts_with(one.Name) &&
        (longest == nullptr || one.Name.size() > longest->Name.size())) {
      longest = &one;
    }
  }
  return longest == nullptr ? owner_before : longest;
}

// What the interface, or else an alias of it, answered; "" when none did.
std::string AnsweredBy(const Cycle& cycle, const std::string& name) {
  const auto own = cycle.HardwareAddresses.find(name);
  if (own != cycle.HardwareAddresses.end()) {
    return own->second.Text;
  }
  const auto alias = cycle.HardwareAddresses.lower_bound(name + ":");
  const bool known = alias != cycle.HardwareAddresses.end() && alias->first.starts_with(name + ":");
  return known ? alias->second.Text : "";
}

InterfaceAddress AddressOf(const InterfaceEntry& entry, const std::string& interface) {
  InterfaceAddress address;
  address.Prefix = TextOf(entry, entry::kAddress) + "/" + TextOf(entry, entry::kPrefix);
  if (TextOf(entry, entry::kFamily) == "IPv6") {
    return address;
  }
  if (TextOf(entry, entry::kName) != interface) {
    address.Label = TextOf(entry, entry::kName);
  }
  const std::string& broadcast = TextOf(entry, entry::kBroadcast);
  if (broadcast.empty()) {
    address.Peer = "0.0.0.0";
  } else if (broadcast != TextOf(entry, entry::kAddress)) {
    ((entry.Flags & IFF_POINTOPOINT) != 0 ? address.Peer : address.Broadcast) = broadcast;
  }
  return address;
}

}  // namespace

std::vector<NetworkInterface> InterfacesOf(const Cycle& cycle) {
  std::vector<NetworkInterface> interfaces;
  for (const InterfaceEntry& entry : cycle.Interfaces) {
    const std::string& name = TextOf(entry, entry::kName);
    if (TextOf(entry, entry::kFamily) == "link" && name != kLoopback && !IsOfKernel(entry)) {
      const std::string answered = AnsweredBy(cycle, name);
      interfaces.push_back({.Name = name,
                            .Mac = answered.empty() ? TextOf(entry, entry::kAddress) : answered,
                            .State = StateOf(entry.Flags)});
    }
  }
  for (const char* const family : {"IPv4", "IPv6"}) {
    NetworkInterface* owner = nullptr;
    for (const InterfaceEntry& entry : cycle.Interfaces) {
      const std::string& name = TextOf(entry, entry::kName);
      if (TextOf(entry, entry::kFamily) != family || name == kLoopback) {
        continue;
      }
      owner = OwnerOf(name, owner, &interfaces);
      if (owner != nullptr) {
        owner->Addresses.push_back(AddressOf(entry, owner->Name));
      }
    }
  }
  return interfaces;
}

}  // namespace capture
