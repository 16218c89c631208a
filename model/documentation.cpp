#include "model/documentation.h"

namespace QtSts {

std::string DocumentationOf(const Field& field) {
  std::string text = std::string(field.About) + ".";
  if (*field.Unit != '\0') {
    text.append(" Unit: ").append(field.Unit).append(".");
  }
  const char* separator = " Values: ";
  for (const Code& code : field.Codes) {
    text.append(separator).append(std::to_string(code.Value)).append(" ").append(code.Text);
    separator = ", ";
  }
  if (!field.Codes.empty()) {
    text += ".";
  }
  return field.Optional ? text + " Absent when it is not reported." : text;
}

}  // namespace QtSts
