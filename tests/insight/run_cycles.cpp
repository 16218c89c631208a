// Runs cycles over the rows that are there, for counting what they cost from outside.
//
//   run_cycles plain|explained COUNT
#include <cstdlib>
#include <string_view>

#include "collector/status_interface.h"
#include "insight/snapshot.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  CStatusInterface collector;
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  const bool explained = std::string_view(argv[1]) == "explained";
  int result = 0;
  for (long count = std::strtol(argv[2], nullptr, 10); count > 0; --count) {
    result = explained ? recorder.RunCycle().Result : collector.QueryDatabase();
  }
  return result;
}
