// capture: put what a cycle is given into a file.
#include "host/capture.h"

#include <memory>

#include "host/apart.h"

namespace host {

std::vector<Argument> CaptureArguments(CaptureOptions* options) {
  return {{.Name = "file",
           .Type = "FILE",
           .About = "Where to; -: standard output",
           .Value = &options->File},
          {.Name = "-c,--cycles",
           .Type = "N",
           .About = "Cycles to run (1)",
           .Value = &options->Cycles,
           .Least = 1,
           .Most = 100},
          {.Name = "--interval",
           .Type = "SECONDS",
           .About = "From the beginning of a cycle to that of the next (1)",
           .Value = &options->Interval,
           .Least = 0,
           .Most = 86400},
          {.Name = "--timeout",
           .Type = "SECONDS",
           .About = "How long a cycle may take (30)",
           .Value = &options->Timeout,
           .Least = 1,
           .Most = 3600},
          {.Name = "--redact",
           .Type = "",
           .About = "Replace what identifies the controller",
           .Value = &options->Redact}};
}

Declaration DeclareCapture() {
  const auto options = std::make_shared<CaptureOptions>();
  return {CaptureArguments(options.get()), [options]() -> int {
            RunApart("capture", "statuscollector-tools", CaptureArguments(options.get()));
          }};
}

}  // namespace host
