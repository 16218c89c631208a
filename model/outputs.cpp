#include "model/outputs.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;
using listing::Root;

constexpr Field kContentFields[] = {
    Of<&CContent::First>("First", "", "First content limit, 65535 without an answer"),
    Of<&CContent::Second>("Second", "", "Second content limit, 65535 without an answer"),
    Of<&CContent::Third>("Third", "", "Third content limit, 4294967295 without an answer"),
};

constexpr Field kDimmingFields[] = {
    Of<&CDimming::Content>("Content", "", "Content limits"),
    Of<&CDimming::DimmingLevel>("DimmingLevel", "%", "Dimming level that is asked for"),
    Of<&CDimming::ActualDimmingLevel>("ActualDimmingLevel", "%", "Dimming level in force"),
    Of<&CDimming::SpareLevel>("SpareLevel", "", "Not used"),
    Of<&CDimming::OutputLevel>("OutputLevel", "", "Output level as the router answers it"),
    Of<&CDimming::DimmingMode>("DimmingMode", "", "How the brightness is chosen", kDimmingModes),
};

constexpr Field kFansFields[] = {
    Of<&CFans::Enabled>("Enabled", "", "Whether the fans are enabled"),
    Of<&CFans::Override>("Override", "", "Who overrides the fans", kFansOverrides),
};

constexpr Field kTtableFields[] = {
    Of<&CTtable::ColumnsPlusOne>("ColumnsPlusOne", "", "Columns of modules and one"),
    Of<&CTtable::RowsPlusOne>("RowsPlusOne", "", "Rows of modules and one"),
    Of<&CTtable::Rows>("Rows", "", "Rows of modules"),
    Of<&CTtable::Columns>("Columns", "", "Columns of modules"),
    Of<&CTtable::FaceCount>("FaceCount", "", "Faces of the display"),
    Of<&CTtable::Interleaved>("Interleaved", "", "Interleaving as a number"),
    Of<&CTtable::ModuleHeight>("ModuleHeight", "px", "Height of a module"),
    Of<&CTtable::ModuleWidth>("ModuleWidth", "px", "Width of a module"),
    Of<&CTtable::PixelPitch>("PixelPitch", "mm", "Distance of two pixels"),
    Of<&CTtable::RefreshRate>("RefreshRate", "Hz", "Refresh rate of the modules"),
};

constexpr Field kDeviceFields[] = {
    Of<&CDevice::Index>("Index", "", "Running number of the device row within the cycle"),
    Of<&CDevice::Node>("Node", "", "Node number from the row's key"),
    Of<&CDevice::Value>("Value", "", "The row's value"),
};

constexpr Field kInterfaceFields[] = {
    Of<&CDisplayInterface::NumberOfAttributes>("NumberOfAttributes", "",
                                               "Number of attributes, the key of the interface"),
    Of<&CDisplayInterface::Sensors>("Sensors", "", "The sensors behind the interface"),
    Of<&CDisplayInterface::Address>("Address", "", "Address of the interface"),
};

constexpr Field kControlBoardFields[] = {
    listing::OfBase<CSentrelControlBoardDisplayInterface, IOList>("Points", "",
                                                                  "The board's own points"),
    Of<&CSentrelControlBoardDisplayInterface::FlagByte>("FlagByte", "", "Always 1"),
};

constexpr Field kOutputFields[] = {
    Of<&COutput::Index>("Index", "", "Not used"),
    Of<&COutput::DisplayInterfaces>("DisplayInterfaces", "", "What carries the picture"),
    Of<&COutput::Dimming>("Dimming", "", "Dimming"),
    Of<&COutput::Area>("Area", "", "Not used"),
    Of<&COutput::ScalerOutputArea>("ScalerOutputArea", "", "Picture size that leaves the scaler"),
    Of<&COutput::Frequency>("Frequency", "", "Timing; Vertical is the frame rate"),
    Of<&COutput::Ttable>("Ttable", "", "Numbers of the T-table"),
    Of<&COutput::Devices>("Devices", "", "Device nodes of the T-table"),
    Of<&COutput::SpareWord1>("SpareWord1", "", "Not used"),
    Of<&COutput::Title>("Title", "", "Title of the T-table"),
    Of<&COutput::Author>("Author", "", "Author of the T-table"),
    Of<&COutput::Contract>("Contract", "", "Contract of the T-table"),
    Of<&COutput::ED>("ED", "", "ED of the T-table"),
    Of<&COutput::Date>("Date", "", "Date of the T-table"),
    Of<&COutput::Time>("Time", "", "Time of the T-table"),
    Of<&COutput::Task>("Task", "", "Task of the T-table"),
    Of<&COutput::SpareText>("SpareText", "", "Not used"),
    Of<&COutput::Preset1>("Preset1", "", "Not used by the collector"),
    Of<&COutput::Preset2>("Preset2", "", "Not used by the collector"),
    Of<&COutput::Preset3>("Preset3", "", "Not used by the collector"),
    Of<&COutput::Preset4>("Preset4", "", "Not used by the collector"),
    Of<&COutput::Preset5>("Preset5", "", "Not used by the collector"),
    Of<&COutput::Preset6>("Preset6", "", "Not used by the collector"),
    Of<&COutput::Fans>("Fans", "", "Fans"),
    Of<&COutput::Statistics>("Statistics", "", "Statistics of the router"),
    Of<&COutput::StatusFlags>(
        "StatusFlags", "",
        "Bit mask: 0x4 power off, 0x400 watchdog event, 0x800 pixel tracker "
        "active, 0x1000 output blanked, 0x2000 ambient sensor failure, 0x4000 "
        "ambient override, the rest as the drivers answer"),
    Of<&COutput::SpareWord2>("SpareWord2", "", "Not used"),
    Of<&COutput::SpareWord3>("SpareWord3", "", "Not used"),
};

}  // namespace

constinit const ClassInfo CContent::Class =
    Root<CContent>("Content", "Content limits", kContentFields);
constinit const ClassInfo CDimming::Class = Root<CDimming>("Dimming", "Dimming", kDimmingFields);
constinit const ClassInfo CFans::Class = Root<CFans>("Fans", "Fans", kFansFields);
constinit const ClassInfo CTtable::Class =
    Root<CTtable>("Ttable", "Tiling of the display", kTtableFields);
constinit const ClassInfo CDevice::Class =
    Root<CDevice>("Device", "A device node of the T-table", kDeviceFields);
constinit const ClassInfo CDisplayInterface::Class =
    Root<CDisplayInterface>("DisplayInterface", "What carries the picture", kInterfaceFields);
constinit const ClassInfo CTravexRouterDisplayInterface::Class =
    Derived<CTravexRouterDisplayInterface, CDisplayInterface>("TravexRouterDisplayInterface",
                                                              "The video router");
constinit const ClassInfo CSentrelControlBoardDisplayInterface::Class =
    Derived<CSentrelControlBoardDisplayInterface, CDisplayInterface>(
        "SentrelControlBoardDisplayInterface", "A control board", kControlBoardFields);
constinit const ClassInfo COutput::Class = Root<COutput>("Output", "An output port", kOutputFields);
constinit const ClassInfo CTravex6Output::Class =
    Derived<CTravex6Output, COutput>("Travex6Output", "The output port of the video router");

}  // namespace QtSts
