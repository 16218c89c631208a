// A probe with its document in an empty controller: no file, no device, no interface.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "hardware/tolmar_hardware.h"
#include "model/document.h"

inline constexpr char kFrameControl[] = "/proc/driver/frame_control/registers";
inline constexpr char kVideoMux[] = "/proc/driver/video_mux/registers";
inline constexpr char kUuid[] = "/home/Zet/.settings/uuid";
inline constexpr char kSerial[] = "/home/Zet/.settings/serial#";
inline constexpr char kPackages[] = "/var/lib/dpkg/status";
inline constexpr char kMemory[] = "/proc/meminfo";
inline constexpr char kRoutes[] = "/proc/net/route";
inline constexpr char kLinkCounters[] = "/proc/net/dev";
inline constexpr char kResolver[] = "/etc/resolv.conf";

// `text` after `size` bytes of padding.
std::string Padded(std::size_t size, const std::string& text);

class ProbeTest : public testing::Test {
 protected:
  ProbeTest();
  ~ProbeTest() override;  // resets the limiter of the process for the next test

  // Standard output of the call.
  template <class Function>
  static std::string OutputOf(const Function& call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
  }

  QtSts::CStatus status_;
  CTolmarHardware probe_;  // fills status_
};
