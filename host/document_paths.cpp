#include "host/document_paths.h"

#include <algorithm>
#include <array>
#include <set>
#include <stdexcept>
#include <utility>

#include "insight/nearest.h"
#include "model/document.h"

namespace host {
namespace {

using QtSts::ClassInfo;
using QtSts::Field;

constexpr std::array<std::string_view, 2> kTimes = {"LocalTime", "Uptime"};

// The first step of a path, which loses it.
std::string_view TakeStep(std::string_view* path) {
  const std::string_view step = path->substr(0, path->find('/'));
  path->remove_prefix(std::min(step.size() + 1, path->size()));
  return step;
}

// "Sensors[3]" as "Sensors".
std::string_view NameOf(std::string_view step) { return step.substr(0, step.find('[')); }

// Whether what follows the name of a step is "[", a number and "]", as paths have them.
bool IsPosition(std::string_view text) {
  if (text.size() <= 2 || text.front() != '[' || text.back() != ']') {
    return false;
  }
  const std::string_view digits = text.substr(1, text.size() - 2);
  return digits.find_first_not_of("0123456789") == std::string_view::npos &&
         (digits.front() != '0' || digits.size() == 1);
}

// Of these classes, what the step leads to; `*found` is set when there is such a field.
std::set<const ClassInfo*> After(std::string_view step, const std::set<const ClassInfo*>& classes,
                                 bool* found) {
  const std::string_view name = NameOf(step);
  const bool has_position = step.size() > name.size();
  std::set<const ClassInfo*> next;
  for (const ClassInfo* const info : classes) {
    const Field* const field = QtSts::FieldNamed(*info, name);
    if (field == nullptr || (has_position && field->Elements == nullptr)) {
      continue;
    }
    *found = true;
    for (const ClassInfo* const candidate : QtSts::Classes()) {
      if (candidate == field->Record ||
          (field->Elements != nullptr && QtSts::IsA(*candidate, *field->Record))) {
        next.insert(candidate);
      }
    }
  }
  return next;
}

// The field of these classes whose name is nearest to that of the step; "" without one.
std::string_view NearestName(std::string_view step, const std::set<const ClassInfo*>& classes) {
  std::vector<std::string_view> names;
  for (const ClassInfo* const info : classes) {
    QtSts::VisitEveryField(*info, [&names](const Field& field) {
      names.emplace_back(field.Name);
      return true;
    });
  }
  std::ranges::sort(names);
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return insight::Names(names).Nearest(NameOf(step));
}

// Why no document can have this path, with the nearest one up to the step that is wrong; "" when
// one can.
std::string WhyNot(const std::string& whole) {
  const std::string why = "no document has the path " + whole;
  const std::string cure = "; write it as diff does";
  std::set<const ClassInfo*> classes = {&QtSts::CStatus::Class};
  for (std::string_view path = whole; !path.empty();) {
    const std::string_view step = TakeStep(&path);
    const std::string_view position = step.substr(NameOf(step).size());
    bool found = false;
    std::set<const ClassInfo*> next = After(step, classes, &found);
    if (!found || (!position.empty() && !IsPosition(position))) {
      const std::string_view name = NearestName(step, classes);
      const std::string above =
          whole.substr(0, static_cast<std::size_t>(step.data() - whole.data()));
      std::string words = why;
      if (!name.empty()) {
        words.append("; the nearest is ").append(above).append(name);
      }
      return words + cure;
    }
    classes = std::move(next);
  }
  return whole.ends_with('/') ? why + cure : "";
}

// Whether `path` is `above` or stands below it.
bool IsWithin(std::string_view path, std::string_view above) {
  while (!above.empty()) {
    const std::string_view wanted = TakeStep(&above);
    const std::string_view step = TakeStep(&path);
    if (step != wanted && NameOf(step) != wanted) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool ChangesInEachCycle(std::string_view path) {
  return std::ranges::find(kTimes, path) != kTimes.end();
}

DocumentPaths::DocumentPaths(std::vector<std::string> paths) : paths_(std::move(paths)) {
  for (const std::string& path : paths_) {
    if (const std::string why = WhyNot(path); !why.empty()) {
      throw std::runtime_error(why);
    }
  }
}

bool DocumentPaths::Hold(std::string_view path) const {
  return std::ranges::any_of(paths_,
                             [path](const std::string& above) { return IsWithin(path, above); });
}

}  // namespace host
