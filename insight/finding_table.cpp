#include "insight/findings.h"

namespace insight {
namespace {

constexpr Severity kCritical = Severity::kCritical;
constexpr Severity kUnknown = Severity::kUnknown;
constexpr Severity kWarning = Severity::kWarning;

constexpr FindingInfo kFindings[] = {
    {"airflow", kWarning,
     "The airflow of a minute is below the limit, compared with its long-term average"},
    {"airflow-lost", kWarning,
     "While fans are enabled, an airflow contact of a board that is connected is inactive, or a "
     "connected airflow sensor reads 0, also over the long term"},
    {"amber-leds-failed", kWarning, "A beacon or roundel counts failed amber LEDs"},
    {"ambient-failed", kWarning, "A row says that the ambient light sensor failed"},
    {"ambient-override", kWarning, "A row says that the ambient light is overridden"},
    {"brightness", kWarning,
     "The brightness in force is far from the one that is asked for, and no override, schedule or "
     "darkness is why"},
    {"clock-wrong", kWarning, "The local time is before 2020"},
    {"cycle-failed", kUnknown,
     "The rows were not all read, though the database itself could be opened and read"},
    {"database-age", kUnknown, "The database has not changed for longer than its limit"},
    {"database-writable", kWarning, "Every user may write the database"},
    {"device-errors", kWarning, "A DCIO device counts errors beyond the limit"},
    {"device-gone", kWarning,
     "There is no network device `eth0`, though there is `eth1`; likewise other numbers and "
     "`wlan`"},
    {"dimming-override", kWarning, "The dimming mode is `override`"},
    {"display-dark", kWarning,
     "The dimming level in force or the output level is 0, and no schedule asks for it"},
    {"door-open", kWarning, "A door switch, or a door contact of a board, is active"},
    {"error-flags", kWarning,
     "The error flags text has a hexadecimal number above zero, with `0x` or a decimal digit"},
    {"fan-power", kWarning,
     "A power sense of fans, on a board that is connected, is inactive while fans are enabled"},
    {"fan-relay", kWarning,
     "A status relay of fans, on a board that is connected, is inactive while fans are enabled"},
    {"fan-speed", kWarning,
     "A fan is slower than the limit, compared with others or its own average"},
    {"fan-stopped", kWarning, "A fan, or a fan sensor, that is connected reads 0 rpm"},
    {"fans-disabled", kWarning,
     "The fans of a display that has fans are not enabled, or the cabinet fan control has 0"},
    {"fans-override", kWarning, "The fans override is not `none`"},
    {"heater-relay", kWarning,
     "The status relay of a heater is inactive while a heater output of that kind is on, on a "
     "board "
     "that is connected"},
    {"humidity", kWarning, "A humidity of a connected sensor is outside of the limit"},
    {"input-voltage", kWarning,
     "An input voltage is below the limit, compared with the highest of its power-supply board or "
     "with other isolation boards"},
    {"input-without-signal", kCritical, "The multiplexer routes an input that has no signal"},
    {"isolation-input", kWarning, "An isolation board is connected and has 0 V at its input"},
    {"isolation-output", kCritical, "An isolation board is connected and has 0 V at its output"},
    {"isolation-volts", kWarning,
     "An input or output voltage of an isolation board, and that of the others, are below the "
     "limit"},
    {"lamp-errors", kWarning, "The error flags of a beacon or roundel are not 0"},
    {"light-lost", kWarning,
     "All that a connected light sensor reads is 0, and another one reads light or it is day"},
    {"link-errors", kWarning, "A network device counts errors beyond the limit"},
    {"link-lost", kWarning, "A network device has an address but no link, or is switched off"},
    {"link-transitions", kWarning, "The link of a network device came and went beyond the limit"},
    {"memory-free", kWarning, "Free memory is below the limit"},
    {"no-brightness", kWarning,
     "There are rows and an output, but no row of the brightness in force"},
    {"no-gateway", kWarning, "No network device in use has a default gateway"},
    {"no-network", kWarning, "Network devices could be asked for, and none is in use"},
    {"no-rows", kUnknown, "The database was read and has no rows"},
    {"no-sensors", kWarning, "There are rows and an output, but no row of a sensor"},
    {"output-blanked", kCritical, "Status flag 0x1000: the pixel tracker has blanked the output"},
    {"output-stopped", kCritical,
     "The frame rate of an output, or a side of its scaled picture, is 0, and its power is not "
     "off"},
    {"output-voltage", kWarning, "An output voltage is below the limit, as `input-voltage`"},
    {"position-not-locked", kWarning,
     "The position of a multi-directional light sensor that is connected is not locked"},
    {"power-monitor-inactive", kWarning, "The state of a power monitor is 0"},
    {"power-off", kCritical, "Status flag 0x4: the display has no power"},
    {"power-supply-errors", kWarning, "A power-supply redundancy board reports hardware errors"},
    {"power-supply-input", kWarning,
     "A power-supply redundancy board is connected and one of its inputs has 0 V"},
    {"power-supply-output", kCritical,
     "A power-supply redundancy board is connected and one of its outputs has 0 V"},
    {"power-supply-relay", kWarning,
     "The status relay of a power supply is inactive, on a board that is connected"},
    {"reading-impossible", kUnknown,
     "A reading is not a number, infinite, outside of what its kind can hold, or not what its row "
     "says"},
    {"reading-missing", kWarning,
     "No row, not even one of another sensor, gives what a connected sensor or an input measures"},
    {"red-leds-failed", kWarning, "A beacon or roundel counts failed red LEDs"},
    {"row-errors", kWarning, "Rows have errors; one finding with their number"},
    {"sensor-disconnected", kWarning, "A sensor is not connected"},
    {"signal-losses", kWarning,
     "A DVI input that has a signal lost it, or had pictures that were not valid, beyond the "
     "limit"},
    {"source-denied", kUnknown, "This user may not read a required source"},
    {"source-empty", kUnknown, "A required source is empty"},
    {"source-failed", kUnknown, "A required source cannot be read for another reason"},
    {"source-locked", kUnknown, "Another program has locked the database"},
    {"source-malformed", kUnknown, "A required source does not hold what is looked for"},
    {"source-missing", kUnknown, "A required source is missing"},
    {"source-not-asked", kUnknown,
     "A required source was not asked, and no finding names the source that stopped the probe"},
    {"source-silent", kUnknown, "A required source does not answer to some or all requests"},
    {"storage-free", kWarning, "Free storage is below the limit"},
    {"supply-volts", kWarning,
     "All output voltages of a power-supply redundancy board are below the limit"},
    {"surge-suppressor", kWarning, "A surge suppressor is inactive, on a board that is connected"},
    {"sync-losses", kWarning,
     "A connected sensor counts losses of synchronisation beyond the limit"},
    {"temperature", kWarning, "A temperature of a connected sensor is outside of the limit"},
    {"ttable-empty", kWarning,
     "By the T-table that rows give there are no modules, or they have no pixels"},
    {"ttable-missing", kWarning,
     "There are rows and an output, but no rows for all of the T-table's faces, columns, rows and "
     "size of modules"},
    {"watchdog-event", kWarning, "Status flag 0x400: a watchdog event since the start"},
};

}  // namespace

std::span<const FindingInfo> FindingTable() { return kFindings; }

}  // namespace insight
