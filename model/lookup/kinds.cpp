#include "model/lookup/kinds.h"

#include <algorithm>

#include "collector/state/element_rows.h"

namespace elements {
namespace {

using QtSts::CDCIODevice;
using QtSts::CDisplayInterface;

// A router's address that stands for none.
constexpr std::uint16_t kNoRouterAddress = 0x4000;

// What devices of all kinds take.
using Device = Rows<From<&CDCIODevice::NumberOfAttributes, &u32_DCIO_NumAttr>,
                    From<&CDCIODevice::Address, &u32_DCIO_Address>>;

// The state is deliberately reduced to a flag.
struct StateAsFlag {
  static void Fill(CDCIODevice& device) {
    Assign(device.State, std::uint32_t{u32_DCIO_State != 0 ? 1U : 0U});
  }
  static void Release() {}
  static constexpr auto kTaken = kTakenOnce<&CDCIODevice::State, &u32_DCIO_State>;
};
using State = Rows<StateAsFlag, From<&CDCIODevice::ErrorCounter, &u32_DCIO_ErrCntr>>;

using Number = From<&CDisplayInterface::NumberOfAttributes, &u32_DispInterfaceNumAttribute>;

template <class Element, class Made, class Own>
std::unique_ptr<Element> Make() {
  auto element = std::make_unique<Made>();
  Own::Fill(*element);
  Own::Release();
  return element;
}

template <class Made, class... Row>
constexpr DcioKind DeviceKind(DcioType code) {
  using Own = Rows<Device, Row...>;
  return {code, &Made::Class, Own::kTaken, &Make<CDCIODevice, Made, Own>};
}

template <class Made, class... Row>
constexpr InterfaceKind DisplayKind(AttachmentType code) {
  using Own = Rows<Number, Row...>;
  return {code, &Made::Class, Own::kTaken, &Make<CDisplayInterface, Made, Own>};
}

constexpr DcioKind kDcioKinds[] = {
    DeviceKind<QtSts::CDoorSwitch, State>(kDoorSwitch),
    DeviceKind<QtSts::CPowerMonitor, State>(kPowerMonitor),
    DeviceKind<QtSts::CRunLED>(kRunLed),
    DeviceKind<QtSts::CGenericInput, State>(kGenericInput),
    DeviceKind<QtSts::CGenericOutput>(kGenericOutput),
};

constexpr InterfaceKind kInterfaceKinds[] = {
    DisplayKind<QtSts::CTravexRouterDisplayInterface,
                Unless<&CDisplayInterface::Address, &u16_DispInterfaceAddress, kNoRouterAddress>>(
        kRouterCan),
    DisplayKind<QtSts::CSentrelControlBoardDisplayInterface,
                From<&CDisplayInterface::Address, &u16_DispInterfaceAddress>>(kControlBoardCan),
};

template <class Kind, std::size_t kCount>
consteval bool AreInOrderAndFitTheirEvents(const Kind (&kinds)[kCount]) {
  return std::ranges::is_sorted(kinds, {}, &Kind::Is) &&
         std::ranges::all_of(kinds,
                             [](const Kind& kind) { return kind.Takes.size() <= kMostTaken; });
}
static_assert(AreInOrderAndFitTheirEvents(kDcioKinds));
static_assert(AreInOrderAndFitTheirEvents(kInterfaceKinds));

template <class Kind, std::size_t kCount, class Code>
const Kind* Find(const Kind (&kinds)[kCount], Code code) {
  const Kind* const found = std::ranges::find(kinds, code, &Kind::Is);
  return found == std::end(kinds) ? nullptr : found;
}

}  // namespace

std::span<const DcioKind> DcioKinds() { return kDcioKinds; }
std::span<const InterfaceKind> InterfaceKinds() { return kInterfaceKinds; }

const DcioKind* KindOf(DcioType type) { return Find(kDcioKinds, type); }
const InterfaceKind* KindOf(AttachmentType type) { return Find(kInterfaceKinds, type); }

}  // namespace elements
