// Whether libxml2 ran out of memory; private to this folder.
#pragma once

#include <libxml/xmlerror.h>

namespace QtSts {

// When memory runs out, libxml2 goes on and leaves out what did not fit, even the name of an
// element. Only its last error says so. Watches from its construction on, on this thread.
class XmlMemoryWatch {
 public:
  XmlMemoryWatch() { xmlResetLastError(); }

  [[nodiscard]] static bool RanOut() {
    const xmlError* const error = xmlGetLastError();
    return error != nullptr && error->code == XML_ERR_NO_MEMORY;
  }
};

}  // namespace QtSts
