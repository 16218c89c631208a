#include "model/xml_reader.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "model/field_access.h"
#include "model/promises.h"

namespace QtSts {
namespace {

// A field and the part of an object, its own or a base's, that has it.
struct Member {
  const Field* Listed;
  void* Part;
};

// Null without such a field.
Member FindMember(const ClassInfo& info, void* object, std::string_view name) {
  Member found{nullptr, nullptr};
  FieldAccess::Visit(info, object, [&found, name](const Field& field, void* part) {
    found = name == field.Name ? Member{&field, part} : found;
    return found.Listed == nullptr;
  });
  return found;
}

}  // namespace

XmlReader::XmlReader(const ClassInfo& info, void* object, XmlError* error, const char* name)
    : root_{info.Name, 0, &info, object, nullptr, {}, nullptr}, root_name_(name), error_(error) {}

void XmlReader::Fail(const char* element, long line, const char* attribute, std::string message) {
  error_->Element = element;
  error_->Attribute = attribute;
  error_->Line = line;
  error_->Message = std::move(message);
  failed_ = true;
}

void XmlReader::Begin(const char* name, bool has_namespace,
                      std::span<const XmlAttribute> attributes, long line) {
  if (failed_) {
    return;
  }
  if (open_.empty() && root_name_ != nullptr && std::strcmp(name, root_name_) != 0) {
    Fail("", 0, "", std::string("the outermost element is not <") + root_name_ + ">");
  } else if (has_namespace) {
    Fail(name, line, "", "unknown element");
  } else if (open_.empty()) {
    root_.Line = line;
    BeginObject(std::move(root_), attributes);
  } else if (open_.back().Class == nullptr) {
    BeginElement(name, attributes, line);
  } else {
    BeginField(name, attributes, line);
  }
}

// A child of an object: a record or a list, once.
void XmlReader::BeginField(const char* name, std::span<const XmlAttribute> attributes, long line) {
  Open& parent = open_.back();
  const auto [field, part] = FindMember(*parent.Class, parent.Object, name);
  if (field == nullptr || field->Scalar != nullptr) {
    Fail(name, line, "", "unknown element");
    return;
  }
  if (std::find(parent.Seen.begin(), parent.Seen.end(), field) != parent.Seen.end()) {
    Fail(name, line, "", "element stands twice");
    return;
  }
  parent.Seen.push_back(field);
  if (field->Elements == nullptr) {
    BeginObject(
        {field->Name, line, field->Record, FieldAccess::Make(*field, part), nullptr, {}, nullptr},
        attributes);
  } else if (!attributes.empty()) {
    Fail(name, line, attributes.front().Name, "unknown attribute");
  } else {
    open_.push_back(
        {field->Name, line, nullptr, FieldAccess::Make(*field, part), field, {}, nullptr});
  }
}

// A child of a list: an object of a class that the list may hold.
void XmlReader::BeginElement(const char* name, std::span<const XmlAttribute> attributes,
                             long line) {
  const ClassInfo* const info = ClassNamed(name);
  if (info == nullptr || info->Create == nullptr || !IsA(*info, *open_.back().List->Record)) {
    Fail(name, line, "", "not an element of this list");
    return;
  }
  std::unique_ptr<CBaseStatus> element(info->Create());
  void* const object = dynamic_cast<void*>(element.get());
  BeginObject({info->Name, line, info, object, nullptr, {}, std::move(element)}, attributes);
}

void XmlReader::BeginObject(Open object, std::span<const XmlAttribute> attributes) {
  if (HasOnlyListed(object, attributes) && ReadScalars(object, attributes) &&
      KeepsPromises(object)) {
    open_.push_back(std::move(object));
  }
}

// Attributes come before child elements, so that those of its list are known.
bool XmlReader::KeepsPromises(const Open& object) {
  std::optional<ReadObject> holder;
  if (object.Made != nullptr && open_.size() >= 2) {
    const Open& of_list = open_[open_.size() - 2];
    holder = ReadObject{of_list.Class, of_list.Object};
  }
  const auto broken = BrokenBy({object.Class, object.Object}, holder ? &*holder : nullptr);
  if (broken) {
    Fail(object.Name, object.Line, broken->Field, broken->Message);
  }
  return !broken;
}

bool XmlReader::HasOnlyListed(const Open& object, std::span<const XmlAttribute> attributes) {
  for (const XmlAttribute& attribute : attributes) {
    const Field* const field = FieldNamed(*object.Class, attribute.Name);
    if (field == nullptr || field->Scalar == nullptr || attribute.HasNamespace) {
      Fail(object.Name, object.Line, attribute.Name, "unknown attribute");
      return false;
    }
  }
  return true;
}

bool XmlReader::ReadScalars(const Open& object, std::span<const XmlAttribute> attributes) {
  return FieldAccess::Visit(*object.Class, object.Object, [&](const Field& field, void* part) {
    return field.Scalar == nullptr || ReadScalar(object, field, part, attributes);
  });
}

bool XmlReader::ReadScalar(const Open& object, const Field& field, void* part,
                           std::span<const XmlAttribute> attributes) {
  const auto attribute = std::find_if(
      attributes.begin(), attributes.end(),
      [&field](const XmlAttribute& each) { return std::strcmp(each.Name, field.Name) == 0; });
  if (attribute == attributes.end()) {
    if (!field.Optional) {
      Fail(object.Name, object.Line, field.Name, "attribute is missing");
    }
    return field.Optional;
  }
  const bool fits = field.Scalar->Parse(attribute->Value, FieldAccess::Make(field, part));
  if (!fits) {
    Fail(object.Name, object.Line, field.Name, "not a value that it can hold");
  }
  return fits;
}

void XmlReader::Text(std::string_view text) {
  if (text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
    FailBetween("text");
  }
}

void XmlReader::Instruction() { FailBetween("processing instruction"); }

void XmlReader::FailBetween(const std::string& what) {
  if (!failed_ && !open_.empty()) {
    Fail(open_.back().Name, open_.back().Line, "", what + " where only elements may stand");
  }
}

void XmlReader::End() {
  if (failed_) {
    return;
  }
  Open ended = std::move(open_.back());
  open_.pop_back();
  if (ended.Class != nullptr && HasAllElements(ended) && ended.Made != nullptr) {
    FieldAccess::Add(*open_.back().List->Elements, open_.back().Object, ended.Made.release());
  }
}

bool XmlReader::HasAllElements(const Open& object) {
  return VisitEveryField(*object.Class, [&](const Field& field) {
    const bool missing =
        field.Scalar == nullptr && !field.Optional &&
        std::find(object.Seen.begin(), object.Seen.end(), &field) == object.Seen.end();
    if (missing) {
      Fail(object.Name, object.Line, "", std::string("element <") + field.Name + "> is missing");
    }
    return !missing;
  });
}

}  // namespace QtSts
