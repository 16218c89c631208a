// What a collection cycle asks, is answered, reads and stores, as it happens: for programs
// that explain, record or watch a cycle.
//
//   class RowCounter : public observe::Observer {
//    public:
//     void See(const observe::Event& event) override {
//       Rows += event.As<observe::RowBegins>() != nullptr;
//     }
//     int Rows = 0;
//   };
//
//   RowCounter counter;
//   observe::SetObserver(&counter);
//   collector.QueryDatabase();
//   observe::SetObserver(nullptr);
//
// Events come on the thread of the cycle, in its order. All pointers in them are valid during the
// call only, those to the document and to the scratch state as long as these. A probe or handler
// that is called outside of a cycle is observed as well. Later versions may tell more events and
// add members at the end of these; what an observer does not know it passes over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <span>
#include <string_view>

#include "collector/state/export.h"

struct ifaddrs;
struct sockaddr;
struct stat;
struct statfs;
struct sysinfo;

namespace QtSts {
class CBaseStatus;
class CStatus;
}  // namespace QtSts

namespace observe {

enum class Kind : std::uint32_t {
  kCycleBegins,
  kCycleEnds,
  kProbeBegins,
  kProbeEnds,
  kAsks,
  kAnswers,
  kLabel,
  kAsksDatabase,
  kDatabaseFails,
  kRowBegins,
  kRowEnds,
  kStores,
  kRecord,
  kPoint,
};

struct Event {
  Kind Tag;

  // The event as a T of those below; null when it is none.
  template <class T>
  const T* As() const {
    return Tag == T::kKind ? static_cast<const T*>(this) : nullptr;
  }
};

template <Kind kWhat>
struct EventOf : Event {
  static constexpr Kind kKind = kWhat;
  constexpr EventOf() : Event{kWhat} {}
};

// May look at everything and change nothing: neither the document, nor the scratch state, nor a
// source. What it calls of the collector is not observed. errno is kept for the collector. An
// exception that it throws ends the observation, not the cycle.
class COLLECTOR_API Observer {
 public:
  virtual ~Observer();
  virtual void See(const Event& event) = 0;
};

// Makes `observer`, which stays the caller's, see what happens from now on in this process; null
// for nobody. Returns the one before. Not while a cycle runs on another thread.
COLLECTOR_API Observer* SetObserver(Observer* observer) noexcept;

// The present observer; null after one has thrown.
COLLECTOR_API Observer* CurrentObserver() noexcept;

struct CycleBegins : EventOf<Kind::kCycleBegins> {
  const QtSts::CStatus* Status = nullptr;  // the document being filled
};

struct CycleEnds : EventOf<Kind::kCycleEnds> {
  int Result = 0;      // of QueryDatabase
  bool Threw = false;  // an exception leaves QueryDatabase; there is no result
};

// Events of a probe stand between these two. An exception that leaves the probe leaves out the
// second one.
struct ProbeBegins : EventOf<Kind::kProbeBegins> {
  // The name of its function: "OutputPort"; "Versions" for the two that read the package database.
  const char* Probe = nullptr;
};
struct ProbeEnds : EventOf<Kind::kProbeEnds> {
  const char* Probe = nullptr;
  int Result = 0;
};

// ---- Sources

enum class Call : std::uint32_t {
  kOpen,             // open, or openat where it has a descriptor
  kRead,             // read
  kFileStatus,       // fstat
  kPathStatus,       // stat
  kLinkTarget,       // readlinkat of a link that was opened with O_PATH
  kRequest,          // ioctl of a device node, without an argument
  kStorage,          // statfs
  kSystem,           // sysinfo
  kInterfaces,       // getifaddrs
  kSocket,           // socket
  kHardwareAddress,  // SIOCGIFHWADDR
  kHostText,         // getnameinfo
  kTime,             // time
  kLocalTime,        // localtime_r
  kUtcTime,          // gmtime_r
};

// Told before a source is asked: the last one names a source that hangs.
struct Asks : EventOf<Kind::kAsks> {
  Call What = Call::kOpen;
  const char* Source = "";  // path or interface; "" where there is none
  // Of what is asked, -1 where there is none. kOpen: the folder in which Source's last name is
  // opened, when the names before it were opened one by one.
  int Descriptor = -1;
  unsigned long Number = 0;           // kOpen: flags; kRequest: the request
  std::uint64_t Offset = 0;           // kRead: bytes read from this descriptor before
  std::size_t Limit = 0;              // kRead, kLinkTarget: bytes at most
  const sockaddr* Address = nullptr;  // kHostText: may be null, as the interface list has it
  std::size_t AddressBytes = 0;       // kHostText
};

// What came of it. Only the members that belong to the call are set.
struct Answers : EventOf<Kind::kAnswers> {
  const Asks* Question = nullptr;
  long long Result = 0;    // what the call returned
  int Error = 0;           // errno when the call failed, else 0
  std::string_view Bytes;  // kRead, kLinkTarget; kHardwareAddress: six bytes; kHostText: the text
  const struct stat* Status = nullptr;         // kFileStatus, kPathStatus
  const struct statfs* Storage = nullptr;      // kStorage
  const struct sysinfo* System = nullptr;      // kSystem
  const struct ifaddrs* Interfaces = nullptr;  // kInterfaces: the whole list, its first entry
  const std::tm* Time = nullptr;               // kLocalTime, kUtcTime

  // The read filled its limit, so that there may be more that the cycle does not see.
  bool MayGoOn() const;
};

// A label that was looked for in what was read last.
struct Label : EventOf<Kind::kLabel> {
  const char* Text = nullptr;
  bool Found = false;
};

// ---- Database

enum class Stage : std::uint32_t {
  kOpen,     // InitDatabase
  kPrepare,  // the statement
  kExecute,  // up to the first row
  kRows,     // the rows
  kFinish,   // the end of the query
  kRelease,  // the end of the statement
  // InitDatabase for writing, after kOpen:
  kSwitch,   // makes the opened file ready for writers, in write-ahead mode; part of opening, so
             // that only its failure is reported
  kTable,    // makes sure of a table
  kTrigger,  // makes sure of the triggers of a table
};

// Sent before each stage but kSwitch; within kRows the rows follow.
struct AsksDatabase : EventOf<Kind::kAsksDatabase> {
  Stage At = Stage::kOpen;
  const char* Table = nullptr;  // kTable, kTrigger: its name
};

struct DatabaseFails : EventOf<Kind::kDatabaseFails> {
  Stage At = Stage::kOpen;
  int Code = 0;                   // SQLite's primary result code
  int ExtendedCode = 0;           // its extended one, the same where there is none
  int SystemError = 0;            // errno of the system call that failed, 0 when it is unknown
  const char* Message = nullptr;  // as reported on standard error
  bool FromBefore = false;        // kOpen: told again, because nothing is open since
  const char* Table = nullptr;    // kTable, kTrigger: its name
};

// ---- Rows

// Told before the handler is called.
struct RowBegins : EventOf<Kind::kRowBegins> {
  const char* Key = nullptr;       // whole, up to its first zero byte; null: NULL
  const char* Value = nullptr;     // likewise
  const char* CutKey = nullptr;    // what the handler gets
  const char* CutValue = nullptr;  // likewise
  int Entry = -1;                  // position in status_primary_keys, -1: unknown
  int SearchedFrom = 0;            // where the search for the entry began; it only goes forward

  // Bytes of column 0 (key) or 1 (value) in the database, more than its text has when a zero byte
  // cuts it.
  std::size_t StoredBytes(int column) const { return Bytes(Cells, column); }

  std::size_t (*Bytes)(void* cells, int column) = nullptr;
  void* Cells = nullptr;
};

struct RowEnds : EventOf<Kind::kRowEnds> {
  int Result = 0;  // of the handler: -1 for a malformed number in the key; 0 without a handler
};

// ---- Values

// A number of any of the types that are stored.
struct Number {
  enum class Type : std::uint32_t { kNone, kSigned, kUnsigned, kFloating };
  Type Is = Type::kNone;
  union {
    long long Signed = 0;
    unsigned long long Unsigned;
    double Floating;
  };
};

// What became of a value.
enum class Fate : std::uint32_t {
  kStored,
  kOtherWord,         // no word of the list: stored is what stands for any other text
  kUnknownWord,       // no word of the list: the destination keeps what it holds
  kFirstStays,        // a fan has a speed already
  kRefusedNumber,     // the number in the key begins with one of '(' to '/'
  kNoAttribute,       // the key ends before its attribute, or the attribute before its part
  kUnknownAttribute,  // no table has it
  kOutsideTable,      // the number of a point is in no staging table
  kNotVolts,          // the attribute of a voltage lacks "Volts"
  kOtherKey,          // the key goes on where it has to end
};

// A value that is stored, told afterwards, or is kept away from its destination. A row may store
// several: the number in its key, the value, the value plus one, what replaces it.
struct Stores : EventOf<Kind::kStores> {
  Fate What = Fate::kStored;
  const void* Destination = nullptr;  // the scratch variable or field, by its address; null: none
  const void* Container = nullptr;    // the scratch variable that holds it: fans, voltages, points
  long Index = -1;                    // number of the fan or point, position of the voltage
  std::string_view Attribute;  // as the table has it, or the unknown one; "" for a number in a key
  const char* Parser = "";     // the name of how the text is read: "integer"
  const char* Text = nullptr;  // what is read: the value, or the key from its number on
  std::size_t Consumed = 0;    // bytes of the text that count
  Number Read;                 // before it is cut to its destination
  Number Stored;               // what the destination holds now; none for a text
};

// ---- Elements

enum class Place : std::uint32_t {
  kSensors,            // the document's own list
  kInterfaceSensors,   // the list of a display interface of output 0
  kDisplayInterfaces,  // of output 0
  kDcioDevices,
  kTtableDevices,
};

enum class Ending : std::uint32_t {
  kCompleted,
  kFound,          // the display interface is there already and is used
  kPositionTaken,  // the list reaches as far as the number
  kNoKind,         // no class has this type
  kNotHere,        // the kind does not live behind a display interface
  kNoPlace,        // there is no such list
};

// An element that its last row completes, or that is refused.
struct Record : EventOf<Kind::kRecord> {
  Ending What = Ending::kCompleted;
  Place Where = Place::kSensors;
  int Interface = -1;         // kInterfaceSensors: position of the display interface
  std::uint32_t Number = 0;   // as its rows number it
  std::uint32_t Type = 0;     // code of its kind
  unsigned int Position = 0;  // in its list, whose elements are counted when it is refused
  const QtSts::CBaseStatus* Element = nullptr;  // in the document; null when refused
  std::span<const void* const> Taken;           // the scratch variables that it took
};

enum class PointPlace : std::uint32_t { kInput, kOutput, kFan };
enum class PointFate : std::uint32_t {
  kTaken,
  kRefused,  // its index lies outside of the board
  kNoClass,  // no class has its type
  kLeft,     // without a "Type" row it waits for another board
};

// A staged point or fan when a board takes its own.
struct Point : EventOf<Kind::kPoint> {
  PointFate What = PointFate::kTaken;
  PointPlace Where = PointPlace::kInput;
  unsigned int Entry = 0;                       // of the staging table; number of the fan
  std::uint32_t Type = 0;                       // of a point
  std::int32_t Index = 0;                       // of a point
  const QtSts::CBaseStatus* Element = nullptr;  // in the document, null when not taken
};

inline bool Answers::MayGoOn() const {
  return Question->What == Call::kRead && Result >= 0 &&
         static_cast<std::size_t>(Result) == Question->Limit && Question->Limit != 0;
}

}  // namespace observe
