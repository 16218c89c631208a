#include "serve/history_names.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"

namespace serve {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// What elements of a list are known by, beside their class. The first one that fits holds.
constexpr struct {
  const QtSts::ClassInfo& Class;  // the classes derived from it included
  const char* Fields[3];
} kMarks[] = {
    {QtSts::CCANSensor::Class, {"Address", "Bus", "Face"}},
    {QtSts::CDisplayInterface::Class, {"Address"}},
    {QtSts::CDCIODevice::Class, {"Address", "Face"}},
    {QtSts::FanRpm::Class, {"FanNumber"}},
    {QtSts::BaseInputType::Class, {"Index"}},
    {QtSts::BaseOutputType::Class, {"Index"}},
    {QtSts::CNetworkDevice::Class, {"Name"}},
};

// "[CANFanRpmSensor,Address:39,Bus:1,Face:1]"
std::string StepOf(const TreeElement& element) {
  std::string step = std::string("[") + element.Name();
  const auto* const mark =
      std::ranges::find_if(kMarks, [&](const auto& each) { return element.IsA(each.Class); });
  if (mark != std::end(kMarks)) {
    for (const char* const field : mark->Fields) {
      const TreeValue* const value = field == nullptr ? nullptr : element.FindValue(field);
      if (value != nullptr) {
        step.append(",").append(field).append(":");
        value->AppendTo(&step);
      }
    }
  }
  return step + "]";
}

// By the identity of the innermost element that `find` knows, of those that the path leads through
// whose own path ends with a position.
template <class Find>
std::string OfPathBy(std::string_view path, const Find& find) {
  const std::size_t end = path.rfind(']');
  for (std::size_t after = end == std::string_view::npos ? 0 : end + 1; after > 0;) {
    if (const std::string* const identity = find(path.substr(0, after))) {
      return *identity + std::string(path.substr(after));
    }
    const std::size_t before = path.substr(0, after - 1).rfind(']');
    after = before == std::string_view::npos ? 0 : before + 1;
  }
  return std::string(path);
}

}  // namespace

Identities::Identities(const QtSts::DocumentTree& document) : document_(document) {
  std::unordered_map<std::string, std::size_t> known;
  for (const TreeElement& element : document.Elements()) {
    const TreeElement* const parent = element.Parent();
    if (parent == nullptr) {
      of_.emplace_back();
      continue;
    }
    std::string identity = Of(*parent);
    if (!parent->IsList()) {
      identity.append(identity.empty() ? "" : "/").append(element.Name());
      of_.push_back(std::move(identity));
      continue;
    }
    identity += StepOf(element);
    const std::size_t count = ++known[identity];
    if (count > 1) {
      identity.insert(identity.size() - 1, "#" + std::to_string(count));
    }
    of_.push_back(std::move(identity));
  }
}

const std::string& Identities::Of(const TreeElement& element) const {
  return of_[static_cast<std::size_t>(&element - document_.Elements().data())];
}

std::string Identities::OfPath(std::string_view path) const {
  return OfPathBy(path, [this](std::string_view element) {
    const TreeElement* const found = document_.Root().Find(element);
    return found == nullptr ? nullptr : &Of(*found);
  });
}

std::vector<std::string> Identities::OfPaths(const std::vector<std::string_view>& paths) const {
  std::unordered_map<std::string, const std::string*> of_elements;
  for (const TreeElement& element : document_.Elements()) {
    if (!paths.empty() && element.Parent() != nullptr && element.Parent()->IsList()) {
      of_elements.emplace(element.Path(), &Of(element));
    }
  }
  std::vector<std::string> identities;
  identities.reserve(paths.size());
  for (const std::string_view path : paths) {
    identities.push_back(OfPathBy(path, [&of_elements](std::string_view element) {
      const auto found = of_elements.find(std::string(element));
      return found == of_elements.end() ? nullptr : found->second;
    }));
  }
  return identities;
}

std::optional<std::uint32_t> HistoryNames::Find(std::string_view element,
                                                std::string_view field) const {
  const auto found = elements_.find(element);
  if (found == elements_.end()) {
    return std::nullopt;
  }
  for (const Series& series : found->second) {
    if (fields_[series.Field] == field) {
      return series.Number;
    }
  }
  return std::nullopt;
}

std::uint32_t HistoryNames::FieldNumber(std::string_view field) {
  const auto found = field_numbers_.find(field);
  if (found != field_numbers_.end()) {
    return found->second;
  }
  const auto number = static_cast<std::uint32_t>(fields_.size());
  fields_.emplace_back(field);
  field_numbers_.emplace(field, number);
  return number;
}

void HistoryNames::Add(std::string_view element, std::string_view field, std::uint32_t series) {
  const std::uint32_t number = FieldNumber(field);
  auto found = elements_.find(element);
  if (found == elements_.end()) {
    found = elements_.emplace(element, Element()).first;
  }
  found->second.push_back({number, series});
  ++size_;
}

void HistoryNames::Keep(const std::vector<bool>& is_used) {
  size_ = 0;
  for (auto element = elements_.begin(); element != elements_.end();) {
    std::erase_if(element->second,
                  [&is_used](const Series& series) { return !is_used[series.Number]; });
    size_ += element->second.size();
    element = element->second.empty() ? elements_.erase(element) : std::next(element);
  }
}

void HistoryNames::Visit(
    const std::function<void(std::string_view, std::string_view, std::uint32_t)>& visit) const {
  for (const auto& [element, all] : elements_) {
    for (const Series& series : all) {
      visit(element, fields_[series.Field], series.Number);
    }
  }
}

}  // namespace serve
