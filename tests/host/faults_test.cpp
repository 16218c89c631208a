// Controllers with one fault each: who reads the first 40 lines of `show` can name it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "hardware/requests.h"
#include "sandbox/enter.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"
#include "tests/support/run_program.h"

namespace {

using sandbox::Scenario;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDatabase = "/dev/shm/status.db";

struct Fault {
  const char* Name;
  void (*Change)(Scenario& scenario);  // of the demo, before it becomes the controller
  void (*Afterwards)();                // null: nothing more
  const char* Beginning;               // of the first line
  std::vector<std::string> Words;      // of the first 40 lines
};

void Nothing(Scenario& /*scenario*/) {}

void ChangedThreeDaysAgo() {
  timeval times[2] = {};
  gettimeofday(&times[0], nullptr);
  times[0].tv_sec -= 3 * 86400;
  times[1] = times[0];
  ASSERT_EQ(utimes(kDatabase, times), 0);
}

void Garbage() { std::ofstream(kDatabase) << std::string(8192, 'x'); }

void WritableByAll() { ASSERT_EQ(chmod(kDatabase, 0666), 0); }

void DeleteRows(const std::string& begin) {
  sandbox::RunSql("DELETE FROM status WHERE substr(address, 1, " + std::to_string(begin.size()) +
                  ") = '" + begin + "';");
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
     {"/dev/travex does not answer"}},
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
    {"fan stopped",
     [](Scenario& demo) { demo.Row("Sensor_14_Fan_03_Rpm", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"fan stands still, fan 3 of ", " behind the control board at address 16",
      "Sensor_14_Fan_03_Rpm"}},
    {"fan slow",
     [](Scenario& demo) { demo.Row("Sensor_14_Fan_03_Rpm", "220"); },
     nullptr,
     "warning: 1 warning\n",
     {"fan speed, beside the board's other fans, 9.98 %", "fan 3 of ", "Sensor_14_Fan_03_Rpm"}},
    {"door open",
     [](Scenario& demo) { demo.Row("DCIO_00_State", "1"); },
     nullptr,
     "warning: 1 warning\n",
     {"door open, door switch 0 at address 64", "DCIO_00_State"}},
    {"overheated",
     [](Scenario& demo) { demo.Row("Sensor_08_Celsius", "91.5"); },
     nullptr,
     "critical: 1 critical\n",
     {"temperature 91.5 \u00B0C, above the limit of 80 \u00B0C", "address 34", "Sensor_08_Celsius",
      "91.5 \u00B0C     -30..65 (-40..80)"}},
    {"sensor lost",
     [](Scenario& demo) { demo.Row("Sensor_08_Connected", "false"); },
     nullptr,
     "warning: 1 warning\n",
     {"sensor is not connected, temperature sensor 1 at address 34", "Sensor_08_Connected",
      "34  not connected"}},
    {"power supply relay",
     [](Scenario& demo) { demo.Row("Sensor_12_Input_03_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"power supply is not active", "Sensor_12_Input_03_State"}},
    {"power supply output",
     [](Scenario& demo) { demo.Row("Sensor_06_PsrbVout_01_Volts", "0"); },
     nullptr,
     "critical: 1 critical\n",
     {"power supply output at 0 V", "20.. V; 90.. (50..) %"}},
    {"power supply input",
     [](Scenario& demo) { demo.Row("Sensor_06_PsrbVin_00_Volts", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"power supply input at 0 V", "Sensor_06_PsrbVin_00_Volts"}},
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
    {"output voltage low",
     [](Scenario& demo) { demo.Row("Sensor_06_PsrbVout_01_Volts", "19.2"); },
     nullptr,
     "warning: 1 warning\n",
     {"output voltage, beside the board's highest, 79.83 %", "24.05, 19.2, 23.98 V",
      "Sensor_06_PsrbVout_01_Volts", "20.. V; 90.. (50..) %"}},
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
    {"fans disabled",
     [](Scenario& demo) { demo.Row("FansEnabled", "false"); },
     nullptr,
     "warning: 1 warning\n",
     {"fans are disabled", "FansEnabled"}},
    {"surge suppressor",
     [](Scenario& demo) { demo.Row("Sensor_12_Input_01_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"surge suppressor is not active, input 2 \"Surge suppressor A\"",
      "Sensor_12_Input_01_State"}},
    {"DVI losses",
     [](Scenario& demo) { SetRegister(demo, "dvi_los_count", "0x0000ffff"); },
     nullptr,
     "warning: 1 warning\n",
     {"signal losses 65535, above the limit of 100, DVI input"}},
    {"airflow low",
     [](Scenario& demo) { demo.Row("Sensor_09_OneMin", "140"); },
     nullptr,
     "warning: 1 warning\n",
     {"airflow, beside its long-term average, 7.35", "airflow sensor 2 at address 35",
      "Sensor_09_OneMin"}},
    {"airflow contact",
     [](Scenario& demo) { demo.Row("Sensor_12_Input_05_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"an airflow sensor reports none, input 6", "Sensor_12_Input_05_State"}},
    {"fan relay",
     [](Scenario& demo) { demo.Row("Sensor_14_Input_02_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"pixel fans are enabled, but their status relay is not active", "Sensor_14_Input_02_State"}},
    {"fan power",
     [](Scenario& demo) { demo.Row("Sensor_12_Input_07_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"fans are enabled, but have no power, input 8", "Sensor_12_Input_07_State"}},
    {"cabinet fans disabled",
     [](Scenario& demo) { demo.Row("Sensor_01_FansEnabled", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"cabinet fans are disabled, cabinet fan control 1", "Sensor_01_FansEnabled"}},
    {"heater failed",
     [](Scenario& demo) { demo.Row("Sensor_12_Output_02_State", "1"); },
     nullptr,
     "warning: 1 warning\n",
     {"heater is on, but its status relay is not active, input 7", "Sensor_12_Input_06_State"}},
    {"no view of the sky",
     [](Scenario& demo) { demo.Row("Sensor_04_Locked", "locked_not_locked"); },
     nullptr,
     "warning: 1 warning\n",
     {"light sensor does not know where it is", "sensor 4 at address 19", "Sensor_04_Locked"}},
    {"no modules",
     [](Scenario& demo) { demo.Row("TtableColumns", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"the T-table has no modules: 0 columns", "TtableColumns", "! Modules     0 columns"}},
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
    {"input voltage low",
     [](Scenario& demo) { demo.Row("Sensor_06_PsrbVin_01_Volts", "90"); },
     nullptr,
     "warning: 1 warning\n",
     {"input voltage, beside the board's highest, 39.06", "Sensor_06_PsrbVin_01_Volts"}},
    {"voltage below zero",
     [](Scenario& demo) { demo.Row("Sensor_06_PsrbVout_02_Volts", "-5"); },
     nullptr,
     "unknown: 1 unknown\n",
     {"output voltage 24.05, 24.1, -5", "is not possible: below 0", "Sensor_06_PsrbVout_02_Volts"}},
    {"synchronisation",
     [](Scenario& demo) { demo.Row("Sensor_02_SyncLossCounter", "5120"); },
     nullptr,
     "warning: 1 warning\n",
     {"synchronisation losses 5120", "Sensor_02_SyncLossCounter"}},
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
    {"brightness overridden",
     [](Scenario& demo) { demo.Row("DimmingMode", "override"); },
     nullptr,
     "warning: 1 warning\n",
     {"brightness is overridden", "mode override"}},
    {"decimal comma",
     [](Scenario& demo) { demo.Row("DimmingLevel", "62,5"); },
     nullptr,
     "warning: 1 warning\n",
     {"row DimmingLevel: ", "62"}},
    {"wrong key",
     [](Scenario& demo) { demo.Row("sensor_01_Celsius", "62.5"); },
     nullptr,
     "warning: 1 warning\n",
     {"row sensor_01_Celsius: "}},
    // These used to be "all well", the network device but for its gateway.
    {"no sensors",
     &Nothing,
     [] { DeleteRows("Sensor_"); },
     "warning: 1 warning\n",
     {"no row reports a sensor of the display", "whether the program that writes these rows runs"}},
    {"no Ttable",
     &Nothing,
     [] { DeleteRows("Ttable"); },
     "warning: 1 warning\n",
     {"no row says how large the display is: TtableColumns", "  Modules     not reported"}},
    {"no brightness",
     &Nothing,
     [] { DeleteRows("ActualDimmingLevel"); },
     "warning: 1 warning\n",
     {"no row says how bright the display is: ActualDimmingLevel missing"}},
    {"all outputs low",
     [](Scenario& demo) {
       for (const char* output : {"00", "01", "02"}) {
         demo.Row("Sensor_06_PsrbVout_" + std::string(output) + "_Volts", "12");
       }
     },
     nullptr,
     "warning: 1 warning\n",
     {"highest output voltage of the board 12 V, below the limit of 20 V",
      "power-supply redundancy board 6 at address 21"}},
    {"isolation board low",
     [](Scenario& demo) { demo.Row("Sensor_10_IsoVout", "2.1"); },
     nullptr,
     "critical: 1 critical\n",
     {"output voltage 2.1 V, below the limit of 3 V", "Sensor_10_IsoVout", "4.5.. (3..) V"}},
    {"light sensor blind",
     [](Scenario& demo) { demo.Row("Sensor_02_OneMin", "0").Row("Sensor_02_TenMin", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"light sensor sees nothing, though it is day", "light sensor 2 at address 17",
      "Sensor_02_TenMin"}},
    {"much darker than asked for",
     [](Scenario& demo) { demo.Row("DimmingLevel", "100").Row("ActualDimmingLevel", "5"); },
     nullptr,
     "warning: 1 warning\n",
     {"brightness, as a share of the one asked for, 5 %", "! Brightness  5 %, asked for 100 %",
      "ActualDimmingLevel"}},
    {"network device gone",
     [](Scenario& demo) {
       demo.NoInterfaces().Interface({.Name = "eth1", .Addresses = {{.Prefix = "10.50.0.1/24"}}});
     },
     nullptr,
     "warning: 1 warning\n",
     {"network device eth0 is gone; there is eth1"}},
    {"no airflow at all",
     [](Scenario& demo) {
       demo.Row("Sensor_09_OneMin", "0").Row("Sensor_09_LongTermAverage", "0");
     },
     nullptr,
     "warning: 1 warning\n",
     {"the airflow sensor reads 0, also over the long term", "airflow sensor 2 at address 35"}},
    {"humidity sensor dead",
     [](Scenario& demo) { demo.Row("Sensor_05_HumidityOneMin", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"humidity 0 %, below the limit of 1 %", "Sensor_05_HumidityOneMin"}},
    {"address of a device lost",
     [](Scenario& demo) {
       demo.NoInterfaces();
       demo.Interface({.Name = "eth0", .Addresses = {{.Prefix = "2001:db8::20/64"}}});
       demo.Interface({.Name = "eth1", .Addresses = {{.Prefix = "10.50.0.1/24"}}});
     },
     nullptr,
     "warning: 1 warning\n",
     {"no network device has a default gateway; in use: eth0 without an IPv4 address, eth1"}},
    {"bright though none is asked for",
     [](Scenario& demo) { demo.Row("DimmingLevel", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"brightness, as a share of the one asked for, 6250 %",
      "! Brightness  62.5 %, asked for 0 %"}},
    {"power monitor",
     [](Scenario& demo) { demo.Row("DCIO_01_State", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"power monitor reports no power, power monitor 1 at address 65", "DCIO_01_State"}},
    {"red LEDs",
     [](Scenario& demo) { demo.Row("Sensor_16_RedLedErrorCount", "5"); },
     nullptr,
     "warning: 1 warning\n",
     {"red LEDs failed: 5, beacon 2 at address 51", "Sensor_16_RedLedErrorCount"}},
    {"device errors",
     [](Scenario& demo) { demo.Row("DCIO_03_ErrCnt", "5000"); },
     nullptr,
     "warning: 1 warning\n",
     {"device errors 5000", "generic input 3 at address 67", "DCIO_03_ErrCnt"}},
    {"impossible humidity",
     [](Scenario& demo) { demo.Row("Sensor_19_HumidityOneMin", "130"); },
     nullptr,
     "unknown: 1 unknown\n",
     {"humidity 130 % is not possible: outside of 0 to 100 %", "humidity sensor 5 at address 54"}},
    {"fans overridden",
     [](Scenario& demo) { demo.Row("FansOverride", "sensor"); },
     nullptr,
     "warning: 1 warning\n",
     {"fans are overridden: sensor", "FansOverride"}},
    {"fan sensor stopped",
     [](Scenario& demo) { demo.Row("Sensor_13_CurrentRpm", "0"); },
     nullptr,
     "warning: 1 warning\n",
     {"fan stands still, fan sensor 6 at address 39", "Sensor_13_CurrentRpm"}},
    {"position lost",
     [](Scenario& demo) { demo.Row("DimmingMode", "gps").Row("Sensor_04_Connected", "false"); },
     nullptr,
     "warning: 1 warning\n",
     {"sensor is not connected, multi-directional light sensor 4 at address 19"}},
    {"sensor of no kind",
     [](Scenario& demo) { demo.Row("Sensor_08_Type", ""); },
     nullptr,
     "warning: 1 warning\n",
     {"row Sensor_08_Type: \"\" is no word of the list; the element is lost"}},
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
     {"free memory 0.08 %"}},
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.Name; }

class OneFault : public testing::TestWithParam<Fault> {
 protected:
  // A later scenario would keep a file that is no database, and its mode.
  void TearDown() override { std::filesystem::remove(kDatabase); }
};

TEST_P(OneFault, IsNamedInTheFirstFortyLines) {
  SANDBOX_NEEDS_DEVICES();
  Scenario demo = Scenario::Load(sandbox::SourcePath("scenarios/demo"));
  GetParam().Change(demo);
  demo.Apply();
  if (GetParam().Afterwards != nullptr) {
    GetParam().Afterwards();
  }
  const std::string output = test_support::RunProgram({test_support::HostProgram(), "show"}).Output;
  std::istringstream lines(output);
  std::string first_lines;
  std::string line;
  for (int count = 0; count < 40 && std::getline(lines, line); ++count) {
    first_lines += line + "\n";
  }
  EXPECT_THAT(first_lines, StartsWith(GetParam().Beginning));
  // A text that is wrapped stands on several lines.
  std::string words = first_lines;
  for (std::size_t at = words.find("\n            "); at != std::string::npos;
       at = words.find("\n            ")) {
    words.replace(at, 13, " ");
  }
  for (const std::string& wanted : GetParam().Words) {
    EXPECT_THAT(words, HasSubstr(wanted));
  }
}

INSTANTIATE_TEST_SUITE_P(Controllers, OneFault, testing::ValuesIn(kFaults), [](const auto& fault) {
  std::string name = fault.param.Name;
  for (char& c : name) {
    c = c == ' ' ? '_' : c;
  }
  return name;
});

// The demo itself has none.
TEST(Demo, HasNoFinding) {
  SANDBOX_NEEDS_DEVICES();
  Scenario::Load(sandbox::SourcePath("scenarios/demo")).Apply();
  EXPECT_THAT(test_support::RunProgram({test_support::HostProgram(), "show"}).Output,
              StartsWith("all well: no findings in "));
}

}  // namespace
