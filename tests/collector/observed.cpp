#include "tests/collector/observed.h"

#include <ifaddrs.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstring>
#include <locale>
#include <sstream>

namespace {

using namespace observe;  // NOLINT: every name of it is used here

constexpr const char* kCalls[] = {
    "open",    "read",       "file status", "path status", "link target",      "request",
    "storage", "system",     "interfaces",  "socket",      "hardware address", "host text",
    "time",    "local time", "UTC"};
constexpr const char* kStages[] = {"open",    "prepare", "execute", "rows",   "finish",
                                   "release", "switch",  "table",   "trigger"};
constexpr const char* kFates[] = {
    "stored",       "other word",        "unknown word",  "first stays", "refused number",
    "no attribute", "unknown attribute", "outside table", "not volts",   "other key"};
constexpr const char* kEndings[] = {"completed", "found",    "position taken",
                                    "no kind",   "not here", "no place"};
constexpr const char* kPlaces[] = {"sensor", "interface sensor", "display interface", "DCIO device",
                                   "T-table device"};
constexpr const char* kPointPlaces[] = {"input", "output", "fan"};
constexpr const char* kPointFates[] = {"taken", "refused", "no class", "left"};

template <std::size_t kCount, class Code>
const char* Name(const char* const (&names)[kCount], Code code) {
  const auto position = static_cast<std::size_t>(code);
  return position < kCount ? names[position] : "unnamed";
}

std::string Quoted(const char* text) { return text == nullptr ? "NULL" : text; }

std::ostream& operator<<(std::ostream& out, const Number& number) {
  switch (number.Is) {
    case Number::Type::kSigned:
      return out << number.Signed;
    case Number::Type::kUnsigned:
      return out << number.Unsigned;
    case Number::Type::kFloating:
      return out << number.Floating;
    default:
      return out << "none";
  }
}

void Write(std::ostream& out, const CycleBegins& /*event*/) { out << "cycle begins"; }

void Write(std::ostream& out, const CycleEnds& event) {
  out << "cycle ends " << event.Result << (event.Threw ? ", threw" : "");
}

void Write(std::ostream& out, const ProbeBegins& event) { out << "probe " << event.Probe; }

void Write(std::ostream& out, const ProbeEnds& event) {
  out << "probe ends " << event.Probe << " " << event.Result;
}

void Write(std::ostream& out, const Asks& event) {
  out << "asks " << Name(kCalls, event.What) << " " << event.Source;
  switch (event.What) {
    case Call::kOpen:
    case Call::kRequest:
      out << ", 0x" << std::hex << event.Number;
      break;
    case Call::kRead:
      out << ", offset " << event.Offset << ", limit " << event.Limit;
      break;
    case Call::kHostText:
      out << ", family " << (event.Address == nullptr ? -1 : event.Address->sa_family);
      break;
    default:
      break;
  }
}

void WriteInterfaces(std::ostream& out, const ifaddrs* entry) {
  for (; entry != nullptr; entry = entry->ifa_next) {
    out << ", " << entry->ifa_name << "/"
        << (entry->ifa_addr == nullptr ? -1 : entry->ifa_addr->sa_family);
  }
}

void Write(std::ostream& out, const Answers& event) {
  out << "answers " << Name(kCalls, event.Question->What) << " " << event.Question->Source << ": "
      << event.Result;
  if (event.Error != 0) {
    out << ", " << std::strerror(event.Error);
  }
  if (event.Bytes.data() != nullptr) {
    out << ", \"" << event.Bytes << '"' << (event.MayGoOn() ? "..." : "");
  }
  if (event.Status != nullptr) {
    out << ", " << (S_ISREG(event.Status->st_mode) ? "regular " : "other ") << std::oct
        << (event.Status->st_mode & 07777) << std::dec << " of " << event.Status->st_uid;
  }
  if (event.Storage != nullptr) {
    out << ", " << event.Storage->f_blocks << " blocks";
  }
  if (event.System != nullptr) {
    out << ", up " << event.System->uptime;
  }
  if (event.Time != nullptr) {
    out << ", " << event.Time->tm_year << " at " << event.Time->tm_gmtoff;
  }
  WriteInterfaces(out, event.Interfaces);
}

void Write(std::ostream& out, const Label& event) {
  out << "label " << event.Text << (event.Found ? "" : " missing");
}

std::string TableText(const char* table) {
  return table == nullptr ? "" : std::string(" ") + table;
}

void Write(std::ostream& out, const AsksDatabase& event) {
  out << "asks database " << Name(kStages, event.At) << TableText(event.Table);
}

void Write(std::ostream& out, const DatabaseFails& event) {
  out << "database fails " << Name(kStages, event.At) << TableText(event.Table)
      << (event.FromBefore ? " before" : "") << ": " << event.Code << ", " << event.ExtendedCode
      << ", " << (event.SystemError == 0 ? "no error" : std::strerror(event.SystemError)) << ", "
      << event.Message;
}

void Write(std::ostream& out, const RowBegins& event) {
  out << "row " << event.Entry << " " << Quoted(event.Key) << "=" << Quoted(event.Value);
}

void Write(std::ostream& out, const RowEnds& event) { out << "ends row " << event.Result; }

void Write(std::ostream& out, const Stores& event) {
  out << "stores " << event.Attribute << " \"" << Quoted(event.Text)
      << "\": " << Name(kFates, event.What);
  if (*event.Parser != '\0') {
    out << ", " << event.Parser << " of " << event.Consumed << ", " << event.Read << " as "
        << event.Stored;
  }
  if (event.Container != nullptr) {
    out << ", index " << event.Index;
  }
}

void Write(std::ostream& out, const Record& event) {
  out << "record " << Name(kPlaces, event.Where) << " " << event.Number << ", type " << event.Type
      << ": " << Name(kEndings, event.What) << " at " << event.Position;
  if (event.Interface >= 0) {
    out << " of " << event.Interface;
  }
  out << ", took " << event.Taken.size();
}

void Write(std::ostream& out, const Point& event) {
  out << "point " << Name(kPointPlaces, event.Where) << " " << event.Entry << ", type "
      << event.Type << ", index " << event.Index << ": " << Name(kPointFates, event.What);
}

template <class... Events>
void WriteOneOf(std::ostream& out, const Event& event) {
  const auto write = [&](const auto* as) {
    if (as != nullptr) {
      Write(out, *as);
    }
  };
  (write(event.As<Events>()), ...);
}

}  // namespace

std::string TextOf(const Event& event) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  WriteOneOf<CycleBegins, CycleEnds, ProbeBegins, ProbeEnds, Asks, Answers, Label, AsksDatabase,
             DatabaseFails, RowBegins, RowEnds, Stores, Record, Point>(text, event);
  return text.str();
}

Observed::Observed() : before_(SetObserver(this)) {}

Observed::~Observed() { SetObserver(before_); }

void Observed::See(const Event& event) {
  All.push_back(TextOf(event));
  if (Then) {
    Then(event);
  }
}

std::vector<std::string> Observed::Lines(const std::vector<std::string>& wanted) const {
  std::vector<std::string> lines;
  std::ranges::copy_if(All, std::back_inserter(lines), [&](const std::string& line) {
    return std::ranges::any_of(
        wanted, [&](const std::string& beginning) { return line.starts_with(beginning); });
  });
  return lines;
}
