// What stands in place of what identifies a controller.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>

#include "capture/identities.h"

namespace capture {

// For each identity another one of its form, at random, that none of the controller's is. As long
// as a text has its length, what is cut after a number of bytes is cut at the same place.
//
// Addresses of one network stay in one network; a last number of 0 or 255, and the beginnings of
// private and local networks, stay what they are.
struct Pseudonyms {
  std::map<IPv4, IPv4> Version4;
  std::map<IPv6, IPv6> Version6;
  std::map<StationAddress, StationAddress> Stations;
  std::map<std::string, std::string> Words;  // in small letters
  std::string Serial;                        // for the whole text of its file

  // As the document has it.
  std::uint32_t OldSerialNumber = 0;
  std::uint32_t SerialNumber = 0;
};

Pseudonyms MakePseudonyms(const Identities& identities, std::mt19937_64* random);

}  // namespace capture
