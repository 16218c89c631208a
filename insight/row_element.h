// Where the values of one element of the document stand in it. Private to this library.
#pragma once

#include <string>
#include <vector>

#include "insight/snapshot.h"
#include "model/listing.h"

namespace insight {

// The element at `path` with all that it holds; of a display interface without the sensors behind
// it. The element must outlive it.
class Element {
 public:
  Element(const QtSts::CBaseStatus& element, std::string path);

  const std::string& Path() const { return holders_.front().Path; }
  const char* ClassName() const;

  // The field at this address, or the element that begins there, with what it is now; false when
  // there is none.
  bool Find(const void* address, Change* found) const;

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

  std::vector<Holder> holders_;  // the element first
  std::vector<Value> values_;
};

}  // namespace insight
