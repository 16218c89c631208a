#include "hardware/parse_registers.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "collector/state/report.h"
#include "hardware/parse_hex.h"
#include "model/outputs.h"

namespace hardware {
namespace {

using QtSts::CInput;

// A register and the field that it fills.
struct InputRegister {
  const char* Label;
  void (*Store)(CInput& input, std::uint64_t value);
};

// Frequency of a signal whose period is `periods` of a clock. No period at all is infinitely fast.
float Hertz(std::uint64_t periods, double clock_hertz) {
  return static_cast<float>(1.0 / (static_cast<double>(periods) / clock_hertz));
}

constexpr double kVerticalClock = 100000.0;
constexpr double kHorizontalClock = 1e8;
constexpr float kPixelClockUnit = 100000.0F;

constexpr auto kStoreVertical = [](CInput& input, std::uint64_t value) {
  input.Frequency.Vertical = Hertz(value, kVerticalClock);
};
constexpr auto kStoreHorizontal = [](CInput& input, std::uint64_t value) {
  input.Frequency.Horizontal = Hertz(value, kHorizontalClock);
};
constexpr auto kStoreDetectedWidth = [](CInput& input, std::uint64_t value) {
  input.DetectedArea.Width = static_cast<std::uint32_t>(value);
};
constexpr auto kStoreDetectedHeight = [](CInput& input, std::uint64_t value) {
  input.DetectedArea.Height = static_cast<std::uint32_t>(value);
};

constexpr InputRegister kPlayerRegisters[] = {
    {"dss_detected_vsync: ", kStoreVertical},
    {"dss_detected_hsync: ", kStoreHorizontal},
    {"dss_detected_columns: ", kStoreDetectedWidth},
    {"dss_detected_rows: ", kStoreDetectedHeight},
};

constexpr InputRegister kDviRegisters[] = {
    {"dvi_detected_vsync: ", kStoreVertical},
    {"dvi_detected_hsync: ", kStoreHorizontal},
    {"dvi_freq_detect: ",
     [](CInput& input, std::uint64_t value) {
       input.Frequency.PixelClock = static_cast<float>(value) * kPixelClockUnit;
     }},
    {"dvi_detected_columns: ", kStoreDetectedWidth},
    {"dvi_detected_rows: ", kStoreDetectedHeight},
    {"dvi_los_count: ",
     [](CInput& input, std::uint64_t value) {
       input.Statistics.First = static_cast<std::int32_t>(value);
     }},
    {"dvi_not_valid_count: ",
     [](CInput& input, std::uint64_t value) {
       input.Statistics.Second = static_cast<std::int32_t>(value);
     }},
};

// One scaler for both inputs.
constexpr InputRegister kScalerRegisters[] = {
    {"scale_input_height: ",
     [](CInput& input, std::uint64_t value) {
       input.ScalerInputArea.Height = static_cast<std::uint32_t>(value);
     }},
    {"scale_input_width: ",
     [](CInput& input, std::uint64_t value) {
       input.ScalerInputArea.Width = static_cast<std::uint32_t>(value);
     }},
};

template <std::size_t kCount>
void StoreRegisters(const InputRegister (&registers)[kCount], const char* dump, CInput* input) {
  for (const auto& [label, store] : registers) {
    if (const auto value = FindRegister(dump, label)) {
      store(*input, *value);
    }
  }
}

}  // namespace

std::optional<std::uint64_t> FindRegister(const char* dump, const char* label) {
  const char* found = std::strstr(dump, label);
  if (!observe::ReportLabel(label, found != nullptr)) {
    return std::nullopt;
  }
  bool readable = false;
  const std::uint64_t value = HexValue(found + std::strlen(label), &readable);
  if (!readable) {
    observe::ReportUnreadable(label);
  }
  return value;
}

void ParsePlayerInput(const char* frame_control, CInput* input) {
  StoreRegisters(kPlayerRegisters, frame_control, input);
  StoreRegisters(kScalerRegisters, frame_control, input);
  const QtSts::CArea& area = input->DetectedArea;
  // From whatever the fields hold now, also when registers were absent; blanking is not counted.
  input->Frequency.PixelClock =
      static_cast<float>(area.Height) * static_cast<float>(area.Width) * input->Frequency.Vertical;
  // Deliberately 600, not 640: narrower pictures count as a signal, too.
  input->SignalPresent = area.Height >= 480 && area.Width >= 600;
}

void ParseDviInput(const char* frame_control, CInput* input) {
  StoreRegisters(kDviRegisters, frame_control, input);
  StoreRegisters(kScalerRegisters, frame_control, input);
}

std::optional<bool> ParseRoutesDvi(const char* video_mux) {
  const auto value = FindRegister(video_mux, "video mux status register:");
  if (!value) {
    return std::nullopt;
  }
  return (*value & 4) != 0;
}

std::uint32_t TrackerFlags(int enable, int tracker, const char* frame_control) {
  if (enable != 0 && (tracker & 0x10) == 0) {
    return 0;
  }
  const auto bits = FindRegister(frame_control, "pixel_tracker_bits: ");
  const bool blanked = bits && (*bits & 8) != 0;
  return QtSts::kFlagTrackerActive | (blanked ? QtSts::kFlagTrackerBlanked : 0);
}

std::vector<std::string_view> TrackerLines(std::string_view frame_control) {
  std::vector<std::string_view> lines;
  while (!frame_control.empty()) {
    const std::string_view line = frame_control.substr(0, frame_control.find('\n'));
    if (line.find("pixel_tracker") != std::string_view::npos) {
      lines.push_back(line);
    }
    frame_control.remove_prefix(std::min(line.size() + 1, frame_control.size()));
  }
  return lines;
}

}  // namespace hardware
