#include "tests/collector/scratch_variables.h"

#include <sstream>
#include <type_traits>

#include "collector/state/scratch.h"

namespace {

// Text of a value of any of the types.
template <class T>
requires std::is_arithmetic_v<T> || std::is_enum_v<T>
void Append(std::ostream& out, const T& value) {
  out << +value << ' ';  // the sign makes a number of an enumeration or a byte
}

void Append(std::ostream& out, const BeaconRoundel& value) {
  Append(out, value.RedDimLevel);
  Append(out, value.AmberDimLevel);
  Append(out, value.ErrorFlags);
  Append(out, value.RedLedErrorCount);
  Append(out, value.AmberLedErrorCount);
  Append(out, value.StatusFlags);
  Append(out, value.SyncControlStartBit);
  Append(out, value.PerColorLedCount);
  Append(out, value.TemperatureKelvin);
  Append(out, value.Humidity);
}

void Append(std::ostream& out, const DcioPoint& point) {
  Append(out, point.Present);
  Append(out, point.Type);
  Append(out, point.Index);
  Append(out, point.State);
  out << '"' << point.Label << "\" ";
}

void Append(std::ostream& out, const std::pair<const std::uint8_t, std::uint16_t>& fan) {
  Append(out, fan.first);
  Append(out, fan.second);
}

template <class T>
requires requires(T list) { list.begin(); }
void Append(std::ostream& out, const T& list) {
  out << '[';
  for (const auto& element : list) {
    Append(out, element);
  }
  out << "] ";
}

// A value that none of them has at load.
template <class T>
requires std::is_arithmetic_v<T> || std::is_enum_v<T>
void FillValue(T* value) { *value = static_cast<T>(1); }

void FillValue(BeaconRoundel* value) { *value = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}; }

void FillValue(DcioPoint* point) { *point = {1, 2, 3, 4, "label"}; }

void FillValue(std::map<std::uint8_t, std::uint16_t>* value) { *value = {{1, 1200}, {2, 900}}; }

void FillValue(std::vector<float>* value) { *value = {24.5F, 24.5F}; }

template <std::size_t kCount>
void FillValue(std::array<DcioPoint, kCount>* points) {
  for (DcioPoint& point : *points) {
    FillValue(&point);
  }
}

template <auto kVariable>
constexpr ScratchVariable Of(const char* name) {
  using T = std::remove_pointer_t<decltype(kVariable)>;
  return {name, kVariable, [] { FillValue(kVariable); }, [] { *kVariable = T{}; },
          [] {
            std::ostringstream out;
            Append(out, *kVariable);
            return out.str();
          }};
}

#define VARIABLE(name) Of<&name>(#name)
constexpr ScratchVariable kVariables[] = {
    VARIABLE(u32_SensorNumber),
    VARIABLE(u32_Address),
    VARIABLE(u32_Bus),
    VARIABLE(b_Connected),
    VARIABLE(at_Type),
    VARIABLE(st_Type),
    VARIABLE(u32_NumAttribute),
    VARIABLE(uiSyncLossCounter),
    VARIABLE(u32_DispInterfaceNumAttribute),
    VARIABLE(u16_DispInterfaceAddress),
    VARIABLE(u32_Face),
    VARIABLE(s32_Revision),
    VARIABLE(u16_IdType),
    VARIABLE(u8_HardwareID),
    VARIABLE(f_celsius),
    VARIABLE(u16_OneMinAverage),
    VARIABLE(u16_TenMinAverage),
    VARIABLE(u16_OneMinLuxAverage),
    VARIABLE(u16_TenMinLuxAverage),
    VARIABLE(u16_LongTermAverage),
    VARIABLE(f_Humidity_OneMinAverage),
    VARIABLE(f_Humidity_TenMinAverage),
    VARIABLE(u16_AverageRpm),
    VARIABLE(u16_CurrentRpm),
    VARIABLE(f_inputVoltage),
    VARIABLE(f_outputVoltage),
    VARIABLE(f_celsiusTemperature),
    VARIABLE(u32_PortStatus),
    VARIABLE(u16_Ambient),
    VARIABLE(u32_Front),
    VARIABLE(u32_Back),
    VARIABLE(Locked),
    VARIABLE(dLatitude),
    VARIABLE(dLongitude),
    VARIABLE(dAltitude),
    VARIABLE(uiCompass),
    VARIABLE(u32_FansEnabled),
    VARIABLE(FanRpms),
    VARIABLE(f_Psrb_InputVoltages),
    VARIABLE(f_Psrb_OutputVoltages),
    VARIABLE(u8_Psrb_HardwareErrors),
    VARIABLE(beaconRoundel),
    VARIABLE(u32_DCIO_SensorNumber),
    VARIABLE(u32_DCIO_State),
    VARIABLE(u32_DCIO_ErrCntr),
    VARIABLE(u32_DCIO_NumAttr),
    VARIABLE(u32_DCIO_Address),
    VARIABLE(st_DCIO_Type),
    VARIABLE(dcioInputs),
    VARIABLE(dcioOutputs),
    VARIABLE(u32_TTableNumAttribute),
};
#undef VARIABLE

}  // namespace

std::span<const ScratchVariable> ScratchVariables() { return kVariables; }

void ClearScratch() {
  for (const ScratchVariable& variable : kVariables) {
    variable.Clear();
  }
}
