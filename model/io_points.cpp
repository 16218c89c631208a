#include "model/io_points.h"

#include "model/listed_object.h"
#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;
using listing::Root;

constexpr Field kInputFields[] = {
    Of<&BaseInputType::State>("State", "", "1 when the input is active, else 0"),
    Of<&BaseInputType::Index>("Index", "", "Number of the point on its board, from 1"),
    Of<&BaseInputType::Label>("Label", "", "What the point is called"),
};

// The one field that every kind of input adds.
template <class C>
constexpr Field kInputKindFields[] = {
    Of<&C::SpareWord>("SpareWord", "", "Not used, 1 at the start"),
};

// The listing of one kind of input.
template <class C>
constexpr ClassInfo InputKind(const char* name, const char* about) {
  return Derived<C, BaseInputType>(name, about, kInputKindFields<C>);
}

// The listing of one kind of output.
template <class C>
constexpr ClassInfo OutputKind(const char* name, const char* about) {
  return Derived<C, BaseOutputType>(name, about);
}

constexpr Field kOutputFields[] = {
    Of<&BaseOutputType::SpareWord>("SpareWord", "", "Not used"),
    Of<&BaseOutputType::StoredState>("StoredState", "",
                                     "0 when the output is on, 1 when it is off"),
    Of<&BaseOutputType::Index>("Index", "", "Number of the point on its board, from 1"),
    Of<&BaseOutputType::Label>("Label", "", "What the point is called"),
};

// Both lists hold the same.
template <class List>
constexpr Field kListFields[] = {
    Of<&List::Points>("Points", "", "The points in order of addition"),
    Of<&List::OpenEnded>("OpenEnded", "", "Whether indices above the maximum are taken"),
    Of<&List::MaximumIndex>("MaximumIndex", "", "Highest index of a board's points"),
};

constexpr Field kIoListFields[] = {
    Of<&IOList::Inputs>("Inputs", "", "The input points"),
    Of<&IOList::Outputs>("Outputs", "", "The output points"),
};

}  // namespace

constinit const ClassInfo BaseInputType::Class =
    Root<BaseInputType>("BaseInputType", "An input point of no particular kind", kInputFields);
constinit const ClassInfo BaseOutputType::Class =
    Root<BaseOutputType>("BaseOutputType", "An output point of no particular kind", kOutputFields);
constinit const ClassInfo GeneralPurposeInputType::Class =
    InputKind<GeneralPurposeInputType>("GeneralPurposeInputType", "A general purpose input");
constinit const ClassInfo AirflowSensorInputType::Class =
    InputKind<AirflowSensorInputType>("AirflowSensorInputType", "An airflow sensor");
constinit const ClassInfo CDoorSensorInputType::Class =
    InputKind<CDoorSensorInputType>("DoorSensorInputType", "A door contact");
constinit const ClassInfo SurgeSuppressorInputType::Class =
    InputKind<SurgeSuppressorInputType>("SurgeSuppressorInputType", "A surge suppressor");
constinit const ClassInfo CIntakeFanStatusRelayInputType::Class =
    InputKind<CIntakeFanStatusRelayInputType>("IntakeFanStatusRelayInputType",
                                              "The status relay of the intake fans");
constinit const ClassInfo CFrontFanStatusRelayInputType::Class =
    InputKind<CFrontFanStatusRelayInputType>("FrontFanStatusRelayInputType",
                                             "The status relay of the front fans");
constinit const ClassInfo CPixelFanStatusRelayInputType::Class =
    InputKind<CPixelFanStatusRelayInputType>("PixelFanStatusRelayInputType",
                                             "The status relay of the pixel fans");
constinit const ClassInfo CFanPowerSenseInputType::Class =
    InputKind<CFanPowerSenseInputType>("FanPowerSenseInputType", "The power sense of the fans");
constinit const ClassInfo CPowerSupplyStatusRelayInputType::Class =
    InputKind<CPowerSupplyStatusRelayInputType>("PowerSupplyStatusRelayInputType",
                                                "The status relay of a power supply");
constinit const ClassInfo CMaintHeaterStatusRelayInputType::Class =
    InputKind<CMaintHeaterStatusRelayInputType>("MaintHeaterStatusRelayInputType",
                                                "The status relay of the maintenance heater");
constinit const ClassInfo CHeaterStatusRelayInputType::Class =
    InputKind<CHeaterStatusRelayInputType>("HeaterStatusRelayInputType",
                                           "The status relay of the heater");

constinit const ClassInfo CIntakeFanOutputType::Class =
    OutputKind<CIntakeFanOutputType>("IntakeFanOutputType", "The drive of the intake fans");
constinit const ClassInfo CPixelFanOutputType::Class =
    OutputKind<CPixelFanOutputType>("PixelFanOutputType", "The drive of the pixel fans");
constinit const ClassInfo CFrontFanOutputType::Class =
    OutputKind<CFrontFanOutputType>("FrontFanOutputType", "The drive of the front fans");
constinit const ClassInfo CMaintHeaterOutputType::Class = OutputKind<CMaintHeaterOutputType>(
    "MaintenanceHeaterOutputType", "The drive of the maintenance heater");
constinit const ClassInfo CHeaterOutputType::Class =
    OutputKind<CHeaterOutputType>("HeaterOutputType", "The drive of the heater");
constinit const ClassInfo CGeneralPurposeOutputType::Class =
    OutputKind<CGeneralPurposeOutputType>("GeneralPurposeOutputType", "A general purpose output");
constinit const ClassInfo CAuxiliaryOutputType::Class =
    OutputKind<CAuxiliaryOutputType>("AuxiliaryOutputType", "An auxiliary output");
constinit const ClassInfo CFaultOkLedOutputType::Class =
    OutputKind<CFaultOkLedOutputType>("FaultOkLedOutputType", "The LED that tells fault from good");
constinit const ClassInfo CCurrentMessageOutputType::Class = OutputKind<CCurrentMessageOutputType>(
    "CurrentMessageOutputType", "The output of the current message");

constinit const ClassInfo InputListType::Class =
    Root<InputListType>("InputListType", "Input points", kListFields<InputListType>);
constinit const ClassInfo OutputListType::Class =
    Root<OutputListType>("OutputListType", "Output points", kListFields<OutputListType>);
constinit const ClassInfo IOList::Class =
    Root<IOList>("IOList", "Input and output points", kIoListFields);

namespace {

template <class T>
T& Changeable(const T& object) {
  return const_cast<T&>(object);
}

template <class Point>
const Point* Find(const IOList& points, int index) {
  Point* found = nullptr;
  return Changeable(points).Get(index, &found) ? found : nullptr;
}

}  // namespace

bool IsActive(const BaseInputType& point) { return Changeable(point).Get(); }
bool IsOn(const BaseOutputType& point) { return Changeable(point).Get(); }

// A point of a class that is not listed has the nearest one that is.
const char* NodeNameOf(const BaseInputType& point) { return ListedObject(point).Class()->Name; }
const char* NodeNameOf(const BaseOutputType& point) { return ListedObject(point).Class()->Name; }

const BaseInputType* FindInput(const IOList& points, int index) {
  return Find<BaseInputType>(points, index);
}
const BaseOutputType* FindOutput(const IOList& points, int index) {
  return Find<BaseOutputType>(points, index);
}

}  // namespace QtSts
