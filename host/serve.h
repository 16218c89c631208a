// What `serve` takes; the program of that name runs it.
#pragma once

#include <string>
#include <vector>

#include "host/commands.h"

namespace host {

struct ServeOptions {
  std::vector<std::string> Listen = {};  // "ADDRESS:PORT"; none: kListen
  int Interval = 10;                     // seconds
  bool AllowRemote = false;
  std::vector<std::string> Hosts = {};
  std::string State = {};  // a folder
};

// Where it listens unless something else is asked for.
inline constexpr const char* kListen = "127.0.0.1:9877";

// `options` holds the values and must outlive them.
std::vector<Argument> ServeArguments(ServeOptions* options);

}  // namespace host
