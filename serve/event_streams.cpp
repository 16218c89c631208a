#include "serve/event_streams.h"

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace serve {
namespace {

constexpr std::size_t kMostStreams = 64;
constexpr std::size_t kBlockBytes = 2048;  // asked for at once

int SocketOf(MHD_Connection* connection) {
  return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

bool IsGone(int socket) {
  pollfd asked = {.fd = socket, .events = POLLRDHUP, .revents = 0};
  return poll(&asked, 1, 0) == 1;
}

}  // namespace

MHD_Response* EventStreams::Open(MHD_Connection* connection,
                                 std::shared_ptr<const std::string> first) {
  if (streams_.size() >= kMostStreams) {
    return nullptr;
  }
  streams_.push_back(
      {.Owner = this, .Connection = connection, .Next = std::move(first), .Ends = ends_});
  MHD_Response* const response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlockBytes,
                                                                   &Read, &streams_.back(), &Free);
  if (response == nullptr) {
    streams_.pop_back();
  }
  return response;
}

ssize_t EventStreams::Read(void* opened, std::uint64_t /*position*/, char* buffer,
                           std::size_t most) {
  auto* const stream = static_cast<Stream*>(opened);
  if (stream->Sending == nullptr) {
    stream->Sending = std::move(stream->Next);
    stream->Sent = 0;
  }
  if (stream->Ends) {
    return MHD_CONTENT_READER_END_OF_STREAM;
  }
  if (stream->Sending == nullptr) {
    stream->Suspended = true;
    MHD_suspend_connection(stream->Connection);
    return 0;
  }
  const std::size_t count = std::min(most, stream->Sending->size() - stream->Sent);
  stream->Sending->copy(buffer, count, stream->Sent);
  stream->Sent += count;
  if (stream->Sent == stream->Sending->size()) {
    stream->Sending.reset();
  }
  return static_cast<ssize_t>(count);
}

void EventStreams::Free(void* opened) {
  auto* const stream = static_cast<Stream*>(opened);
  stream->Owner->streams_.remove_if([stream](const Stream& each) { return &each == stream; });
}

void EventStreams::GoOn(Stream* stream) {
  if (stream->Suspended) {
    stream->Suspended = false;
    MHD_resume_connection(stream->Connection);
  }
}

void EventStreams::Send(const std::shared_ptr<const std::string>& event) {
  for (Stream& stream : streams_) {
    stream.Next = event;
    GoOn(&stream);
  }
}

void EventStreams::SendComment() {
  static const auto kComment = std::make_shared<const std::string>(": still here\n\n");
  for (Stream& stream : streams_) {
    if (stream.Suspended) {
      stream.Next = kComment;
      GoOn(&stream);
    }
  }
}

void EventStreams::DropGone() {
  for (Stream& stream : streams_) {
    if (stream.Suspended && IsGone(SocketOf(stream.Connection))) {
      stream.Ends = true;
      GoOn(&stream);
    }
  }
}

void EventStreams::End() {
  ends_ = true;
  for (Stream& stream : streams_) {
    stream.Ends = true;
    GoOn(&stream);
  }
}

}  // namespace serve
