// Whether libxml2 ran out of memory; private to this folder.
#pragma once

#include <libxml/xmlerror.h>

namespace QtSts {

// libxml2 goes on without memory and leaves out what it had none for, be it the name of an element:
// only its last error tells. Watches from its construction on, on this thread.
class XmlMemoryWatch {
 public:
  XmlMemoryWatch() { xmlResetLastError(); }

  [[nodiscard]] static bool RanOut() {
    const xmlError* const error = xmlGetLastError();
    return error != nullptr && error->code == XML_ERR_NO_MEMORY;
  }
};

}  // namespace QtSts
