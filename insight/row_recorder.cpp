#include "insight/row_recorder.h"

#include <utility>

namespace insight {

void RowRecorder::BeginCycle(const QtSts::CStatus& /*status*/) { m_Rows.clear(); }

void RowRecorder::See(const observe::Event& event) {
  if (const auto* const begins = event.As<observe::RowBegins>()) {
    Row row;
    row.Key = begins->CutKey;
    row.Value = begins->CutValue;
    row.IsNull = begins->Value == nullptr;
    row.Remarks.emplace_back();
    m_Rows.push_back(std::move(row));
  }
}

std::vector<Row> RowRecorder::EndCycle(const QtSts::DocumentTree& /*document*/) {
  return std::move(m_Rows);
}

}  // namespace insight
