#include "insight/row_parking.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "collector/state/scratch.h"
#include "handlers/fields.h"
#include "insight/row_remarks.h"
#include "model/lookup/kinds.h"
#include "sensors/record_builder.h"

namespace insight {
namespace {

using observe::Ending;
using observe::Place;

// What elements of this kind take.
std::span<const elements::Taken> TakesOf(const observe::Record& record) {
  const auto find = [&record](const auto& kinds, auto code) -> std::span<const elements::Taken> {
    const auto kind = std::ranges::find_if(
        kinds, [&](const auto& candidate) { return candidate.*code == record.Type; });
    return kind == kinds.end() ? std::span<const elements::Taken>() : kind->Takes;
  };
  switch (record.Where) {
    case Place::kDcioDevices:
      return find(elements::DcioKinds(), &elements::DcioKind::Is);
    case Place::kDisplayInterfaces:
      return find(elements::InterfaceKinds(), &elements::InterfaceKind::Is);
    default:
      return find(sensors::SensorKinds(), &sensors::SensorKind::Code);
  }
}

bool HoldsPoints(const void* container) {
  return container == &dcioInputs || container == &dcioOutputs;
}

}  // namespace

Parking::Parking(std::vector<Row>* rows) : rows_(rows) {
  for (const auto& attributes : {sensors::ExactAttributes(), sensors::PointFamilies(),
                                 sensors::AttributeFamilies(), handlers::DcioAttributes()}) {
    for (const rows::Attribute& attribute : attributes) {
      variables_.try_emplace(attribute.Where->Address, Variable{&attribute, {}});
    }
  }
}

void Parking::BeginCycle() {
  // What a cycle left that threw is as little known as what stood there before the first one.
  const bool known = std::exchange(ended_, false);
  const auto forget = [known](Writer* writer) {
    writer->Row = kNone;
    writer->Group = kNone;
    if (!known) {
      writer->Key.clear();
    }
  };
  for (auto& [address, variable] : variables_) {
    forget(&variable.Last);
    variable.InheritedIn = kNone;
  }
  for (auto& [key, writer] : staged_) {
    forget(&writer);
  }
  group_ = {};
  inheritance_.clear();
  points_.clear();
  unwritten_.Clear();
}

void Parking::EndCycle() {
  EndGroup();
  // Voltages that nobody takes become more with every cycle: the first says where they come from.
  for (const void* const voltages : {static_cast<const void*>(&f_Psrb_InputVoltages),
                                     static_cast<const void*>(&f_Psrb_OutputVoltages)}) {
    const auto begin = staged_.lower_bound({voltages, 0, {}});
    const auto end = staged_.lower_bound({voltages, std::numeric_limits<long>::max(), {}});
    if (begin != end) {
      staged_.erase(std::next(begin), end);
    }
  }
  const auto keep = [this](Writer* writer) {
    if (writer->Row != kNone) {
      writer->Key = At(writer->Row).Key;
    }
  };
  for (auto& [address, variable] : variables_) {
    keep(&variable.Last);
  }
  for (auto& [key, writer] : staged_) {
    keep(&writer);
  }
  ended_ = true;
}

void Parking::BeginRow(std::string_view prefix) {
  if (prefix != group_.Prefix) {
    EndGroup();
    group_ = {};
    group_.Number = ++groups_;
    group_.Prefix = prefix;
  }
}

// ---- Storing

bool Parking::Store(const observe::Stores& store) {
  if (store.Container != nullptr) {
    const StagedKey key = {store.Container, store.Index,
                           HoldsPoints(store.Container) ? store.Attribute : std::string_view()};
    Park(&staged_[key], nullptr, key);
    return true;
  }
  const auto variable = variables_.find(store.Destination);
  if (variable == variables_.end()) {
    return false;
  }
  Park(&variable->second.Last, store.Destination, {});
  return true;
}

void Parking::Park(Writer* last, const void* variable, const StagedKey& staged) {
  const std::size_t row = Current();
  if (last->Row == row) {
    return;  // the number of a point and the mark that it is there, or what replaces a value
  }
  if (last->Row != kNone && !IsComplete() &&
      (variable == nullptr || last->Group == group_.Number)) {
    AddRemark(&At(last->Row),
              HoldsPoints(staged.Container) ? Outcome::kPointOverwritten : Outcome::kOverwritten,
              "overwritten by " + At(row).Key + " before anything took it");
  }
  *last = {row, group_.Number, {}};
  if (IsComplete()) {
    last->Group = kNone;
    AddRemark(&At(row), Outcome::kAfterType,
              "sorts after " + At(group_.TypeRow).Key +
                  ", which completes its element: it is kept for the next one",
              KeyFrom(At(row), group_.Prefix.size()));
  } else {
    group_.Rows.push_back({row, variable, staged, false});
  }
}

void Parking::StoreType(bool is_sensor) {
  group_.TypeRow = Current();
  if (is_sensor) {
    TakeVariable(&at_Type, nullptr);  // it says which list the sensor goes into
  }
}

// ---- Taking

void Parking::Resolve(std::size_t row, const Change* where) {
  const auto parked = std::ranges::lower_bound(group_.Rows, row, {}, &Parked::Row);
  if (parked == group_.Rows.end() || parked->Row != row) {
    return;
  }
  parked->Resolved = true;
  Row& resolved = At(row);
  if (where != nullptr) {
    resolved.Path = where->Path;
    resolved.After = where->After;
  }
}

void Parking::Inherit(std::string name, const Writer& writer) {
  std::string from;
  if (writer.Row != kNone) {
    from = At(writer.Row).Key;
  } else if (!writer.Key.empty()) {
    from = writer.Key + " of an earlier cycle";
  }
  inheritance_.push_back({std::move(name), std::move(from)});
}

void Parking::TakeVariable(const void* variable, const Member* member) {
  const auto found = variables_.find(variable);
  if (found == variables_.end()) {
    return;
  }
  Variable& taken = found->second;
  if (IsOfGroup(taken.Last)) {
    Change where;
    Resolve(taken.Last.Row, member != nullptr && member->Find(&where) ? &where : nullptr);
    return;
  }
  if (!taken.Last.IsKnown() && member != nullptr) {
    NoteUnwritten(*member);
  }
  if (std::exchange(taken.InheritedIn, Current()) != Current()) {
    Inherit(std::string(taken.Written->Name), taken.Last);
  }
}

void Parking::NoteUnwritten(const Member& member) {
  const std::string& path = member.Holder->Path();
  const auto [place, is_new] = in_element_.try_emplace({member.Holder->Class(), member.Variable});
  if (Change where; is_new && member.Find(&where)) {
    const std::string_view field = std::string_view(where.Path).substr(where.Path.rfind('/') + 1);
    place->second = IsMeasured(field) ? where.Path.substr(path.size()) : "";
  }
  if (!place->second.empty()) {
    unwritten_.Add(path, place->second);
  }
}

void Parking::Take(const observe::Record& record, Element* element) {
  const bool is_interface = record.Where == Place::kDisplayInterfaces;
  if (element != nullptr) {
    if (!is_interface) {
      group_.Path = element->Path();
      group_.OnOwnBus = record.Where == Place::kSensors;
      group_.Takes = TakesOf(record);
    }
    for (const observe::Point& point : points_) {
      TakePoint(point, element);
    }
    TakeMembers(record, element);
  }
  if (!is_interface) {
    points_.clear();
  }
}

void Parking::TakeMembers(const observe::Record& record, Element* element) {
  for (const elements::Taken& taken : TakesOf(record)) {
    const void* const variable = taken.From->Address;
    const Member member = {element, &taken};
    if (std::ranges::find(record.Taken, variable) == record.Taken.end()) {
      TakeTheSame(record, member);
    } else if (variable == &f_Psrb_InputVoltages || variable == &f_Psrb_OutputVoltages) {
      TakeVoltages(member);
    } else if (!taken.From->IsContainer) {
      TakeVariable(variable, &member);
      if (record.Where != Place::kDcioDevices) {
        RemarkNarrowed(member);
      }
    }
  }
}

// A field of 16 bits keeps the low half of a variable of 32. The state of a DCIO device is reduced
// to a flag instead.
void Parking::RemarkNarrowed(const Member& member) {
  const rows::Place& variable = *member.Variable->From;
  if (variable.Is != rows::Type::kUnsigned32) {
    return;
  }
  const Writer& last = variables_.at(variable.Address).Last;
  const std::uint32_t value = *static_cast<const std::uint32_t*>(variable.Address);
  const std::uint32_t low = value & 0xFFFFU;
  Change where;
  if (value != low && IsOfGroup(last) && member.Find(&where) &&
      where.After == std::to_string(low)) {
    Row& row = At(last.Row);
    AddRemark(&row, Outcome::kWrapped,
              std::to_string(value) + " does not fit: " + where.After + " is in the document",
              WholeValue(row));
  }
}

// The address of a display interface that is there already is not taken, but it may be the same.
void Parking::TakeTheSame(const observe::Record& record, const Member& member) {
  const void* const variable = member.Variable->From->Address;
  if (record.What != Ending::kFound || variable != &u16_DispInterfaceAddress) {
    return;
  }
  const Writer& last = variables_.at(variable).Last;
  if (!IsOfGroup(last)) {
    return;
  }
  Change where;
  if (!member.Find(&where)) {
    Resolve(last.Row, nullptr);
  } else if (where.After == std::to_string(u16_DispInterfaceAddress)) {
    Resolve(last.Row, &where);
  }
}

// ---- Ends

void Parking::EndRow() {
  if (inheritance_.empty()) {
    return;
  }
  // What comes from one place is named together.
  if (!std::ranges::is_sorted(inheritance_, {}, &Inherited::From)) {
    std::ranges::stable_sort(inheritance_, {}, &Inherited::From);
  }
  constexpr std::size_t kMostNamed = 20;
  const std::size_t count = std::min(inheritance_.size(), kMostNamed);
  text_ = "inherits ";
  for (std::size_t i = 0; i < count; ++i) {
    const auto& [name, from] = inheritance_[i];
    const bool is_last = i + 1 == count;
    text_ += name;
    if (is_last || inheritance_[i + 1].From != from) {
      text_ += " from ";
      text_ += from.empty() ? "what stood there before the first observed cycle" : from;
    }
    text_ += is_last ? "" : ", ";
  }
  if (count < inheritance_.size()) {
    text_ += ", and " + std::to_string(inheritance_.size() - count) + " more";
  }
  AddRemark(&At(Current()), Outcome::kInherited, text_);
  inheritance_.clear();
}

void Parking::EndGroup() {
  for (const Parked& parked : group_.Rows) {
    EndParked(parked);
  }
  group_.Rows.clear();
}

bool Parking::IsLast(const Parked& parked) const {
  if (parked.Variable != nullptr) {
    return variables_.at(parked.Variable).Last.Row == parked.Row;
  }
  const auto staged = staged_.find(parked.Staged);
  return staged != staged_.end() && staged->second.Row == parked.Row;
}

void Parking::EndParked(const Parked& parked) {
  Row& row = At(parked.Row);
  if (!IsComplete()) {
    AddRemark(&row, Outcome::kNoType,
              Joined({"no row ", group_.Prefix, "Type completes its element"}), WholeKey(row));
    AddRemark(&row, Outcome::kParked, "kept for the next element that takes it");
    return;
  }
  const std::string& completes = At(group_.TypeRow).Key;
  if (!parked.Resolved && IsLast(parked)) {
    if (parked.Variable == nullptr) {
      AddRemark(&row, Outcome::kWaits, "waits for the next board that takes it",
                KeyFrom(row, group_.Prefix.size()));
    } else if (!group_.Path.empty()) {
      AddRemark(&row, Outcome::kUntakenAttribute, WhyUntaken(variables_.at(parked.Variable)),
                KeyFrom(row, group_.Prefix.size()));
    }
  }
  AddRemark(
      &row, Outcome::kParked,
      Joined({"kept for ", completes, ", ",
              group_.Path.empty() ? "whose element is lost" : "which completes ", group_.Path}));
}

std::string Parking::WhyUntaken(const Variable& variable) {
  const void* const address = variable.Written->Where->Address;
  const std::string& kind = At(group_.TypeRow).Value;
  const std::string name(variable.Written->Name);
  if (address == &u16_DispInterfaceAddress && !group_.OnOwnBus) {
    return "its display interface is there already, with another address";
  }
  const bool is_of_interface =
      address == &u16_DispInterfaceAddress || address == &u32_DispInterfaceNumAttribute;
  if (group_.OnOwnBus &&
      (is_of_interface || elements::Takes(group_.Takes, *variable.Written->Where))) {
    return kind + " takes " + name + " behind a display interface only";
  }
  return kind + " does not take " + name;
}

}  // namespace insight
