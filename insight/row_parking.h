// Which row wrote each variable of the scratch state, and what became of it when an element was
// completed. Private to this library.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "collector/observer.h"
#include "collector/state/elements.h"
#include "insight/row_element.h"
#include "insight/row_unwritten.h"
#include "insight/snapshot.h"
#include "sensors/attributes.h"

namespace insight {

class Parking {
 public:
  // `rows` are those of the cycle so far; the last one is being handled.
  explicit Parking(std::vector<Row>* rows);

  void BeginCycle();
  // Once the last row has been handled.
  void EndCycle();

  // The row belongs to the element whose keys begin with `prefix`; "" for one of no element.
  void BeginRow(std::string_view prefix);

  // The row has stored in a variable; false when it is none that elements take.
  bool Store(const observe::Stores& store);
  // The row is the "Type" of its element, of a sensor or of a DCIO device.
  void StoreType(bool is_sensor);

  void Take(const observe::Point& point);
  // Of sensors, display interfaces and DCIO devices; `element` is null when it is refused.
  void Take(const observe::Record& record, Element* element);

  // Reports what the element of the row has inherited.
  void EndRow();

  // What elements have taken in this cycle as measured that no row wrote which was observed:
  // neither one of theirs nor one before.
  const Unwritten& Missing() const { return unwritten_; }

  // The rows of the element that the row belongs to, so far.
  std::string_view Prefix() const { return group_.Prefix; }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // The last row that wrote a variable.
  struct Writer {
    std::size_t Row = kNone;    // of this cycle
    std::size_t Group = kNone;  // of its element
    std::string Key;            // of a row of an earlier cycle; "" when none was observed

    bool IsKnown() const { return Row != kNone || !Key.empty(); }
  };
  struct Variable {
    const rows::Attribute* Written;
    Writer Last;
    std::size_t InheritedIn = kNone;  // the last row whose element inherited it
  };
  // A fan, a voltage, or one part of a point.
  struct StagedKey {
    const void* Container = nullptr;
    long Index = 0;
    std::string_view Part;
    bool operator<(const StagedKey& other) const {
      return std::tie(Container, Index, Part) < std::tie(other.Container, other.Index, other.Part);
    }
  };
  struct Parked {
    std::size_t Row;
    const void* Variable;  // null: it is staged
    StagedKey Staged;
    bool Resolved;
  };
  struct Inherited {
    std::string Name;
    std::string From;  // "": what stood there before the first observed cycle
  };
  // Rows of one element, which follow one another.
  struct Group {
    std::size_t Number = 0;
    std::string Prefix;
    std::size_t TypeRow = kNone;
    std::span<const elements::Taken> Takes;  // of the element that is there
    std::string Path;                        // of the element; "" while it is not there
    bool OnOwnBus = false;
    std::vector<Parked> Rows;  // in order
  };

  Row& At(std::size_t row) { return (*rows_)[row]; }
  std::size_t Current() const { return rows_->size() - 1; }
  bool IsComplete() const { return group_.TypeRow != kNone; }
  Row* RowOf(StagedKey key, std::string_view part);
  std::string NameOf(const StagedKey& key) const;
  bool IsLast(const Parked& parked) const;
  // Whether a row of the element that the row belongs to was the last to write.
  bool IsOfGroup(const Writer& last) const {
    return last.Row != kNone && last.Group == group_.Number;
  }

  void Park(Writer* last, const void* variable, const StagedKey& staged);
  void EndGroup();
  void EndParked(const Parked& parked);
  std::string WhyUntaken(const Variable& variable);

  void Resolve(std::size_t row, const Change* where);
  void Inherit(std::string name, const Writer& writer);
  // `member` is null when the variable does not stand in the element.
  void TakeVariable(const void* variable, const Member* member);
  void NoteUnwritten(const Member& member);
  bool TakeStaged(const StagedKey& key, const Change* where);
  void TakeMembers(const observe::Record& record, Element* element);
  void RemarkNarrowed(const Member& member);
  void TakeTheSame(const observe::Record& record, const Member& member);
  void TakeVoltages(const Member& member);
  void TakePoint(const observe::Point& point, Element* element);
  void RefusePoint(const observe::Point& point);

  std::vector<Row>* rows_;
  std::unordered_map<const void*, Variable> variables_;
  std::map<StagedKey, Writer> staged_;
  bool ended_ = false;  // the cycle before was seen to its end
  std::size_t groups_ = 0;
  Group group_;
  Unwritten unwritten_;
  // Where what is taken stands in each element of a class: "/Celsius"; "" when it does not, or when
  // it is no measurement. It is looked for in the first element alone.
  std::map<std::pair<const QtSts::ClassInfo*, const elements::Taken*>, std::string> in_element_;
  std::vector<Inherited> inheritance_;  // of the row's element
  std::string text_;                    // room for one that is long
  std::vector<observe::Point> points_;  // that the board takes that is being made
};

}  // namespace insight
