#include "model/lookup/verify.h"

#include <memory>
#include <span>

#include "collector/state/report.h"
#include "collector/state/scratch.h"
#include "model/lookup/kinds.h"

namespace {

using observe::Ending;
using QtSts::CDCIODevice;
using QtSts::CDisplayInterface;
using QtSts::CInput;
using QtSts::COutput;
using QtSts::CStatus;

template <class Base, class T>
std::unique_ptr<Base> Make() {
  return std::make_unique<T>();
}

// By position: one new element of class T, which is returned, unless `position` holds one already.
// A negative position lies, as an unsigned number, beyond every end.
template <class T, class List>
T* VerifyPosition(List& list, int position) {
  if (list[static_cast<unsigned int>(position)] != nullptr) {
    return nullptr;
  }
  auto element = std::make_unique<T>();
  T* const added = element.get();
  list.Add(element.release());
  return added;
}

// By key: the position of the first element that `matches`, or the count. A missing element, which
// only a host can have added, ends the search.
template <class List, class Matches>
unsigned int FindPosition(const List& list, Matches matches) {
  for (unsigned int position = 0; list[position] != nullptr; ++position) {
    if (matches(*list[position])) {
      return position;
    }
  }
  return list.Count();
}

COutput* Output(CStatus* status, int position) {
  return status->Outputs[static_cast<unsigned int>(position)];
}

// The input class of each QtSts::InputType.
constexpr std::unique_ptr<CInput> (*kInputs[])() = {
    &Make<CInput, QtSts::CPlayerInput>,
    &Make<CInput, QtSts::CAnalogInput>,
    &Make<CInput, QtSts::CDigitalInput>,
};

// Reports what became of the DCIO device that the scratch state describes; `device` and `kind` are
// null when it was refused.
void ReportDcio(const CStatus& status, Ending ending, const CDCIODevice* device = nullptr,
                const elements::DcioKind* kind = nullptr) {
  elements::Variables taken;  // not initialised: it is seldom used
  observe::ReportRecord(observe::Place::kDcioDevices, ending, [&](observe::Record& event) {
    event.Number = u32_DCIO_SensorNumber;
    event.Type = st_DCIO_Type;
    event.Element = device;
    event.Position = status.DCIO.Devices.Count() - (device == nullptr ? 0 : 1);
    if (kind != nullptr) {
      event.Taken = elements::VariablesOf(kind->Takes, false, taken);
    }
  });
}

// `kind` is null when no interface was made.
void ReportDisplayInterface(Ending ending, AttachmentType type, unsigned int position,
                            const CDisplayInterface* element,
                            const elements::InterfaceKind* kind = nullptr) {
  elements::Variables taken;  // not initialised: it is seldom used
  observe::ReportRecord(observe::Place::kDisplayInterfaces, ending, [&](observe::Record& event) {
    // The number alone finds an interface.
    static constexpr const void* kKey[] = {&u32_DispInterfaceNumAttribute};
    event.Number = u32_DispInterfaceNumAttribute;
    event.Type = type;
    event.Position = position;
    event.Element = element;
    event.Taken = kind == nullptr ? std::span<const void* const>(kKey)
                                  : elements::VariablesOf(kind->Takes, false, taken);
  });
}

}  // namespace

int Status_VerifyCompositor(CStatus* status, int position) {
  VerifyPosition<QtSts::CCompositor>(status->Compositors, position);
  return 0;
}

int Status_VerifyOutput(CStatus* status, int position) {
  VerifyPosition<QtSts::CTravex6Output>(status->Outputs, position);
  return 0;
}

int Status_VerifyInput(CStatus* status, QtSts::InputType type) {
  const unsigned int position =
      FindPosition(status->Inputs, [type](CInput& input) { return input.GetType() == type; });
  if (status->Inputs[position] == nullptr && type < std::size(kInputs)) {
    std::unique_ptr<CInput> input = kInputs[type]();
    input->Index = position;
    status->Inputs.Add(input.release());
  }
  return static_cast<int>(position);
}

int Status_VerifyNetwork(CStatus* status, const char* name) {
  QtSts::CNetworkDeviceList& devices = status->Network.Devices;
  const char* const wanted = name == nullptr ? "" : name;
  const unsigned int position = FindPosition(
      devices, [wanted](const QtSts::CNetworkDevice& device) { return device.Name == wanted; });
  if (devices[position] == nullptr) {
    auto device = std::make_unique<QtSts::CNetworkDevice>();
    device->Index = position;
    device->Name = wanted;
    devices.Add(device.release());
  }
  return static_cast<int>(position);
}

int Status_VerifyOutputStats(CStatus* status, int output, int stat) {
  if (COutput* const owner = Output(status, output)) {
    if (QtSts::CStat* const added = VerifyPosition<QtSts::CStat>(owner->Statistics, stat)) {
      added->Number = stat;
    }
  }
  return 0;
}

int Status_VerifyDCIO(CStatus* status) {
  // Deliberately positional: no device stores its number, so unpadded numbers lose devices.
  if (status->DCIO.Devices[u32_DCIO_SensorNumber] != nullptr) {
    ReportDcio(*status, Ending::kPositionTaken);
    return 0;
  }
  const elements::DcioKind* const kind = elements::KindOf(st_DCIO_Type);
  if (kind == nullptr) {
    ReportDcio(*status, Ending::kNoKind);
    return 0;
  }
  std::unique_ptr<CDCIODevice> device = kind->Make();
  const CDCIODevice* const added = device.get();
  status->DCIO.Devices.Add(device.release());
  ReportDcio(*status, Ending::kCompleted, added, kind);
  return 0;
}

int Status_VerifyDisplayInterface(CStatus* status, int output, AttachmentType type) {
  COutput* const owner = Output(status, output);
  if (owner == nullptr) {
    return 0;
  }
  // Deliberately keyed by the scratch state's attribute count alone, not by class or address.
  const unsigned int position =
      FindPosition(owner->DisplayInterfaces, [](const CDisplayInterface& candidate) {
        return candidate.NumberOfAttributes == u32_DispInterfaceNumAttribute;
      });
  if (const CDisplayInterface* const found = owner->DisplayInterfaces[position]) {
    ReportDisplayInterface(Ending::kFound, type, position, found);
  } else if (const elements::InterfaceKind* const kind = elements::KindOf(type)) {
    std::unique_ptr<CDisplayInterface> made = kind->Make();
    const CDisplayInterface* const added = made.get();
    owner->DisplayInterfaces.Add(made.release());
    ReportDisplayInterface(Ending::kCompleted, type, position, added, kind);
  } else {
    ReportDisplayInterface(Ending::kNoKind, type, position, nullptr);
  }
  return static_cast<int>(position);
}

void Status_ClearLists(CStatus* status) {
  status->Compositors.Clear();
  status->Outputs.Clear();
  status->Inputs.Clear();
  status->Network.Devices.Clear();
  status->DCIO.Devices.Clear();
  status->Sensors.Clear();
}
