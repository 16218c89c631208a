// Where the values of one element of the document stand in it. Private to this library.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "collector/state/elements.h"
#include "insight/snapshot.h"
#include "model/listing.h"

namespace insight {

// The element at `path` with all that it holds; of a display interface without the sensors behind
// it. The element must outlive it.
class Element {
 public:
  Element(const QtSts::CBaseStatus& element, std::string path);

  const QtSts::CBaseStatus& Itself() const { return element_; }
  const std::string& Path() const { return path_; }
  const char* ClassName() const;
  const QtSts::ClassInfo* Class() const { return class_; }  // null when it is not listed

  // The field at this address, or the element that begins there, with what it is now; false when
  // there is none. The first call looks at all that the element holds.
  bool Find(const void* address, Change* found);

 private:
  struct Holder {
    std::string Path;
    const void* Address;  // of a listed element, as its list holds it; else null
    const QtSts::ClassInfo* Class;
  };
  struct Value {
    const void* Address;
    const QtSts::Field* Listed;
    std::size_t Holder;
  };

  void Walk(const QtSts::ClassInfo& info, const void* object, const std::string& path,
            const QtSts::CBaseStatus* element);
  void Get(const Value& value, Change* found) const;

  const QtSts::CBaseStatus& element_;
  const QtSts::ClassInfo* class_;  // null when it is not listed
  std::string path_;
  std::vector<Holder> holders_;  // the element first; empty before the first search
  std::vector<Value> values_;
};

// Whether a field of this name holds what an element measures, not what it is.
bool IsMeasured(std::string_view field);

// Where a variable of the scratch state stands in the element that takes it.
struct Member {
  Element* Holder;
  const elements::Taken* Variable;

  // As Element::Find.
  bool Find(Change* found) const { return Holder->Find(Variable->Member(Holder->Itself()), found); }
};

}  // namespace insight
