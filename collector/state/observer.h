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
// Events are reported on the thread of the cycle, in its order. Pointers in them are valid during
// the call only; those to the document and to the scratch state are valid as long as these exist. A
// probe or handler that is called outside of a cycle is observed as well. Later versions may report
// more kinds of events and add members at the end of events; an observer ignores what it does not
// know.
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

  // The event as a T, one of the types below; null when it is of another type.
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
// source. What it calls of the collector is not observed. It may change errno: the collector reads
// that of its own call. An exception that it throws ends the observation, not the cycle.
class COLLECTOR_API Observer {
 public:
  virtual ~Observer();
  virtual void See(const Event& event) = 0;
};

// From now on events of this process are reported to `observer`, which the caller owns; null: to
// nobody. Returns the observer before it. Must not be called while a cycle runs on another thread.
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

// The events of a probe come between these two. When an exception leaves the probe, the second one
// is not reported.
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

// Reported before a source is asked. When a source hangs, the last of these names it.
struct Asks : EventOf<Kind::kAsks> {
  Call What = Call::kOpen;
  const char* Source = "";  // path or interface; "" where there is none
  // Of the file or device that is asked, -1 where there is none. kOpen: that of the folder in which
  // Source's last name is opened, when the names before it were opened one by one.
  int Descriptor = -1;
  unsigned long Number = 0;           // kOpen: flags; kRequest: the request
  std::uint64_t Offset = 0;           // kRead: bytes read from this descriptor before
  std::size_t Limit = 0;              // kRead, kLinkTarget: bytes at most
  const sockaddr* Address = nullptr;  // kHostText: as in the interface list, may be null
  std::size_t AddressBytes = 0;       // kHostText
};

// Reported afterwards: the outcome. Only the members that belong to the call are set.
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

  // True when a read filled its limit: there may be more, which the cycle does not see.
  bool MayGoOn() const;
};

// A label that was looked for in what was read last.
struct Label : EventOf<Kind::kLabel> {
  const char* Text = nullptr;
  bool Found = false;
  // False when what follows the label is no value, or, with an empty Text, all that was read: what
  // the cycle makes of it is of no use.
  bool Readable = true;
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

// Reported before each stage but kSwitch; within kRows the rows follow.
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
  bool FromBefore = false;        // kOpen: reported before; nothing was opened since
  const char* Table = nullptr;    // kTable, kTrigger: its name
};

// ---- Rows

// Reported before the handler is called.
struct RowBegins : EventOf<Kind::kRowBegins> {
  const char* Key = nullptr;       // whole, up to its first zero byte; null: NULL
  const char* Value = nullptr;     // likewise
  const char* CutKey = nullptr;    // what the handler gets
  const char* CutValue = nullptr;  // likewise
  int Entry = -1;                  // position in status_primary_keys, -1: unknown
  int SearchedFrom = 0;            // where the search for the entry began; it only goes forward

  // Bytes of column 0 (key) or 1 (value) in the database: more than its text has when the column
  // contains a zero byte.
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
  kOtherWord,         // no word of the list: the code for any other text is stored
  kUnknownWord,       // no word of the list: the destination keeps what it holds
  kFirstStays,        // a fan has a speed already
  kRefusedNumber,     // the number in the key begins with one of '(' to '/'
  kNoAttribute,       // the key ends before its attribute, or the attribute before its part
  kUnknownAttribute,  // no table has it
  kOutsideTable,      // the number of a point is in no staging table
  kNotVolts,          // the attribute of a voltage lacks "Volts"
  kOtherKey,          // the key only begins with the one that the handler reads
};

// A value, reported after it is stored, or when it is not stored. A row may store several: the
// number in its key, the value, the value plus one, what replaces it.
struct Stores : EventOf<Kind::kStores> {
  Fate What = Fate::kStored;
  const void* Destination = nullptr;  // the scratch variable or field, by its address; null: none
  const void* Container = nullptr;    // the scratch variable that holds it: fans, voltages, points
  long Index = -1;                    // number of the fan or point, position of the voltage
  std::string_view Attribute;  // as the table has it, or the unknown one; "" for a number in a key
  const char* Parser = "";     // what reads the text: "integer"
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
  kPositionTaken,  // the list has an element at that position already
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
  unsigned int Position = 0;  // in its list; when it is refused, the number of elements there
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

// A staged point or fan, when a board takes what is staged.
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
