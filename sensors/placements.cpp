#include "sensors/placements.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

#include "collector/state/report.h"
#include "collector/state/scratch.h"
#include "model/lookup/verify.h"
#include "sensors/record_builder.h"

namespace {

using observe::Ending;
using QtSts::CSensorList;
using sensors::Placement;

bool Has(const CSensorList& list, std::uint32_t number) { return list[number] != nullptr; }

// Where sensors go, as it is reported to the observer.
struct Target {
  observe::Place Where;
  int Interface;  // position of the display interface, -1 for the own buses
};
constexpr Target kOwnBus = {observe::Place::kSensors, -1};

// The variables that the record of the present type takes where it goes, in `room`.
std::span<const void* const> TakenVariables(const Target& target, elements::Variables& room) {
  const auto kinds = sensors::SensorKinds();
  const auto kind = std::ranges::find(kinds, st_Type, &sensors::SensorKind::Code);
  return kind == kinds.end() ? std::span<const void* const>()
                             : elements::VariablesOf(kind->Takes, target.Interface >= 0, room);
}

// Reports what became of the sensor that the scratch state describes; `record` is null when it was
// refused, `list` when there is none.
void ReportSensor(const Target& target, Ending ending, const CSensorList* list,
                  const QtSts::CSensor* record = nullptr) {
  elements::Variables taken;  // not initialised: it is seldom used
  observe::ReportRecord(target.Where, ending, [&](observe::Record& event) {
    if (record != nullptr) {
      event.Taken = TakenVariables(target, taken);
    }
    event.Interface = target.Interface;
    event.Number = u32_SensorNumber;
    event.Type = st_Type;
    event.Element = record;
    if (list != nullptr) {
      event.Position = list->Count() - (record == nullptr ? 0 : 1);
    }
  });
}

// Why the type in the scratch state has no record.
Ending RefusalOfType() {
  const auto kinds = sensors::SensorKinds();
  const bool is_kind = std::ranges::find(kinds, st_Type, &sensors::SensorKind::Code) != kinds.end();
  return is_kind ? Ending::kNotHere : Ending::kNoKind;
}

void Add(const Target& target, CSensorList* list, std::unique_ptr<QtSts::CSensor> record) {
  if (record == nullptr) {
    if (observe::IsWatched()) {
      ReportSensor(target, RefusalOfType(), list);
    }
  } else if (list != nullptr) {
    const QtSts::CSensor* const added = record.get();
    list->Add(record.release());
    ReportSensor(target, Ending::kCompleted, list, added);
  }
}

// The list of the interface at `position` of output 0; null when the position is empty.
CSensorList* SensorsBehind(QtSts::CStatus* status, int position) {
  const QtSts::COutput* const output = status->Outputs[0];
  if (output == nullptr) {
    return nullptr;
  }
  QtSts::CDisplayInterface* const display_interface =
      output->DisplayInterfaces[static_cast<unsigned int>(position)];
  return display_interface == nullptr ? nullptr : &display_interface->Sensors;
}

}  // namespace

int Status_VerifySensor(QtSts::CStatus* status) {
  if (Has(status->Sensors, u32_SensorNumber)) {
    ReportSensor(kOwnBus, Ending::kPositionTaken, &status->Sensors);
  } else {
    Add(kOwnBus, &status->Sensors, sensors::BuildRecord(Placement::kOwnBus));
  }
  return 0;
}

int Status_VerifyDisplayInterfaceSensor(QtSts::CStatus* status, AttachmentType attachment) {
  Status_VerifyOutput(status, 0);
  const int position = Status_VerifyDisplayInterface(status, 0, attachment);
  const Target target = {observe::Place::kInterfaceSensors, position};
  const CSensorList* const list = SensorsBehind(status, position);
  if (list == nullptr) {
    ReportSensor(target, Ending::kNoPlace, nullptr);
  } else if (Has(*list, u32_SensorNumber)) {
    ReportSensor(target, Ending::kPositionTaken, list);
  } else {
    auto record = sensors::BuildRecord(Placement::kBehindInterface);
    // Deliberately looked up again: no pointer into the document is kept while a record is built.
    Add(target, SensorsBehind(status, position), std::move(record));
  }
  return 0;
}
