#include "insight/row_unwritten.h"

#include <algorithm>
#include <utility>

namespace insight {

void Unwritten::Clear() {
  elements_.clear();
  places_.clear();
}

void Unwritten::Add(std::string path) {
  elements_.push_back({std::move(path), places_.size()});
  places_.emplace_back();
}

void Unwritten::Add(const std::string& path, std::string_view place) {
  if (elements_.empty() || elements_.back().Path != path) {
    elements_.push_back({path, places_.size()});
  }
  places_.push_back(place);
}

std::vector<std::string> Unwritten::Sorted() const {
  // Whole paths would be compared far more often, and lie far apart in memory.
  std::vector<std::pair<std::string_view, std::size_t>> elements;
  elements.reserve(elements_.size());
  for (const Element& element : elements_) {
    elements.emplace_back(element.Path, elements.size());
  }
  std::ranges::sort(elements);
  std::vector<std::string> paths;
  paths.reserve(places_.size());
  std::vector<std::string_view> places;
  for (const auto& [path, at] : elements) {
    const auto begin = static_cast<std::ptrdiff_t>(elements_[at].Begin);
    const auto end = static_cast<std::ptrdiff_t>(
        at + 1 == elements_.size() ? places_.size() : elements_[at + 1].Begin);
    places.assign(places_.begin() + begin, places_.begin() + end);
    std::ranges::sort(places);
    for (const std::string_view place : places) {
      std::string whole;
      whole.reserve(path.size() + place.size());
      paths.push_back(std::move(whole.append(path).append(place)));
    }
  }
  if (!std::ranges::is_sorted(paths)) {
    std::ranges::sort(paths);  // elements in elements
  }
  return paths;
}

}  // namespace insight
