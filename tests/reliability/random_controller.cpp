#include "tests/reliability/random_controller.h"

#include <cerrno>
#include <random>

#include "tests/sensors/row_maker.h"

namespace reliability {
namespace {

using sandbox::Scenario;

constexpr const char* kFiles[] = {
    "/proc/driver/frame_control/registers",
    "/proc/driver/video_mux/registers",
    "/var/run/wd_event",
    "/home/Zet/.settings/uuid",
    "/home/Zet/.settings/serial#",
    "/var/lib/dpkg/status",
    "/proc/meminfo",
    "/proc/net/route",
    "/proc/net/dev",
    "/etc/resolv.conf",
    "/sys/class/net/eth0/carrier",
    "/sys/class/net/eth1/carrier",
    "/dev/shm/netlink-eth0",
    "/var/www/localhost/htdocs/korvane/syscontrol/1.0/configuration/conftimestamp",
};

constexpr const char* kDevices[] = {"travex", "zetdisplay", "diagnostics"};

constexpr std::uint32_t kRequests[] = {
    0x8004DA0C, 0x8004DA1C, 0x8004DA1E, 0x8004DA50, 0x8004DA55, 0x8004DA5C, 0x8004DA5D, 0x8004DA5E,
    0x8004DA5F, 0x8004DA60, 0x8004DA61, 0x8004DA63, 0x8004DA64, 0x8004DA65, 0x8004DA70, 0x8004DB17};

// Pieces of what the sources hold, in any order.
constexpr const char* kPieces[] = {"pixel_tracker_bits: 0x8\n",
                                   "dss_detected_rows: 0x438\n",
                                   "scale_input_width: 0x780\n",
                                   "video mux status register: 0x4\n",
                                   "MemTotal: 100 kB\n",
                                   "Cached: 7 kB\n",
                                   "MemFree: 3 kB\n",
                                   "Package: qtm-distro\n",
                                   "Version: 1.2.3-4\n",
                                   "Package: dispfw\n",
                                   "nameserver 8.8.8.8\n",
                                   "nameserver fe80::1\n",
                                   "eth0\t00000000\t0101A8C0\n",
                                   " eth0: 1 2 3 4 5 6 7 8 9 10 11 12\n",
                                   "0",
                                   "1\n",
                                   "-17\n",
                                   "0x1F\n",
                                   "\xff\xfe",
                                   "abc\n"};

constexpr const char* kScalars[] = {"ActualDimmingLevel",
                                    "CalculatedSunrise",
                                    "CalculatedSunset",
                                    "ContentLevelAvg",
                                    "DimmingLevel",
                                    "DimmingMode",
                                    "ErrorFlags",
                                    "ErrorFlagsX",
                                    "FansEnabled",
                                    "FansOverride",
                                    "GUID",
                                    "GUIDX",
                                    "MdlsAmbientFailure",
                                    "MdlsAmbientOverride",
                                    "ProductFamily",
                                    "ThermalScaler",
                                    "TtableAuthor",
                                    "TtableColumns",
                                    "TtableDeviceNode_1",
                                    "TtableDeviceNode_-1",
                                    "TtableFaceCnt",
                                    "TtablePixelPitch",
                                    "TtableRows",
                                    "TtableTitle",
                                    "guid",
                                    "Zzz",
                                    "DCIO_1_State",
                                    "DCIO_1_Type",
                                    "DCIO_2_ErrCnt",
                                    "DCIO_2_Type",
                                    "DCIO_2_Address",
                                    "DCIO_-1_State",
                                    "DCIO_3"};

constexpr const char* kValues[] = {"",       "1",    "0",          "62.5",
                                   "62,5",   "auto", "manual",     "Manual",
                                   "true",   "none", "qtm3300",    "DoorSwitch",
                                   "RunLED", "Door", "x",          "70000",
                                   "-1",     " 7 ",  "4294967296", "99999999999999999999"};

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  Scenario Make(unsigned seed) {
    Scenario controller;
    for (const char* path : kFiles) {
      AddFile(controller, path);
    }
    if (sandbox::DevicesAvailable()) {
      for (const char* node : kDevices) {
        AddDevice(controller, node);
      }
    }
    AddInterfaces(controller);
    if (Below(10) != 0) {
      AddRows(controller, seed);
    }
    return controller;
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  template <class T, std::size_t kCount>
  T Pick(const T (&choice)[kCount]) {
    return choice[Below(kCount)];
  }

  void AddFile(Scenario& controller, const char* path) {
    switch (Below(8)) {
      case 0:
        return;
      case 1:
        controller.Unopenable(path);
        return;
      case 2:
        controller.Folder(path);
        return;
      case 3:
        controller.File(path, std::string(Below(6000), 'x'));
        return;
      default:
        break;
    }
    std::string text;
    for (std::size_t pieces = Below(12); pieces > 0; --pieces) {
      text += Pick(kPieces);
    }
    controller.File(path, text);
  }

  void AddDevice(Scenario& controller, const char* node) {
    if (Below(5) == 0) {
      return;
    }
    controller.Device(node);
    for (const std::uint32_t request : kRequests) {
      if (Below(4) != 0) {
        controller.Answer(node, request, static_cast<std::int32_t>(Below(300)) - 2);
      }
    }
  }

  void AddInterfaces(Scenario& controller) {
    for (const char* name : {"eth0", "eth1"}) {
      if (Below(2) != 0) {
        sandbox::NetworkInterface interface {
          name, "00:1A:2B:3C:4D:5E", sandbox::LinkState::kUp, {}
        };
        if (Below(2) != 0) {
          interface.Addresses.push_back({"192.168.1.20/24", "192.168.1.255", ""});
        }
        if (Below(2) != 0) {
          interface.Addresses.push_back({"2001:db8::20/64", "", ""});
        }
        controller.Interface(interface);
      }
    }
  }

  void AddRows(Scenario& controller, unsigned seed) {
    controller.Database();
    for (const auto& [key, value] : RowMaker(seed).Make()) {
      controller.Row(key, value);
    }
    for (const char* key : kScalars) {
      switch (Below(6)) {
        case 0:
          break;
        case 1:
          controller.Row(key, nullptr);
          break;
        case 2:
          controller.Row(key, sandbox::Blob(std::string("a\0b", 3)));
          break;
        default:
          controller.Row(key, Pick(kValues));
      }
    }
  }

  std::mt19937 random_;
};

}  // namespace

sandbox::Scenario RandomController(unsigned seed) { return Maker(seed).Make(seed); }

}  // namespace reliability
