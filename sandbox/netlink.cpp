#include "sandbox/netlink.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "sandbox/check.h"

namespace sandbox {

NetlinkMessage::NetlinkMessage(std::uint16_t type, std::uint16_t flags) {
  nlmsghdr header = {};
  header.nlmsg_type = type;
  header.nlmsg_flags = static_cast<std::uint16_t>(flags | NLM_F_REQUEST | NLM_F_ACK);
  Append(header);
}

void NetlinkMessage::AppendBytes(std::string_view bytes) {
  bytes_.append(bytes);
  bytes_.resize(NLMSG_ALIGN(bytes_.size()));
}

void NetlinkMessage::Attribute(std::uint16_t type, std::string_view bytes) {
  Append(rtattr{static_cast<std::uint16_t>(RTA_LENGTH(bytes.size())), type});
  AppendBytes(bytes);
}

void NetlinkMessage::TextAttribute(std::uint16_t type, const std::string& text) {
  Attribute(type, {text.c_str(), text.size() + 1});
}

void NetlinkMessage::NumberAttribute(std::uint16_t type, std::uint32_t number) {
  Attribute(type, {reinterpret_cast<const char*>(&number), sizeof number});
}

void NetlinkMessage::SetLength(std::size_t attribute) {
  const auto length = static_cast<std::uint16_t>(bytes_.size() - attribute);
  std::memcpy(&bytes_[attribute] + offsetof(rtattr, rta_len), &length, sizeof length);
}

std::string NetlinkMessage::Bytes() const {
  std::string bytes = bytes_;
  const auto length = static_cast<std::uint32_t>(bytes.size());
  std::memcpy(bytes.data() + offsetof(nlmsghdr, nlmsg_len), &length, sizeof length);
  return bytes;
}

NetlinkSocket::NetlinkSocket()
    : socket_(Check(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE),
                    "open a netlink socket")) {}

void NetlinkSocket::Send(const NetlinkMessage& message, std::string_view what,
                         std::string_view subject) {
  const std::string bytes = message.Bytes();
  if (send(socket_.Number(), bytes.data(), bytes.size(), 0) == -1) {
    Fail(what, subject);
  }
  struct {
    nlmsghdr Header;
    nlmsgerr Acknowledgement;
    std::array<char, 4096> Original;
  } answer = {};
  if (recv(socket_.Number(), &answer, sizeof answer, 0) == -1) {
    Fail(what, subject);
  }
  if (answer.Header.nlmsg_type != NLMSG_ERROR) {
    errno = EPROTO;
    Fail(what, subject);
  }
  if (answer.Acknowledgement.error != 0) {
    errno = -answer.Acknowledgement.error;
    Fail(what, subject);
  }
}

}  // namespace sandbox
