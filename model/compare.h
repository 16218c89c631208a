// What differs between two documents, found by walking their trees.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "model/base_status.h"
#include "model/export.h"
#include "model/tree.h"

namespace QtSts {

// One difference. `Path` leads from the compared objects to it by field names, list elements by
// position. The two sides are values as XML writes them, texts in double quotes, and where a whole
// record or list element has no counterpart of its class, the class name; "absent" without quotes
// is what is not there.
struct Difference {
  std::string Path;    // "Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Celsius"
  std::string Before;  // "21.5"
  std::string After;   // "22"

  // "Outputs[0]/DisplayInterfaces[1]/Sensors[3]/Celsius: 21.5 -> 22"
  STATUS_API std::string Text() const;
};

// How values are written that are codes: as numbers, or "1 (manual)" where the code has a name.
enum class CodeText : std::uint8_t { kNumber, kNumberAndName };

// The differences in order of the fields; none when both say the same. Values are the same when
// XML writes them alike, so that not-a-number equals itself. A record or element that only one side
// has, or that has another class, is one difference, whatever it holds. Objects of two classes
// differ at the path ".".
STATUS_API std::vector<Difference> Compare(const CBaseStatus& before, const CBaseStatus& after);

// The same, each difference handed to `visit` as it is found, so that none takes memory longer.
STATUS_API void Compare(const CBaseStatus& before, const CBaseStatus& after,
                        const std::function<void(const Difference&)>& visit);
STATUS_API void Compare(const DocumentTree& before, const DocumentTree& after,
                        const std::function<void(const Difference&)>& visit);
STATUS_API void Compare(const DocumentTree& before, const DocumentTree& after, CodeText codes,
                        const std::function<void(const Difference&)>& visit);

}  // namespace QtSts
