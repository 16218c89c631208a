// Objects of listed classes, and points of classes that a program adds to those of the model.
#include "model/listed_object.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "model/field_access.h"
#include "model/io_points.h"
#include "model/own_points.h"

namespace QtSts {
namespace {

// One listed class of points.
struct Kind {
  const ClassInfo* Class;
  const void* (*As)(const CBaseStatus& object);  // null when the object is no such point
  std::unique_ptr<CBaseStatus> (*MakeNamed)(const char* name);  // null for inputs
};

template <class C>
const void* As(const CBaseStatus& object) {
  return dynamic_cast<const C*>(&object);
}

// An output point of class C under a name that lives as long.
template <class C>
class Named final : public C {
 public:
  explicit Named(const char* name) : name_(name) {}
  const char* GetNodeName() override { return name_; }

 private:
  const char* name_;
};

template <class C>
std::unique_ptr<CBaseStatus> MakeNamed(const char* name) {
  return std::make_unique<Named<C>>(name);
}

template <class C>
constexpr Kind KindOf() {
  Kind kind{&C::Class, &As<C>, nullptr};
  if constexpr (std::is_base_of_v<BaseOutputType, C>) {
    kind.MakeNamed = &MakeNamed<C>;
  }
  return kind;
}

template <class... C>
constexpr std::array<Kind, sizeof...(C)> Kinds() {
  return {KindOf<C>()...};
}

// The bases come last, so that the first that fits is the nearest.
constexpr auto kKinds =
    Kinds<GeneralPurposeInputType, AirflowSensorInputType, CDoorSensorInputType,
          SurgeSuppressorInputType, CIntakeFanStatusRelayInputType, CFrontFanStatusRelayInputType,
          CPixelFanStatusRelayInputType, CFanPowerSenseInputType, CPowerSupplyStatusRelayInputType,
          CMaintHeaterStatusRelayInputType, CHeaterStatusRelayInputType, CIntakeFanOutputType,
          CPixelFanOutputType, CFrontFanOutputType, CMaintHeaterOutputType, CHeaterOutputType,
          CGeneralPurposeOutputType, CAuxiliaryOutputType, CFaultOkLedOutputType,
          CCurrentMessageOutputType, BaseInputType, BaseOutputType>();

// A name that is an element's in XML and needs no escapes anywhere: letters, digits, '_', '-' and
// '.' of ASCII, the first one a letter or '_'.
bool IsName(std::string_view text) {
  const auto begins = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  const auto follows = [begins](char c) {
    return begins(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
  };
  return !text.empty() && begins(text.front()) && std::ranges::all_of(text, follows);
}

// A class of this name that adds no field to `nearest`. One for each name, so that two objects of
// one class are seen to be so.
const ClassInfo& ClassWithName(const ClassInfo& nearest, std::string_view name) {
  using Key = std::pair<const ClassInfo*, std::string>;
  // Never destroyed: trees that live as long may ask for their classes.
  static std::mutex mutex;
  static auto& classes = *new std::map<Key, ClassInfo>;
  const std::lock_guard<std::mutex> lock(mutex);
  const auto [entry, added] = classes.try_emplace(Key(&nearest, name));
  if (added) {
    ClassInfo& info = entry->second;
    info.Name = entry->first.second.c_str();
    info.About = nearest.About;
    info.Type = nearest.Type;
    FieldAccess::SetBase(&info, nearest, [](void* object) { return object; });
  }
  return entry->second;
}

// The class of an output point that calls itself `name`. Under the name of a listed class it would
// be read back as what it is not.
const ClassInfo* ClassOfOutput(const ClassInfo& nearest, const char* name) {
  if (name == nullptr || !IsName(name) || ClassNamed(name) != nullptr) {
    return &nearest;
  }
  return &ClassWithName(nearest, name);
}

}  // namespace

ListedObject::ListedObject(const CBaseStatus& object)
    : class_(ClassOf(object)), object_(dynamic_cast<const void*>(&object)) {
  if (class_ != nullptr) {
    return;
  }
  const auto kind =
      std::ranges::find_if(kKinds, [&](const Kind& each) { return each.As(object) != nullptr; });
  if (kind == kKinds.end()) {
    return;
  }
  class_ = kind->Class;
  object_ = kind->As(object);
  if (const auto* const output = dynamic_cast<const BaseOutputType*>(&object)) {
    class_ = ClassOfOutput(*class_, const_cast<BaseOutputType*>(output)->GetNodeName());
  }
}

std::unique_ptr<CBaseStatus> MakeOwnPoint(const ClassInfo& own) {
  if (own.Create != nullptr) {
    return nullptr;
  }
  const auto* const kind = std::ranges::find(kKinds, own.Base, &Kind::Class);
  return kind == kKinds.end() || kind->MakeNamed == nullptr ? nullptr : kind->MakeNamed(own.Name);
}

}  // namespace QtSts
