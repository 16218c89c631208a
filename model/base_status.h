// The root of every model class, and the one implementation of XML that all of them share.
#pragma once

#include "model/export.h"

struct _xmlNode;

namespace QtSts {

// Abstract root of every model class. Not copyable: objects own their optional values and elements.
class STATUS_API CBaseStatus {
 public:
  CBaseStatus() = default;
  CBaseStatus(const CBaseStatus&) = delete;
  CBaseStatus& operator=(const CBaseStatus&) = delete;
  virtual ~CBaseStatus() = default;

  // Reads a fresh object from the XML element `node`, as Write leaves it: list elements are
  // appended to those that are there. False when an attribute or a child element is missing,
  // unknown or malformed; the object may then be half filled.
  virtual bool Parse(_xmlNode* node) = 0;

  // Writes the object's fields as attributes and child elements of the XML element `node`.
  // False when libxml2 runs out of memory.
  virtual bool Write(_xmlNode* node) = 0;
};

// A model class whose fields stand in a listing (model/listing.h), from which its XML follows.
class STATUS_API CListedStatus : public CBaseStatus {
 public:
  bool Parse(_xmlNode* node) override;
  bool Write(_xmlNode* node) override;
};

}  // namespace QtSts
