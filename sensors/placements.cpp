#include "sensors/placements.h"

#include <memory>
#include <utility>

#include "collector/state/scratch.h"
#include "model/lookup/verify.h"
#include "sensors/record_builder.h"

namespace {

using QtSts::CSensorList;
using sensors::Placement;

bool Has(const CSensorList& list, std::uint32_t number) { return list[number] != nullptr; }

void Add(CSensorList* list, std::unique_ptr<QtSts::CSensor> record) {
  if (list != nullptr && record != nullptr) {
    list->Add(record.release());
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
  if (!Has(status->Sensors, u32_SensorNumber)) {
    Add(&status->Sensors, sensors::BuildRecord(Placement::kOwnBus));
  }
  return 0;
}

int Status_VerifyDisplayInterfaceSensor(QtSts::CStatus* status, AttachmentType attachment) {
  Status_VerifyOutput(status, 0);
  const int position = Status_VerifyDisplayInterface(status, 0, attachment);
  const CSensorList* const list = SensorsBehind(status, position);
  if (list != nullptr && !Has(*list, u32_SensorNumber)) {
    auto record = sensors::BuildRecord(Placement::kBehindInterface);
    // Deliberately looked up once more, behind the building: nothing is kept across it.
    Add(SensorsBehind(status, position), std::move(record));
  }
  return 0;
}
