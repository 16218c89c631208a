// libxml2's own data, and whether it ran out of memory; private to this folder.
#pragma once

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <mutex>

namespace QtSts {

// Makes libxml2's own data where it is not made yet. Each function that uses libxml2 calls it
// first: libxml2 itself does so on the way, without a lock, so that two threads would race.
inline void InitializeXml() {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  xmlInitParser();
}

// When memory runs out, libxml2 goes on and leaves out what did not fit, even the name of an
// element. Only its last error says so. Watches from its construction on, on this thread.
class XmlMemoryWatch {
 public:
  XmlMemoryWatch() {
    InitializeXml();
    xmlResetLastError();
  }

  [[nodiscard]] static bool RanOut() {
    const xmlError* const error = xmlGetLastError();
    return error != nullptr && error->code == XML_ERR_NO_MEMORY;
  }
};

}  // namespace QtSts
