// The controller that is measured.
#pragma once

#include <cstddef>
#include <string>

#include "bench/row_mix.h"

namespace bench {

struct Controller {
  std::string Scenario;      // its folder; "": a bare controller with the two below
  Mix Rows;                  // of table `status`
  std::size_t Networks = 0;  // network interfaces, each with a link, an address and a route
  bool Packages = false;     // with a package database of Debian's size
  bool Devices = true;       // with device nodes
};

// Makes the sandbox this controller.
void SetUp(const Controller& controller);

}  // namespace bench
