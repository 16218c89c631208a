#include "bench/floors.h"

#include <fcntl.h>
#include <ifaddrs.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlsave.h>
#include <net/if.h>
#include <netdb.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "collector/dispatch.h"
#include "hardware/paths.h"
#include "hardware/requests.h"

namespace bench {
namespace {

namespace paths = hardware::paths;
namespace requests = hardware::requests;

unsigned ReadOnce(const char* path, hardware::Access mode, std::size_t limit) {
  char bytes[4096];
  const int file = open(path, static_cast<int>(mode));
  if (file < 0) {
    return 0;
  }
  const ssize_t count = read(file, bytes, limit);
  close(file);
  return count > 0 ? static_cast<unsigned char>(bytes[0]) : 0;
}

unsigned ReadOnce(const hardware::TextSource& source) {
  return ReadOnce(source.Path, source.Mode, source.Limit);
}

// The whole file, as many bytes at a time as the probe reads, into one place.
unsigned ReadAll(const char* path) {
  static char bytes[std::size_t{64} << 10U];
  const int file = open(path, static_cast<int>(hardware::Access::kRead));
  unsigned sum = 0;
  for (ssize_t count = 1; file >= 0 && count > 0;) {
    count = read(file, bytes, sizeof bytes);
    sum += static_cast<unsigned char>(bytes[0]);
  }
  close(file);
  return sum;
}

template <std::size_t kCount>
unsigned Ask(const char* path, const unsigned long (&list)[kCount]) {
  const int device = open(path, static_cast<int>(hardware::Access::kReadWrite));
  unsigned sum = 0;
  for (const unsigned long request : list) {
    sum += static_cast<unsigned>(ioctl(device, request));
  }
  close(device);
  return sum;
}

unsigned Devices() {
  unsigned sum = Ask(paths::kDisplay, {requests::display::kCompositorState});
  sum +=
      Ask(paths::kRouter, {requests::router::kFrameRate, requests::router::kOutputLevel,
                           requests::router::kStatistic0First, requests::router::kStatistic0Second,
                           requests::router::kStatistic1First, requests::router::kStatistic1Second,
                           requests::router::kTrackerEnable});
  sum += ReadOnce(paths::kFrameControl);
  sum += Ask(paths::kDisplay,
             {requests::display::kLevel, requests::display::kPower, requests::display::kTracker});
  sum += Ask(paths::kDiagnostics, {requests::diagnostics::kFlags});
  struct stat status;
  sum += stat(paths::kWatchdogEvent, &status) == 0 ? 1U : 0U;
  sum += Ask(paths::kRouter, {requests::router::kContentFirst, requests::router::kContentSecond,
                              requests::router::kContentThird});
  sum += ReadOnce(paths::kFrameControl) + ReadOnce(paths::kVideoMux);
  sum += ReadOnce(paths::kFrameControl);
  sum += Ask(paths::kDisplay, {requests::display::kDviSignal});
  sum += ReadOnce(paths::kVideoMux);
  sum += Ask(paths::kDisplay, {requests::display::kHardwareId1, requests::display::kHardwareId2,
                               requests::display::kHardwareId3});
  return sum;
}

unsigned Resources() {
  unsigned sum = ReadOnce(paths::kSerial) + ReadOnce(paths::kUuid) + ReadOnce(paths::kMemory);
  struct sysinfo information;
  sysinfo(&information);
  struct statfs storage;
  statfs(paths::kRootFolder, &storage);
  return sum + static_cast<unsigned>(information.uptime) + static_cast<unsigned>(storage.f_bfree);
}

unsigned NameOf(const sockaddr* address, socklen_t length) {
  char host[NI_MAXHOST];
  return static_cast<unsigned>(
      getnameinfo(address, length, host, sizeof host, nullptr, 0, NI_NUMERICHOST));
}

unsigned Interface(const ifaddrs& entry) {
  const std::string name = entry.ifa_name;
  const std::string carrier = paths::Carrier(name);
  struct stat status;
  stat(carrier.c_str(), &status);
  unsigned sum = ReadOnce(carrier.c_str(), hardware::Access::kRead, paths::kCarrierLimit);
  if (entry.ifa_addr->sa_family == AF_PACKET) {
    const std::string transitions = paths::Transitions(name);
    sum += ReadOnce(transitions.c_str(), hardware::Access::kRead, paths::kTransitionsLimit);
    sum += ReadOnce(paths::kLinkCounters);
  } else if (entry.ifa_addr->sa_family == AF_INET6) {
    sum += NameOf(entry.ifa_addr, 28);
  } else if (entry.ifa_addr->sa_family == AF_INET) {
    sum += NameOf(entry.ifa_addr, 16) + NameOf(entry.ifa_netmask, 16) +
           NameOf(entry.ifa_broadaddr, 16) + ReadAll(paths::kRoutes);
    ifreq request{};
    std::strncpy(request.ifr_name, entry.ifa_name, sizeof request.ifr_name - 1);
    const int socket_number = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sum +=
        static_cast<unsigned>(ioctl(socket_number, requests::socket::kHardwareAddress, &request));
    close(socket_number);
  }
  return sum;
}

const xmlChar* Xml(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

}  // namespace

RowsFloor::RowsFloor() {
  if (sqlite3_open_v2(paths::kStatusDatabase, &database_,
                      SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database_));
  }
}

RowsFloor::~RowsFloor() { sqlite3_close(database_); }

unsigned RowsFloor::Run() {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database_, rows::kSelect, -1, &statement, nullptr);
  char key[CSQLdatabase::kMaxAddressBytes + 1];
  char value[CSQLdatabase::kMaxValueBytes + 1];
  unsigned sum = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    std::strcpy(key, reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    std::strcpy(value, reinterpret_cast<const char*>(sqlite3_column_text(statement, 1)));
    sum += static_cast<unsigned char>(key[0]) + static_cast<unsigned char>(value[0]);
  }
  sqlite3_finalize(statement);
  return sum;
}

unsigned PackagesFloor() { return ReadAll(paths::kPackages); }

unsigned NetworkFloor() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    return 0;
  }
  unsigned sum = 0;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr != nullptr && (entry->ifa_flags & IFF_RUNNING) != 0 &&
        std::strcmp(entry->ifa_name, "lo") != 0) {
      sum += Interface(*entry);
    }
  }
  freeifaddrs(first);
  return sum + ReadOnce(paths::kResolver);
}

unsigned ProbeFloor() { return Devices() + Resources() + PackagesFloor() + NetworkFloor(); }

std::vector<TreeStep> TreeSteps(const std::string& xml) {
  using Kind = TreeStep::Kind;
  const std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)> reader(
      xmlReaderForMemory(xml.data(), static_cast<int>(xml.size()), nullptr, "UTF-8",
                         XML_PARSE_NOBLANKS),
      &xmlFreeTextReader);
  std::vector<TreeStep> steps;
  const auto text = [](const xmlChar* bytes) { return reinterpret_cast<const char*>(bytes); };
  while (xmlTextReaderRead(reader.get()) == 1) {
    const int type = xmlTextReaderNodeType(reader.get());
    if (type == XML_READER_TYPE_ELEMENT) {
      const bool empty = xmlTextReaderIsEmptyElement(reader.get()) == 1;
      steps.push_back({Kind::kOpen, text(xmlTextReaderConstName(reader.get())), ""});
      while (xmlTextReaderMoveToNextAttribute(reader.get()) == 1) {
        steps.push_back({Kind::kAttribute, text(xmlTextReaderConstName(reader.get())),
                         text(xmlTextReaderConstValue(reader.get()))});
      }
      if (empty) {
        steps.push_back({Kind::kClose, "", ""});
      }
    } else if (type == XML_READER_TYPE_END_ELEMENT) {
      steps.push_back({Kind::kClose, "", ""});
    }
  }
  return steps;
}

std::string XmlFloor(const std::vector<TreeStep>& steps) {
  xmlDoc* const document = xmlNewDoc(Xml("1.0"));
  xmlNode* node = nullptr;
  for (const TreeStep& step : steps) {
    if (step.What == TreeStep::Kind::kAttribute) {
      xmlNewProp(node, Xml(step.Name), Xml(step.Value));
    } else if (step.What == TreeStep::Kind::kClose) {
      node = node->parent;
    } else if (node == nullptr) {
      node = xmlNewDocNode(document, nullptr, Xml(step.Name), nullptr);
      xmlDocSetRootElement(document, node);
    } else {
      node = xmlNewChild(node, nullptr, Xml(step.Name), nullptr);
    }
  }
  xmlBuffer* const buffer = xmlBufferCreate();
  xmlSaveCtxt* const save = xmlSaveToBuffer(buffer, "UTF-8", XML_SAVE_FORMAT);
  xmlSaveDoc(save, document);
  xmlSaveClose(save);
  std::string text = reinterpret_cast<const char*>(xmlBufferContent(buffer));
  xmlBufferFree(buffer);
  xmlFreeDoc(document);
  return text;
}

}  // namespace bench
