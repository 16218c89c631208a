#include "model/compare.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace QtSts {
namespace {

constexpr const char* kAbsent = "absent";

// A text between quotes, so that no text can be taken for anything else.
std::string Quoted(std::string_view text) {
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

std::string TextOf(const TreeValue* value, CodeText codes) {
  if (value == nullptr) {
    return kAbsent;
  }
  if (value->Kind() == ValueKind::kText) {
    return Quoted(value->Text());
  }
  const char* const name = codes == CodeText::kNumberAndName ? value->CodeName() : nullptr;
  return name == nullptr ? value->Written() : value->Written() + " (" + name + ")";
}

std::string NameOf(const TreeElement* element) {
  return element == nullptr || element->Class() == nullptr ? kAbsent : element->Class()->Name;
}

// Of a list that is absent, none.
TreeElement::Range ChildrenOf(const TreeElement* list) {
  return list == nullptr ? TreeElement::Range(nullptr, nullptr) : list->Children();
}

// The values and children of an element, taken in order of its fields.
class Taker {
 public:
  explicit Taker(const TreeElement& element)
      : values_(element.Values()),
        child_(element.Children().begin()),
        end_(element.Children().end()) {}

  // What the element reports of `field`; null when nothing.
  const TreeValue* TakeValue(const Field& field) {
    if (values_.empty() || &values_.front().Listed() != &field) {
      return nullptr;
    }
    const TreeValue* const taken = values_.data();
    values_ = values_.subspan(1);
    return taken;
  }

  const TreeElement* TakeChild(const Field& field) {
    if (child_ == end_ || child_->Listed() != &field) {
      return nullptr;
    }
    const TreeElement* const taken = &*child_;
    ++child_;
    return taken;
  }

 private:
  std::span<const TreeValue> values_;
  TreeElement::Iterator child_;
  TreeElement::Iterator end_;
};

using Visit = std::function<void(const Difference&)>;

class Comparison {
 public:
  Comparison(const Visit& visit, CodeText codes) : visit_(visit), codes_(codes) {}

  // Null stands for an element that one side lacks.
  void CompareElements(const TreeElement* before, const TreeElement* after) {
    if (before == nullptr || after == nullptr || before->Class() != after->Class()) {
      Note(NameOf(before), NameOf(after));
    } else if (before->Class() != nullptr) {
      CompareFields(*before, *after);
    }
  }

 private:
  void Note(std::string before, std::string after) {
    if (before != after) {
      visit_({path_.empty() ? "." : path_, std::move(before), std::move(after)});
    }
  }

  void CompareFields(const TreeElement& before, const TreeElement& after) {
    Taker of_before(before);
    Taker of_after(after);
    const std::size_t outer = path_.size();
    VisitEveryField(*before.Class(), [&](const Field& field) {
      path_ += outer == 0 ? "" : "/";
      path_ += field.Name;
      if (field.Scalar != nullptr) {
        Note(TextOf(of_before.TakeValue(field), codes_), TextOf(of_after.TakeValue(field), codes_));
      } else {
        CompareChildren(field, of_before.TakeChild(field), of_after.TakeChild(field));
      }
      path_.resize(outer);
      return true;
    });
  }

  void CompareChildren(const Field& field, const TreeElement* before, const TreeElement* after) {
    if (field.Elements != nullptr) {
      CompareLists(ChildrenOf(before), ChildrenOf(after));
    } else if (before != nullptr || after != nullptr) {
      CompareElements(before, after);
    }
  }

  void CompareLists(const TreeElement::Range& before, const TreeElement::Range& after) {
    TreeElement::Iterator left = before.begin();
    TreeElement::Iterator right = after.begin();
    const auto next = [](TreeElement::Iterator& element, const TreeElement::Range& range) {
      const TreeElement* const found = element == range.end() ? nullptr : &*element;
      if (found != nullptr) {
        ++element;
      }
      return found;
    };
    const std::size_t outer = path_.size();
    for (std::size_t position = 0;; ++position) {
      const TreeElement* const of_before = next(left, before);
      const TreeElement* const of_after = next(right, after);
      if (of_before == nullptr && of_after == nullptr) {
        break;
      }
      path_ += "[" + std::to_string(position) + "]";
      CompareElements(of_before, of_after);
      path_.resize(outer);
    }
  }

  const Visit& visit_;
  CodeText codes_;
  std::string path_;
};

}  // namespace

std::string Difference::Text() const { return Path + ": " + Before + " -> " + After; }

void Compare(const DocumentTree& before, const DocumentTree& after, CodeText codes,
             const Visit& visit) {
  Comparison(visit, codes).CompareElements(&before.Root(), &after.Root());
}

void Compare(const DocumentTree& before, const DocumentTree& after, const Visit& visit) {
  Compare(before, after, CodeText::kNumber, visit);
}

void Compare(const CBaseStatus& before, const CBaseStatus& after, const Visit& visit) {
  Compare(DocumentTree(before), DocumentTree(after), visit);
}

std::vector<Difference> Compare(const CBaseStatus& before, const CBaseStatus& after) {
  std::vector<Difference> differences;
  Compare(before, after,
          [&differences](const Difference& difference) { differences.push_back(difference); });
  return differences;
}

}  // namespace QtSts
