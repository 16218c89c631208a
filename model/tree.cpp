#include "model/tree.h"

#include <algorithm>

#include "model/document.h"
#include "model/listed_object.h"
#include "model/path_position.h"
#include "model/text.h"

namespace QtSts {

// Appends an object and what it holds, each element before its own. Pointers into the tree's
// vectors, which still grow, are set at the end.
class TreeBuilder {
 public:
  explicit TreeBuilder(DocumentTree* tree) : tree_(*tree) {}

  void Build(const ListedObject& root) {
    Reserve(Count(root));
    AddObject(nullptr, root, 0, 0);
    SetPointers();
  }

 private:
  struct Counts {
    std::size_t Elements = 0;
    std::size_t Values = 0;
  };

  // A document may be large: its vectors are made for what it holds, no larger.
  void Reserve(const Counts& counts) {
    tree_.elements_.reserve(counts.Elements);
    tree_.values_.reserve(counts.Values);
  }

  // NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
  static Counts Count(const ListedObject& object) {
    Counts counts{1, 0};
    const auto add = [&counts](const ListedObject& held) {
      const Counts more = Count(held);
      counts.Elements += more.Elements;
      counts.Values += more.Values;
      return true;
    };
    object.VisitFields([&](const ListedField& field) {
      if (!field.IsReported()) {
        return true;
      }
      if (field.Listed().Scalar != nullptr) {
        ++counts.Values;
        return true;
      }
      if (field.Listed().Elements == nullptr) {
        return add(field.Record());
      }
      ++counts.Elements;
      return field.VisitElements(add);
    });
    return counts;
  }

  // Begins an element; its position among all.
  std::size_t Begin(const Field* field, const ClassInfo* info, std::size_t position,
                    std::size_t parent) {
    const std::size_t begun = tree_.elements_.size();
    TreeElement& element = tree_.elements_.emplace_back();
    element.field_ = field;
    element.class_ = info;
    element.position_ = static_cast<std::uint32_t>(position);
    element.to_parent_ = static_cast<std::uint32_t>(begun - parent);
    return begun;
  }

  void End(std::size_t begun) {
    tree_.elements_[begun].extent_ = static_cast<std::uint32_t>(tree_.elements_.size() - begun);
  }

  // NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
  void AddObject(const Field* field, const ListedObject& object, std::size_t position,
                 std::size_t parent) {
    const std::size_t begun = Begin(field, object.Class(), position, parent);
    const std::size_t values = tree_.values_.size();
    object.VisitFields([this](const ListedField& held) {
      if (held.Listed().Scalar != nullptr && held.IsReported()) {
        AddValue(held);
      }
      return true;
    });
    tree_.elements_[begun].value_count_ = static_cast<std::uint32_t>(tree_.values_.size() - values);
    object.VisitFields([this, begun](const ListedField& held) {
      if (held.Listed().Scalar == nullptr && held.IsReported()) {
        AddChild(held, begun);
      }
      return true;
    });
    End(begun);
  }

  // NOLINTNEXTLINE(misc-no-recursion)
  void AddChild(const ListedField& field, std::size_t parent) {
    if (field.Listed().Elements == nullptr) {
      AddObject(&field.Listed(), field.Record(), 0, parent);
      return;
    }
    const std::size_t list = Begin(&field.Listed(), nullptr, 0, parent);
    std::size_t position = 0;
    field.VisitElements([this, list, &position](const ListedObject& element) {
      AddObject(nullptr, element, position++, list);
      return true;
    });
    End(list);
  }

  void AddValue(const ListedField& field) {
    TreeValue& value = tree_.values_.emplace_back();
    value.field_ = &field.Listed();
    for (const Taker& taker : Takers()) {
      if (const void* const source = field.ValueIf(*taker.Type)) {
        value.kind_ = taker.Kind;
        (this->*taker.Take)(source, &value);
        return;
      }
    }
  }

  template <class T>
  void TakeUnsigned(const void* source, TreeValue* value) {
    value->data_.Unsigned = *static_cast<const T*>(source);
  }
  template <class T>
  void TakeSigned(const void* source, TreeValue* value) {
    value->data_.Signed = *static_cast<const T*>(source);
  }
  void TakeFloat(const void* source, TreeValue* value) {
    value->data_.Float = *static_cast<const float*>(source);
  }
  void TakeDouble(const void* source, TreeValue* value) {
    value->data_.Double = *static_cast<const double*>(source);
  }
  void TakeText(const void* source, TreeValue* value) {
    clean_ = *static_cast<const std::string*>(source);
    CleanText(&clean_);
    tree_.texts_.insert(tree_.texts_.end(), clean_.begin(), clean_.end());
    value->size_ = static_cast<std::uint32_t>(clean_.size());
  }
  void TakeReals(const void* source, TreeValue* value) {
    const auto& reals = *static_cast<const std::vector<float>*>(source);
    tree_.reals_.insert(tree_.reals_.end(), reals.begin(), reals.end());
    value->size_ = static_cast<std::uint32_t>(reals.size());
  }

  struct Taker {
    const ScalarType* Type;
    ValueKind Kind;
    void (TreeBuilder::*Take)(const void* source, TreeValue* value);
  };
  static std::span<const Taker> Takers();

  void SetPointers() {
    const TreeValue* values = tree_.values_.data();
    for (TreeElement& element : tree_.elements_) {
      element.values_ = values;
      values += element.value_count_;
    }
    const char* text = tree_.texts_.data();
    const float* reals = tree_.reals_.data();
    for (TreeValue& value : tree_.values_) {
      if (value.kind_ == ValueKind::kText) {
        value.data_.Text = text;
        text += value.size_;
      } else if (value.kind_ == ValueKind::kReals) {
        value.data_.Reals = reals;
        reals += value.size_;
      }
    }
  }

  DocumentTree& tree_;
  std::string clean_;  // room for one text
};

// One for each type of scalar, the frequent ones first.
std::span<const TreeBuilder::Taker> TreeBuilder::Takers() {
  static constexpr Taker kTakers[] = {
      {&listing::kUInt32, ValueKind::kUnsigned, &TreeBuilder::TakeUnsigned<std::uint32_t>},
      {&listing::kBool, ValueKind::kFlag, &TreeBuilder::TakeUnsigned<bool>},
      {&listing::kFloat, ValueKind::kFloat, &TreeBuilder::TakeFloat},
      {&listing::kText, ValueKind::kText, &TreeBuilder::TakeText},
      {&listing::kUInt16, ValueKind::kUnsigned, &TreeBuilder::TakeUnsigned<std::uint16_t>},
      {&listing::kUInt64, ValueKind::kUnsigned, &TreeBuilder::TakeUnsigned<std::uint64_t>},
      {&listing::kInt32, ValueKind::kSigned, &TreeBuilder::TakeSigned<std::int32_t>},
      {&listing::kUInt8, ValueKind::kUnsigned, &TreeBuilder::TakeUnsigned<std::uint8_t>},
      {&listing::kInt64, ValueKind::kSigned, &TreeBuilder::TakeSigned<std::int64_t>},
      {&listing::kDouble, ValueKind::kDouble, &TreeBuilder::TakeDouble},
      {&listing::kFloats, ValueKind::kReals, &TreeBuilder::TakeReals},
  };
  return kTakers;
}

namespace {

void AppendReals(std::span<const float> reals, std::string* text) {
  const char* separator = "";
  for (const float& real : reals) {
    *text += separator;
    listing::kFloat.Format(&real, text);
    separator = " ";
  }
}

void AppendName(const char* name, std::string* path) {
  *path += path->empty() ? "" : "/";
  *path += name;
}

// NOLINTNEXTLINE(misc-no-recursion): the document's depth is that of its classes
void AppendPath(const TreeElement& element, std::string* path) {
  const TreeElement* const parent = element.Parent();
  if (parent == nullptr) {
    return;
  }
  AppendPath(*parent, path);
  if (parent->IsList()) {
    path->append("[").append(std::to_string(element.Position())).append("]");
  } else {
    AppendName(element.Name(), path);
  }
}

}  // namespace

void TreeValue::AppendTo(std::string* text) const {
  switch (kind_) {
    case ValueKind::kFlag:
      *text += Flag() ? "true" : "false";
      break;
    case ValueKind::kUnsigned:
      listing::kUInt64.Format(&data_.Unsigned, text);
      break;
    case ValueKind::kSigned:
      listing::kInt64.Format(&data_.Signed, text);
      break;
    case ValueKind::kFloat:
      listing::kFloat.Format(&data_.Float, text);
      break;
    case ValueKind::kDouble:
      listing::kDouble.Format(&data_.Double, text);
      break;
    case ValueKind::kText:
      *text += Text();
      break;
    case ValueKind::kReals:
      AppendReals(Reals(), text);
      break;
  }
}

std::string TreeValue::Written() const {
  std::string text;
  AppendTo(&text);
  return text;
}

const char* TreeValue::CodeName() const {
  if (kind_ != ValueKind::kUnsigned && kind_ != ValueKind::kSigned) {
    return nullptr;
  }
  for (const Code& code : field_->Codes) {
    if (kind_ == ValueKind::kSigned ? code.Value == Signed() : code.Value == Unsigned()) {
      return code.Text;
    }
  }
  return nullptr;
}

const char* TreeElement::Name() const {
  if (field_ != nullptr) {
    return field_->Name;
  }
  return class_ != nullptr ? class_->Name : "";
}

bool TreeElement::IsA(const ClassInfo& base) const {
  return class_ != nullptr && QtSts::IsA(*class_, base);
}

// "Outputs", "Outputs[0]" or, of a list, "[0]".
const TreeElement* TreeElement::FindStep(std::string_view step) const {
  const std::size_t bracket = std::min(step.find('['), step.size());
  const TreeElement* named = IsList() && bracket == 0 ? this : FindChild(step.substr(0, bracket));
  if (named == nullptr || bracket == step.size()) {
    return named == this ? nullptr : named;
  }
  const auto position = ParsePosition(step.substr(bracket));
  for (const TreeElement& element : named->Children()) {
    if (position && named->IsList() && element.Position() == *position) {
      return &element;
    }
  }
  return nullptr;
}

const TreeElement* TreeElement::FindChild(std::string_view name) const {
  for (const TreeElement& child : Children()) {
    if (!IsList() && name == child.Name()) {
      return &child;
    }
  }
  return nullptr;
}

const TreeElement* TreeElement::Find(std::string_view path) const {
  const TreeElement* element = this;
  while (element != nullptr && !path.empty()) {
    const std::size_t slash = path.find('/');
    element = element->FindStep(path.substr(0, slash));
    path = slash == std::string_view::npos ? "" : path.substr(slash + 1);
  }
  return element;
}

const TreeValue* TreeElement::FindValue(std::string_view path) const {
  const std::size_t slash = path.rfind('/');
  const bool own = slash == std::string_view::npos;
  const TreeElement* const holder = own ? this : Find(path.substr(0, slash));
  if (holder == nullptr) {
    return nullptr;
  }
  const std::string_view name = own ? path : path.substr(slash + 1);
  for (const TreeValue& value : holder->Values()) {
    if (name == value.Listed().Name) {
      return &value;
    }
  }
  return nullptr;
}

std::string TreeElement::Path() const {
  std::string path;
  AppendPath(*this, &path);
  return path;
}

std::string TreeElement::PathOf(const TreeValue& value) const {
  std::string path = Path();
  AppendName(value.Listed().Name, &path);
  return path;
}

DocumentTree::DocumentTree(const CStatus& status) {
  TreeBuilder(this).Build(ListedObject::OfDocument(status));
}

DocumentTree::DocumentTree(const CBaseStatus& object) {
  TreeBuilder(this).Build(ListedObject(object));
}

}  // namespace QtSts
