#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

enum class LinkState {
  kUp,         // up with a carrier: IFF_UP and IFF_RUNNING
  kUnplugged,  // up without a carrier: IFF_UP only
  kDown,       // neither
};

struct InterfaceAddress {
  std::string Prefix = {};     // such as "192.168.1.20/24" or "2001:db8::20/64"
  std::string Broadcast = {};  // IPv4 only; empty: none, getifaddrs() then gives the peer instead
  std::string Label = {};      // IPv4 only; the alias under which it is listed, such as "eth0:1"
  // Of a point-to-point link; empty: the address itself, as the kernel has it.
  std::string Peer = {};
};

// One end of a veth pair; the other end is in a network namespace of its own, out of sight. It has
// the given addresses only, no link-local one.
struct NetworkInterface {
  std::string Name = {};
  std::string Mac = {};  // such as "00:1A:2B:3C:4D:5E"; empty: the kernel chooses one
  LinkState State = LinkState::kUp;
  // In the order in which getifaddrs() gives those of IPv4 and those of IPv6.
  std::vector<InterfaceAddress> Addresses = {};
};

// Reads the text form, in which `#` starts a comment:
//
//     interface eth0
//       mac 00:1A:2B:3C:4D:5E
//       link up                      # or unplugged, or down; up when left out
//       address 192.168.1.20/24 broadcast 192.168.1.255
//       address 10.0.0.5/8 label eth0:1
//       address 172.16.0.5/16 peer 0.0.0.0   # neither broadcast nor peer: a null pointer
//       address 2001:db8::20/64
//
// Throws std::runtime_error with the line number when a line is none of these.
std::vector<NetworkInterface> ParseInterfaces(std::string_view text);

// Writes it.
std::string InterfacesText(const std::vector<NetworkInterface>& interfaces);

}  // namespace sandbox
