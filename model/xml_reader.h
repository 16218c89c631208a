// Fills an object from the elements of its XML as they come, without a tree of them; private to
// this folder.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "model/listing.h"
#include "model/xml.h"

namespace QtSts {

struct XmlAttribute {
  const char* Name;
  bool HasNamespace;
  std::string_view Value;
};

// Is given elements in order of their text. The first fault stands in the error and ends the
// reading: what follows is passed over.
class XmlReader {
 public:
  // The first element is the object, and must have this name unless it is null.
  XmlReader(const ClassInfo& info, void* object, XmlError* error, const char* name = nullptr);

  void Begin(const char* name, bool has_namespace, std::span<const XmlAttribute> attributes,
             long line);
  // Between the elements; a blank is no fault.
  void Text(std::string_view text);
  // A processing instruction; outside of the outermost element it is no fault.
  void Instruction();
  void End();

  bool Failed() const { return failed_; }

 private:
  // An element that has begun and not ended: an object, or a list when it has no class.
  struct Open {
    const char* Name;
    long Line;
    const ClassInfo* Class;
    void* Object;                       // or the list
    const Field* List;                  // the field that the list is
    std::vector<const Field*> Seen;     // child elements so far
    std::unique_ptr<CBaseStatus> Made;  // an element of the list that encloses it
  };

  void Fail(const char* element, long line, const char* attribute, std::string message);
  void FailBetween(const std::string& what);  // of what stands between the elements
  void BeginField(const char* name, std::span<const XmlAttribute> attributes, long line);
  void BeginElement(const char* name, std::span<const XmlAttribute> attributes, long line);
  void BeginObject(Open object, std::span<const XmlAttribute> attributes);
  bool HasOnlyListed(const Open& object, std::span<const XmlAttribute> attributes);
  bool ReadScalars(const Open& object, std::span<const XmlAttribute> attributes);
  bool ReadScalar(const Open& object, const Field& field, void* part,
                  std::span<const XmlAttribute> attributes);
  bool KeepsPromises(const Open& object);
  bool HasAllElements(const Open& object);

  Open root_;
  const char* root_name_;
  std::vector<Open> open_;
  XmlError* error_;
  bool failed_ = false;
};

}  // namespace QtSts
