#include "sandbox/format/interfaces.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "sandbox/format/text.h"

namespace sandbox {
namespace {

struct StateName {
  const char* Name;
  LinkState State;
};
constexpr std::array kStateNames = {StateName{"up", LinkState::kUp},
                                    StateName{"unplugged", LinkState::kUnplugged},
                                    StateName{"down", LinkState::kDown}};

struct AddressProperty {
  std::string_view Name;
  std::string InterfaceAddress::*Value;
};
constexpr std::array kAddressProperties = {
    AddressProperty{"broadcast", &InterfaceAddress::Broadcast},
    AddressProperty{"label", &InterfaceAddress::Label},
    AddressProperty{"peer", &InterfaceAddress::Peer}};

void ReadAddress(const std::vector<std::string>& words, NetworkInterface& interface) {
  InterfaceAddress address = {words[1], "", "", ""};
  for (std::size_t at = 2; at < words.size(); at += 2) {
    const AddressProperty* known =
        std::find_if(kAddressProperties.begin(), kAddressProperties.end(),
                     [&](const AddressProperty& property) { return words[at] == property.Name; });
    if (known == kAddressProperties.end() || at + 1 == words.size()) {
      throw std::runtime_error("expected \"broadcast\", \"label\" or \"peer\" and a value");
    }
    address.*known->Value = words[at + 1];
  }
  interface.Addresses.push_back(address);
}

void ReadState(const std::string& word, NetworkInterface& interface) {
  for (const StateName& known : kStateNames) {
    if (word == known.Name) {
      interface.State = known.State;
      return;
    }
  }
  throw std::runtime_error("not a link state: " + word);
}

std::string AddressText(const InterfaceAddress& address) {
  std::string text = "  address " + WordText(address.Prefix);
  for (const AddressProperty& property : kAddressProperties) {
    if (const std::string& value = address.*property.Value; !value.empty()) {
      text.append(" ").append(property.Name).append(" ").append(WordText(value));
    }
  }
  return text + "\n";
}

}  // namespace

std::vector<NetworkInterface> ParseInterfaces(std::string_view text) {
  std::vector<NetworkInterface> interfaces;
  ForEachLine(text, [&interfaces](const std::vector<std::string>& words) {
    const std::string& what = words[0];
    if (words.size() < 2 || (what != "interface" && interfaces.empty())) {
      throw std::runtime_error("expected \"interface\" and a name first");
    }
    if (what == "interface") {
      interfaces.push_back({words[1], "", LinkState::kUp, {}});
    } else if (what == "mac") {
      interfaces.back().Mac = words[1];
    } else if (what == "link") {
      ReadState(words[1], interfaces.back());
    } else if (what == "address") {
      ReadAddress(words, interfaces.back());
    } else {
      throw std::runtime_error("unknown word: " + what);
    }
  });
  return interfaces;
}

std::string InterfacesText(const std::vector<NetworkInterface>& interfaces) {
  std::string text;
  for (const NetworkInterface& interface : interfaces) {
    text += "interface " + WordText(interface.Name) + "\n";
    if (!interface.Mac.empty()) {
      text += "  mac " + WordText(interface.Mac) + "\n";
    }
    for (const StateName& known : kStateNames) {
      if (known.State == interface.State) {
        text.append("  link ").append(known.Name).append("\n");
      }
    }
    for (const InterfaceAddress& address : interface.Addresses) {
      text += AddressText(address);
    }
  }
  return text;
}

}  // namespace sandbox
