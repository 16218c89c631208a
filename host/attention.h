// What in a document needs somebody's attention.
#pragma once

#include <string>
#include <vector>

#include "model/tree.h"

namespace host {

struct Note {
  std::string What;   // "CANTempSensor 3 is not connected"
  std::string Where;  // "Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Connected"; or empty
  const QtSts::TreeValue* Cause;
};

// What a failed cycle makes of a document.
inline constexpr const char* kRowsNotRead = "The rows of the database were not all read";

// Everything that needs attention, in order of the document. Points into `document`.
std::vector<Note> FindNotes(const QtSts::DocumentTree& document);

// The templates (host/text_template.h) of all that a note can say.
std::vector<const char*> NoteTemplates();

}  // namespace host
