#include "host/document_paths.h"

#include <algorithm>
#include <array>
#include <set>
#include <stdexcept>
#include <utility>

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

// Whether what follows the name of a step is "[", digits and "]".
bool IsPosition(std::string_view text) {
  return text.size() > 2 && text.front() == '[' && text.back() == ']' &&
         text.substr(1, text.size() - 2).find_first_not_of("0123456789") == std::string_view::npos;
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

// Whether a document can have this path.
bool CanBe(std::string_view path) {
  std::set<const ClassInfo*> classes = {&QtSts::CStatus::Class};
  bool found = !path.ends_with('/');
  while (found && !path.empty()) {
    const std::string_view step = TakeStep(&path);
    const std::string_view position = step.substr(NameOf(step).size());
    found = false;
    classes = After(step, classes, &found);
    found = found && (position.empty() || IsPosition(position));
  }
  return found;
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
    if (!CanBe(path)) {
      throw std::runtime_error("no document has the path " + path + "; write it as diff does");
    }
  }
}

bool DocumentPaths::Hold(std::string_view path) const {
  return std::ranges::any_of(paths_,
                             [path](const std::string& above) { return IsWithin(path, above); });
}

}  // namespace host
