#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/document.h"
#include "model/json.h"
#include "model/json_scanner.h"
#include "model/listing.h"
#include "model/xml_reader.h"

namespace QtSts {
namespace {

constexpr std::string_view kClass = "Class";      // of an element of a list, its class
constexpr std::string_view kInsight = "Insight";  // of the root, what a host adds

constexpr std::size_t kMaximumValueSize = 10'000'000;  // in bytes, as of a value in XML

constexpr const char* kWrongValue = "not a value that it can hold";
constexpr const char* kTooLong = "ten million bytes or more";
constexpr const char* kTwice = "member stands twice";

// One member of an object.
struct Member {
  const Field* Listed;
  std::size_t Position;  // of its value
  std::string Value;     // of a scalar, as XML writes it
};

// Gives what JSON says to the reader of XML, element by element, so that both forms are read alike
// and keep the same promises. An object is walked twice: its values come first in XML.
class JsonReader {
 public:
  JsonReader(std::string_view text, CStatus* status, JsonError* error)
      : scanner_(text), error_(*error), reader_(CStatus::Class, status, &fault_) {}

  bool Read() {
    const std::size_t begin = scanner_.Position();
    if (scanner_.Next() != '{') {
      const bool is_value = scanner_.Skip() && scanner_.TakeEnd();
      return is_value ? Fail(begin, "", "JSON, but not an object") : FailAsScanner();
    }
    return ReadObject(CStatus::Class, CStatus::Class.Name, kInsight) &&
           (scanner_.TakeEnd() || FailAsScanner());
  }

 private:
  bool Fail(std::size_t position, std::string_view name, const std::string& message);
  bool FailAsScanner();
  bool FailAsReader(std::size_t position, const std::vector<Member>& members);

  bool ReadObject(const ClassInfo& info, const char* name, std::string_view passed_over);
  bool TakeMember(const ClassInfo& info, std::string_view name, std::vector<Member>* members);
  bool TakeScalar(const Field& field, std::string* value);
  bool TakeReal(std::string* value);
  bool TakeReals(std::string* value);
  bool HasAll(const ClassInfo& info, std::size_t position, const std::vector<Member>& members);
  bool BeginElement(const char* name, std::size_t position, const std::vector<Member>& members);
  bool ReadChild(const Member& member);
  bool ReadListElement(const Field& list);
  const ClassInfo* FindClass();

  JsonScanner scanner_;
  JsonError& error_;
  XmlError fault_;  // of the reader
  XmlReader reader_;
  std::string path_;  // of the object that is being read
};

// About the member `name` of the object, or the object itself when it is empty.
bool JsonReader::Fail(std::size_t position, std::string_view name, const std::string& message) {
  error_.Path = path_;
  error_.Path.append(path_.empty() || name.empty() ? "" : "/").append(name);
  error_.Line = scanner_.LineOf(position);
  error_.Message = message;
  return false;
}

// Unless what visited the scanner's text has said why already.
bool JsonReader::FailAsScanner() {
  if (error_.Message.empty()) {
    error_ = {path_, scanner_.LineOf(scanner_.Position()), scanner_.Fault()};
  }
  return false;
}

bool JsonReader::FailAsReader(std::size_t position, const std::vector<Member>& members) {
  for (const Member& member : members) {
    if (fault_.Attribute == member.Listed->Name) {
      return Fail(member.Position, fault_.Attribute, fault_.Message);
    }
  }
  return Fail(position, fault_.Attribute, fault_.Message);
}

// `name`: of its element in XML. `passed_over`: the member that it may have besides its fields.
// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
bool JsonReader::ReadObject(const ClassInfo& info, const char* name, std::string_view passed_over) {
  const std::size_t begin = scanner_.Position();
  std::vector<Member> members;
  bool passed = false;
  const bool taken = scanner_.TakeMembers([&](std::string_view member) {
    if (passed_over.empty() || member != passed_over) {
      return TakeMember(info, member, &members);
    }
    if (std::exchange(passed, true)) {
      return Fail(scanner_.Position(), member, kTwice);
    }
    const bool fits = member == kClass || scanner_.Next() == '{';
    return fits ? scanner_.Skip() : Fail(scanner_.Position(), member, kWrongValue);
  });
  const std::size_t end = scanner_.Position();
  if (!taken) {
    return FailAsScanner();
  }
  if (!HasAll(info, begin, members) || !BeginElement(name, begin, members)) {
    return false;
  }
  for (const Member& member : members) {
    if (member.Listed->Scalar == nullptr && !ReadChild(member)) {
      return false;
    }
  }
  reader_.End();
  if (reader_.Failed()) {
    return FailAsReader(begin, members);
  }
  scanner_.GoTo(end);
  return true;
}

// The value of a scalar; a record or list is passed over for now.
bool JsonReader::TakeMember(const ClassInfo& info, std::string_view name,
                            std::vector<Member>* members) {
  const std::size_t position = scanner_.Position();
  const Field* const field = FieldNamed(info, name);
  if (field == nullptr) {
    return Fail(position, name, "unknown member");
  }
  if (std::ranges::find(*members, field, &Member::Listed) != members->end()) {
    return Fail(position, name, kTwice);
  }
  members->push_back({field, position, ""});
  Member& member = members->back();
  if (field->Scalar != nullptr) {
    const bool taken = TakeScalar(*field, &member.Value);
    if (taken && member.Value.size() < kMaximumValueSize) {
      return true;
    }
    return scanner_.Fault() == nullptr && Fail(position, name, taken ? kTooLong : kWrongValue);
  }
  const char wanted = field->Elements != nullptr ? '[' : '{';
  return scanner_.Next() == wanted ? scanner_.Skip() : Fail(position, name, kWrongValue);
}

// False, without a fault of the scanner, for a value of another type.
bool JsonReader::TakeScalar(const Field& field, std::string* value) {
  const bool is_text = scanner_.Next() == '"';
  if (field.Scalar == &listing::kText) {
    return is_text && scanner_.TakeText(value);
  }
  if (field.Scalar == &listing::kFloats) {
    return TakeReals(value);
  }
  if (field.Scalar == &listing::kFloat || field.Scalar == &listing::kDouble) {
    return TakeReal(value);
  }
  std::string_view word;
  if (is_text || scanner_.Next() == '{' || scanner_.Next() == '[' || !scanner_.TakeWord(&word)) {
    return false;
  }
  *value = word;  // the reader of XML takes no word for a number, and no number for a flag
  return true;
}

// Appends a number, or a text that stands for one that JSON does not have.
bool JsonReader::TakeReal(std::string* value) {
  const char first = scanner_.Next();
  if (first == '"') {
    std::string text;
    if (!scanner_.TakeText(&text) || (text != "NaN" && text != "INF" && text != "-INF")) {
      return false;
    }
    *value += text;
    return true;
  }
  std::string_view word;
  if (first == '{' || first == '[' || !scanner_.TakeWord(&word)) {
    return false;
  }
  *value += word;
  return true;
}

bool JsonReader::TakeReals(std::string* value) {
  return scanner_.Next() == '[' && scanner_.TakeElements([&] {
    *value += value->empty() ? "" : " ";
    return TakeReal(value);
  });
}

bool JsonReader::HasAll(const ClassInfo& info, std::size_t position,
                        const std::vector<Member>& members) {
  return VisitEveryField(info, [&](const Field& field) {
    return field.Optional || std::ranges::find(members, &field, &Member::Listed) != members.end() ||
           Fail(position, field.Name, "member is missing");
  });
}

bool JsonReader::BeginElement(const char* name, std::size_t position,
                              const std::vector<Member>& members) {
  std::vector<XmlAttribute> attributes;
  for (const Member& member : members) {
    if (member.Listed->Scalar != nullptr) {
      attributes.push_back({member.Listed->Name, false, member.Value});
    }
  }
  reader_.Begin(name, false, attributes, 0);
  return !reader_.Failed() || FailAsReader(position, members);
}

// NOLINTNEXTLINE(misc-no-recursion): likewise
bool JsonReader::ReadChild(const Member& member) {
  const Field& field = *member.Listed;
  const std::size_t outer = path_.size();
  path_.append(path_.empty() ? "" : "/").append(field.Name);
  scanner_.GoTo(member.Position);
  if (field.Elements == nullptr) {
    if (!ReadObject(*field.Record, field.Name, {})) {
      return false;
    }
  } else {
    reader_.Begin(field.Name, false, {}, 0);
    std::size_t position = 0;
    const std::size_t list = path_.size();
    const bool taken = scanner_.TakeElements([&] {
      path_ += "[" + std::to_string(position++) + "]";
      const bool good = ReadListElement(field);
      path_.resize(good ? list : path_.size());
      return good;
    });
    if (!taken) {
      return false;
    }
    reader_.End();
  }
  path_.resize(outer);
  return true;
}

// NOLINTNEXTLINE(misc-no-recursion): likewise
bool JsonReader::ReadListElement(const Field& list) {
  const std::size_t begin = scanner_.Position();
  if (scanner_.Next() != '{') {
    return Fail(begin, "", kWrongValue);
  }
  const ClassInfo* const info = FindClass();
  if (info == nullptr) {
    return false;
  }
  if (info->Create == nullptr || !IsA(*info, *list.Record)) {
    return Fail(begin, kClass, "not an element of this list");
  }
  scanner_.GoTo(begin);
  return ReadObject(*info, info->Name, kClass);
}

// The class of the object that comes next, wherever its members say so; null with an error.
const ClassInfo* JsonReader::FindClass() {
  const std::size_t begin = scanner_.Position();
  std::string name;
  bool found = false;
  scanner_.TakeMembers([&](std::string_view member) {
    found = member == kClass;
    return found ? scanner_.Next() == '"' && scanner_.TakeText(&name) && false : scanner_.Skip();
  });
  const ClassInfo* const info = ClassNamed(name);
  if (info == nullptr) {
    Fail(begin, kClass, found ? "not an element of this list" : "member is missing");
  }
  return info;
}

}  // namespace

std::string JsonError::Text() const {
  return (Line > 0 ? "line " + std::to_string(Line) + ": " : "") +
         (Path.empty() ? "" : Path + ": ") + Message;
}

std::unique_ptr<CStatus> ReadJson(std::string_view text, JsonError* error) {
  *error = JsonError();
  if (text.size() > kMaximumDocumentSize) {
    error->Message =
        "not a document: larger than " + std::to_string(kMaximumDocumentSize) + " bytes";
    return nullptr;
  }
  auto status = std::make_unique<CStatus>();
  JsonReader reader(text, status.get(), error);
  return reader.Read() ? std::move(status) : nullptr;
}

}  // namespace QtSts
