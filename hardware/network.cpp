#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "collector/state/report.h"
#include "hardware/files.h"
#include "hardware/parse_network.h"
#include "hardware/system_calls.h"
#include "hardware/tolmar_hardware.h"
#include "model/lookup/verify.h"

namespace {

using hardware::Access;
using hardware::ReadText;
namespace paths = hardware::paths;

// True when the entry's interface belongs in the document, if it also has a link.
bool IsReported(const ifaddrs& entry) {
  // Deliberately IFF_RUNNING, not IFF_UP: an interface that is up may be unusable.
  return entry.ifa_addr != nullptr && (entry.ifa_flags & IFF_RUNNING) != 0 &&
         std::strcmp(entry.ifa_name, "lo") != 0 && std::strcmp(entry.ifa_name, "sit0") != 0;
}

// Stores an address of the interface as text. Returns false when it has no text, after a message on
// standard output.
bool HostText(const char* interface, const sockaddr* address, socklen_t length, std::string* text) {
  char host[NI_MAXHOST];
  const int code = hardware::calls::HostText(interface, address, length, host, sizeof host);
  if (code != 0) {
    std::printf("getnameinfo() failed: %s\n", gai_strerror(code));
    return false;
  }
  *text = host;
  return true;
}

// Six zero bytes when the system refuses the socket or the question.
std::string HardwareAddress(const char* interface) {
  ifreq request{};
  std::strncpy(request.ifr_name, interface, sizeof request.ifr_name - 1);
  const hardware::Descriptor socket(hardware::calls::Socket());
  hardware::calls::HardwareAddress(socket.Number(), &request);
  unsigned char bytes[IFHWADDRLEN];
  std::memcpy(bytes, request.ifr_hwaddr.sa_data, sizeof bytes);
  return hardware::HardwareAddressText(bytes);
}

void StoreLink(CTolmarHardware* probe, QtSts::CNetworkDevice* device) {
  const char* name = device->Name.c_str();
  std::printf("Dev Name %s\r\n", name);
  device->Statistics.First = probe->NetworkLinkTransitionCount(name);
  device->Statistics.Second = probe->NetworkLinkErrorCount(name);
}

// Deliberately with the full name for gateway and hardware address: an alias, which has no route of
// its own, resets the gateway.
bool StoreIPv4(CTolmarHardware* probe, const ifaddrs& entry, QtSts::CNetworkDevice* device) {
  constexpr socklen_t kLength = sizeof(sockaddr_in);
  std::string unused;  // only whether there is a broadcast address matters
  if (!HostText(entry.ifa_name, entry.ifa_addr, kLength, &device->IPv4Address) ||
      !HostText(entry.ifa_name, entry.ifa_netmask, kLength, &device->Netmask) ||
      !HostText(entry.ifa_name, entry.ifa_broadaddr, kLength, &unused)) {
    return false;
  }
  probe->GetGateway(entry.ifa_name, &device->Gateway);
  device->MACAddress = HardwareAddress(entry.ifa_name);
  return true;
}

// False when an address cannot be written as text.
bool StoreEntry(CTolmarHardware* probe, const ifaddrs& entry, QtSts::CNetworkDevice* device) {
  switch (entry.ifa_addr->sa_family) {
    case AF_PACKET:
      StoreLink(probe, device);
      return true;
    case AF_INET6:  // deliberately without the length of its prefix, unlike the initial text
      return HostText(entry.ifa_name, entry.ifa_addr, sizeof(sockaddr_in6), &device->IPv6Address);
    case AF_INET:
      return StoreIPv4(probe, entry, device);
    default:
      return true;
  }
}

// 0 without a number, which is reported.
long ReadNumber(const std::string& text) {
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) {
    observe::ReportUnreadable("");
  }
  return number;
}

}  // namespace

int CTolmarHardware::Network() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  ifaddrs* first = nullptr;
  if (hardware::calls::Interfaces(&first) == -1) {
    return 1;
  }
  std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if (!IsReported(*entry) || CheckHardwareLink(entry->ifa_name) < 0) {
      continue;
    }
    const std::string name = hardware::BaseName(entry->ifa_name);
    const int position = Status_VerifyNetwork(m_pStatus, name.c_str());
    QtSts::CNetworkDevice* device = m_pStatus->Network.Devices[static_cast<unsigned int>(position)];
    if (device != nullptr && !StoreEntry(this, *entry, device)) {
      // Deliberately the list is not freed when the probe ends here (see tests/lsan.supp).
      static_cast<void>(list.release());
      return 1;
    }
  }
  return 0;
}

int CTolmarHardware::DNS() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto resolver = ReadText(paths::kResolver);
  if (!resolver) {
    return 1;
  }
  QtSts::CAddressList& servers = m_pStatus->Network.DNS.Addresses;
  servers.Clear();
  for (std::string& server : hardware::ParseNameServers(resolver->c_str())) {
    auto address = std::make_unique<QtSts::CAddress>();
    address->Index = servers.Count();
    address->Address = std::move(server);
    servers.Add(address.release());
  }
  return 0;
}

int CTolmarHardware::GetGateway(const char* interface, std::string* gateway) {
  *gateway = QtSts::kNoIPv4Address;
  const auto routes = hardware::ReadWhole(paths::kRoutes, Access::kRead);
  if (!routes) {
    return 1;
  }
  auto found = hardware::ParseDefaultGateway(*routes, interface);
  if (!observe::ReportLabel(interface, found.has_value())) {
    return 1;
  }
  *gateway = std::move(*found);
  return 0;
}

int CTolmarHardware::CheckHardwareLink(const char* interface) {
  const std::string path = paths::Carrier(interface);
  if (!hardware::Exists(path.c_str())) {
    return 0;
  }
  const auto carrier = ReadText({path.c_str(), Access::kRead, paths::kCarrierLimit});
  if (!carrier) {
    return 1;
  }
  return !carrier->empty() && ReadNumber(*carrier) == 0 ? -1 : 0;
}

int CTolmarHardware::NetworkLinkTransitionCount(const char* interface) {
  const std::string path = paths::Transitions(interface);
  const auto transitions =
      ReadText({path.c_str(), Access::kRead, paths::kTransitionsLimit, hardware::Links::kTrusted});
  if (!transitions) {
    return -1;
  }
  return static_cast<int>(ReadNumber(*transitions));
}

int CTolmarHardware::NetworkLinkErrorCount(const char* interface) {
  const auto counters = ReadText(paths::kLinkCounters);
  if (!counters) {
    return -1;
  }
  return hardware::ParseLinkErrors(counters->c_str(), interface);
}
