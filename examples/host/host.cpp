// A host: opens the status database, runs one collection cycle, reads the document and keeps it as
// XML. usage: host FILE
#include <collector/status_interface.h>
#include <model/xml.h>

#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
  CStatusInterface collector;
  collector.InitDatabase(false);  // for reading; a failure is reported on standard error
  if (argc != 2 || collector.QueryDatabase() != 0) {
    return 1;  // after a failed cycle the document holds what the probes found all the same
  }
  const QtSts::CStatus& status = collector.m_Status;
  std::cout << "at " << status.LocalTime << ", up " << status.Uptime;
  if (const QtSts::COutput* output = status.Outputs[0]) {  // null past the end of the list
    std::cout << ", dimmed to " << output->Dimming.DimmingLevel << " %";
  }
  std::cout << ", " << status.Sensors.Count() << " sensors of its own\n";
  std::ofstream file(argv[1]);
  file << QtSts::WriteDocument(collector.m_Status) << std::flush;
  return collector.CloseDatabase() == 0 && file ? 0 : 1;
}
