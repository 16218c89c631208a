#include "sandbox/interfaces.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/ethtool.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <linux/veth.h>
#include <net/if.h>
#include <netinet/ether.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/files.h"
#include "sandbox/netlink.h"

namespace sandbox {
namespace {

// The namespace of the peers, kept alive by a bind mount.
constexpr const char* kPeers = "/.sandbox/peers";
constexpr const char* kOwnNetwork = "/proc/thread-self/ns/net";

Descriptor OpenNamespace(const char* path) {
  return Descriptor(Check(open(path, O_RDONLY | O_CLOEXEC), "open", path));
}

// Returns to the network namespace in which it was made.
class NetworkReturn {
 public:
  NetworkReturn() : home_(OpenNamespace(kOwnNetwork)) {}
  NetworkReturn(const NetworkReturn&) = delete;
  NetworkReturn& operator=(const NetworkReturn&) = delete;
  ~NetworkReturn() {
    if (setns(home_.Number(), CLONE_NEWNET) == -1) {
      std::terminate();  // everything after this would happen in the wrong network
    }
  }

 private:
  Descriptor home_;
};

Descriptor PeersNamespace() {
  if (access(kPeers, F_OK) == -1) {
    const NetworkReturn home;
    Check(unshare(CLONE_NEWNET), "make a network namespace");
    WriteFile(kPeers, "");
    Check(mount(kOwnNetwork, kPeers, "none", MS_BIND, nullptr), "keep a network namespace");
  }
  return OpenNamespace(kPeers);
}

NetlinkSocket SocketIn(const Descriptor& network) {
  const NetworkReturn home;
  Check(setns(network.Number(), CLONE_NEWNET), "enter a network namespace");
  return {};
}

void Raise(NetlinkSocket& socket, const std::string& name) {
  NetlinkMessage message(RTM_NEWLINK, 0);
  ifinfomsg link = {};
  link.ifi_flags = IFF_UP;
  link.ifi_change = IFF_UP;
  message.Append(link);
  message.TextAttribute(IFLA_IFNAME, name);
  socket.Send(message, "set up", name);
}

std::string MacBytes(const std::string& text) {
  ether_addr address = {};
  if (ether_aton_r(text.c_str(), &address) == nullptr) {
    throw std::runtime_error("not a MAC address: " + text);
  }
  return {reinterpret_cast<const char*>(&address), sizeof address};
}

void CreatePair(NetlinkSocket& socket, const NetworkInterface& interface, const Descriptor& peers) {
  NetlinkMessage message(RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL);
  message.Append(ifinfomsg{});
  message.TextAttribute(IFLA_IFNAME, interface.Name);
  if (!interface.Mac.empty() && CanHaveMac(interface)) {
    message.Attribute(IFLA_ADDRESS, MacBytes(interface.Mac));
  }
  message.Nest(IFLA_LINKINFO, [&] {
    message.TextAttribute(IFLA_INFO_KIND, "veth");
    message.Nest(IFLA_INFO_DATA, [&] {
      message.Nest(VETH_INFO_PEER, [&] {
        message.Append(ifinfomsg{});
        message.TextAttribute(IFLA_IFNAME, interface.Name);
        message.NumberAttribute(IFLA_NET_NS_FD, static_cast<std::uint32_t>(peers.Number()));
      });
    });
  });
  socket.Send(message, "make the interface", interface.Name);
}

// Or the kernel would add an IPv6 address of its own as soon as the link is up.
void KeepLinkLocalAway(NetlinkSocket& socket, const std::string& name) {
  NetlinkMessage message(RTM_NEWLINK, 0);
  message.Append(ifinfomsg{});
  message.TextAttribute(IFLA_IFNAME, name);
  message.Nest(IFLA_AF_SPEC, [&] {
    message.Nest(AF_INET6, [&] {
      const char mode = IN6_ADDR_GEN_MODE_NONE;
      message.Attribute(IFLA_INET6_ADDR_GEN_MODE, {&mode, 1});
    });
  });
  socket.Send(message, "keep link-local addresses from", name);
}

std::string AddressBytes(int family, const std::string& text) {
  std::array<char, sizeof(in6_addr)> bytes = {};
  if (inet_pton(family, text.c_str(), bytes.data()) != 1) {
    throw std::runtime_error("not an address: " + text);
  }
  return {bytes.data(), family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr)};
}

void AddAddress(NetlinkSocket& socket, const std::string& name, const InterfaceAddress& address) {
  const std::size_t slash = std::min(address.Prefix.find('/'), address.Prefix.size());
  const int family = address.Prefix.find(':') == std::string::npos ? AF_INET : AF_INET6;
  const std::string bytes = AddressBytes(family, address.Prefix.substr(0, slash));
  const std::size_t whole = bytes.size() * 8;
  const std::size_t length =
      slash == address.Prefix.size() ? whole : std::stoul(address.Prefix.substr(slash + 1));
  if (length > whole) {
    throw std::runtime_error("not a prefix length: " + address.Prefix);
  }
  NetlinkMessage message(RTM_NEWADDR, NLM_F_CREATE | NLM_F_EXCL);
  ifaddrmsg header = {};
  header.ifa_family = static_cast<std::uint8_t>(family);
  header.ifa_prefixlen = static_cast<std::uint8_t>(length);
  header.ifa_index = if_nametoindex(name.c_str());
  message.Append(header);
  message.Attribute(IFA_LOCAL, bytes);
  message.Attribute(IFA_ADDRESS, address.Peer.empty() ? bytes : AddressBytes(family, address.Peer));
  if (!address.Broadcast.empty()) {
    message.Attribute(IFA_BROADCAST, AddressBytes(AF_INET, address.Broadcast));
  }
  if (!address.Label.empty()) {
    message.TextAttribute(IFA_LABEL, address.Label);
  }
  if (family == AF_INET6) {
    message.NumberAttribute(IFA_FLAGS, IFA_F_NODAD);
  }
  socket.Send(message, "add the address", address.Prefix);
}

// The kernel reports carrier changes on its own time, up to a second late; asking for the link
// state brings the flags up to date.
bool IsRunning(const std::string& name) {
  const Descriptor socket(Check(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "open a socket"));
  ethtool_value link = {ETHTOOL_GLINK, 0};
  ifreq request = {};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  request.ifr_data = reinterpret_cast<char*>(&link);
  Check(ioctl(socket.Number(), SIOCETHTOOL, &request), "read the link state of", name);
  Check(ioctl(socket.Number(), SIOCGIFFLAGS, &request), "read the flags of", name);
  return (request.ifr_flags & IFF_RUNNING) != 0;
}

void AwaitState(const NetworkInterface& interface) {
  using std::chrono::steady_clock;
  const steady_clock::time_point limit = steady_clock::now() + std::chrono::seconds(5);
  while (IsRunning(interface.Name) != (interface.State == LinkState::kUp)) {
    if (steady_clock::now() > limit) {
      throw std::runtime_error("the link state of " + interface.Name + " does not settle");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

std::vector<std::string> PresentInterfaces() {
  std::vector<std::string> names;
  const std::unique_ptr<struct if_nameindex, void (*)(struct if_nameindex*)> list(if_nameindex(),
                                                                                  if_freenameindex);
  for (const struct if_nameindex* entry = list.get(); entry != nullptr && entry->if_index != 0;
       ++entry) {
    if (std::strcmp(entry->if_name, "lo") != 0) {
      names.emplace_back(entry->if_name);
    }
  }
  return names;
}

// Tunnel drivers put a device into every namespace that cannot be removed; it is down and stays.
void RemoveInterfaces(NetlinkSocket& socket) {
  for (const std::string& name : PresentInterfaces()) {
    NetlinkMessage message(RTM_DELLINK, 0);
    message.Append(ifinfomsg{});
    message.TextAttribute(IFLA_IFNAME, name);
    try {
      socket.Send(message, "remove the interface", name);
    } catch (const std::system_error& error) {
      if (error.code() != std::errc::operation_not_supported) {
        throw;
      }
    }
  }
}

// In the order in which the kernel has to get them, so that it lists them as given: of several IPv6
// addresses it puts the newest first.
std::vector<InterfaceAddress> InKernelOrder(std::vector<InterfaceAddress> addresses) {
  const auto six = std::stable_partition(addresses.begin(), addresses.end(),
                                         [](const InterfaceAddress& address) {
                                           return address.Prefix.find(':') == std::string::npos;
                                         });
  std::reverse(six, addresses.end());
  return addresses;
}

}  // namespace

bool CanHaveMac(const NetworkInterface& interface) {
  const std::string bytes = MacBytes(interface.Mac);
  const bool is_group = (bytes.front() & 1) != 0;
  return !is_group && bytes.find_first_not_of('\0') != std::string::npos;
}

void SetInterfaces(const std::vector<NetworkInterface>& interfaces) {
  RequireInside();
  NetlinkSocket socket;
  RemoveInterfaces(socket);
  if (interfaces.empty()) {
    return;
  }
  const Descriptor peers = PeersNamespace();
  NetlinkSocket peer_socket = SocketIn(peers);
  for (const NetworkInterface& interface : interfaces) {
    CreatePair(socket, interface, peers);
    KeepLinkLocalAway(socket, interface.Name);
    for (const InterfaceAddress& address : InKernelOrder(interface.Addresses)) {
      AddAddress(socket, interface.Name, address);
    }
    if (interface.State != LinkState::kUnplugged) {
      Raise(peer_socket, interface.Name);
    }
    if (interface.State != LinkState::kDown) {
      Raise(socket, interface.Name);
    }
  }
  for (const NetworkInterface& interface : interfaces) {
    AwaitState(interface);
  }
}

void RaiseLoopback() {
  NetlinkSocket socket;
  Raise(socket, "lo");
}

}  // namespace sandbox
