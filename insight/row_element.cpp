#include "insight/row_element.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "insight/row_shadow.h"
#include "model/field_access.h"
#include "model/outputs.h"

namespace insight {

Element::Element(const QtSts::CBaseStatus& element, std::string path)
    : element_(element), class_(QtSts::ClassOf(element)), path_(std::move(path)) {}

// NOLINTNEXTLINE(misc-no-recursion): as deep as elements are in elements
void Element::Walk(const QtSts::ClassInfo& info, const void* object, const std::string& path,
                   const QtSts::CBaseStatus* element) {
  const std::size_t holder = holders_.size();
  holders_.push_back({path, element, &info});
  const bool is_interface = QtSts::IsA(info, QtSts::CDisplayInterface::Class);
  QtSts::FieldAccess::Visit(
      info, const_cast<void*>(object), [&](const QtSts::Field& field, const void* part) {
        const void* const value = QtSts::FieldAccess::Read(field, part);
        if (value == nullptr) {
          return true;
        }
        if (field.Scalar != nullptr) {
          values_.push_back({value, &field, holder});
          return true;
        }
        const std::string here = path + "/" + field.Name;
        if (field.Elements == nullptr) {
          Walk(*field.Record, value, here, nullptr);
          return true;
        }
        const std::size_t count =
            is_interface ? 0 : QtSts::FieldAccess::Count(*field.Elements, value);
        for (std::size_t at = 0; at < count; ++at) {
          const QtSts::CBaseStatus* const held = QtSts::FieldAccess::At(*field.Elements, value, at);
          const QtSts::ClassInfo* const own = held == nullptr ? nullptr : QtSts::ClassOf(*held);
          if (own != nullptr) {
            Walk(*own, dynamic_cast<const void*>(held), here + "[" + std::to_string(at) + "]",
                 held);
          }
        }
        return true;
      });
}

const char* Element::ClassName() const { return class_ == nullptr ? "" : class_->Name; }

void Element::Get(const Value& value, Change* found) const {
  *found = {holders_[value.Holder].Path + "/" + value.Listed->Name, "",
            Written(*value.Listed->Scalar, value.Address)};
}

bool Element::Find(const void* address, Change* found) {
  if (address == nullptr) {
    return false;
  }
  if (holders_.empty()) {
    if (class_ != nullptr) {
      Walk(*class_, dynamic_cast<const void*>(&element_), path_, &element_);
    } else {
      holders_.push_back({path_, &element_, nullptr});
    }
  }
  const auto value = std::ranges::find(values_, address, &Value::Address);
  if (value != values_.end()) {
    Get(*value, found);
    return true;
  }
  const auto holder = std::ranges::find(holders_, address, &Holder::Address);
  if (holder == holders_.end()) {
    return false;
  }
  *found = {holder->Path, "", holder->Class == nullptr ? "" : holder->Class->Name};
  return true;
}

bool IsMeasured(std::string_view field) {
  static constexpr std::string_view kOfItself[] = {"Address",
                                                   "Bus",
                                                   "Face",
                                                   "HardwareID",
                                                   "IdType",
                                                   "NumberOfAttributes",
                                                   "PerColorLedCount",
                                                   "PortStatus",
                                                   "Revision",
                                                   "SyncControlStartBit"};
  return std::ranges::find(kOfItself, field) == std::end(kOfItself);
}

}  // namespace insight
