#include "model/dcio_boards.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;
using listing::Root;

constexpr Field kBoardFields[] = {
    Of<&CCANDcio::Points>("Points", "", "The points of the board"),
    Of<&CCANDcio::BoardConnected>("BoardConnected", "", "The same as Connected"),
    Of<&CCANDcio::PortStatus>("PortStatus", "", "Port status word"),
};

constexpr Field kFanFields[] = {
    Of<&FanRpm::Ordinal>("Ordinal", "", "Running number of the fan on its board, from 0"),
    Of<&FanRpm::FanNumber>("FanNumber", "", "Number of the fan"),
    Of<&FanRpm::Rpm>("Rpm", "rpm", "Speed of the fan"),
};

constexpr Field kFanBoardFields[] = {
    Of<&CCANDcioAndFanRpm::FanRpms>("FanRpms", "", "The fans in order of their numbers"),
};

}  // namespace

constinit const ClassInfo CCANDcio::Class =
    Derived<CCANDcio, CCANSensor>("CANDcio", "A DCIO board", kBoardFields);
constinit const ClassInfo CCANDcio16in3out8cfg::Class = Derived<CCANDcio16in3out8cfg, CCANDcio>(
    "CANDcio16in3out8cfg", "A DCIO board of 24 inputs and 11 outputs");
constinit const ClassInfo CCANDcio2in1out::Class = Derived<CCANDcio2in1out, CCANDcio>(
    "CANDcio2in1out", "A DCIO board of two inputs and one output");
constinit const ClassInfo FanRpm::Class = Root<FanRpm>("FanRpm", "The speed of a fan", kFanFields);
constinit const ClassInfo CCANDcioAndFanRpm::Class = Derived<CCANDcioAndFanRpm, CCANDcio>(
    "CANDcioAndFanRpm", "A DCIO board of 16 inputs and 12 outputs that reports fans",
    kFanBoardFields);

}  // namespace QtSts
