#include "tests/replay/generator.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/format/devices.h"
#include "sandbox/format/faults.h"
#include "sandbox/format/interfaces.h"
#include "sandbox/format/rows.h"
#include "sandbox/format/uptime.h"

namespace replay {
namespace {

using sandbox::Node;
using sandbox::Tree;

constexpr const char* kFiles[] = {
    "/proc/driver/frame_control/registers",
    "/proc/driver/video_mux/registers",
    "/proc/meminfo",
    "/proc/net/dev",
    "/proc/net/route",
    "/etc/resolv.conf",
    "/home/Zet/.settings/uuid",
    "/home/Zet/.settings/serial#",
    "/var/lib/dpkg/status",
    "/var/run/wd_event",
    "/var/www/localhost/htdocs/korvane/syscontrol/1.0/configuration/conftimestamp"};
constexpr const char* kNodes[] = {"travex", "zetdisplay", "diagnostics"};
constexpr const char* kNames[] = {"eth0", "eth1", "wlan0", "ppp0", "a#b", "\xFF\xE9x"};
constexpr int kErrors[] = {EACCES, EIO, ENXIO, EPERM, ENODEV, EBUSY};
// The requests of every node; that they mean something else to another one does no harm.
constexpr std::uint32_t kRequests[] = {
    0x8004DA0C, 0x8004DA1C, 0x8004DA1E, 0x8004DA50, 0x8004DA55, 0x8004DA5C, 0x8004DA5D, 0x8004DA5E,
    0x8004DA5F, 0x8004DA60, 0x8004DA61, 0x8004DA63, 0x8004DA64, 0x8004DA65, 0x8004DA70, 0x8004DB17};

class Generator {
 public:
  explicit Generator(unsigned int seed) : random_(seed) {}

  Tree Make() {
    const int steps = Below(4);
    for (const char* const path : kFiles) {
      MakeFile("", path);
    }
    MakeNodes("");
    MakeInterfaces("");
    MakeRows("");
    MakeFaults("");
    Add("uptime", sandbox::UptimeText(std::chrono::seconds(Below(10'000'000))));
    for (int step = 1; step <= steps; ++step) {
      MakeStep("steps/0" + std::to_string(step) + "/");
    }
    return std::move(tree_);
  }

 private:
  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool OneOf(int count) { return Below(count) == 0; }
  template <class List>
  auto Any(const List& list) {
    return list[static_cast<std::size_t>(Below(static_cast<int>(std::size(list))))];
  }

  void Add(const std::string& path, const std::string& bytes) { tree_[path] = {.Bytes = bytes}; }

  std::string Bytes(int limit) {
    std::string bytes(static_cast<std::size_t>(Below(limit)), '\0');
    std::ranges::generate(bytes, [this] { return static_cast<char>(Below(256)); });
    return bytes;
  }

  // What the demo has at this path, perhaps spoilt.
  std::string Sensible(const std::string& path) {
    const auto file = sandbox::SourcePath("scenarios/demo/root" + path);
    std::string bytes = std::filesystem::exists(file) ? sandbox::ReadFile(file) : "12\n";
    if (OneOf(3) && !bytes.empty()) {
      bytes[static_cast<std::size_t>(Below(static_cast<int>(bytes.size())))] =
          static_cast<char>(Below(256));
    }
    if (OneOf(5)) {
      bytes.resize(static_cast<std::size_t>(Below(static_cast<int>(bytes.size()) + 1)));
    }
    return OneOf(6) ? bytes + Bytes(5000) : bytes;
  }

  void MakeFile(const std::string& step, const std::string& path) {
    const std::string name = step + "root" + path;
    switch (Below(10)) {
      case 0:
        break;
      case 1:
        Add(name, Bytes(3000));
        break;
      case 2:
        if (step.empty()) {  // a step would have to remove it before
          tree_[name] = {.What = Node::Kind::kFolder};
          break;
        }
        [[fallthrough]];
      default:
        Add(name, Sensible(path));
        break;
    }
  }

  void MakeNode(const std::string& step, const std::string& node) {
    sandbox::DeviceAnswers answers;
    if (OneOf(6)) {
      answers.OpenError = Any(kErrors);
    }
    for (const std::uint32_t request : kRequests) {
      if (OneOf(5)) {
        continue;
      }
      const int big = static_cast<int>(random_());
      answers.Values[request] = OneOf(4) ? big : OneOf(5) ? -Below(5000) : Below(70'000);
    }
    Add(step + "devices/" + node, answers.Text());
  }

  void MakeNodes(const std::string& step) {
    for (const char* const node : kNodes) {
      if (!OneOf(6)) {
        MakeNode(step, node);
      }
    }
  }

  std::string Address(int network) {
    return "10." + std::to_string(network) + "." + std::to_string(Below(256)) + "." +
           std::to_string(1 + Below(250));
  }

  sandbox::NetworkInterface Interface(int number) {
    sandbox::NetworkInterface made;
    made.Name = kNames[number];
    made.Mac = "02:00:00:00:0" + std::to_string(number) + ":0" + std::to_string(Below(10));
    const bool odd = OneOf(5);  // as others than Ethernet have it
    if (odd) {
      made.Mac = OneOf(2) ? "00:00:00:00:00:00" : "01:00:5E:00:00:01";
    }
    made.State =
        Any(std::vector{sandbox::LinkState::kUp, sandbox::LinkState::kUp, sandbox::LinkState::kUp,
                        sandbox::LinkState::kUnplugged, sandbox::LinkState::kDown});
    const int addresses = Below(4);
    for (int at = 0; at < addresses; ++at) {
      const std::string address = Address(number * 8 + at);
      switch (Below(5)) {
        case 0:
          made.Addresses.push_back({.Prefix = "2001:db8:" + std::to_string(number * 8 + at) +
                                              "::" + std::to_string(1 + Below(9)) + "/64"});
          break;
        case 1:
          made.Addresses.push_back({.Prefix = address + "/32", .Peer = Address(200 + at)});
          break;
        case 2:
          made.Addresses.push_back({.Prefix = address + "/" + std::to_string(8 + Below(20)),
                                    .Broadcast = "10.255.255.255",
                                    .Label = odd ? "" : made.Name + ":" + std::to_string(at)});
          break;
        case 3:
          made.Addresses.push_back({.Prefix = address + "/16", .Peer = OneOf(3) ? "0.0.0.0" : ""});
          break;
        default:
          made.Addresses.push_back({.Prefix = address + "/24", .Broadcast = "10.0.0.255"});
          break;
      }
    }
    return made;
  }

  void MakeInterfaces(const std::string& step) {
    std::vector<sandbox::NetworkInterface> made;
    for (int number = 0; number < static_cast<int>(std::size(kNames)); ++number) {
      if (OneOf(2)) {
        made.push_back(Interface(number));
        const std::string name = made.back().Name;
        if (OneOf(2)) {
          Add(step + "root/sys/class/net/" + name + "/carrier", OneOf(4) ? "0\n" : "1\n");
        }
        if (OneOf(2)) {
          Add(step + "root/dev/shm/netlink-" + name, std::to_string(Below(1000)));
        }
      }
    }
    std::ranges::shuffle(made, random_);
    Add(step + "interfaces", sandbox::InterfacesText(made));
  }

  void MakeRows(const std::string& step) {
    static const std::vector<sandbox::Rows> known = [] {
      std::vector<sandbox::Rows> all;
      for (const char* const name : {"demo", "faults", "mistakes", "minimal"}) {
        all.push_back(
            sandbox::ParseFile(sandbox::SourcePath(std::string("scenarios/") + name + "/rows.tsv"),
                               sandbox::ParseRows));
      }
      return all;
    }();
    if (step.empty() && OneOf(12)) {
      return;
    }
    sandbox::Rows rows;
    for (const auto& [key, value] : known[static_cast<std::size_t>(Below(4))]) {
      if (OneOf(20)) {
        continue;
      }
      if (OneOf(25)) {
        rows.insert_or_assign(key, OneOf(4) ? sandbox::RowValue(nullptr) : Bytes(40));
      } else {
        rows.insert_or_assign(key, value);
      }
    }
    for (int odd = Below(6); odd > 0; --odd) {
      rows.insert_or_assign("Title" + Bytes(6), sandbox::Blob(Bytes(40)));
    }
    Add(step + "rows.tsv", sandbox::RowsText(rows));
  }

  void MakeFaults(const std::string& step) {
    sandbox::Faults faults;
    for (const char* const path : kFiles) {
      const auto file = tree_.find(std::string("root") + path);
      if (!OneOf(8) || (file != tree_.end() && file->second.What == Node::Kind::kFolder)) {
        continue;
      }
      sandbox::FileFault fault;
      switch (Below(4)) {
        case 0:
          fault.Open = Any(kErrors);
          break;
        case 1:
          fault.Read = Any(kErrors);
          fault.ReadAfter = static_cast<std::uint64_t>(Below(3) * Below(500));
          break;
        case 2:
          fault.Status = Any(kErrors);
          break;
        default:
          fault.IsPipe = true;
          break;
      }
      faults.Files[path] = fault;
    }
    for (const char* const name : kNames) {
      if (OneOf(8)) {
        faults.HardwareAddresses[name] = Any(kErrors);
      }
    }
    Add(step + "faults", sandbox::FaultsText(faults));
  }

  // Each part changes in every second step or so.
  void MakeStep(const std::string& step) {
    Add(step + "uptime", sandbox::UptimeText(std::chrono::seconds(Below(10'000'000))));
    for (const char* const path : kFiles) {
      const auto file = tree_.find(std::string("root") + path);
      if (OneOf(3) && (file == tree_.end() || file->second.What == Node::Kind::kFile)) {
        MakeFile(step, path);
      }
    }
    if (OneOf(2)) {
      MakeNodes(step);
    }
    if (OneOf(2)) {
      MakeInterfaces(step);
    }
    if (OneOf(2) && tree_.contains("rows.tsv")) {
      MakeRows(step);
    }
    if (OneOf(2)) {
      MakeFaults(step);
    }
  }

  std::mt19937 random_;
  Tree tree_;
};

}  // namespace

Tree Generate(unsigned int seed) { return Generator(seed).Make(); }

}  // namespace replay
