// The streams of events that clients read.
#pragma once

#include <microhttpd.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

namespace serve {

// Each stream has the event that it is sending and the newest one that it has not begun; a client
// that reads slowly misses those between. A stream without anything to send is suspended and takes
// no time. One thread at a time, that of the server.
class EventStreams {
 public:
  EventStreams() = default;
  EventStreams(const EventStreams&) = delete;
  EventStreams& operator=(const EventStreams&) = delete;

  // A response that sends `first` and all events from now on; null when there are too many streams,
  // or no memory. MHD calls back before this object may go.
  MHD_Response* Open(MHD_Connection* connection, std::shared_ptr<const std::string> first);

  void Send(const std::shared_ptr<const std::string>& event);

  // A line without meaning to those that are idle, so that clients that are gone are noticed.
  void SendComment();

  // Ends the streams of clients that have closed their side.
  void DropGone();

  // Ends all streams, and those that are opened later.
  void End();

  std::size_t size() const { return streams_.size(); }

 private:
  struct Stream {
    EventStreams* Owner;
    MHD_Connection* Connection;
    std::shared_ptr<const std::string> Sending = {};
    std::size_t Sent = 0;
    std::shared_ptr<const std::string> Next = {};
    bool Suspended = false;
    bool Ends = false;
  };

  static ssize_t Read(void* stream, std::uint64_t position, char* buffer, std::size_t most);
  static void Free(void* stream);
  static void GoOn(Stream* stream);

  std::list<Stream> streams_;
  bool ends_ = false;
};

}  // namespace serve
