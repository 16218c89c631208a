#include <syslog.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <optional>

#include "hardware/files.h"
#include "hardware/parse_registers.h"
#include "hardware/rate_limit.h"
#include "hardware/requests.h"
#include "hardware/tolmar_hardware.h"
#include "model/lookup/verify.h"

namespace {

using hardware::AskDevice;
namespace paths = hardware::paths;
namespace requests = hardware::requests;

constexpr int kNoAnswer = -1;

// The router's requests for statistics, and the element and member that the answer of each fills.
constexpr struct {
  unsigned long Request;
  int Number;
  std::int32_t QtSts::CStat::*Value;
} kStatistics[] = {
    {requests::router::kStatistic0First, 0, &QtSts::CStat::First},
    {requests::router::kStatistic0Second, 0, &QtSts::CStat::Second},
    {requests::router::kStatistic1First, 1, &QtSts::CStat::First},
    {requests::router::kStatistic1Second, 1, &QtSts::CStat::Second},
};

struct RouterAnswers {
  int FrameRate;
  int OutputLevel;
  std::array<int, std::size(kStatistics)> Statistics;
  int TrackerEnable;
};

std::optional<RouterAnswers> AskRouter() {
  namespace router = requests::router;
  const auto& [first, second, third, fourth] = kStatistics;
  const auto answers = AskDevice(
      paths::kRouter, {router::kFrameRate, router::kOutputLevel, first.Request, second.Request,
                       third.Request, fourth.Request, router::kTrackerEnable});
  if (!answers) {
    return std::nullopt;
  }
  const auto [rate, level, answer1, answer2, answer3, answer4, enable] = *answers;
  return RouterAnswers{rate, level, {answer1, answer2, answer3, answer4}, enable};
}

// The output at `port`. Appends one if there is none; null when the list still does not reach
// `port`.
QtSts::COutput* EnsureOutput(QtSts::CStatus* status, int port) {
  Status_VerifyOutput(status, port);
  return status->Outputs[static_cast<unsigned int>(port)];
}

// Element `number` of the port's statistics, appended if it is missing. Deliberately makes the
// output, too, so that a single answer of all is not lost. Deliberately null when the element
// before it is missing, too: the appended one takes that position.
QtSts::CStat* EnsureStatistic(QtSts::CStatus* status, int port, int number) {
  const QtSts::COutput* output = EnsureOutput(status, port);
  if (output == nullptr) {
    return nullptr;
  }
  Status_VerifyOutputStats(status, port, number);
  return output->Statistics[static_cast<unsigned int>(number)];
}

void StoreRouterAnswers(QtSts::CStatus* status, int port, const RouterAnswers& answers) {
  if (answers.FrameRate != kNoAnswer) {
    if (QtSts::COutput* output = EnsureOutput(status, port)) {
      const auto millihertz = static_cast<float>(answers.FrameRate);
      output->Frequency.Vertical = static_cast<float>(millihertz / 1000.0);
    }
  }
  if (answers.OutputLevel != kNoAnswer) {
    if (QtSts::COutput* output = EnsureOutput(status, port)) {
      output->Dimming.OutputLevel = static_cast<float>(answers.OutputLevel);
    }
  }
  for (std::size_t i = 0; i < std::size(kStatistics); ++i) {
    if (answers.Statistics[i] != kNoAnswer) {
      if (QtSts::CStat* statistic = EnsureStatistic(status, port, kStatistics[i].Number)) {
        statistic->*kStatistics[i].Value = answers.Statistics[i];
      }
    }
  }
}

void StoreScalerOutput(QtSts::CStatus* status, int port, const char* frame_control) {
  constexpr struct {
    const char* Label;
    std::uint32_t QtSts::CArea::*Side;
  } kSides[] = {
      {"scale_output_height: ", &QtSts::CArea::Height},
      {"scale_output_width: ", &QtSts::CArea::Width},
  };
  for (const auto& [label, side] : kSides) {
    const auto value = hardware::FindRegister(frame_control, label);
    QtSts::COutput* output = value ? EnsureOutput(status, port) : nullptr;
    if (output != nullptr) {
      output->ScalerOutputArea.*side = static_cast<std::uint32_t>(*value);
    }
  }
}

// All arithmetic is unsigned: an answer of -1 sets every bit that it contributes.
std::uint32_t DriverFlags(int level, int power, int diagnostics) {
  return static_cast<std::uint32_t>(level) | ((power & 1) == 0 ? QtSts::kFlagPowerOff : 0) |
         static_cast<std::uint32_t>(diagnostics) * 16;
}

void LogBlankedOutput() {
  syslog(LOG_INFO, "Tracker Pixel: output blanked!\n");
  const auto dump = hardware::ReadWhole(paths::kFrameControl.Path, paths::kFrameControl.Mode);
  if (!dump) {
    return;
  }
  for (const std::string_view line : hardware::TrackerLines(*dump)) {
    syslog(LOG_INFO, "%.*s\n", static_cast<int>(line.size()), line.data());
  }
}

}  // namespace

int CTolmarHardware::OutputPort(int port) {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto router = AskRouter();
  if (!router) {
    return 1;
  }
  StoreRouterAnswers(m_pStatus, port, *router);

  const auto dump = hardware::ReadText(paths::kFrameControl);
  if (!dump) {
    return 1;
  }
  StoreScalerOutput(m_pStatus, port, dump->c_str());

  const auto display = AskDevice(
      paths::kDisplay,
      {requests::display::kLevel, requests::display::kPower, requests::display::kTracker});
  if (!display) {
    return 1;
  }
  const auto [level, power, tracker] = *display;

  const auto diagnostics = AskDevice(paths::kDiagnostics, {requests::diagnostics::kFlags});
  if (!diagnostics) {
    return 1;
  }
  std::uint32_t flags = DriverFlags(level, power, diagnostics->front());
  if (hardware::Exists(paths::kWatchdogEvent)) {
    flags |= QtSts::kFlagWatchdogEvent;
  }
  const std::uint32_t tracker_flags =
      hardware::TrackerFlags(router->TrackerEnable, tracker, dump->c_str());
  if ((tracker_flags & QtSts::kFlagTrackerBlanked) != 0 && m_bLogTrackerPixel &&
      ___ratelimit(&rs, "OutputPort") != 0) {
    LogBlankedOutput();
  }
  if (QtSts::COutput* output = EnsureOutput(m_pStatus, port)) {
    // Assigned, not added: row handlers add their bits later in the cycle.
    output->StatusFlags = flags | tracker_flags;
  }
  return 0;
}

int CTolmarHardware::ContentLimit(unsigned int port) {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto answers =
      AskDevice(paths::kRouter, {requests::router::kContentFirst, requests::router::kContentSecond,
                                 requests::router::kContentThird});
  if (!answers) {
    return 1;
  }
  if (QtSts::COutput* output = EnsureOutput(m_pStatus, static_cast<int>(port))) {
    // Deliberately also when there is no answer: all bits set then.
    QtSts::CContent& content = output->Dimming.Content;
    const auto [first, second, third] = *answers;
    content.First = static_cast<std::uint16_t>(first);
    content.Second = static_cast<std::uint16_t>(second);
    content.Third = static_cast<std::uint32_t>(third);
  }
  return 0;
}
