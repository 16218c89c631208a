#include "collector/state/scratch.h"

// Zero-initialised: no row has been read yet.
std::uint32_t u32_SensorNumber;
std::uint32_t u32_Address;
std::uint32_t u32_Bus;
bool b_Connected;
AttachmentType at_Type;
SensorType st_Type;
std::uint32_t u32_NumAttribute;
std::uint32_t uiSyncLossCounter;
std::uint32_t u32_DispInterfaceNumAttribute;
std::uint16_t u16_DispInterfaceAddress;
std::uint32_t u32_Face;
std::int32_t s32_Revision;
std::uint16_t u16_IdType;
std::uint8_t u8_HardwareID;
float f_celsius;
std::uint16_t u16_OneMinAverage;
std::uint16_t u16_TenMinAverage;
std::uint16_t u16_OneMinLuxAverage;
std::uint16_t u16_TenMinLuxAverage;
std::uint16_t u16_LongTermAverage;
float f_Humidity_OneMinAverage;
float f_Humidity_TenMinAverage;
std::uint16_t u16_AverageRpm;
std::uint16_t u16_CurrentRpm;
float f_inputVoltage;
float f_outputVoltage;
float f_celsiusTemperature;
std::uint32_t u32_PortStatus;
std::uint16_t u16_Ambient;
std::uint32_t u32_Front;
std::uint32_t u32_Back;
LockState Locked;
double dLatitude;
double dLongitude;
double dAltitude;
std::uint32_t uiCompass;
std::uint32_t u32_FansEnabled;
std::map<std::uint8_t, std::uint16_t> FanRpms;
std::vector<float> f_Psrb_InputVoltages;
std::vector<float> f_Psrb_OutputVoltages;
std::uint8_t u8_Psrb_HardwareErrors;
BeaconRoundel beaconRoundel;
std::uint32_t u32_DCIO_SensorNumber;
std::uint32_t u32_DCIO_State;
std::uint32_t u32_DCIO_ErrCntr;
std::uint32_t u32_DCIO_NumAttr;
std::uint32_t u32_DCIO_Address;
DcioType st_DCIO_Type;
std::array<DcioPoint, kStagedInputs> dcioInputs;
std::array<DcioPoint, kStagedOutputs> dcioOutputs;
std::uint32_t u32_TTableNumAttribute;

void Reset_Globals() { u32_TTableNumAttribute = 0; }
