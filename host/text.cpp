#include "host/text.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/annotations.h"
#include "host/findings_text.h"
#include "host/limit_text.h"
#include "host/page.h"
#include "host/printable.h"
#include "host/sources_text.h"
#include "host/text_sections.h"
#include "host/text_template.h"
#include "insight/places.h"

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// The sections that are no plain blocks.
constexpr const char* kFindings = "findings";
constexpr const char* kDisplay = "display";
constexpr const char* kSensors = "sensors";
constexpr const char* kPoints = "points";
constexpr const char* kSources = "sources";

// A board with points: a sensor, or a display interface.
struct Board {
  std::string Title;
  const TreeElement* Holder;
};

bool IsConnected(const TreeElement& sensor) {
  const TreeValue* const connected = sensor.FindValue("Connected");
  return connected == nullptr || connected->Flag();
}

class TextRenderer {
 public:
  TextRenderer(const insight::Snapshot& snapshot, const Look& look)
      : snapshot_(snapshot),
        look_(look),
        document_(snapshot.Document.Root()),
        page_(look.Columns, look.Colour, look.Whole),
        annotations_(snapshot) {}

  std::string Render() {
    ShowHeadline(snapshot_, &page_);
    if (look_.Brief || Wants(kFindings)) {
      ShowFindings(snapshot_, FindingsExtent(), &page_);
    }
    if (Wants(kDisplay)) {
      ShowDisplay();
    }
    ShowSections(kDocumentSections, document_);
    ShowOutputs();
    if (Wants(kSensors)) {
      ForEachSensorList([this](const TreeElement* interface, const TreeElement& sensors) {
        ShowSensors("Sensors " + WhereOf(interface), sensors);
      });
    }
    if (Wants(kPoints)) {
      ShowBoards();
    }
    ShowSections(kClosingSections, document_);
    if (Wants(kSources)) {
      ShowSources(snapshot_, nullptr, &page_);
    }
    return page_.Take();
  }

 private:
  bool Wants(const char* section) const {
    return look_.Sections.empty() ? !look_.Brief : std::ranges::count(look_.Sections, section) > 0;
  }

  Extent FindingsExtent() const {
    if (look_.Brief) {
      return Extent::kBrief;
    }
    return look_.Sections.empty() ? Extent::kAbridged : Extent::kFull;
  }

  // How much attention the values need that the text has.
  Mark MarkOf(const Filled& filled) const {
    Mark mark = Mark::kNone;
    for (const TreeValue* const value : filled.Used) {
      const auto found = annotations_.Marks.find(value);
      mark = std::max(mark, found == annotations_.Marks.end() ? Mark::kNone : found->second);
    }
    return mark;
  }

  void AddCell(const char* text_template, const TreeElement& element, Row* row,
               const ValueSet* unreported = nullptr) const {
    Filled filled =
        Fill(text_template, element, unreported == nullptr ? annotations_.Unreported : *unreported);
    row->How = std::max(row->How, MarkOf(filled));
    row->Cells.push_back(std::move(filled.Text));
  }

  void ShowSections(const Sections& sections, const TreeElement& element) {
    for (const Section& section : sections) {
      if (Wants(section.Name)) {
        ShowBlocks(section.Shown, element);
      }
    }
  }

  void ShowOutputs() {
    const TreeElement& outputs = *document_.Find("Outputs");
    for (const TreeElement& output : outputs.Children()) {
      ShowSections(kOutputSections, output);
    }
    const bool wanted = std::ranges::any_of(
        kOutputSections, [this](const Section& section) { return Wants(section.Name); });
    if (outputs.Children().empty() && wanted) {
      page_.Title("Output");
      page_.Line(kNotReported);
    }
  }

  void ShowDisplay() {
    page_.Title("Display");
    const TreeElement& outputs = *document_.Find("Outputs");
    for (const TreeElement& output : outputs.Children()) {
      ShowDisplayFacts(output);
    }
    if (outputs.Children().empty()) {
      page_.Line(kNotReported);
    }
    ForEachSensorList([this](const TreeElement* interface, const TreeElement& sensors) {
      ShowMeasured("Temperatures and voltages " +
                       (interface == nullptr ? "on the controller"
                                             : "behind the " + insight::PlaceOf(*interface)),
                   sensors);
    });
  }

  // Other bits of the flags say nothing about the power.
  void ShowDisplayFacts(const TreeElement& output) {
    std::vector<Row> rows;
    for (const Column& fact : kDisplayFacts) {
      const bool power = std::string_view(fact.Template).ends_with(":power}");
      Row row{Mark::kNone, {fact.Heading}};
      AddCell(fact.Template, output, &row, power ? &annotations_.Unfed : nullptr);
      if (power && row.Cells.back() == "on") {
        row.How = Mark::kNone;
      }
      rows.push_back(std::move(row));
    }
    page_.Table({{""}, {""}}, rows);
  }

  // Nothing where no sensor measures any.
  void ShowMeasured(const std::string& title, const TreeElement& sensors) {
    std::vector<Row> rows;
    for (const TreeElement& sensor : sensors.Children()) {
      for (const Measured& measured : kMeasured) {
        if (sensor.IsA(measured.Class)) {
          Row row;
          AddCell(measured.Name, sensor, &row);
          AddCell(sensor.FindValue("Address") == nullptr ? "" : "{Address}", sensor, &row);
          AddCell(IsConnected(sensor) ? measured.Template : "not connected", sensor, &row);
          row.Cells.push_back(LimitText(look_.Limits, measured));
          rows.push_back(std::move(row));
        }
      }
    }
    if (!rows.empty()) {
      page_.Title(title);
      page_.Table({{"Sensor"}, {"Address", Align::kRight}, {"Reading"}, {"Limits (critical)"}},
                  rows, 2);
    }
  }

  void ShowBlocks(const Blocks& blocks, const TreeElement& element) {
    const TreeElement* before = nullptr;
    for (const Block& block : blocks) {
      const TreeElement* const shown = element.Find(block.Path);
      const bool empty = shown == nullptr || (shown->IsList() && shown->Children().empty());
      if (block.Title != nullptr) {
        page_.Title(block.Title);
      } else if (empty && shown == before) {
        continue;  // said already
      } else {
        page_.Gap();
      }
      before = shown;
      if (shown == nullptr) {
        page_.Line(std::string(NameOf(block.Shown)) + ": " + kNotReported);
      } else if (shown->IsList()) {
        ShowList(block.Shown, *shown);
      } else {
        ShowFacts(block.Shown, *shown);
      }
    }
  }

  // What a table lists: its first heading that is not the number.
  static std::string_view NameOf(const Columns& columns) {
    const std::string_view first = columns.front().Heading;
    return first == "#" ? columns[1].Heading : first;
  }

  void ShowFacts(const Columns& facts, const TreeElement& record) {
    std::vector<Row> rows;
    for (const Column& fact : facts) {
      Row row{Mark::kNone, {fact.Heading}};
      AddCell(fact.Template, record, &row);
      rows.push_back(std::move(row));
    }
    page_.Table({{""}, {""}}, rows);
  }

  // Readings, which differ by class, make one more column.
  void ShowList(const Columns& columns, const TreeElement& list, bool readings = false) {
    if (list.Children().empty()) {
      page_.Line(std::string(NameOf(columns)) + ": " + kNotReported);
      return;
    }
    std::vector<Heading> headings;
    for (const Column& column : columns) {
      headings.push_back({column.Heading, column.Side});
    }
    if (readings) {
      headings.push_back({"Reading"});
    }
    std::vector<Row> rows;
    for (const TreeElement& element : list.Children()) {
      Row row;
      for (const Column& column : columns) {
        AddCell(column.Template, element, &row);
      }
      if (readings) {
        AddCell(ReadingTemplate(element), element, &row);
      }
      rows.push_back(std::move(row));
    }
    page_.Table(headings, rows);
  }

  static const char* ReadingTemplate(const TreeElement& sensor) {
    const auto reading =
        std::find_if(kReadings.begin(), kReadings.end(),
                     [&sensor](const Reading& each) { return sensor.IsA(each.Class); });
    return reading == kReadings.end() ? "" : reading->Template;
  }

  // "on the controller", "behind TravexRouterDisplayInterface 0 at address 1".
  static std::string WhereOf(const TreeElement* interface) {
    if (interface == nullptr) {
      return "on the controller";
    }
    const bool addressed = interface->FindValue("Address") != nullptr;
    return Fill(addressed ? "behind {Class} {#} at address {Address}" : "behind {Class} {#}",
                *interface)
        .Text;
  }

  // `visit` gets the display interface, null for the controller's own sensors, and their list.
  template <class Visit>
  void ForEachSensorList(const Visit& visit) const {
    visit(nullptr, *document_.Find("Sensors"));
    ForEachInterface(
        [&visit](const TreeElement& interface) { visit(&interface, *interface.Find("Sensors")); });
  }

  void ShowSensors(const std::string& title, const TreeElement& sensors) {
    page_.Title(title);
    ShowList(kSensorReadings, sensors, true);
    if (!sensors.Children().empty()) {
      page_.Gap();
      ShowList(kSensorAddresses, sensors);
    }
  }

  void ShowBoards() {
    for (const Board& board : FindBoards()) {
      page_.Title(board.Title);
      ShowBlocks(kPointBlocks, *board.Holder->Find("Points"));
      if (const TreeElement* const fans = board.Holder->Find("FanRpms")) {
        page_.Gap();
        ShowList(kFanSpeeds, *fans);
      }
    }
  }

  // Whether there are points or fans to show.
  static bool IsBoard(const TreeElement& element) {
    const auto filled = [&element](const char* path) {
      const TreeElement* const list = element.Find(path);
      return list != nullptr && !list->Children().empty();
    };
    return filled("Points/Inputs/Points") || filled("Points/Outputs/Points") || filled("FanRpms");
  }

  // The boards with points, wherever they are.
  std::vector<Board> FindBoards() const {
    std::vector<Board> boards;
    const auto add = [&boards](const TreeElement& list, const std::string& where) {
      for (const TreeElement& element : list.Children()) {
        if (IsBoard(element)) {
          boards.push_back({Fill("Points of {Class} {#}", element).Text + where, &element});
        }
      }
    };
    add(*document_.Find("Sensors"), " on the controller");
    ForEachInterface([&add](const TreeElement& interface) {
      add(*interface.Find("Sensors"), Fill(" behind {Class} {#}", interface).Text);
    });
    for (const TreeElement& output : document_.Find("Outputs")->Children()) {
      add(*output.Find("DisplayInterfaces"), "");
    }
    return boards;
  }

  template <class Visit>
  void ForEachInterface(const Visit& visit) const {
    for (const TreeElement& output : document_.Find("Outputs")->Children()) {
      for (const TreeElement& interface : output.Find("DisplayInterfaces")->Children()) {
        visit(interface);
      }
    }
  }

  const insight::Snapshot& snapshot_;
  const Look& look_;
  const TreeElement& document_;
  Page page_;
  const Annotations annotations_;
};

}  // namespace

std::vector<std::string> SectionNames() {
  std::vector<std::string> names = {kFindings, kDisplay};
  const auto add = [&names](const Sections& sections) {
    for (const Section& section : sections) {
      names.emplace_back(section.Name);
    }
  };
  add(kDocumentSections);
  add(kOutputSections);
  names.insert(names.end(), {kSensors, kPoints});
  add(kClosingSections);
  names.emplace_back(kSources);
  return names;
}

std::string RenderText(const insight::Snapshot& snapshot, const Look& look) {
  return TextRenderer(snapshot, look).Render();
}

}  // namespace host
