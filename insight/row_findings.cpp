#include "insight/row_findings.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "insight/finding_texts.h"
#include "insight/source_findings.h"

namespace insight {

void FindInRows(const WrongRows& wrong_rows, std::vector<Finding>* findings) {
  const Row* const first = wrong_rows.FirstError();
  if (first == nullptr) {
    return;
  }
  const std::size_t errors = wrong_rows.Errors();
  const std::string& mistake = first->Remarks.front().Text;
  const bool said =
      mistake.empty() || std::ranges::any_of(*findings, [&](const Finding& finding) {
        return finding.Key == first->Key && finding.Message.find(mistake) != std::string::npos;
      });
  const std::string one =
      said ? "a row has an error" : "row " + first->Key + " is wrong: " + mistake;
  AddOfDatabase(MakeFinding("row-errors", Severity::kWarning,
                            errors == 1 ? one : std::to_string(errors) + " rows have errors",
                            "`statuscollector explain --problems`, which names them and the cure"),
                findings);
  if (errors == 1 && !said) {
    findings->back().Where = "";
    findings->back().Hint = CureOf(first->Remarks.front());
  }
  findings->back().Key = first->Key;
  findings->back().Value = static_cast<double>(errors);
}

}  // namespace insight
