#include "model/network.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Of;
using listing::Root;

constexpr Field kAddressFields[] = {
    Of<&CAddress::Index>("Index", "", "Position in the list"),
    Of<&CAddress::Address>("Address", "", "The address as it stands in its source"),
};

constexpr Field kDnsFields[] = {
    Of<&CDNS::Addresses>("Addresses", "", "The name servers in order"),
};

constexpr Field kDeviceFields[] = {
    Of<&CNetworkDevice::Index>("Index", "", "Position in the device list"),
    Of<&CNetworkDevice::Statistics>("Statistics", "",
                                    "Link transitions and link errors, -1 without a source"),
    Of<&CNetworkDevice::Name>("Name", "", "Interface name without alias suffix"),
    Of<&CNetworkDevice::IPv6Address>("IPv6Address", "", "IPv6 address"),
    Of<&CNetworkDevice::IPv4Address>("IPv4Address", "", "IPv4 address"),
    Of<&CNetworkDevice::Gateway>("Gateway", "", "Default gateway"),
    Of<&CNetworkDevice::Netmask>("Netmask", "", "IPv4 netmask"),
    Of<&CNetworkDevice::SpareText>("SpareText", "", "Not used"),
    Of<&CNetworkDevice::MACAddress>("MACAddress", "", "Hardware address"),
};

constexpr Field kNetworkFields[] = {
    Of<&CNetwork::DNS>("DNS", "", "The name servers"),
    Of<&CNetwork::Devices>("Devices", "", "The live network interfaces"),
    Of<&CNetwork::SpareWord>("SpareWord", "", "Not used"),
};

}  // namespace

constinit const ClassInfo CAddress::Class =
    Root<CAddress>("Address", "The address of a name server", kAddressFields);
constinit const ClassInfo CDNS::Class = Root<CDNS>("DNS", "The name servers", kDnsFields);
constinit const ClassInfo CNetworkDevice::Class =
    Root<CNetworkDevice>("NetworkDevice", "A network interface", kDeviceFields);
constinit const ClassInfo CNetwork::Class =
    Root<CNetwork>("Network", "Network devices and name servers", kNetworkFields);

}  // namespace QtSts
