// Prints every sensor with its values and units and every point, and writes the document as JSON.
#include <statuscollector/statuscollector.h>

#include <fstream>
#include <iostream>

namespace {

// The fields of a sensor, and of the fans in its list. Whoever visits returns whether to go on.
bool PrintValues(const QtSts::ListedObject& object) {
  return object.VisitFields([](const QtSts::ListedField& field) {
    if (field.IsScalar() && field.IsReported()) {
      std::cout << "  " << field.Listed().Name << ": " << field.Written()
                << (*field.Listed().Unit != '\0' ? " " : "") << field.Listed().Unit << '\n';
    }
    return field.VisitElements(PrintValues);
  });
}

void PrintPoints(const QtSts::IOList& points) {
  for (const QtSts::BaseInputType* input : *points.Inputs) {
    std::cout << "  input " << input->Index << ", " << NodeNameOf(*input) << ": "
              << (IsActive(*input) ? "active" : "inactive") << '\n';
  }
  for (const QtSts::BaseOutputType* output : *points.Outputs) {
    std::cout << "  output " << output->Index << ", " << NodeNameOf(*output) << ": "
              << (IsOn(*output) ? "on" : "off") << '\n';
  }
}

void PrintSensors(const QtSts::CSensorList& sensors) {
  for (const QtSts::CSensor* sensor : sensors) {
    const QtSts::ListedObject listed(*sensor);
    std::cout << listed.Class()->Name << '\n';
    PrintValues(listed);
    if (const auto* board = dynamic_cast<const QtSts::CCANDcio*>(sensor)) {
      PrintPoints(board->Points);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  CStatusInterface collector;
  collector.InitDatabase(false);
  if (argc != 2 || collector.QueryDatabase() != 0) {
    return 1;
  }
  const QtSts::CStatus& status = collector.m_Status;
  PrintSensors(status.Sensors);
  for (const QtSts::COutput* output : status.Outputs) {
    for (const QtSts::CDisplayInterface* interface : output->DisplayInterfaces) {
      PrintSensors(interface->Sensors);
    }
  }
  std::ofstream file(argv[1]);
  file << QtSts::WriteJson(status) << std::flush;
  return file ? 0 : 1;
}
