#include "bench/controller.h"

#include "hardware/paths.h"
#include "sandbox/scenario.h"

namespace bench {
namespace {

// The stanzas of a Debian package database of about three megabytes, the display's packages last.
std::string PackageDatabase(const std::string& last) {
  std::string packages;
  for (int number = 0; packages.size() < (std::size_t{3} << 20U); ++number) {
    packages += "Package: library" + std::to_string(number) +
                "\nStatus: install ok installed\nPriority: optional\nSection: libs\n"
                "Installed-Size: 214\nMaintainer: Somebody <somebody@example.org>\n"
                "Architecture: amd64\nMulti-Arch: same\nVersion: 1.2.3-4+deb12u1\n"
                "Depends: libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12)\n"
                "Description: shared library\n A library that many programs of the controller "
                "load.\n .\n It is here for its length.\nHomepage: https://example.org/\n\n";
  }
  return packages + last;
}

// The first one leads to the gateway; the kernel lists them all in both files.
void AddNetworks(std::size_t count, sandbox::Scenario* scenario) {
  std::string routes =
      "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
  std::string counters =
      "Inter-|   Receive                                                |  Transmit\n"
      " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs "
      "drop fifo colls carrier compressed\n";
  for (std::size_t number = 0; number < count; ++number) {
    const std::string name = "eth" + std::to_string(number);
    const std::string network = "10.50." + std::to_string(number);
    scenario->Interface(
        {.Name = name,
         .Addresses = {{.Prefix = network + ".1/24", .Broadcast = network + ".255"}}});
    routes += number == 0 ? name + "\t00000000\t0100320A\t0003\t0\t0\t0\t00000000\t0\t0\t0\n" : "";
    routes += name + "\t0000320A\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";
    counters += "  " + name + ": 918273645 1204518 2 0 0 0 0 311 120387465 804213 1 0 0 0 0 0\n";
  }
  scenario->File(hardware::paths::kRoutes, routes);
  scenario->File(hardware::paths::kLinkCounters.Path, counters);
}

sandbox::Scenario BareController(const Controller& controller) {
  sandbox::Scenario scenario;
  scenario.Database();
  for (const Row& row : MakeRows(controller.Rows)) {
    scenario.Row(row.first, row.second);
  }
  if (controller.Networks > 0) {
    AddNetworks(controller.Networks, &scenario);
  }
  return scenario;
}

}  // namespace

void SetUp(const Controller& controller) {
  sandbox::Scenario scenario = controller.Scenario.empty()
                                   ? BareController(controller)
                                   : sandbox::Scenario::Load(controller.Scenario);
  if (!controller.Devices) {
    scenario.NoDevice("travex").NoDevice("zetdisplay").NoDevice("diagnostics");
  }
  scenario.Apply();
  if (controller.Packages) {
    const char* const packages = hardware::paths::kPackages;
    sandbox::WriteFile(packages, PackageDatabase(sandbox::ReadFile(packages)));
  }
}

}  // namespace bench
