// What identifies a controller in a recording.
#pragma once

#include <map>
#include <set>
#include <string>

#include "capture/recording.h"
#include "capture/tokens.h"

namespace capture {

// What stands for a name or a GUID, and what it is.
struct Word {
  std::string Kind;
  // It is replaced where it is the value of its own file or row only: elsewhere it may be any word.
  bool InItsPlaceOnly = false;
};

struct Identities {
  std::set<IPv4> Version4;
  std::set<IPv6> Version6;
  std::set<StationAddress> Stations;
  std::map<std::string, Word> Words;  // in small letters
  std::string Serial;                 // as its file has it, without blanks at its ends
};

// All of them, in files, rows, interfaces and answers. `host` is the name of the machine. Addresses
// that many controllers have, such as 127.0.0.1, masks and networks, identify nobody.
Identities FindIdentities(const Recording& recording, const std::string& host);

// Without what a text ends with: blanks, line ends, what stands after a zero byte.
std::string Trimmed(const std::string& text);

// Whether the row sets the controller's GUID.
bool IsGuid(const Row& row);

// How many numbers an address begins with that only say that it is private or local: 2 of
// 192.168.0.20.
int LocalNumbers(IPv4 address);

// Whether anybody's controller has it.
bool IsCommon(IPv4 address);
bool IsCommon(const IPv6& address);
bool IsCommon(StationAddress address);

}  // namespace capture
