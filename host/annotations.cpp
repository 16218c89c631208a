#include "host/annotations.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// Finds the values at many paths in one walk: a path leads through lists whose elements a search
// would count from the first for each.
class ValueFinder {
 public:
  // `found` is set to the value, by its path from the root, unless there is none.
  void Want(std::string_view path, const TreeValue** found) {
    const std::size_t slash = path.rfind('/');
    const bool of_root = slash == std::string_view::npos;
    wanted_[std::string(path.substr(0, of_root ? 0 : slash))].push_back(
        {path.substr(of_root ? 0 : slash + 1), found});
  }

  void Find(const QtSts::DocumentTree& document) const {
    for (const TreeElement& element : document.Elements()) {
      if (wanted_.empty()) {
        return;
      }
      const auto wanted = wanted_.find(element.Path());
      if (wanted == wanted_.end()) {
        continue;
      }
      for (const auto& [name, found] : wanted->second) {
        *found = element.FindValue(name);
      }
    }
  }

 private:
  std::unordered_map<std::string, std::vector<std::pair<std::string_view, const TreeValue**>>>
      wanted_;
};

using Values = std::vector<const TreeValue*>;

// Room for the values at `paths`, null where there is none, which the finder will find.
template <class Paths>
Values Want(const Paths& paths, ValueFinder* finder) {
  Values values(paths.size(), nullptr);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    finder->Want(paths[i], &values[i]);
  }
  return values;
}

ValueSet SetOf(const Values& values) {
  ValueSet set(values.begin(), values.end());
  set.erase(nullptr);
  return set;
}

// A list stands for all that it holds.
void AddListed(const TreeElement& element, ValueSet* values) {  // NOLINT(misc-no-recursion)
  for (const TreeValue& value : element.Values()) {
    values->insert(&value);
  }
  for (const TreeElement& child : element.Children()) {
    AddListed(child, values);
  }
}

void AddUnreportedLists(const insight::Snapshot& snapshot, ValueSet* values) {
  for (const std::string& path : snapshot.NotReported) {
    const TreeElement* const list = snapshot.Document.Root().Find(path);
    if (list != nullptr && list->IsList()) {
      AddListed(*list, values);
    }
  }
}

// An optional source only adds to what others say.
std::vector<std::string_view> UnfedPaths(const insight::Snapshot& snapshot) {
  std::vector<std::string_view> paths;
  for (const insight::Source& source : snapshot.Sources) {
    if (source.Required) {
      paths.insert(paths.end(), source.Unfed.begin(), source.Unfed.end());
    }
  }
  return paths;
}

// Where the values of rows with errors stand.
std::vector<std::string_view> PathsOfErrors(const insight::Snapshot& snapshot) {
  std::vector<std::string_view> paths;
  for (const insight::Row& row : snapshot.Rows) {
    if (row.Class() == insight::OutcomeClass::kError && !row.Path.empty()) {
      paths.emplace_back(row.Path);
    }
  }
  return paths;
}

}  // namespace

Mark MarkOf(insight::Severity severity) {
  static constexpr Mark kMarks[] = {Mark::kCritical, Mark::kUnknown, Mark::kWarning};
  return kMarks[static_cast<std::size_t>(severity)];
}

Annotations::Annotations(const insight::Snapshot& snapshot) {
  std::vector<std::string_view> paths;
  for (const insight::Finding& finding : snapshot.Findings) {
    paths.emplace_back(finding.Path);
  }
  ValueFinder finder;
  const Values found = Want(paths, &finder);
  const Values unreported = Want(snapshot.NotReported, &finder);
  const Values unfed = Want(UnfedPaths(snapshot), &finder);
  const std::vector<std::string_view> wrong = PathsOfErrors(snapshot);
  const Values erroneous = Want(wrong, &finder);
  finder.Find(snapshot.Document);
  Unreported = SetOf(unreported);
  AddUnreportedLists(snapshot, &Unreported);
  Unfed = SetOf(unfed);
  for (const TreeValue* const value : SetOf(erroneous)) {
    Marks[value] = Mark::kWarning;
  }
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i] != nullptr) {
      Mark& mark = Marks[found[i]];
      mark = std::max(mark, MarkOf(snapshot.Findings[i].Level));
    }
  }
}

}  // namespace host
