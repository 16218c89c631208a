#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "hardware/requests.h"
#include "sandbox/enter.h"
#include "tests/host/fault_cases.h"

namespace {

using sandbox::Scenario;

void ChangedThreeDaysAgo() {
  timeval times[2] = {};
  gettimeofday(&times[0], nullptr);
  times[0].tv_sec -= 3 * 86400;
  times[1] = times[0];
  ASSERT_EQ(utimes(kDatabase, times), 0);
}

void Garbage() { std::ofstream(kDatabase) << std::string(8192, 'x'); }

void WritableByAll() { ASSERT_EQ(chmod(kDatabase, 0666), 0); }

void PipeForMemory() {
  ASSERT_EQ(std::remove("/proc/meminfo"), 0);
  ASSERT_EQ(mkfifo("/proc/meminfo", 0644), 0);
}

// The demo's interfaces, eth0 in this state.
void SetLink(Scenario& demo, sandbox::LinkState state) {
  demo.NoInterfaces();
  demo.Interface({.Name = "eth0", .State = state, .Addresses = {{.Prefix = "192.168.0.20/24"}}});
  demo.Interface({.Name = "eth1", .Addresses = {{.Prefix = "10.50.0.1/24"}}});
}

// One register of the frame controller, which has the others of the demo.
void SetRegister(Scenario& demo, const std::string& name, const std::string& value) {
  std::ifstream registers(
      sandbox::SourcePath("scenarios/demo/root/proc/driver/frame_control/registers"));
  std::string text;
  for (std::string line; std::getline(registers, line);) {
    text += line.starts_with(name + ": ") ? name + ": " + value : line;
    text += '\n';
  }
  demo.File("/proc/driver/frame_control/registers", text);
}

const Fault kFaults[] = {
    {"display node missing",
     [](Scenario& demo) { demo.NoDevice("zetdisplay"); },
     nullptr,
     "unknown: ",
     {"/dev/zetdisplay is missing", "Power       not reported"}},
    {"router node missing",
     [](Scenario& demo) { demo.NoDevice("travex"); },
     nullptr,
     "unknown: ",
     {"/dev/travex is missing"}},
    {"router silent",
     [](Scenario& demo) { demo.NoDevice("travex").Device("travex"); },
     nullptr,
     "unknown: ",
     {"/dev/travex does not answer 10 of 10 requests"}},
    // The node used to be said not to answer at all.
    {"one request without an answer",
     [](Scenario& demo) { demo.Answer("travex", hardware::requests::router::kFrameRate, -5); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/dev/travex does not answer 1 of 10 requests: 0x8004DA0C (Outputs[0]/Frequency/Vertical)"}},
    {"display power off",
     [](Scenario& demo) { demo.Answer("zetdisplay", hardware::requests::display::kPower, 0); },
     nullptr,
     "critical: 1 critical\n",
     {"display power is off", "! Power       off"}},
    {"watchdog event",
     [](Scenario& demo) { demo.File("/var/run/wd_event", "1\n"); },
     nullptr,
     "warning: 1 warning\n",
     {"watchdog event recorded since the start", "\n  Power       on"}},
    {"no database",
     [](Scenario& demo) { demo.NoDatabase(); },
     nullptr,
     "unknown: ",
     {"/dev/shm/status.db is missing", "\n0 rows, "}},
    {"database is garbage", &Nothing, &Garbage, "unknown: ", {"/dev/shm/status.db"}},
    {"rows of three days ago",
     &Nothing,
     &ChangedThreeDaysAgo,
     "unknown: 1 unknown\n",
     {"database last changed 3 d ago\n"}},
    {"everyone may write", &Nothing, &WritableByAll, "warning: ", {"/dev/shm/status.db"}},
    {"no rows",
     [](Scenario& demo) { demo.NoDatabase().Database(); },
     nullptr,
     "unknown: 1 unknown\n",
     {"the database has no rows", "whether the programs that write rows run"}},
    {"no addresses",
     [](Scenario& demo) { demo.NoInterfaces().Interface({.Name = "eth0"}); },
     nullptr,
     "unknown: 1 unknown\n",
     {"no IPv4 address", "look at: the network devices"}},
    {"no packages",
     [](Scenario& demo) { demo.File("/var/lib/dpkg/status", ""); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/var/lib/dpkg/status is empty", "the list of installed packages"}},
    {"no pictures",
     [](Scenario& demo) { demo.Answer("travex", hardware::requests::router::kFrameRate, 0); },
     nullptr,
     "critical: 1 critical\n",
     {"the output sends no pictures: frame rate 0 Hz", "! Frame rate  0 Hz"}},
    {"no interfaces",
     [](Scenario& demo) { demo.NoInterfaces(); },
     nullptr,
     "unknown: 1 unknown\n",
     {"the list of network interfaces (getifaddrs) is empty: no interface runs"}},
    {"no network in use",
     [](Scenario& demo) {
       demo.NoInterfaces().Interface({.Name = "eth0"});
       demo.File("/sys/class/net/eth0/carrier", "0\n");
     },
     nullptr,
     "unknown: ",
     {"no network device is in use"}},
    {"no gateway",
     [](Scenario& demo) { demo.File("/proc/net/route", "Iface\tDestination\tGateway\n"); },
     nullptr,
     "warning: 1 warning\n",
     {"no network device has a default gateway"}},
    {"DVI losses",
     [](Scenario& demo) { SetRegister(demo, "dvi_los_count", "0x0000ffff"); },
     nullptr,
     "warning: 1 warning\n",
     {"signal losses 65535, above the limit of 100, DVI input"}},
    {"router dark",
     [](Scenario& demo) { demo.Answer("travex", hardware::requests::router::kOutputLevel, 0); },
     nullptr,
     "warning: 1 warning\n",
     {"output level of the router is 0"}},
    {"scaler stopped",
     [](Scenario& demo) { SetRegister(demo, "scale_output_width", "0x0"); },
     nullptr,
     "critical: 1 critical\n",
     {"the scaler gives no picture: width 0"}},
    {"link that comes and goes",
     [](Scenario& demo) { demo.File("/dev/shm/netlink-eth0", "4711\n"); },
     nullptr,
     "warning: 1 warning\n",
     {"link transitions 4711", "eth0"}},
    {"cable pulled",
     [](Scenario& demo) {
       SetLink(demo, sandbox::LinkState::kUnplugged);
       demo.File("/sys/class/net/eth0/carrier", "0\n");
     },
     nullptr,
     "warning: 1 warning\n",
     {"network device eth0 has an address but no link"}},
    {"carrier lost",
     [](Scenario& demo) { demo.File("/sys/class/net/eth0/carrier", "0\n"); },
     nullptr,
     "warning: 1 warning\n",
     {"network device eth0 has an address but no link"}},
    {"interface down",
     [](Scenario& demo) { SetLink(demo, sandbox::LinkState::kDown); },
     nullptr,
     "warning: 1 warning\n",
     {"network device eth0 has an address but is switched off"}},
    {"network device gone",
     [](Scenario& demo) {
       demo.NoInterfaces().Interface({.Name = "eth1", .Addresses = {{.Prefix = "10.50.0.1/24"}}});
     },
     nullptr,
     "warning: 1 warning\n",
     {"network device eth0 is gone; there is eth1"}},
    {"address of a device lost",
     [](Scenario& demo) {
       demo.NoInterfaces();
       demo.Interface({.Name = "eth0", .Addresses = {{.Prefix = "2001:db8::20/64"}}});
       demo.Interface({.Name = "eth1", .Addresses = {{.Prefix = "10.50.0.1/24"}}});
     },
     nullptr,
     "warning: 1 warning\n",
     {"no network device has a default gateway; in use: eth0 without an IPv4 address, eth1"}},
    // The row of the ambient light was said to be missing.
    {"diagnostics silent",
     [](Scenario& demo) { demo.NoDevice("diagnostics").Device("diagnostics"); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/dev/diagnostics does not answer 1 of 1 request"}},
    {"empty registers",
     [](Scenario& demo) { demo.File("/proc/driver/video_mux/registers", ""); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/proc/driver/video_mux/registers is empty look at: its driver"}},
    {"folder instead of registers",
     &Nothing,
     [] {
       ASSERT_EQ(std::remove("/proc/driver/video_mux/registers"), 0);
       ASSERT_EQ(mkdir("/proc/driver/video_mux/registers", 0755), 0);
     },
     "unknown: 1 unknown\n",
     {"/proc/driver/video_mux/registers is not a regular file look at: what stands there instead"}},
    // It used to be called empty.
    {"pipe instead of a file",
     &Nothing,
     &PipeForMemory,
     "unknown: 1 unknown\n",
     {"/proc/meminfo is not a regular file look at: what stands there instead"}},
    {"no name server",
     [](Scenario& demo) { demo.File("/etc/resolv.conf", "search example.org\n"); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/etc/resolv.conf does not hold what is looked for", "it names no name server"}},
    {"diagnostics missing",
     [](Scenario& demo) { demo.NoDevice("diagnostics"); },
     nullptr,
     "unknown: 1 unknown\n",
     {"/dev/diagnostics is missing", "therefore not asked: /var/run/wd_event"}},
    {"memory full",
     [](Scenario& demo) {
       demo.File("/proc/meminfo", "MemTotal: 2062340 kB\nMemFree: 900 kB\nCached: 800 kB\n");
     },
     nullptr,
     "critical: 1 critical\n",
     {" is 0.08 % of all"}},
};

}  // namespace

std::vector<Fault> FaultsOfController() { return {std::begin(kFaults), std::end(kFaults)}; }
