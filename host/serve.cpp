// serve: the document, findings and metrics over HTTP.
#include "host/serve.h"

#include <memory>

#include "host/apart.h"

namespace host {

std::vector<Argument> ServeArguments(ServeOptions* options) {
  return {{.Name = "-l,--listen",
           .Type = "ADDRESS:PORT",
           .About = "Where to listen (127.0.0.1:9877); repeatable",
           .Value = &options->Listen},
          {.Name = "-i,--interval",
           .Type = "SECONDS",
           .About = "From the beginning of a cycle to that of the next (10)",
           .Value = &options->Interval,
           .Least = 1,
           .Most = 86400},
          {.Name = "--allow-remote",
           .Type = "",
           .About = "Listen on addresses that others reach, too",
           .Value = &options->AllowRemote},
          {.Name = "--host",
           .Type = "NAME",
           .About = "A name by which requests may ask; repeatable",
           .Value = &options->Hosts},
          {.Name = "--state",
           .Type = "FOLDER",
           .About = "Where the history is kept (STATE_DIRECTORY; else in memory)",
           .Value = &options->State}};
}

Declaration DeclareServe() {
  const auto options = std::make_shared<ServeOptions>();
  return {ServeArguments(options.get()), [options]() -> int {
            RunApart("serve", "statuscollector-serve", ServeArguments(options.get()));
          }};
}

}  // namespace host
