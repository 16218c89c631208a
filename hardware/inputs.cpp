#include "hardware/files.h"
#include "hardware/parse_registers.h"
#include "hardware/requests.h"
#include "hardware/tolmar_hardware.h"
#include "model/lookup/verify.h"

namespace {

using hardware::AskDevice;
using hardware::ReadText;
namespace paths = hardware::paths;
namespace requests = hardware::requests;

QtSts::CInput* EnsureInput(QtSts::CStatus* status, QtSts::InputType type) {
  return status->Inputs[static_cast<unsigned int>(Status_VerifyInput(status, type))];
}

// Stores whether the multiplexer routes this input: the DVI source (`routes_dvi`) or the player.
// Returns 1 when the multiplexer's dump cannot be opened, otherwise 0.
int StoreRouting(bool routes_dvi, QtSts::CInput* input) {
  const auto dump = ReadText(paths::kVideoMux);
  if (!dump) {
    return 1;
  }
  if (const auto selected = hardware::ParseRoutesDvi(dump->c_str())) {
    input->MultiplexerSelected = *selected == routes_dvi;
  }
  return 0;
}

}  // namespace

int CTolmarHardware::Compositor() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto answers = AskDevice(paths::kDisplay, {requests::display::kCompositorState});
  if (!answers) {
    return 1;
  }
  const int state = answers->front();
  if (state >= 0) {
    Status_VerifyCompositor(m_pStatus, 0);
    if (QtSts::CCompositor* compositor = m_pStatus->Compositors[0]) {
      compositor->State = state;
    }
  }
  return 0;
}

int CTolmarHardware::InputGraphic() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto dump = ReadText(paths::kFrameControl);
  QtSts::CInput* input = dump ? EnsureInput(m_pStatus, QtSts::kPlayerInput) : nullptr;
  if (input == nullptr) {
    return 1;
  }
  hardware::ParsePlayerInput(dump->c_str(), input);
  return StoreRouting(false, input);
}

int CTolmarHardware::InputDVI() {
  if (m_pStatus == nullptr) {
    return 1;
  }
  const auto dump = ReadText(paths::kFrameControl);
  QtSts::CInput* input = dump ? EnsureInput(m_pStatus, QtSts::kDigitalInput) : nullptr;
  if (input == nullptr) {
    return 1;
  }
  hardware::ParseDviInput(dump->c_str(), input);

  const auto signal = AskDevice(paths::kDisplay, {requests::display::kDviSignal});
  if (!signal) {
    return 1;
  }
  // Deliberately also when there is no answer.
  input->SignalPresent = signal->front() != 0;
  return StoreRouting(true, input);
}
