// Network devices and name servers.
#pragma once

#include <cstdint>
#include <string>

#include "model/common.h"

namespace QtSts {

class STATUS_API CAddress : public CListedStatus {
 public:
  std::uint32_t Index = 0;
  std::string Address;  // as it stands in the source, never validated

  static const ClassInfo Class;
};

class STATUS_API CAddressList : public COwningList<CAddress> {};

class STATUS_API CDNS : public CListedStatus {
 public:
  CAddressList Addresses;

  static const ClassInfo Class;
};

// Stands for an IPv4 address that is not there.
inline constexpr char kNoIPv4Address[] = "0.0.0.0";

// One network interface; aliases such as eth0:1 share the device of their base name.
class STATUS_API CNetworkDevice : public CListedStatus {
 public:
  std::uint32_t Index = 0;  // position in the device list
  CStat Statistics;         // link transitions, link errors; -1 when there is no source
  std::string Name;
  std::string IPv6Address = "::1/128";
  std::string IPv4Address = kNoIPv4Address;
  std::string Gateway = kNoIPv4Address;
  std::string Netmask = "255.255.255.0";
  std::string SpareText;
  std::string MACAddress;  // six upper-case hexadecimal pairs joined by ':'

  static const ClassInfo Class;
};

class STATUS_API CNetworkDeviceList : public COwningList<CNetworkDevice> {};

class STATUS_API CNetwork : public CListedStatus {
 public:
  CDNS DNS;
  CNetworkDeviceList Devices;
  std::uint32_t SpareWord = 0;

  static const ClassInfo Class;
};

}  // namespace QtSts
