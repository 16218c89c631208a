// The scratch state as a value: what a cycle leaves to the next one beside the document.
#pragma once

#include <string>
#include <tuple>

#include "collector/state/scratch.h"

namespace reliability {

/// Every scratch variable, by reference; a test compares their number with the list of names.
inline auto ScratchReferences() {
  return std::tie(
      u32_SensorNumber, u32_Address, u32_Bus, b_Connected, at_Type, st_Type, u32_NumAttribute,
      uiSyncLossCounter, u32_DispInterfaceNumAttribute, u32_Face, s32_Revision, u16_IdType,
      u16_DispInterfaceAddress, u8_HardwareID, f_celsius, u16_OneMinAverage, u16_TenMinAverage,
      u16_OneMinLuxAverage, u16_TenMinLuxAverage, u16_LongTermAverage, f_Humidity_OneMinAverage,
      f_Humidity_TenMinAverage, u16_AverageRpm, u16_CurrentRpm, f_inputVoltage, f_outputVoltage,
      f_celsiusTemperature, u32_PortStatus, u16_Ambient, u32_Front, u32_Back, Locked, dLatitude,
      dLongitude, dAltitude, uiCompass, u32_FansEnabled, FanRpms, f_Psrb_InputVoltages,
      f_Psrb_OutputVoltages, u8_Psrb_HardwareErrors, beaconRoundel, u32_DCIO_SensorNumber,
      u32_DCIO_State, u32_DCIO_ErrCntr, u32_DCIO_NumAttr, u32_DCIO_Address, st_DCIO_Type,
      dcioInputs, dcioOutputs, u32_TTableNumAttribute);
}

template <class... T>
std::tuple<T...> ValuesOf(const std::tuple<T&...>& references) {
  return references;
}

/// A copy of the scratch state; a default-constructed one is that of a fresh process.
using Scratch = decltype(ValuesOf(ScratchReferences()));

inline Scratch SaveScratch() { return ValuesOf(ScratchReferences()); }
inline void RestoreScratch(const Scratch& saved) { ScratchReferences() = saved; }

/// The scratch state as text; equal for equal states.
std::string ScratchText();

}  // namespace reliability
