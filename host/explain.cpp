// explain: what became of each source and row of a cycle.
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "collector/status_interface.h"
#include "host/column_order.h"
#include "host/commands.h"
#include "host/explain_text.h"
#include "host/json.h"
#include "host/output.h"
#include "host/terminal.h"
#include "host/trouble.h"
#include "insight/snapshot.h"

namespace host {
namespace {

constexpr const char* kText = "text";
constexpr const char* kJson = "json";

struct Options {
  ExplainOptions What;
  std::string Format = kText;
};

bool HasErrors(const std::vector<const insight::Row*>& rows) {
  return std::ranges::any_of(
      rows, [](const insight::Row* row) { return row->Class() == insight::OutcomeClass::kError; });
}

std::string InJson(insight::Snapshot snapshot, const insight::Snapshot& before,
                   const ExplainOptions& options) {
  const std::vector<const insight::Row*> rows = WantedRows(snapshot, options);
  const std::vector<bool> differs = DifferingRows(rows, before);
  std::vector<std::string> differing;
  std::vector<insight::Row> wanted;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    wanted.push_back(*rows[i]);
    if (differs[i]) {
      differing.push_back(rows[i]->Key);
    }
  }
  snapshot.Rows = std::move(wanted);
  return RenderInsightJson(snapshot, differing);
}

void Put(const StandardOutput& output, const std::string& text) {
  if (!ShowInPager(output.Descriptor(), text)) {
    output.Write(text);
  }
}

int Explain(const Options& options) {
  const StandardOutput output;
  CStatusInterface collector;
  collector.m_Hardware.m_bLogTrackerPixel = false;
  const DatabaseTrouble trouble(Opened::kForReading);
  collector.InitDatabase(false);
  insight::Recorder recorder(collector);
  const insight::Snapshot before = recorder.RunCycle();
  output.PassOn();
  insight::Snapshot snapshot = recorder.RunCycle();
  const std::string wrong_columns = snapshot.Result == 0 ? ColumnTrouble(collector) : "";
  collector.CloseDatabase();
  const int result = snapshot.Result;
  const bool errors = HasErrors(WantedRows(snapshot, options.What));
  if (options.Format == kJson) {
    output.Write(InJson(std::move(snapshot), before, options.What));
  } else {
    const std::size_t columns = WindowOf(output.Descriptor()).Columns;
    const bool colour = WantsColour(output.Descriptor(), Colour::kAuto);
    Put(output, ExplainInText(snapshot, before, options.What, columns, colour));
  }
  // After the text, which people read first.
  trouble.Report();
  WarnOfColumns(wrong_columns);
  if (result != 0) {
    return kTrouble;
  }
  return errors ? kFailed : kAllWell;
}

}  // namespace

Declaration DeclareExplain() {
  const auto options = std::make_shared<Options>();
  return {{{.Name = "prefix",
            .Type = "KEY-PREFIX",
            .About = "Only rows whose key begins with it, no sources",
            .Value = &options->What.Prefix,
            .MayBeMissing = true},
           {.Name = "-p,--problems",
            .Type = "",
            .About = "Only rows in error, each with its cure",
            .Value = &options->What.Problems},
           {.Name = "-f,--format",
            .Type = "NAME",
            .About = "text (default) or json",
            .Value = &options->Format,
            .Choices = {kText, kJson}}},
          [options] { return Explain(*options); }};
}

}  // namespace host
