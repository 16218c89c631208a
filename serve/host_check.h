// Whether a request asks this server, by the name in its Host header.
//
// A page of another site may have a name of its own that leads to this machine's address, and its
// script may then ask this server as if it were that site. Browsers give that name in the Host
// header, so that only requests by known names are answered.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "serve/ip_address.h"

namespace serve {

enum class HostVerdict { kKnown, kForeign, kMalformed };

// `host` is the value of the header: a name or an address (IPv6 between brackets), with a port or
// without. Known are `local`, the address at which the request has come in; "localhost" when that
// is of the loopback; and `names`, whatever the case of letters. The port does not matter: it may
// be that of a tunnel.
HostVerdict JudgeHost(std::string_view host, const IpAddress& local,
                      const std::vector<std::string>& names);

}  // namespace serve
