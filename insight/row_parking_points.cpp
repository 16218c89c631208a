// Of Parking: fans, voltages and the points of boards.
#include <utility>

#include "collector/state/scratch.h"
#include "insight/row_parking.h"
#include "insight/row_remarks.h"
#include "model/dcio_boards.h"

namespace insight {
namespace {

// Bytes that a row keeps of a list's text: more than the list of any board has.
constexpr std::size_t kLongestListText = 1000;

constexpr std::string_view kState = "State";

const void* ContainerOf(observe::PointPlace where) {
  switch (where) {
    case observe::PointPlace::kInput:
      return &dcioInputs;
    case observe::PointPlace::kOutput:
      return &dcioOutputs;
    case observe::PointPlace::kFan:
      return &FanRpms;
  }
  return nullptr;
}

// Each row of a list of numbers has the list's text: long ones are cut, so that it does not grow
// with the square of the rows.
void CutList(std::string* text) {
  if (text->size() > kLongestListText) {
    text->resize(text->rfind(' ', kLongestListText));
    *text += " ...";
  }
}

}  // namespace

std::string Parking::NameOf(const StagedKey& key) const {
  std::string name(variables_.at(key.Container).Written->Name);
  name += name.ends_with('_') ? "" : "_";
  name += std::to_string(key.Index);
  return key.Part.empty() ? name : name + "_" + std::string(key.Part);
}

// A value that is staged goes into the document, or, without `where`, nowhere. False: no row of it
// was seen.
bool Parking::TakeStaged(const StagedKey& key, const Change* where) {
  const auto staged = staged_.find(key);
  if (staged == staged_.end()) {
    return false;
  }
  const Writer writer = staged->second;
  staged_.erase(staged);
  if (IsOfGroup(writer)) {
    Resolve(writer.Row, where);
  } else if (where != nullptr) {
    if (writer.Row != kNone) {
      At(writer.Row).Path = where->Path;
      At(writer.Row).After = where->After;
    }
    Inherit(NameOf(key), writer);
  }
  return true;
}

void Parking::TakeVoltages(const Member& member) {
  const void* const container = member.Variable->From->Address;
  Change where;
  const bool is_there = member.Find(&where);
  if (is_there && where.After.empty()) {
    unwritten_.Add(where.Path);
  }
  CutList(&where.After);
  auto staged = staged_.lower_bound({container, 0, {}});
  const auto is_here = [&] {
    return staged != staged_.end() && staged->first.Container == container;
  };
  const bool lacks_the_first = is_here() ? staged->first.Index > 0 : !where.After.empty();
  if (lacks_the_first) {
    Inherit(std::string(variables_.at(container).Written->Name), {});
  }
  while (is_here()) {
    const StagedKey key = staged->first;
    ++staged;
    TakeStaged(key, &where);
  }
}

void Parking::Take(const observe::Point& point) {
  switch (point.What) {
    case observe::PointFate::kTaken:
      points_.push_back(point);
      break;
    case observe::PointFate::kRefused:
    case observe::PointFate::kNoClass:
      RefusePoint(point);
      break;
    case observe::PointFate::kLeft:
      break;  // found once the rows of the element have ended
  }
}

void Parking::TakePoint(const observe::Point& point, Element* element) {
  const StagedKey whole = {ContainerOf(point.Where), static_cast<long>(point.Entry), {}};
  bool seen = false;
  bool stateless = false;
  const auto take = [&](std::string_view part, const void* address) {
    const StagedKey key = {whole.Container, whole.Index, part};
    Change where;
    const bool is_there = element->Find(address, &where);
    const bool was_written = TakeStaged(key, is_there ? &where : nullptr);
    if (!was_written && is_there && address != point.Element) {
      unwritten_.Add(where.Path);
      stateless = stateless || part == kState;
    }
    seen = was_written || seen;
  };
  if (const auto* const fan = dynamic_cast<const QtSts::FanRpm*>(point.Element)) {
    take({}, &fan->Rpm);
  } else if (const auto* const input = dynamic_cast<const QtSts::BaseInputType*>(point.Element)) {
    take("Index", &input->Index);
    take("Label", &input->Label);
    take(kState, &input->State);
    take("Type", point.Element);
  } else if (const auto* const output = dynamic_cast<const QtSts::BaseOutputType*>(point.Element)) {
    take("Index", &output->Index);
    take("Label", &output->Label);
    take(kState, &output->StoredState);
    take("Type", point.Element);
  }
  if (!seen) {
    Inherit(NameOf(whole), {});
  } else if (stateless) {
    inheritance_.push_back({NameOf({whole.Container, whole.Index, kState}), "its empty entry"});
  }
}

// The row of this cycle that wrote a part; null when none did.
Row* Parking::RowOf(StagedKey key, std::string_view part) {
  key.Part = part;
  const auto written = staged_.find(key);
  const bool is_here = written != staged_.end() && written->second.Row != kNone;
  return is_here ? &At(written->second.Row) : nullptr;
}

// The point is lost, and its entry emptied.
void Parking::RefusePoint(const observe::Point& point) {
  StagedKey key = {ContainerOf(point.Where), static_cast<long>(point.Entry), {}};
  const bool is_type = point.What == observe::PointFate::kNoClass;
  std::string text = is_type ? "no point has type " + std::to_string(point.Type)
                             : "the board has no point with index " + std::to_string(point.Index);
  Row* row = RowOf(key, is_type ? "Type" : "Index");
  row = row == nullptr ? RowOf(key, "Type") : row;
  const Excerpt value = row == nullptr ? Excerpt() : WholeValue(*row);
  if (row == nullptr) {
    row = &At(Current());
    text += ", which " + NameOf(key) + " has";
  }
  AddRemark(row, is_type ? Outcome::kPointType : Outcome::kPointIndex, text + ": it is lost",
            value);
  for (const auto& part : sensors::PointParts()) {
    key.Part = part.Name;
    TakeStaged(key, nullptr);
  }
}

}  // namespace insight
