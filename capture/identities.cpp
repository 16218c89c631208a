#include "capture/identities.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>
#include <string_view>

#include "capture/description.h"
#include "capture/recorder.h"
#include "hardware/paths.h"

namespace capture {
namespace {

namespace paths = hardware::paths;

constexpr std::size_t kLongWord = 8;

constexpr std::string_view kCommonDomains[] = {"home", "home.arpa", "internal",   "intranet",
                                               "lan",  "local",     "localdomain"};

constexpr const char* kNamesInCaptures =
    "capture json document xml root devices travex zetdisplay diagnostics interfaces interface mac "
    "link up down unplugged address broadcast label peer rows tsv faults open read status type "
    "fifo "
    "query uptime again steps removed version encoding";

std::string Small(std::string text) {
  for (char& c : text) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return text;
}

// "manual" as a GUID is that word elsewhere, and one of several words may be anything.
bool IsOrdinary(const std::string& word) {
  return word.size() < kLongWord || word.find_first_of("0123456789") == std::string::npos ||
         std::ranges::any_of(word, [](char c) { return c <= ' ' || c > '~'; });
}

bool HasLettersOrDigits(const std::string& text) {
  return std::ranges::any_of(
      text, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; });
}

std::optional<std::string> Keep(std::string_view /*token*/) { return std::nullopt; }

class Finder {
 public:
  explicit Finder(const Recording& recording, const std::string& host) {
    for (const Cycle& cycle : recording.Cycles) {
      FindInFiles(cycle);
      FindInRows(cycle);
      FindInInterfaces(cycle);
    }
    if (host != "localhost") {
      AddName("host name", host);
    }
    LeaveOrdinaryWords(recording);
  }

  Identities Take() { return std::move(found_); }

 private:
  void AddWord(const char* kind, const std::string& word) {
    if (HasLettersOrDigits(word)) {
      found_.Words[Small(word)] = {kind, IsOrdinary(word)};
    }
  }

  void AddName(const char* kind, const std::string& name) {
    if (name.size() >= 3) {
      found_.Words[Small(name)] = {kind, false};
    }
  }

  void FindInFiles(const Cycle& cycle) {
    for (const auto& [path, file] : cycle.Files) {
      for (const Reading& reading : file.Readings) {
        const std::string own = Trimmed(reading.Bytes);
        if (path == paths::kUuid.Path) {
          AddWord("GUID", own);
        } else if (path == paths::kSerial.Path) {
          found_.Serial = own;
        } else if (path == paths::kRoutes) {
          FindInRoutes(reading.Bytes);
        } else if (path == paths::kResolver.Path) {
          FindDomains(reading.Bytes);
        }
        if (path != paths::kPackages) {  // where four numbers are a version
          FindAddresses(reading.Bytes);
        }
      }
    }
  }

  // Destination and gateway of each line, in hexadecimal.
  void FindInRoutes(const std::string& table) {
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream fields(line);
      std::string interface;
      std::string destination;
      std::string gateway;
      fields >> interface >> destination >> gateway;
      for (const std::string& digits : {destination, gateway}) {
        std::size_t end = 0;
        if (digits.size() == 8 &&
            digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos) {
          Add(__builtin_bswap32(static_cast<IPv4>(std::stoul(digits, &end, 16))));
        }
      }
    }
  }

  void FindDomains(const std::string& resolver) {
    std::istringstream lines(resolver);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string word;
      words >> word;
      if (word == "search" || word == "domain") {
        while (words >> word) {
          if (std::ranges::find(kCommonDomains, word) == std::end(kCommonDomains)) {
            AddName("domain", word);
          }
        }
      }
    }
  }

  void FindInRows(const Cycle& cycle) {
    for (const Row& row : cycle.Rows) {
      if (IsGuid(row)) {
        AddWord("GUID", Trimmed(*row.Value));
      }
      const bool version = row.Key.value_or("").find("Version") != std::string::npos;
      for (const auto& text : {row.Key, row.Value}) {
        FindAddresses(text.value_or(""), !version);
      }
    }
  }

  void FindInInterfaces(const Cycle& cycle) {
    for (const InterfaceEntry& entry : cycle.Interfaces) {
      FindInName(entry.Texts.at(entry::kName));
      FindAddresses(entry.Texts.at(entry::kAddress));
      FindAddresses(entry.Texts.at(entry::kBroadcast));
    }
    for (const auto& [interface, address] : cycle.HardwareAddresses) {
      FindAddresses(address.Text);
    }
  }

  // "enx001a2b3c4d5e" is called after its hardware address, or the one that it had at first.
  void FindInName(const std::string& interface) {
    constexpr std::size_t kDigits = 12;
    const std::size_t begin = interface.size() < kDigits ? 0 : interface.size() - kDigits;
    if (begin == 3 && interface[2] == 'x' &&
        interface.find_first_not_of("0123456789abcdef", begin) == std::string::npos) {
      Add(ParseStation(std::string_view(interface).substr(begin)));
    }
  }

  void Add(StationAddress address) {
    if (!IsCommon(address)) {
      found_.Stations.insert(address);
    }
  }

  void FindAddresses(const std::string& text, bool with_ipv4 = true) {
    if (with_ipv4) {
      RewriteIPv4(text, [this](std::string_view token) {
        Add(*ParseIPv4(token));
        return Keep(token);
      });
    }
    RewriteIPv6(text, [this](std::string_view token) {
      const IPv6 address = *ParseIPv6(token);
      if (!IsCommon(address)) {
        found_.Version6.insert(address);
      }
      return Keep(token);
    });
    RewriteStations(text, [this](std::string_view token) {
      Add(ParseStation(token));
      return Keep(token);
    });
    RewriteUuids(text, [this](std::string_view token) {
      AddWord("GUID", std::string(token));
      return Keep(token);
    });
  }

  void Add(IPv4 address) {
    if (!IsCommon(address)) {
      found_.Version4.insert(address);
    }
  }

  // A host that is called like a package, a folder or a part of the document would take its name
  // from it.
  void LeaveOrdinaryWords(const Recording& recording) {
    const std::string names = kNamesInCaptures + NamesInDescriptions();
    std::erase_if(found_.Words, [&](const auto& row) {
      return row.second.Kind != std::string("GUID") &&
             (Has(names, row.first) ||
              std::ranges::any_of(recording.Cycles, [&row](const Cycle& cycle) {
                return IsOrdinaryIn(cycle, row.first);
              }));
    });
  }

  // capture.json of a controller without a name.
  static std::string NamesInDescriptions() {
    Recording any;
    any.Stopped = Stopped{"no answer within s the cycle was ended by signal", Question{}};
    Cycle& cycle = any.Cycles.emplace_back();
    cycle.Files["/"].Readings.push_back({.ReadError = 1});
    cycle.Files["/"].Links.emplace_back();
    cycle.Files["/missing"].LookError = 1;
    cycle.Devices["/"].Openings.push_back({.Result = -1, .Error = 1});
    cycle.Failures.emplace_back();
    cycle.Storage.emplace();
    cycle.Uptime = 0;
    cycle.Ended = true;
    return DescriptionOf(any, {{"GUID serial number IPv4 IPv6 hardware address domain host name"}},
                         {});
  }

  static bool Has(const std::string& text, const std::string& word) {
    bool found = false;
    RewriteWord(text, word, [&found](std::string_view token) {
      found = true;
      return Keep(token);
    });
    return found;
  }

  static bool IsOrdinaryIn(const Cycle& cycle, const std::string& word) {
    for (const auto& [path, file] : cycle.Files) {
      const bool packages = path == paths::kPackages && !file.Readings.empty();
      if (Has(path, word) || (packages && Has(file.Readings.front().Bytes, word))) {
        return true;
      }
    }
    return cycle.Document && IsNameIn(*cycle.Document, word);
  }

  // Whether an element or an attribute has this name.
  static bool IsNameIn(const std::string& document, const std::string& word) {
    bool found = false;
    RewriteWord(document, word, [&](std::string_view token) {
      const std::size_t begin = static_cast<std::size_t>(token.data() - document.data());
      const std::size_t end = begin + token.size();
      const bool element = begin > 0 && (document[begin - 1] == '<' || document[begin - 1] == '/');
      found = found || element || document.compare(end, 2, "=\"") == 0;
      return Keep(token);
    });
    return found;
  }

  Identities found_;
};

}  // namespace

Identities FindIdentities(const Recording& recording, const std::string& host) {
  return Finder(recording, host).Take();
}

std::string Trimmed(const std::string& text) {
  std::string trimmed = text.substr(0, text.find('\0'));
  trimmed.erase(trimmed.find_last_not_of(" \t\r\n") + 1);
  return trimmed;
}

bool IsGuid(const Row& row) { return row.Value && row.Key.value_or("").starts_with("GUID"); }

int LocalNumbers(IPv4 address) {
  const IPv4 first = address >> 24;
  const IPv4 second = address >> 16 & 0xFF;
  if (first == 10) {
    return 1;
  }
  const bool two = (first == 172 && second >= 16 && second < 32) ||
                   (first == 192 && second == 168) || (first == 169 && second == 254);
  return two ? 2 : 0;
}

bool IsCommon(IPv4 address) {
  const IPv4 first = address >> 24;
  const IPv4 rest = ~address;
  const bool is_mask = first >= 128 && (rest & (rest + 1)) == 0;
  return first == 0 || first == 127 || first >= 224 || is_mask;
}

bool IsCommon(const IPv6& address) {
  const bool starts_with_zeros =
      std::all_of(address.begin(), address.end() - 1, [](auto group) { return group == 0; });
  return (address[0] >> 8) == 0xFF || (starts_with_zeros && address.back() <= 1);
}

bool IsCommon(StationAddress address) { return address == 0 || address == 0xFFFFFFFFFFFF; }

}  // namespace capture
