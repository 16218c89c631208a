// The list of the scratch state: every variable once, with its name and type. scratch.h declares
// the variables from it and scratch.cpp defines them; the tests save, restore, compare and print
// them by it. To add a variable: one line here.
//
//   #define PRINT_NAME(name, ...) std::puts(#name);
//   SCRATCH_VARIABLES(PRINT_NAME)
//
// The type comes last, since it may contain commas.
#pragma once

#define SCRATCH_VARIABLES(VARIABLE)                                                             \
  /* Attributes of the sensor being read. */                                                    \
  VARIABLE(u32_SensorNumber, std::uint32_t)                                                     \
  VARIABLE(u32_Address, std::uint32_t)                                                          \
  VARIABLE(u32_Bus, std::uint32_t)                                                              \
  VARIABLE(b_Connected, bool)                                                                   \
  VARIABLE(at_Type, AttachmentType)                                                             \
  VARIABLE(st_Type, SensorType)                                                                 \
  VARIABLE(u32_NumAttribute, std::uint32_t)                                                     \
  VARIABLE(uiSyncLossCounter, std::uint32_t)                                                    \
  VARIABLE(u32_DispInterfaceNumAttribute, std::uint32_t)                                        \
  VARIABLE(u16_DispInterfaceAddress, std::uint16_t)                                             \
  VARIABLE(u32_Face, std::uint32_t)                                                             \
  VARIABLE(s32_Revision, std::int32_t)                                                          \
  VARIABLE(u16_IdType, std::uint16_t)                                                           \
  VARIABLE(u8_HardwareID, std::uint8_t)                                                         \
  VARIABLE(f_celsius, float) /* degrees Celsius */                                              \
  VARIABLE(u16_OneMinAverage, std::uint16_t)                                                    \
  VARIABLE(u16_TenMinAverage, std::uint16_t)                                                    \
  VARIABLE(u16_OneMinLuxAverage, std::uint16_t) /* lux */                                       \
  VARIABLE(u16_TenMinLuxAverage, std::uint16_t) /* lux */                                       \
  VARIABLE(u16_LongTermAverage, std::uint16_t)                                                  \
  VARIABLE(f_Humidity_OneMinAverage, float) /* percent */                                       \
  VARIABLE(f_Humidity_TenMinAverage, float) /* percent */                                       \
  VARIABLE(u16_AverageRpm, std::uint16_t)                                                       \
  VARIABLE(u16_CurrentRpm, std::uint16_t)                                                       \
  VARIABLE(f_inputVoltage, float)       /* isolation board, volts */                            \
  VARIABLE(f_outputVoltage, float)      /* isolation board, volts */                            \
  VARIABLE(f_celsiusTemperature, float) /* isolation board, degrees Celsius */                  \
  VARIABLE(u32_PortStatus, std::uint32_t)                                                       \
  VARIABLE(u16_Ambient, std::uint16_t)                                                          \
  VARIABLE(u32_Front, std::uint32_t)                                                            \
  VARIABLE(u32_Back, std::uint32_t)                                                             \
  VARIABLE(Locked, LockState)                                                                   \
  VARIABLE(dLatitude, double)                                                                   \
  VARIABLE(dLongitude, double)                                                                  \
  VARIABLE(dAltitude, double)                                                                   \
  VARIABLE(uiCompass, std::uint32_t)                                                            \
  VARIABLE(u32_FansEnabled, std::uint32_t)                                                      \
  VARIABLE(FanRpms, std::map<std::uint8_t, std::uint16_t>) /* fan number to rpm */              \
  VARIABLE(f_Psrb_InputVoltages, std::vector<float>)       /* in arrival order */               \
  VARIABLE(f_Psrb_OutputVoltages, std::vector<float>)      /* in arrival order */               \
  VARIABLE(u8_Psrb_HardwareErrors, std::uint8_t)                                                \
  VARIABLE(beaconRoundel, BeaconRoundel)                                                        \
  /* Attributes of the DCIO device being read. */                                               \
  VARIABLE(u32_DCIO_SensorNumber, std::uint32_t)                                                \
  VARIABLE(u32_DCIO_State, std::uint32_t)                                                       \
  VARIABLE(u32_DCIO_ErrCntr, std::uint32_t)                                                     \
  VARIABLE(u32_DCIO_NumAttr, std::uint32_t)                                                     \
  VARIABLE(u32_DCIO_Address, std::uint32_t)                                                     \
  VARIABLE(st_DCIO_Type, DcioType)                                                              \
  /* Points of the DCIO board being read; a board empties the entries that it takes. */         \
  VARIABLE(dcioInputs, std::array<DcioPoint, kStagedInputs>)                                    \
  VARIABLE(dcioOutputs, std::array<DcioPoint, kStagedOutputs>)                                  \
  /* T-table device nodes accepted so far in this cycle: the running number of the next one. */ \
  VARIABLE(u32_TTableNumAttribute, std::uint32_t)

// The fields of a BeaconRoundel, in their order.
#define BEACON_ROUNDEL_FIELDS(FIELD)                              \
  FIELD(RedDimLevel, std::uint8_t)                                \
  FIELD(AmberDimLevel, std::uint8_t)                              \
  FIELD(ErrorFlags, std::uint8_t)                                 \
  FIELD(RedLedErrorCount, std::uint16_t)                          \
  FIELD(AmberLedErrorCount, std::uint16_t)                        \
  FIELD(StatusFlags, std::uint8_t)                                \
  FIELD(SyncControlStartBit, std::uint8_t)                        \
  FIELD(PerColorLedCount, std::uint16_t)                          \
  FIELD(TemperatureKelvin, std::uint16_t) /* 65535: no reading */ \
  FIELD(Humidity, std::uint8_t)           /* percent; 255: no reading */
