// Sees a cycle and passes on what it was given.
#pragma once

#include <functional>
#include <vector>

#include "capture/observation.h"
#include "collector/observer.h"

namespace capture {

// Texts of an interface entry, by position.
namespace entry {
inline constexpr std::size_t kName = 0;       // of the interface, or the label of an alias
inline constexpr std::size_t kFamily = 1;     // "link", "IPv4", "IPv6", "" for any other
inline constexpr std::size_t kAddress = 2;    // "00:1A:2B:3C:4D:5E", "192.168.0.20"; "" for none
inline constexpr std::size_t kPrefix = 3;     // bits of the mask: "24"; "" for none
inline constexpr std::size_t kBroadcast = 4;  // or the other end of the link; "" for none
inline constexpr std::size_t kCount = 5;
}  // namespace entry

// Observes the collector as long as it lives. `take` gets each piece within the event, in the order
// of the cycle; it must not throw. Nothing is read a second time.
class Recorder : public observe::Observer {
 public:
  explicit Recorder(std::function<void(const Observation&)> take);
  ~Recorder() override;
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  void See(const observe::Event& event) override;

 private:
  void SeeAnswer(const observe::Answers& answer);

  std::function<void(const Observation&)> take_;
  observe::Observer* before_;
};

}  // namespace capture
