#include "insight/row_shadow.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "collector/state/row_tables.h"
#include "model/field_access.h"
#include "model/text.h"

namespace insight {
namespace {

namespace listing = QtSts::listing;
using QtSts::ScalarType;

// How many bytes an object of each type has; a text has none.
struct Width {
  const ScalarType* Type;
  std::size_t Bytes;
};
constexpr Width kWidths[] = {
    {&listing::kBool, sizeof(bool)},
    {&listing::kUInt8, sizeof(std::uint8_t)},
    {&listing::kUInt16, sizeof(std::uint16_t)},
    {&listing::kUInt32, sizeof(std::uint32_t)},
    {&listing::kUInt64, sizeof(std::uint64_t)},
    {&listing::kInt32, sizeof(std::int32_t)},
    {&listing::kInt64, sizeof(std::int64_t)},
    {&listing::kFloat, sizeof(float)},
    {&listing::kDouble, sizeof(double)},
    {&listing::kText, 0},
};

// The parts of a staged point.
struct Part {
  const char* Name;
  const ScalarType* Type;
  const void* (*Of)(const DcioPoint& point);
};
constexpr Part kParts[] = {
    {"Present", &listing::kUInt8, [](const DcioPoint& p) -> const void* { return &p.Present; }},
    {"Type", &listing::kUInt32, [](const DcioPoint& p) -> const void* { return &p.Type; }},
    {"Index", &listing::kInt32, [](const DcioPoint& p) -> const void* { return &p.Index; }},
    {"State", &listing::kInt32, [](const DcioPoint& p) -> const void* { return &p.State; }},
    {"Label", &listing::kText, [](const DcioPoint& p) -> const void* { return &p.Label; }},
};

std::string At(const char* name, std::size_t index) {
  return std::string(name) + "[" + std::to_string(index) + "]";
}

void Note(std::string path, std::string before, std::string after, std::vector<Change>* changes) {
  if (before != after) {
    changes->push_back({std::move(path), std::move(before), std::move(after)});
  }
}

template <class Points>
void ComparePoints(const char* name, const Points& now, Points* before,
                   std::vector<Change>* changes) {
  for (std::size_t entry = 0; entry < now.size(); ++entry) {
    if (now[entry] == (*before)[entry]) {
      continue;
    }
    for (const Part& part : kParts) {
      std::string was = Written(*part.Type, part.Of((*before)[entry]));
      std::string is = Written(*part.Type, part.Of(now[entry]));
      if (was != is) {  // of one point in few rows more than one part
        changes->push_back({At(name, entry) + "." + part.Name, std::move(was), std::move(is)});
      }
    }
    (*before)[entry] = now[entry];
  }
}

// There are 256 fans at most.
void CompareFans(decltype(FanRpms)* before, std::vector<Change>* changes) {
  if (FanRpms == *before) {
    return;
  }
  const auto text = [](const decltype(FanRpms)& fans, std::uint8_t number) {
    const auto fan = fans.find(number);
    return fan == fans.end() ? std::string() : std::to_string(fan->second);
  };
  auto numbers = *before;
  numbers.insert(FanRpms.begin(), FanRpms.end());
  for (const auto& [number, speed] : numbers) {
    Note(At("FanRpms", number), text(*before, number), text(FanRpms, number), changes);
  }
  *before = FanRpms;
}

}  // namespace

const ScalarType* ScalarOf(rows::Type type) {
  switch (type) {
    case rows::Type::kBool:
      return &listing::kBool;
    case rows::Type::kUnsigned8:
      return &listing::kUInt8;
    case rows::Type::kUnsigned16:
      return &listing::kUInt16;
    case rows::Type::kUnsigned32:
    case rows::Type::kBits:
      return &listing::kUInt32;
    case rows::Type::kSigned32:
      return &listing::kInt32;
    case rows::Type::kFloat:
      return &listing::kFloat;
    case rows::Type::kDouble:
      return &listing::kDouble;
    case rows::Type::kString:
      return &listing::kText;
    case rows::Type::kPoint:
      break;
  }
  return nullptr;
}

std::string Written(const ScalarType& type, const void* value) {
  std::string text;
  type.Format(value, &text);
  if (&type == &listing::kText) {
    QtSts::CleanText(&text);
  }
  return text;
}

void Shadow::Group::Clear() {
  Watches.clear();
  Runs.clear();
  TextWatches.clear();
  Bytes.clear();
  Texts.clear();
}

void Shadow::Group::Add(const void* address, const ScalarType* type, std::string path) {
  const auto* const width = std::ranges::find(kWidths, type, &Width::Type);
  if (width == std::end(kWidths)) {
    return;  // a list of numbers, which the fixed part does not hold
  }
  Watch watch{address, type, width->Bytes, 0, std::move(path)};
  if (watch.Size == 0) {
    watch.Offset = Texts.size();
    Texts.emplace_back();
    TextWatches.push_back(Watches.size());
  } else {
    watch.Offset = Bytes.size();
    Bytes.resize(Bytes.size() + watch.Size);
    const bool goes_on =
        !Runs.empty() && Runs.back().First + Runs.back().Count == Watches.size() &&
        static_cast<const unsigned char*>(Runs.back().Address) + Runs.back().Size == address;
    if (!goes_on) {
      Runs.push_back({address, 0, watch.Offset, Watches.size(), 0});
    }
    Runs.back().Size += watch.Size;
    ++Runs.back().Count;
  }
  Watches.push_back(std::move(watch));
  Keep(Watches.back());
}

bool Shadow::Group::IsSame(const Watch& watch) const {
  return watch.Size == 0 ? Texts[watch.Offset] == *static_cast<const std::string*>(watch.Address)
                         : std::memcmp(&Bytes[watch.Offset], watch.Address, watch.Size) == 0;
}

void Shadow::Group::Keep(const Watch& watch) {
  if (watch.Size == 0) {
    Texts[watch.Offset] = *static_cast<const std::string*>(watch.Address);
  } else {
    std::memcpy(&Bytes[watch.Offset], watch.Address, watch.Size);
  }
}

std::string Shadow::Group::KeptText(const Watch& watch) const {
  if (watch.Size == 0) {
    return Written(*watch.Type, &Texts[watch.Offset]);
  }
  alignas(std::max_align_t) unsigned char copy[sizeof(double)];
  std::memcpy(copy, &Bytes[watch.Offset], watch.Size);
  return Written(*watch.Type, copy);
}

void Shadow::Group::CompareOne(const Watch& watch, std::vector<Change>* changes) {
  if (!IsSame(watch)) {
    Note(watch.Path, KeptText(watch), Written(*watch.Type, watch.Address), changes);
    Keep(watch);
  }
}

void Shadow::Group::Compare(std::vector<Change>* changes) {
  for (const Run& run : Runs) {
    if (std::memcmp(&Bytes[run.Offset], run.Address, run.Size) != 0) {
      for (std::size_t at = run.First; at < run.First + run.Count; ++at) {
        CompareOne(Watches[at], changes);
      }
    }
  }
  for (const std::size_t at : TextWatches) {
    CompareOne(Watches[at], changes);
  }
}

const Shadow::Watch* Shadow::Group::Find(const void* address) const {
  const auto found = std::ranges::find(Watches, address, &Watch::Address);
  return found == Watches.end() ? nullptr : &*found;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as records are in records
void Shadow::Walk(const QtSts::ClassInfo& info, const void* object, const std::string& path,
                  Group* group) {
  QtSts::FieldAccess::Visit(
      info, const_cast<void*>(object), [&](const QtSts::Field& field, const void* part) {
        const void* const value = QtSts::FieldAccess::Read(field, part);
        const std::string here = path + (path.empty() ? "" : "/") + field.Name;
        if (value == nullptr) {
          return true;  // nothing of the fixed part is optional
        }
        if (field.Elements != nullptr) {
          tails_.push_back(
              {&field, value, QtSts::FieldAccess::Count(*field.Elements, value), here});
        } else if (field.Scalar == nullptr) {
          Walk(*field.Record, value, here, group);
        } else {
          group->Add(value, field.Scalar, here);
        }
        return true;
      });
}

// NOLINTNEXTLINE(misc-no-recursion)
void Shadow::Walk(const QtSts::CBaseStatus& object, const std::string& path, Group* group) {
  if (const QtSts::ClassInfo* const info = QtSts::ClassOf(object)) {
    Walk(*info, dynamic_cast<const void*>(&object), path, group);
  }
}

void Shadow::Begin(const QtSts::CStatus& status) {
  status_ = &status;
  output_zero_ = nullptr;
  for (Group* group : {&root_, &output_, &scratch_}) {
    group->Clear();
  }
  tails_.clear();
  behind_interfaces_.clear();
  Walk(status, "", &root_);
  WatchOutputZero();
  WatchScratch();
}

void Shadow::WatchOutputZero() {
  output_zero_ = status_->Outputs[0];
  if (output_zero_ != nullptr) {
    Walk(*output_zero_, "Outputs[0]", &output_);
  }
}

void Shadow::WatchScratch() {
  const auto add = [this]<class T>(const char* name, const T& variable) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
      scratch_.Add(&variable, ScalarOf(rows::TypeOf<T>()), name);
    }
  };
#define WATCH(name, ...) add(#name, name);
  SCRATCH_VARIABLES(WATCH)
#undef WATCH
#define WATCH(name, ...) add("beaconRoundel." #name, beaconRoundel.name);
  BEACON_ROUNDEL_FIELDS(WATCH)
#undef WATCH
  fans_ = FanRpms;
  input_voltages_ = f_Psrb_InputVoltages;
  output_voltages_ = f_Psrb_OutputVoltages;
  inputs_ = dcioInputs;
  outputs_ = dcioOutputs;
}

void Shadow::CompareTail(Tail* tail, std::vector<Change>* changes) {
  for (const std::size_t count = QtSts::FieldAccess::Count(*tail->Listed->Elements, tail->List);
       tail->Count < count; ++tail->Count) {
    const QtSts::CBaseStatus* const element =
        QtSts::FieldAccess::At(*tail->Listed->Elements, tail->List, tail->Count);
    const QtSts::ClassInfo* const info = element == nullptr ? nullptr : QtSts::ClassOf(*element);
    changes->push_back(
        {At(tail->Path.c_str(), tail->Count), "", info == nullptr ? "" : info->Name});
  }
}

void Shadow::CompareTails(int interface, std::vector<Change>* changes) {
  for (Tail& tail : tails_) {
    CompareTail(&tail, changes);
  }
  if (interface < 0 || output_zero_ == nullptr) {
    return;
  }
  const QtSts::CDisplayInterfaceList& interfaces = output_zero_->DisplayInterfaces;
  while (behind_interfaces_.size() < interfaces.Count()) {
    const auto position = static_cast<unsigned int>(behind_interfaces_.size());
    static const QtSts::Field* const kSensors =
        QtSts::FieldNamed(QtSts::CDisplayInterface::Class, "Sensors");
    behind_interfaces_.push_back(
        {kSensors, &interfaces[position]->Sensors, 0,
         At("Outputs[0]/DisplayInterfaces", position) + "/" + kSensors->Name});
  }
  if (static_cast<std::size_t>(interface) < behind_interfaces_.size()) {
    CompareTail(&behind_interfaces_[static_cast<std::size_t>(interface)], changes);
  }
}

void Shadow::CompareVoltages(const char* name, const std::vector<float>& now,
                             std::vector<float>* before, std::vector<Change>* changes) {
  const auto text = [](float volts) { return Written(listing::kFloat, &volts); };
  for (; before->size() < now.size(); before->push_back(now[before->size()])) {
    Note(At(name, before->size()), "", text(now[before->size()]), changes);
  }
  if (now.size() < before->size()) {  // a record takes all of them
    for (std::size_t at = 0; at < before->size(); ++at) {
      Note(At(name, at), text((*before)[at]), "", changes);
    }
    *before = now;
  }
}

void Shadow::CompareContainers(std::vector<Change>* changes) {
  CompareFans(&fans_, changes);
  CompareVoltages("f_Psrb_InputVoltages", f_Psrb_InputVoltages, &input_voltages_, changes);
  CompareVoltages("f_Psrb_OutputVoltages", f_Psrb_OutputVoltages, &output_voltages_, changes);
  ComparePoints("dcioInputs", dcioInputs, &inputs_, changes);
  ComparePoints("dcioOutputs", dcioOutputs, &outputs_, changes);
}

void Shadow::FindOutputZero() {
  if (output_zero_ == nullptr && status_->Outputs[0] != nullptr) {
    const std::size_t own = tails_.size();
    WatchOutputZero();
    for (std::size_t i = own; i < tails_.size(); ++i) {
      tails_[i].Count = 0;  // its elements are new as well
    }
    output_is_new_ = true;
  }
}

void Shadow::Compare(int interface, std::vector<Change>* document, std::vector<Change>* scratch) {
  FindOutputZero();
  output_is_new_ = false;
  root_.Compare(document);
  output_.Compare(document);
  CompareTails(interface, document);
  scratch_.Compare(scratch);
  CompareContainers(scratch);
}

bool Shadow::Find(const void* address, Change* field) {
  FindOutputZero();
  for (const Group* group : {&root_, &output_}) {
    if (const Watch* const watch = group->Find(address)) {
      const bool is_new = output_is_new_ && group == &output_;
      *field = {watch->Path, is_new ? "" : group->KeptText(*watch), Written(*watch->Type, address)};
      return true;
    }
  }
  return false;
}

}  // namespace insight
