#include "model/document.h"
#include "model/listed_object.h"
#include "model/path_position.h"
#include "model/text.h"

namespace QtSts {
namespace {

// The field of this name, when it is reported.
std::optional<ListedField> FindField(const ListedObject& object, std::string_view name) {
  std::optional<ListedField> found;
  object.VisitFields([&found, name](const ListedField& field) {
    if (name == field.Listed().Name) {
      found = field;
    }
    return !found;
  });
  return found && found->IsReported() ? found : std::nullopt;
}

// "Outputs[0]" or "Dimming", of an object.
std::optional<ListedObject> FindStep(const ListedObject& object, std::string_view step) {
  const std::size_t bracket = step.find('[');
  const auto field = FindField(object, step.substr(0, bracket));
  if (!field || field->IsScalar() || field->IsList() == (bracket == std::string_view::npos)) {
    return std::nullopt;
  }
  if (!field->IsList()) {
    return field->Record();
  }
  const auto position = ParsePosition(step.substr(bracket));
  std::optional<ListedObject> found;
  std::size_t before = 0;
  field->VisitElements([&](const ListedObject& element) {
    if (position && before++ == *position) {
      found = element;
    }
    return position && !found;
  });
  return found;
}

}  // namespace

ListedObject ListedObject::OfDocument(const CStatus& status) { return {&CStatus::Class, &status}; }

std::string ListedField::Written() const {
  std::string text;
  Format(&text);
  CleanText(&text);
  return text;
}

std::optional<ListedField> FindValue(const CStatus& status, std::string_view path) {
  std::optional<ListedObject> object = ListedObject::OfDocument(status);
  std::size_t slash = path.find('/');
  while (object && slash != std::string_view::npos) {
    object = FindStep(*object, path.substr(0, slash));
    path.remove_prefix(slash + 1);
    slash = path.find('/');
  }
  const auto field = object ? FindField(*object, path) : std::nullopt;
  return field && field->IsScalar() ? field : std::nullopt;
}

}  // namespace QtSts
