#include "model/compare.h"

#include <algorithm>
#include <utility>

#include "model/listing.h"
#include "model/xml.h"

namespace QtSts {
namespace {

constexpr const char* kAbsent = "absent";

// A text between quotes, so that no text can be taken for anything else.
std::string Quoted(const std::string& text) {
  constexpr std::pair<char, const char*> kEscapes[] = {
      {'"', "\\\""}, {'\\', "\\\\"}, {'\t', "\\t"}, {'\n', "\\n"}, {'\r', "\\r"}};
  std::string quoted = "\"";
  for (const char c : text) {
    const auto* const escape =
        std::find_if(std::begin(kEscapes), std::end(kEscapes),
                     [c](const auto& candidate) { return candidate.first == c; });
    if (escape != std::end(kEscapes)) {
      quoted += escape->second;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string ValueText(const Field& field, const void* value) {
  if (value == nullptr) {
    return kAbsent;
  }
  std::string text;
  field.Scalar->Format(value, &text);
  CleanText(&text);
  return field.Scalar == &listing::kText ? Quoted(text) : text;
}

// A list element of a listed class; others do not belong to the document.
struct Element {
  const void* Object;
  const ClassInfo* Info;
};

std::vector<Element> ElementsOf(const ListAccess& access, const void* list) {
  std::vector<Element> elements;
  const std::size_t count = list == nullptr ? 0 : access.Count(list);
  for (std::size_t position = 0; position < count; ++position) {
    const CBaseStatus* const element = access.At(list, position);
    const ClassInfo* const info = element == nullptr ? nullptr : ClassOf(*element);
    if (info != nullptr) {
      elements.push_back({dynamic_cast<const void*>(element), info});
    }
  }
  return elements;
}

const void* BaseOf(const ClassInfo& info, const void* object) {
  return info.ToBase(const_cast<void*>(object));
}

using Visit = std::function<void(const Difference&)>;

class Comparison {
 public:
  explicit Comparison(const Visit& visit) : m_Visit(visit) {}

  void CompareElements(const Element& before, const Element& after) {
    if (before.Info != after.Info || before.Info == nullptr) {
      Note(NameOf(before), NameOf(after));
    } else {
      CompareFields(*before.Info, before.Object, after.Object);
    }
  }

 private:
  static std::string NameOf(const Element& element) {
    return element.Info == nullptr ? kAbsent : element.Info->Name;
  }

  void Note(std::string before, std::string after) {
    if (before != after) {
      m_Visit({m_Path.empty() ? "." : m_Path, std::move(before), std::move(after)});
    }
  }

  void CompareFields(const ClassInfo& info, const void* before, const void* after) {
    if (info.Base != nullptr) {
      CompareFields(*info.Base, BaseOf(info, before), BaseOf(info, after));
    }
    const std::size_t outer = m_Path.size();
    for (const Field* field = info.Fields; field != info.Fields + info.FieldCount; ++field) {
      m_Path += outer == 0 ? "" : "/";
      m_Path += field->Name;
      CompareField(*field, field->Read(before), field->Read(after));
      m_Path.resize(outer);
    }
  }

  void CompareField(const Field& field, const void* before, const void* after) {
    if (field.Scalar != nullptr) {
      Note(ValueText(field, before), ValueText(field, after));
    } else if (field.Elements != nullptr) {
      CompareLists(ElementsOf(*field.Elements, before), ElementsOf(*field.Elements, after));
    } else if (before != nullptr || after != nullptr) {
      const auto record = [&field](const void* object) {
        return Element{object, object == nullptr ? nullptr : field.Record};
      };
      CompareElements(record(before), record(after));
    }
  }

  void CompareLists(const std::vector<Element>& before, const std::vector<Element>& after) {
    const auto at = [](const std::vector<Element>& list, std::size_t position) {
      return position < list.size() ? list[position] : Element{nullptr, nullptr};
    };
    const std::size_t outer = m_Path.size();
    for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i) {
      m_Path += "[" + std::to_string(i) + "]";
      CompareElements(at(before, i), at(after, i));
      m_Path.resize(outer);
    }
  }

  const Visit& m_Visit;
  std::string m_Path;
};

// An object of a class without a listing has nothing to compare.
Element AsElement(const CBaseStatus& object) {
  const ClassInfo* const info = ClassOf(object);
  return {info == nullptr ? nullptr : dynamic_cast<const void*>(&object), info};
}

}  // namespace

std::string Difference::Text() const { return Path + ": " + Before + " -> " + After; }

void Compare(const CBaseStatus& before, const CBaseStatus& after, const Visit& visit) {
  Comparison(visit).CompareElements(AsElement(before), AsElement(after));
}

std::vector<Difference> Compare(const CBaseStatus& before, const CBaseStatus& after) {
  std::vector<Difference> differences;
  Compare(before, after,
          [&differences](const Difference& difference) { differences.push_back(difference); });
  return differences;
}

}  // namespace QtSts
