#pragma once

#include <linux/netlink.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "sandbox/descriptor.h"

namespace sandbox {

// A request to the kernel's network configuration, put together front to back.
class NetlinkMessage {
 public:
  NetlinkMessage(std::uint16_t type, std::uint16_t flags);

  // Appends a fixed part, such as an ifinfomsg.
  template <class T>
  void Append(const T& part) {
    static_assert(std::is_trivially_copyable_v<T>);
    AppendBytes({reinterpret_cast<const char*>(&part), sizeof part});
  }

  void Attribute(std::uint16_t type, std::string_view bytes);
  // With the terminating zero that the kernel expects of names.
  void TextAttribute(std::uint16_t type, const std::string& text);
  void NumberAttribute(std::uint16_t type, std::uint32_t number);

  // An attribute made of what `contents` appends.
  template <class Contents>
  void Nest(std::uint16_t type, const Contents& contents) {
    const std::size_t begin = bytes_.size();
    Attribute(type, {});
    contents();
    SetLength(begin);
  }

  // The complete message.
  [[nodiscard]] std::string Bytes() const;

 private:
  void AppendBytes(std::string_view bytes);
  void SetLength(std::size_t attribute);

  std::string bytes_;
};

// A route netlink socket of the network namespace in which it is made.
class NetlinkSocket {
 public:
  NetlinkSocket();

  // Sends the request and waits for its acknowledgement; throws std::system_error made of the
  // kernel's answer and "what subject".
  void Send(const NetlinkMessage& message, std::string_view what, std::string_view subject);

 private:
  Descriptor socket_;
};

}  // namespace sandbox
