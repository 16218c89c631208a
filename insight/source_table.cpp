#include "insight/source_table.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "hardware/parse_packages.h"
#include "hardware/paths.h"
#include "hardware/requests.h"

namespace insight {
namespace {

using observe::Call;
namespace paths = hardware::paths;
namespace requests = hardware::requests;

SourceInfo Device(const char* id, const char* path) { return {id, path, Call::kOpen, true}; }

SourceInfo Text(const char* id, const hardware::TextSource& text, bool required = true) {
  return {id, text.Path, Call::kOpen, required, false, text.Followed == hardware::Links::kTrusted};
}

constexpr bool kRequired = true;
constexpr bool kOptional = false;
constexpr bool kBound = true;
constexpr bool kTrusted = true;

// Rows of the table of feeds.
constexpr Feed Whole(const char* probe, const char* source, const char* field,
                     Part needs = Part::kAll) {
  return {probe, source, field, nullptr, 0, -1, needs};
}
constexpr Feed Request(const char* probe, const char* source, unsigned long request,
                       const char* field) {
  return {probe, source, field, nullptr, request, -1, Part::kRequest};
}
constexpr Feed Label(const char* probe, const char* source, const char* label, const char* field) {
  return {probe, source, field, label, 0, -1, Part::kLabel};
}
constexpr Feed Statistic(unsigned long request, int element, const char* field) {
  return {"OutputPort", "travex", field, nullptr, request, element, Part::kStatistic};
}
constexpr Feed Spoils(const char* source, unsigned long request, const char* field) {
  return {"OutputPort", source, field, nullptr, request, -1, Part::kSpoils};
}
constexpr Feed Element(int element, const char* field) {
  return {"OutputPort", "travex", field, nullptr, 0, element, Part::kElement};
}

constexpr char kPort[] = "OutputPort";
constexpr char kLimit[] = "ContentLimit";
constexpr char kPlayer[] = "InputGraphic";
constexpr char kDvi[] = "InputDVI";
constexpr char kIds[] = "IDs";
constexpr char kNetwork[] = "Network";

constexpr char kRouter[] = "travex";
constexpr char kDisplay[] = "zetdisplay";
constexpr char kFrame[] = "frame-control";
constexpr char kMux[] = "video-mux";
constexpr char kMemory[] = "meminfo";

constexpr char kFlags[] = "Outputs[0]/StatusFlags";
constexpr char kRouting[] = "video mux status register:";

constexpr Feed kFeeds[] = {
    Request("Compositor", kDisplay, requests::display::kCompositorState, "Compositors[0]/State"),

    Request(kPort, kRouter, requests::router::kFrameRate, "Outputs[0]/Frequency/Vertical"),
    Request(kPort, kRouter, requests::router::kOutputLevel, "Outputs[0]/Dimming/OutputLevel"),
    Element(0, "Outputs[0]/Statistics[0]/Number"),
    Statistic(requests::router::kStatistic0First, 0, "Outputs[0]/Statistics[0]/First"),
    Statistic(requests::router::kStatistic0Second, 0, "Outputs[0]/Statistics[0]/Second"),
    Element(1, "Outputs[0]/Statistics[1]/Number"),
    Statistic(requests::router::kStatistic1First, 1, "Outputs[0]/Statistics[1]/First"),
    Statistic(requests::router::kStatistic1Second, 1, "Outputs[0]/Statistics[1]/Second"),
    Request(kPort, kRouter, requests::router::kTrackerEnable, kFlags),
    Label(kPort, kFrame, "scale_output_height: ", "Outputs[0]/ScalerOutputArea/Height"),
    Label(kPort, kFrame, "scale_output_width: ", "Outputs[0]/ScalerOutputArea/Width"),
    Label(kPort, kFrame, "pixel_tracker_bits: ", kFlags),
    Request(kPort, kDisplay, requests::display::kLevel, kFlags),
    Spoils(kDisplay, requests::display::kLevel, "Ambient"),
    Request(kPort, kDisplay, requests::display::kPower, kFlags),
    Request(kPort, kDisplay, requests::display::kTracker, kFlags),
    Request(kPort, "diagnostics", requests::diagnostics::kFlags, kFlags),
    Spoils("diagnostics", requests::diagnostics::kFlags, "Ambient"),
    {.Probe = kPort, .Source = "watchdog", .Field = kFlags, .AddsBits = true},

    Request(kLimit, kRouter, requests::router::kContentFirst, "Outputs[0]/Dimming/Content/First"),
    Request(kLimit, kRouter, requests::router::kContentSecond, "Outputs[0]/Dimming/Content/Second"),
    Request(kLimit, kRouter, requests::router::kContentThird, "Outputs[0]/Dimming/Content/Third"),

    Whole(kPlayer, kFrame, "Inputs[0]/Index", Part::kOpened),
    Label(kPlayer, kFrame, "dss_detected_vsync: ", "Inputs[0]/Frequency/Vertical"),
    Label(kPlayer, kFrame, "dss_detected_vsync: ", "Inputs[0]/Frequency/PixelClock"),
    Label(kPlayer, kFrame, "dss_detected_hsync: ", "Inputs[0]/Frequency/Horizontal"),
    Label(kPlayer, kFrame, "dss_detected_columns: ", "Inputs[0]/DetectedArea/Width"),
    Label(kPlayer, kFrame, "dss_detected_columns: ", "Inputs[0]/Frequency/PixelClock"),
    Label(kPlayer, kFrame, "dss_detected_columns: ", "Inputs[0]/SignalPresent"),
    Label(kPlayer, kFrame, "dss_detected_rows: ", "Inputs[0]/DetectedArea/Height"),
    Label(kPlayer, kFrame, "dss_detected_rows: ", "Inputs[0]/Frequency/PixelClock"),
    Label(kPlayer, kFrame, "dss_detected_rows: ", "Inputs[0]/SignalPresent"),
    Label(kPlayer, kFrame, "scale_input_height: ", "Inputs[0]/ScalerInputArea/Height"),
    Label(kPlayer, kFrame, "scale_input_width: ", "Inputs[0]/ScalerInputArea/Width"),
    Label(kPlayer, kMux, kRouting, "Inputs[0]/MultiplexerSelected"),

    Whole(kDvi, kFrame, "Inputs[1]/Index", Part::kOpened),
    Label(kDvi, kFrame, "dvi_detected_vsync: ", "Inputs[1]/Frequency/Vertical"),
    Label(kDvi, kFrame, "dvi_detected_hsync: ", "Inputs[1]/Frequency/Horizontal"),
    Label(kDvi, kFrame, "dvi_freq_detect: ", "Inputs[1]/Frequency/PixelClock"),
    Label(kDvi, kFrame, "dvi_detected_columns: ", "Inputs[1]/DetectedArea/Width"),
    Label(kDvi, kFrame, "dvi_detected_rows: ", "Inputs[1]/DetectedArea/Height"),
    Label(kDvi, kFrame, "dvi_los_count: ", "Inputs[1]/Statistics/First"),
    Label(kDvi, kFrame, "dvi_not_valid_count: ", "Inputs[1]/Statistics/Second"),
    Label(kDvi, kFrame, "scale_input_height: ", "Inputs[1]/ScalerInputArea/Height"),
    Label(kDvi, kFrame, "scale_input_width: ", "Inputs[1]/ScalerInputArea/Width"),
    Request(kDvi, kDisplay, requests::display::kDviSignal, "Inputs[1]/SignalPresent"),
    Label(kDvi, kMux, kRouting, "Inputs[1]/MultiplexerSelected"),

    Request(kIds, kDisplay, requests::display::kHardwareId1, "HardwareID1"),
    Request(kIds, kDisplay, requests::display::kHardwareId1, "ProductFamily"),
    Request(kIds, kDisplay, requests::display::kHardwareId2, "HardwareID2"),
    Request(kIds, kDisplay, requests::display::kHardwareId3, "HardwareID3"),
    Whole(kIds, "serial", "SerialNumber"),

    Whole("GUID", "uuid", "GUID"),

    Label("SystemMemoryKB", kMemory, "MemTotal:", "MemoryTotal"),
    Label("SystemMemoryKB", kMemory, "MemFree:", "MemoryFree"),
    Label("SystemMemoryKB", kMemory, "Cached:", "MemoryFree"),
    Whole("SystemMemoryKB", "sysinfo", "Uptime"),

    Whole("SystemStorageKB", "storage", "StorageTotal"),
    Whole("SystemStorageKB", "storage", "StorageFree"),

    Whole(kNetwork, "interfaces", "Network/Devices", Part::kInterfaces),
    Whole(kNetwork, "interfaces", "Network/Devices[%d]/IPv4Address", Part::kAddress),
    Whole(kNetwork, "interfaces", "Network/Devices[%d]/Netmask", Part::kAddress),
    Whole(kNetwork, "interfaces", "Network/Devices[%d]/IPv6Address", Part::kAddress),
    Whole(kNetwork, "carrier", ""),
    Whole(kNetwork, "transitions", "Network/Devices[%d]/Statistics/First"),
    Whole(kNetwork, "link-counters", "Network/Devices[%d]/Statistics/Second", Part::kRow),
    Whole(kNetwork, "routes", "Network/Devices[%d]/Gateway"),
    Whole(kNetwork, "hardware-address", "Network/Devices[%d]/MACAddress"),

    Label("DNS", "resolver", "nameserver ", "Network/DNS/Addresses"),

    Label("Versions", "packages", hardware::kDistributionPackage, "FirmwareVersion"),
    Label("Versions", "packages", hardware::kDisplayPackage, "DisplayFirmwareVersion"),

    Whole("GetTime", "clock", "LocalTime"),
    Whole("GetTime", "clock", "DaylightSaving"),
    Whole("GetTime", "configuration-timestamp", "ConfigurationTimestamp"),
};

static_assert(
    [] {
      for (const Feed* feed = std::begin(kFeeds) + 1; feed != std::end(kFeeds); ++feed) {
        const auto is_of_probe = [feed](const Feed& other) {
          return std::string_view(other.Probe) == feed->Probe;
        };
        if (!is_of_probe(feed[-1]) && std::any_of(std::begin(kFeeds), feed, is_of_probe)) {
          return false;
        }
      }
      return true;
    }(),
    "the feeds of a probe stand together");

}  // namespace

std::span<const SourceInfo> SourceTable() {
  static const SourceInfo kSources[] = {
      Device(kDisplay, paths::kDisplay),
      Device(kRouter, paths::kRouter),
      Text(kFrame, paths::kFrameControl),
      Device("diagnostics", paths::kDiagnostics),
      {"watchdog", paths::kWatchdogEvent, Call::kPathStatus, kOptional},
      Text(kMux, paths::kVideoMux),
      Text("serial", paths::kSerial),
      Text("uuid", paths::kUuid),
      Text(kMemory, paths::kMemory),
      {"sysinfo", "sysinfo", Call::kSystem, kRequired},
      {"storage", std::string("statfs ") + paths::kRootFolder, Call::kStorage, kRequired},
      {"interfaces", "getifaddrs", Call::kInterfaces, kRequired},
      {"carrier", paths::Carrier("%s"), Call::kPathStatus, kOptional, kBound},
      {"transitions", paths::Transitions("%s"), Call::kOpen, kOptional, kBound, kTrusted},
      {"link-counters", paths::kLinkCounters.Path, Call::kOpen, kOptional, kBound},
      {"routes", paths::kRoutes, Call::kOpen, kRequired},
      {"hardware-address", "SIOCGIFHWADDR %s", Call::kHardwareAddress, kOptional, kBound},
      Text("resolver", paths::kResolver),
      {"packages", paths::kPackages, Call::kOpen, kRequired},
      {"clock", "time", Call::kTime, kRequired},
      Text("configuration-timestamp", paths::kConfigurationTimestamp, kOptional),
      {"database", paths::kStatusDatabase, Call::kOpen, kRequired},
  };
  return kSources;
}

const SourceInfo& SourceNamed(const char* id) {
  return *std::ranges::find_if(
      SourceTable(), [id](const SourceInfo& source) { return std::strcmp(source.Id, id) == 0; });
}

std::span<const Feed> FeedTable() { return kFeeds; }

std::span<const Feed> FeedsOf(std::string_view probe) {
  const auto is_of_probe = [probe](const Feed& feed) { return probe == feed.Probe; };
  const auto* const first = std::ranges::find_if(kFeeds, is_of_probe);
  return {first, std::find_if_not(first, std::end(kFeeds), is_of_probe)};
}

bool AddsBits(std::string_view source, std::string_view field) {
  return std::ranges::any_of(kFeeds, [&](const Feed& feed) {
    return feed.AddsBits && source == feed.Source && field == feed.Field;
  });
}

}  // namespace insight
