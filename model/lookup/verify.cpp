#include "model/lookup/verify.h"

#include <cstring>
#include <memory>

#include "collector/state/report.h"
#include "collector/state/scratch.h"

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

// The device class of each DcioType, and whether it reports its state and error counter.
struct DcioKind {
  std::unique_ptr<CDCIODevice> (*Create)();
  bool ReportsState;
};
constexpr DcioKind kDcioKinds[] = {
    {&Make<CDCIODevice, QtSts::CDoorSwitch>, true},
    {&Make<CDCIODevice, QtSts::CPowerMonitor>, true},
    {&Make<CDCIODevice, QtSts::CRunLED>, false},
    {&Make<CDCIODevice, QtSts::CGenericInput>, true},
    {&Make<CDCIODevice, QtSts::CGenericOutput>, false},
};

// A router's address that stands for none.
constexpr std::uint16_t kNoRouterAddress = 0x4000;

std::unique_ptr<CDisplayInterface> MakeDisplayInterface(AttachmentType type) {
  std::unique_ptr<CDisplayInterface> made;
  if (type == kRouterCan) {
    made = std::make_unique<QtSts::CTravexRouterDisplayInterface>();
  } else if (type == kControlBoardCan) {
    made = std::make_unique<QtSts::CSentrelControlBoardDisplayInterface>();
  } else {
    return nullptr;
  }
  made->NumberOfAttributes = u32_DispInterfaceNumAttribute;
  if (type == kControlBoardCan || u16_DispInterfaceAddress != kNoRouterAddress) {
    made->Address = std::make_unique<std::uint16_t>(u16_DispInterfaceAddress);
  }
  return made;
}

// Tells what became of the DCIO device that the scratch state describes; `device` is null when it
// was refused.
void ReportDcio(const CStatus& status, Ending ending, const CDCIODevice* device = nullptr,
                bool took_state = false) {
  observe::ReportRecord(observe::Place::kDcioDevices, ending, [&](observe::Record& event) {
    // Those of the state are the last.
    static constexpr const void* kTaken[] = {&u32_DCIO_NumAttr, &u32_DCIO_Address, &u32_DCIO_State,
                                             &u32_DCIO_ErrCntr};
    event.Number = u32_DCIO_SensorNumber;
    event.Type = st_DCIO_Type;
    event.Element = device;
    event.Position = status.DCIO.Devices.Count() - (device == nullptr ? 0 : 1);
    if (device != nullptr) {
      event.Taken = std::span(kTaken).first(took_state ? 4 : 2);
    }
  });
}

void ReportDisplayInterface(Ending ending, AttachmentType type, unsigned int position,
                            const CDisplayInterface* element) {
  observe::ReportRecord(observe::Place::kDisplayInterfaces, ending, [&](observe::Record& event) {
    static constexpr const void* kTaken[] = {&u32_DispInterfaceNumAttribute,
                                             &u16_DispInterfaceAddress};
    event.Number = u32_DispInterfaceNumAttribute;
    event.Type = type;
    event.Position = position;
    event.Element = element;
    // The number alone finds an interface.
    event.Taken = std::span(kTaken).first(ending == Ending::kCompleted ? 2 : 1);
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

int Status_VerifyNetwork(CStatus* status, char const* name) {
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
  if (st_DCIO_Type >= std::size(kDcioKinds)) {
    ReportDcio(*status, Ending::kNoKind);
    return 0;
  }
  const DcioKind& kind = kDcioKinds[st_DCIO_Type];
  std::unique_ptr<CDCIODevice> device = kind.Create();
  device->NumberOfAttributes = u32_DCIO_NumAttr;
  if (kind.ReportsState) {
    // The state is deliberately reduced to a flag.
    device->State = std::make_unique<std::uint32_t>(u32_DCIO_State != 0 ? 1 : 0);
    device->ErrorCounter = std::make_unique<std::uint32_t>(u32_DCIO_ErrCntr);
  }
  device->Address = std::make_unique<std::uint32_t>(u32_DCIO_Address);
  const CDCIODevice* const added = device.get();
  status->DCIO.Devices.Add(device.release());
  ReportDcio(*status, Ending::kCompleted, added, kind.ReportsState);
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
  } else if (std::unique_ptr<CDisplayInterface> made = MakeDisplayInterface(type)) {
    const CDisplayInterface* const added = made.get();
    owner->DisplayInterfaces.Add(made.release());
    ReportDisplayInterface(Ending::kCompleted, type, position, added);
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
