#include "insight/row_keys.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

#include "collector/key_table.h"
#include "collector/state/numbered_key.h"
#include "handlers/fields.h"
#include "insight/nearest.h"
#include "insight/row_remarks.h"
#include "sensors/attributes.h"

namespace insight {
namespace {

constexpr std::string_view kDigits = "0123456789";

std::string_view TextOf(const char* text) { return text == nullptr ? "" : text; }

// What stands in front of the number, with which keys of a family begin.
std::string_view HeadOf(std::string_view key) {
  const std::size_t digit = key.find_first_of(kDigits);
  const std::size_t underscore = key.find('_');
  return key.substr(
      0, std::min(digit, underscore == std::string_view::npos ? key.size() : underscore + 1));
}

// The keys of the table that are families, or those that are not.
Names KeysThat(bool are_families) {
  std::vector<std::string_view> keys;
  for (const StatusKey& known : status_primary_keys) {
    if (known.Key.ends_with('_') == are_families) {
      keys.push_back(known.Key);
    }
  }
  return Names(keys);
}

std::string_view NearestKey(std::string_view key) {
  static const Names kFamilies = KeysThat(true);
  static const Names kKeys = KeysThat(false);
  const std::string_view family = kFamilies.Nearest(HeadOf(key));
  return family.empty() ? kKeys.Nearest(key) : family;
}

template <class... Tables>
Names NamesOf(const Tables&... tables) {
  std::vector<std::string_view> names;
  const auto add = [&names](const auto& table) {
    for (const rows::Entry& known : table) {
      names.push_back(known.Name);
    }
  };
  (add(tables), ...);
  return Names(names);
}

void JudgeUnknownKey(const observe::RowBegins& begins, Row* row) {
  const auto* const known = std::ranges::find_if(
      status_primary_keys, [row](const StatusKey& key) { return row->Key.starts_with(key.Key); });
  if (known != status_primary_keys.end()) {
    AddRemark(row, Outcome::kOutOfOrder,
              "comes after a key that begins with " + Quoted(EntryAt(begins.SearchedFrom)) +
                  ", which is after " + Quoted(known->Key) + " in byte order: it is ignored",
              WholeKey(*row));
  } else if (row->Key.empty()) {
    AddRemark(row, Outcome::kUnknownKey, "the key is empty: the row is ignored");
  } else {
    AddRemark(row, Outcome::kUnknownKey,
              "no key begins like this: the row is ignored" + NearestIs(NearestKey(row->Key)),
              WholeKey(*row));
  }
}

// One of the two columns.
void JudgeCell(const observe::RowBegins& begins, int column, Row* row) {
  const bool is_key = column == 0;
  const std::string_view whole = TextOf(is_key ? begins.Key : begins.Value);
  const std::string_view cut = is_key ? row->Key : row->Value;
  const Excerpt end = {is_key ? RowPart::kKey : RowPart::kValue, cut.size(), cut.size()};
  const std::string_view name = is_key ? "the key" : "the value";
  const std::size_t stored = begins.StoredBytes(column);
  if (stored > whole.size()) {
    AddRemark(row, Outcome::kZeroByte,
              Joined({name, " has ", std::to_string(stored),
                      " bytes, but ends at a zero byte after ", std::to_string(whole.size())}),
              end);
  }
  if (whole.size() > cut.size()) {
    AddRemark(row, Outcome::kTooLong,
              Joined({name, " has ", std::to_string(whole.size()), " bytes and is cut to ",
                      std::to_string(cut.size())}),
              end);
  }
}

template <class Owner>
void AddFormats(std::span<const rows::Field<Owner>> fields, std::vector<ValueFormat>* formats) {
  for (const rows::Field<Owner>& field : fields) {
    const auto* const key = std::ranges::find(status_primary_keys, field.Name, &StatusKey::Key);
    if (key != status_primary_keys.end()) {
      ValueFormat& format = (*formats)[static_cast<std::size_t>(key - status_primary_keys.begin())];
      // The first of several: what is stored one larger says the same of the value.
      format = format.Parser == nullptr ? ValueFormat{field.Reader, field.Is} : format;
    }
  }
}

std::vector<ValueFormat> FormatsOfKeys() {
  std::vector<ValueFormat> formats(status_primary_keys.size());
  AddFormats(handlers::RootFields(), &formats);
  AddFormats(handlers::OutputFields(), &formats);
  AddFormats(handlers::TtableFields(), &formats);
  return formats;
}

}  // namespace

std::string_view EntryAt(int position) {
  return position < 0 ? std::string_view()
                      : status_primary_keys[static_cast<std::size_t>(position)].Key;
}

void JudgeCells(const observe::RowBegins& begins, Row* row) {
  JudgeCell(begins, 0, row);
  JudgeCell(begins, 1, row);
  if (begins.Value == nullptr) {
    AddRemark(row, Outcome::kNull, "the value is NULL, which is read as the empty text");
  }
  if (begins.Entry < 0) {
    JudgeUnknownKey(begins, row);
  }
}

ValueFormat FormatOfKey(int entry) {
  static const std::vector<ValueFormat> kFormats = FormatsOfKeys();
  return entry < 0 ? ValueFormat() : kFormats[static_cast<std::size_t>(entry)];
}

bool JudgeKeyNumber(const observe::Stores& store, std::size_t begin, char end, Row* row) {
  const std::string_view key = row->Key;
  const std::string_view number = key.substr(begin, store.Consumed);
  const std::size_t after = begin + store.Consumed;
  const char next = after < key.size() ? key[after] : '\0';
  const Excerpt where = {RowPart::kKey, begin, std::min(key.find('_', begin), key.size())};
  const auto counts = [&store] { return "counts as " + std::to_string(store.Stored.Signed); };
  if (number.empty()) {
    AddRemark(row, Outcome::kBadNumber,
              next == '_' || next == '\0'
                  ? "the number is missing and " + counts()
                  : Quoted(key.substr(begin, where.End - begin)) + " is no number and " + counts(),
              where);
  } else if (number.find_first_not_of(kDigits) != std::string_view::npos ||
             (next != end && next != '\0')) {
    AddRemark(row, Outcome::kBadNumber,
              Quoted(key.substr(begin, where.End - begin)) + " is not digits alone and " + counts(),
              where);
  } else if (store.Read.Signed != store.Stored.Signed) {
    AddRemark(row, Outcome::kWrapped,
              "number " + std::string(number) + " does not fit and " + counts(), where);
  } else {
    return true;
  }
  return false;
}

const rows::Attribute* AttributeOf(std::string_view entry, const char* name) {
  if (entry == rows::kSensorPrefix) {
    return sensors::FindAttribute(name);
  }
  const auto known = handlers::DcioAttributes();
  const auto found = std::ranges::find(known, std::string_view(name), &rows::Attribute::Name);
  return found == known.end() ? nullptr : &*found;
}

ValueFormat FormatOfAttribute(const rows::Attribute& attribute, std::string_view part) {
  if (attribute.Where->Is != rows::Type::kPoint) {
    return {attribute.Reader, attribute.Where->Is};
  }
  ValueFormat format;
  for (const rows::Field<DcioPoint>& field : sensors::PointParts()) {
    if (field.Name == part) {
      format = {field.Reader, field.Is};  // the last: the mark of a point comes first
    }
  }
  return format;
}

void JudgeAttribute(const rows::Attribute& known, const observe::Stores& store, std::size_t begin,
                    Row* row) {
  const std::string_view attribute = std::string_view(row->Key).substr(begin);
  if (known.Name == attribute) {
    return;
  }
  const bool is_point = known.Where->Is == rows::Type::kPoint;
  const std::size_t length = known.Name.size();
  const bool is_longer = attribute.size() > length &&
                         (is_point ? attribute[length] != '_' : !known.Name.ends_with('_'));
  const bool is_voltage = known.Where->IsContainer && known.Where->Is == rows::Type::kFloat;
  if (is_longer || (is_voltage && !attribute.ends_with("Volts"))) {
    AddRemark(row, Outcome::kLongerName,
              Quoted(attribute) + " is taken for " +
                  (is_voltage ? Quoted(attribute.substr(0, attribute.rfind("Volts") + 5))
                              : Quoted(known.Name)),
              KeyFrom(*row, begin));
  }
  if (!known.Where->IsContainer || is_voltage) {
    return;
  }
  const char* const text = rows::AfterUnderscore(attribute.data());
  if (text == nullptr) {
    return;
  }
  // The number was read by the handler; what it became is the index.
  observe::Stores number = store;
  const char* const end = text + std::strspn(text, kDigits.data());
  number.Consumed = static_cast<std::size_t>(end - text);
  number.Read.Signed = store.Index;
  std::from_chars(text, end, number.Read.Signed);
  number.Stored.Signed = store.Index;
  JudgeKeyNumber(number, static_cast<std::size_t>(text - row->Key.c_str()), '_', row);
}

std::string_view NearestAttribute(std::string_view entry, bool is_part, std::string_view unknown) {
  static const Names kParts = NamesOf(sensors::PointParts());
  static const Names kOfSensors =
      NamesOf(sensors::ExactAttributes(), sensors::PointFamilies(), sensors::AttributeFamilies());
  static const Names kOfDevices = NamesOf(handlers::DcioAttributes());
  if (is_part) {
    return kParts.Nearest(unknown);
  }
  return (entry == rows::kSensorPrefix ? kOfSensors : kOfDevices).Nearest(unknown);
}

bool FamilyNumbers::Add(std::size_t width, long number) {
  const bool is_first = FirstWidth == 0;
  FirstWidth = is_first ? width : FirstWidth;
  LeastWidth = is_first ? width : std::min(LeastWidth, width);
  MostWidth = std::max(MostWidth, width);
  Highest = std::max(Highest, number);
  return FirstWidth == width;
}

}  // namespace insight
