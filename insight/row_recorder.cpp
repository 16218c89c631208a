#include "insight/row_recorder.h"

#include <algorithm>
#include <string>

#include "collector/state/numbered_key.h"
#include "collector/state/scratch.h"
#include "insight/row_element.h"
#include "insight/row_remarks.h"
#include "insight/row_values.h"

namespace insight {
namespace {

using observe::Ending;
using observe::Fate;

std::string Numbered(const char* list, unsigned int position) {
  return std::string(list) + "[" + std::to_string(position) + "]";
}

std::string PathOf(const observe::Record& record) {
  const auto interface = static_cast<unsigned int>(record.Interface);
  switch (record.Where) {
    case observe::Place::kSensors:
      return Numbered("Sensors", record.Position);
    case observe::Place::kInterfaceSensors:
      return Numbered("Outputs[0]/DisplayInterfaces", interface) + "/" +
             Numbered("Sensors", record.Position);
    case observe::Place::kDisplayInterfaces:
      return Numbered("Outputs[0]/DisplayInterfaces", record.Position);
    case observe::Place::kDcioDevices:
      return Numbered("DCIO/Devices", record.Position);
    case observe::Place::kTtableDevices:
      return Numbered("Outputs[0]/Devices", record.Position);
  }
  return {};
}

// "numbers of 1 to 2 digits are mixed"
std::string MixedWidths(const FamilyNumbers& numbers) {
  return "numbers of " + std::to_string(numbers.LeastWidth) + " to " +
         std::to_string(numbers.MostWidth) + " digits are mixed";
}

// The number with zeros in front of it.
std::string Padded(long number, std::size_t width) {
  std::string digits = std::to_string(number);
  return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

}  // namespace

RowRecorder::RowRecorder() : parking_(&rows_) {}

void RowRecorder::BeginCycle(const QtSts::CStatus& status) {
  parking_.BeginCycle();  // first: memory may run out below
  status_ = &status;
  rows_.clear();
  rows_.reserve(last_count_);
  numbers_.clear();
  field_rows_.clear();
  owners_.clear();
  lost_.clear();
  unknown_words_.clear();
}

void RowRecorder::See(const observe::Event& event) {
  if (const auto* const begins = event.As<observe::RowBegins>()) {
    Begin(*begins);
  } else if (rows_.empty()) {
    return;  // of a probe
  } else if (const auto* const stores = event.As<observe::Stores>()) {
    See(*stores);
  } else if (const auto* const point = event.As<observe::Point>()) {
    parking_.Take(*point);
  } else if (const auto* const record = event.As<observe::Record>()) {
    See(*record);
  } else if (event.As<observe::RowEnds>() != nullptr) {
    End();
  }
}

void RowRecorder::Begin(const observe::RowBegins& begins) {
  if (rows_.empty()) {
    shadow_.Begin(*status_);
  }
  Row& row = rows_.emplace_back();
  row.Key = begins.CutKey;
  row.Value = begins.CutValue;
  row.IsNull = begins.Value == nullptr;
  handled_ = {};
  handled_.Entry = EntryAt(begins.Entry);
  handled_.EntryAt = begins.Entry;
  handled_.Key = begins.CutKey;
  JudgeCells(begins, &row);
}

// ---- Values

void RowRecorder::See(const observe::Stores& store) {
  handled_.HasEvents = true;
  switch (store.What) {
    case Fate::kStored:
    case Fate::kOtherWord:
    case Fate::kUnknownWord:
      if (store.Attribute.empty()) {
        SeeKeyNumber(store);
      } else {
        SeeStored(store);
      }
      break;
    default:
      SeeKept(store);
  }
}

void RowRecorder::SeeKeyNumber(const observe::Stores& store) {
  Row& row = Current();
  const bool is_element = handled_.Entry != rows::kDevicePrefix;
  const auto begin = static_cast<std::size_t>(store.Text - handled_.Key);
  handled_.HasNumber = JudgeKeyNumber(store, begin, is_element ? '_' : '\0', &row);
  const char* const rest = rows::AfterUnderscore(store.Text);
  handled_.Attribute =
      rest == nullptr ? row.Key.size() : static_cast<std::size_t>(rest - handled_.Key);
  handled_.IsFirstWidth =
      !handled_.HasNumber ||
      numbers_[handled_.Entry].Add(store.Consumed, static_cast<long>(store.Stored.Signed));
  parking_.BeginRow(is_element && rest != nullptr
                        ? std::string_view(row.Key).substr(0, handled_.Attribute)
                        : std::string_view());
}

const rows::Attribute* RowRecorder::KnownAttribute() const {
  return AttributeOf(handled_.Entry, rows_.back().Key.c_str() + handled_.Attribute);
}

void RowRecorder::RemarkNoAttribute(bool is_part) {
  Row& row = Current();
  AddRemark(&row, Outcome::kNoAttribute,
            is_part ? "the key ends before what comes after the number of " +
                          Quoted(std::string_view(row.Key).substr(handled_.Attribute))
                    : "the key ends before its attribute",
            WholeKey(row));
}

// What does not reach its destination.
void RowRecorder::SeeKept(const observe::Stores& store) {
  Row& row = Current();
  const std::size_t attribute = handled_.Attribute;
  const bool is_part = store.Container != nullptr;
  switch (store.What) {
    case Fate::kRefusedNumber:
      AddRemark(&row, Outcome::kBadNumber,
                "the number begins with " + Quoted(std::string_view(store.Text).substr(0, 1)) +
                    ": the row is ignored",
                KeyFrom(row, handled_.Entry.size()));
      break;
    case Fate::kNoAttribute:
      RemarkNoAttribute(is_part);
      break;
    case Fate::kUnknownAttribute:
      if (store.Attribute.empty()) {
        RemarkNoAttribute(is_part);  // the key ends with '_'
        break;
      }
      AddRemark(&row, Outcome::kUnknownAttribute,
                Quoted(store.Attribute) + " is no attribute" +
                    NearestIs(NearestAttribute(handled_.Entry, is_part, store.Attribute)),
                KeyFrom(row, row.Key.size() - std::min(row.Key.size(), store.Attribute.size())));
      break;
    case Fate::kOutsideTable:
      AddRemark(&row, Outcome::kPointOutsideTable,
                "there is no entry " + std::to_string(store.Index) + " for a point",
                KeyFrom(row, attribute));
      break;
    case Fate::kNotVolts:
      AddRemark(&row, Outcome::kNotVolts,
                Quoted(row.Key.substr(attribute)) + " lacks \"Volts\": the voltage is ignored",
                KeyFrom(row, attribute));
      break;
    case Fate::kOtherKey:
      AddRemark(&row, Outcome::kIgnoredKey,
                "the key goes on after " + Quoted(store.Attribute) + ": the row is ignored",
                KeyFrom(row, store.Attribute.size()));
      break;
    case Fate::kFirstStays:
      AddRemark(&row, Outcome::kSecondSpeed,
                "fan " + std::to_string(store.Index) + " has a speed already, which stays",
                KeyFrom(row, attribute));
      if (const rows::Attribute* const known = KnownAttribute()) {
        JudgeAttribute(*known, store, attribute, &row);
      }
      break;
    default:
      break;
  }
}

void RowRecorder::SeeStored(const observe::Stores& store) {
  Row& row = Current();
  const bool is_element =
      handled_.Entry == rows::kSensorPrefix || handled_.Entry == rows::kDcioPrefix;
  if (!is_element) {
    if (handled_.Destination == nullptr) {
      handled_.Destination = store.Destination;
      JudgeValue(store, FormatOfKey(handled_.EntryAt), &row);
      if (store.What != Fate::kUnknownWord) {
        StoreInField(store);
      }
    }
    return;
  }
  if (store.Destination == handled_.Destination) {
    AddRemark(&row, Outcome::kReplaced,
              std::to_string(store.Stored.Unsigned) +
                  " is stored instead, since the ambient "
                  "light is overridden");
    return;
  }
  handled_.Destination = store.Destination;
  if (const rows::Attribute* const known = KnownAttribute()) {
    JudgeAttribute(*known, store, handled_.Attribute, &row);
    JudgeValue(store, FormatOfAttribute(*known, store.Attribute), &row);
  }
  if (store.Destination == &st_Type || store.Destination == &st_DCIO_Type) {
    parking_.StoreType(store.Destination == &st_Type);
  } else if (store.What != Fate::kUnknownWord) {
    parking_.Store(store);
  }
}

// Bits are added, so that one row does not overwrite another.
void RowRecorder::StoreInField(const observe::Stores& store) {
  if (FormatOfKey(handled_.EntryAt).Is == rows::Type::kBits) {
    return;
  }
  const std::size_t row = rows_.size() - 1;
  const auto [before, is_first] = field_rows_.try_emplace(store.Destination, row);
  if (!is_first) {
    AddRemark(&rows_[before->second], Outcome::kOverwritten, "overwritten by " + Current().Key);
    before->second = row;
  }
}

// ---- Elements

void RowRecorder::See(const observe::Record& record) {
  handled_.HasEvents = true;
  if (record.Where == observe::Place::kInterfaceSensors) {
    handled_.Interface = record.Interface;
  }
  if (record.Element == nullptr) {
    parking_.Take(record, nullptr);
    SeeRefused(record);
  } else {
    Element element(*record.Element, PathOf(record));
    SeeElement(record, &element);
  }
}

void RowRecorder::SeeElement(const observe::Record& record, Element* element) {
  Row& row = Current();
  if (record.Where == observe::Place::kTtableDevices) {
    Change value;
    element->Find(handled_.Destination, &value);
    row.Path = value.Path;
    row.After = value.After;
    AddRemark(&row, Outcome::kStored, "makes " + element->Path());
  } else {
    parking_.Take(record, element);
  }
  if (record.Where == observe::Place::kDisplayInterfaces) {
    return;
  }
  if (!handled_.IsFirstWidth) {
    AddRemark(&row, Outcome::kMixedWidths,
              MixedWidths(numbers_[handled_.Entry]) + " after " + Quoted(handled_.Entry),
              KeyFrom(row, handled_.Entry.size()));
  }
  if (record.Where == observe::Place::kTtableDevices) {
    return;
  }
  row.Path = element->Path();
  row.After = element->ClassName();
  AddRemark(&row, Outcome::kCompleted, "completes " + element->Path());
  // An element after those of another list cannot have its position as its number.
  const std::size_t before = numbers_[handled_.Entry].Completed++;
  if (record.Number != record.Position && record.Position == before) {
    AddRemark(&row, Outcome::kNotThePosition,
              Joined({"number ", std::to_string(record.Number), " becomes position ",
                      std::to_string(record.Position)}),
              KeyFrom(row, handled_.Entry.size()));
  }
  Owners& owners = owners_[{record.Where, record.Interface}];
  owners.Rows.push_back(rows_.size() - 1);
  if (handled_.HasNumber) {
    owners.Highest = std::max(owners.Highest.value_or(0), record.Number);
  }
}

void RowRecorder::SeeRefused(const observe::Record& record) {
  Row& row = Current();
  switch (record.What) {
    case Ending::kPositionTaken:
      SeeTaken(record);
      break;
    case Ending::kNotHere:
    case Ending::kNoPlace:
      AddRemark(&row, Outcome::kRefusedKind,
                "the element is lost: " + row.Value + " does not stand behind a display interface",
                WholeValue(row));
      break;
    case Ending::kNoKind:
      for (Remark& remark : row.Remarks) {
        if (remark.What == Outcome::kUnknownWord) {  // its code is of no interest
          remark.Text.replace(remark.Text.rfind("; "), std::string::npos, "; the element is lost");
        }
      }
      break;
    case Ending::kCompleted:
    case Ending::kFound:
      break;
  }
}

void RowRecorder::SeeTaken(const observe::Record& record) {
  const Owners& owners = owners_[{record.Where, record.Interface}];
  lost_.push_back({.Row = rows_.size() - 1,
                   .Entry = handled_.Entry,
                   .Number = record.Number,
                   .Attribute = handled_.Attribute,
                   .Owner = record.Number < owners.Rows.size()
                                ? rows_[owners.Rows[record.Number]].Key
                                : std::string(),
                   .ComesLate = handled_.HasNumber && owners.Highest >= record.Number});
}

// Once all numbers of the family are known.
void RowRecorder::RemarkTaken(const Lost& lost) {
  Row& row = rows_[lost.Row];
  AddRemark(&row, Outcome::kPositionTaken,
            "the element is lost: position " + std::to_string(lost.Number) + " is taken" +
                (lost.Owner.empty() ? "" : " by " + lost.Owner) + WhyTaken(lost) + " would do",
            KeyFrom(row, lost.Entry.size()));
}

// Distinct numbers of one width come in their order, and none of them is lost.
std::string RowRecorder::WhyTaken(const Lost& lost) {
  FamilyNumbers& numbers = numbers_[lost.Entry];
  const std::size_t width = numbers.MostWidth;
  std::string why;
  if (lost.ComesLate && numbers.LeastWidth != width) {
    const std::string padded = Padded(lost.Number, width);
    const std::string key =
        Joined({lost.Entry, padded, "_", rows_[lost.Row].Key.substr(lost.Attribute)});
    why = ", since " + MixedWidths(numbers);
    if (!std::ranges::binary_search(rows_, key, {}, &Row::Key)) {
      return why + " and do not come in their order; padded to " + std::to_string(width) +
             " digits, as all should be, number " + padded;
    }
    why += " and " + key + " has the same number";
  }
  const std::string free = Padded(++numbers.Highest, width);
  return why + "; number " + free +
         (free.size() <= width
              ? ""
              : " of " + std::to_string(free.size()) + " digits, as all should be,");
}

// ---- Ends

void RowRecorder::End() {
  Row& row = Current();
  parking_.EndRow();
  if (row.Path.empty() && handled_.Destination != nullptr) {
    Change field;
    if (shadow_.Find(handled_.Destination, &field)) {
      row.Path = field.Path;
      row.Before = field.Before;
      row.After = field.After;
      if (!HasRemark(row, Outcome::kMarkUnset)) {
        AddRemark(&row, Outcome::kStored, "stored in " + row.Path);
      }
    }
  }
  const bool is_exact = !handled_.Entry.ends_with('_');
  if (handled_.EntryAt >= 0 && is_exact && row.Key.size() > handled_.Entry.size() &&
      !HasRemark(row, Outcome::kIgnoredKey)) {
    AddRemark(&row, Outcome::kLongerName, "taken for " + Quoted(handled_.Entry),
              KeyFrom(row, handled_.Entry.size()));
  }
  if (handled_.EntryAt >= 0 && !handled_.HasEvents) {
    AddRemark(&row, Outcome::kUnused, "known, and not used by the collector");
  }
  shadow_.Compare(handled_.Interface, &row.Changes, &row.Carried);
}

std::vector<Row> RowRecorder::EndCycle(const QtSts::DocumentTree& /*document*/) {
  parking_.EndCycle();
  for (const Lost& lost : lost_) {
    RemarkTaken(lost);
  }
  for (Row& row : rows_) {
    if (row.Remarks.empty()) {
      row.Remarks.emplace_back();
    }
    const auto is_worse = [](const Remark& left, const Remark& right) {
      return InfoOf(left.What).Class > InfoOf(right.What).Class;
    };
    if (!std::ranges::is_sorted(row.Remarks, is_worse)) {
      std::ranges::stable_sort(row.Remarks, is_worse);
    }
    if (HasRemark(row, Outcome::kUnknownWord)) {
      unknown_words_.push_back(static_cast<std::size_t>(&row - rows_.data()));
    }
  }
  last_count_ = rows_.size();
  return std::move(rows_);
}

}  // namespace insight
