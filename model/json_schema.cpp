#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "model/document.h"
#include "model/documentation.h"
#include "model/json_text.h"
#include "model/listing.h"
#include "model/schema.h"

namespace QtSts {
namespace {

// "#/$defs/Area"
std::string ReferenceTo(std::string_view name) { return "#/$defs/" + std::string(name); }

// The name of a type of scalars: "unsignedInt".
std::string_view NameOf(const ScalarType& type) {
  std::string_view name = type.SchemaType;
  name.remove_prefix(name.starts_with("xs:") ? 3 : 0);
  return name;
}

// How a class stands in the document: named by a field, or in a list, where it has its class as
// member "Class".
enum class Use : std::uint8_t { kRecord, kElement };

std::string NameOf(const ClassInfo& info, Use use) {
  return std::string(info.Name) + (use == Use::kRecord ? "" : "-element");
}
std::string ListNameOf(const ClassInfo& base) { return std::string(base.Name) + "-list"; }

// The classes that may stand in a list of `base`.
std::vector<const ClassInfo*> ClassesIn(const ClassInfo& base) {
  std::vector<const ClassInfo*> classes;
  std::ranges::copy_if(Classes(), std::back_inserter(classes), [&base](const ClassInfo* info) {
    return info->Create != nullptr && IsA(*info, base);
  });
  return classes;
}

// Whether some field is a record, or a list, of exactly this class.
bool IsFieldOf(const ClassInfo& record, bool in_list) {
  return std::ranges::any_of(Classes(), [&](const ClassInfo* info) {
    return std::ranges::any_of(info->OwnFields(), [&](const Field& field) {
      return field.Record == &record && (field.Elements != nullptr) == in_list;
    });
  });
}

bool IsUsed(const ClassInfo& info, Use use) {
  if (use == Use::kRecord) {
    return &info == &CStatus::Class || IsFieldOf(info, false);
  }
  return info.Create != nullptr && std::ranges::any_of(Classes(), [&info](const ClassInfo* base) {
           return IsFieldOf(*base, true) && IsA(info, *base);
         });
}

class SchemaText {
 public:
  std::string Take() { return json_.Take(); }

  void Document() {
    json_.Open('{');
    Text("$schema", "https://json-schema.org/draft/2020-12/schema");
    Text("title", "The status document");
    Text("description", kOfWhichDocuments);
    Text("$ref", ReferenceTo(NameOf(CStatus::Class, Use::kRecord)));
    Object("$defs", [this] {
      Scalars();
      for (const ClassInfo* const info : Classes()) {
        for (const Use use : {Use::kRecord, Use::kElement}) {
          if (IsUsed(*info, use)) {
            Class(*info, use);
          }
        }
        if (IsFieldOf(*info, true)) {
          List(*info);
        }
      }
    });
    json_.Close('}');
  }

 private:
  void Text(std::string_view name, std::string_view text) {
    json_.Member(name);
    json_.String(text);
  }
  void Literal(std::string_view name, std::string_view literal) {
    json_.Member(name);
    json_.Literal(literal);
  }
  template <class Fill>
  void Object(std::string_view name, const Fill& fill) {
    json_.Member(name);
    json_.Open('{');
    fill();
    json_.Close('}');
  }
  template <class Range, class Put>
  void Array(std::string_view name, const Range& range, const Put& put) {
    json_.Member(name);
    json_.Open('[');
    for (const auto& each : range) {
      json_.Next();
      put(each);
    }
    json_.Close(']');
  }
  void Texts(std::string_view name, const std::vector<const char*>& texts) {
    Array(name, texts, [this](const char* text) { json_.String(text); });
  }

  void Scalars();
  void Integer(const ScalarType& type, std::string_view least, std::string_view most);
  void Real(const ScalarType& type, std::string_view most);
  void Class(const ClassInfo& info, Use use);
  void Member(const Field& field);
  void Insight();
  void List(const ClassInfo& base);
  void Element(const ClassInfo& info);

  JsonText json_;
};

void SchemaText::Integer(const ScalarType& type, std::string_view least, std::string_view most) {
  Object(NameOf(type), [&] {
    Text("type", "integer");
    Literal("minimum", least);
    Literal("maximum", most);
  });
}

// A number in the range of its type, or one of the three that JSON has no numbers for.
void SchemaText::Real(const ScalarType& type, std::string_view most) {
  Object(NameOf(type), [&] {
    Array("type", std::vector<const char*>{"number", "string"},
          [this](const char* name) { json_.String(name); });
    Literal("minimum", "-" + std::string(most));
    Literal("maximum", most);
    // Holds for texts alone.
    Text("pattern", "^(NaN|-?INF)$");
  });
}

void SchemaText::Scalars() {
  Object(NameOf(listing::kBool), [this] { Text("type", "boolean"); });
  Integer(listing::kUInt8, "0", "255");
  Integer(listing::kUInt16, "0", "65535");
  Integer(listing::kUInt32, "0", "4294967295");
  Integer(listing::kUInt64, "0", "18446744073709551615");
  Integer(listing::kInt32, "-2147483648", "2147483647");
  Integer(listing::kInt64, "-9223372036854775808", "9223372036854775807");
  Real(listing::kFloat, "3.4028235e+38");
  Real(listing::kDouble, "1.7976931348623157e+308");
  Object(NameOf(listing::kText), [this] { Text("type", "string"); });
  Object(NameOf(listing::kFloats), [this] {
    Text("type", "array");
    Object("items", [this] { Text("$ref", ReferenceTo(NameOf(listing::kFloat))); });
  });
}

// With the fields of its bases: to take them from there and to allow no others takes validators
// long.
void SchemaText::Class(const ClassInfo& info, Use use) {
  Object(NameOf(info, use), [&] {
    Text("description", std::string(info.About) + ".");
    Text("type", "object");
    std::vector<const char*> required;
    Object("properties", [&] {
      if (use == Use::kElement) {
        Object("Class", [&] { Text("const", info.Name); });
        required.push_back("Class");
      }
      VisitEveryField(info, [&](const Field& field) {
        Member(field);
        if (!field.Optional) {
          required.push_back(field.Name);
        }
        return true;
      });
      if (&info == &CStatus::Class) {
        Insight();
      }
    });
    Texts("required", required);
    Literal("additionalProperties", "false");
  });
}

void SchemaText::Insight() {
  Object("Insight", [this] {
    Text("description", "What show --with insight adds; statuscollector(1) describes it.");
    Text("type", "object");
  });
}

void SchemaText::Member(const Field& field) {
  std::string name;
  if (field.Scalar != nullptr) {
    name = NameOf(*field.Scalar);
  } else {
    name =
        field.Elements != nullptr ? ListNameOf(*field.Record) : NameOf(*field.Record, Use::kRecord);
  }
  Object(field.Name, [&] {
    Text("description", DocumentationOf(field));
    Text("$ref", ReferenceTo(name));
  });
}

// The class of an element says which other members it has.
void SchemaText::List(const ClassInfo& base) {
  const std::vector<const ClassInfo*> classes = ClassesIn(base);
  Object(ListNameOf(base), [&] {
    Text("type", "array");
    Object("items", [&] {
      Text("type", "object");
      Object("properties", [&] {
        Object("Class", [&] {
          Array("enum", classes, [this](const ClassInfo* info) { json_.String(info->Name); });
        });
      });
      Texts("required", {"Class"});
      Array("allOf", classes, [this](const ClassInfo* info) { Element(*info); });
    });
  });
}

void SchemaText::Element(const ClassInfo& info) {
  json_.Open('{');
  Object("if", [&] {
    Object("properties", [&] { Object("Class", [&] { Text("const", info.Name); }); });
  });
  Object("then", [&] { Text("$ref", ReferenceTo(NameOf(info, Use::kElement))); });
  json_.Close('}');
}

}  // namespace

std::string WriteJsonSchema() {
  SchemaText schema;
  schema.Document();
  return schema.Take();
}

}  // namespace QtSts
