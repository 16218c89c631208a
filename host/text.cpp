#include "host/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/annotations.h"
#include "host/findings_text.h"
#include "host/page.h"
#include "host/printable.h"
#include "host/text_sections.h"
#include "host/text_template.h"

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

std::string Number(double number) {
  char text[512];
  char* const end =
      std::to_chars(std::begin(text), std::end(text), number, std::chars_format::fixed).ptr;
  return {std::begin(text), end};
}

// "-30..65", "10.."; "" where there is no limit.
std::string RangeText(const insight::Range& range) {
  if (range.IsEverything()) {
    return "";
  }
  return (range.Excluded ? "not " : "") + (std::isfinite(range.Least) ? Number(range.Least) : "") +
         ".." + (std::isfinite(range.Most) ? Number(range.Most) : "");
}

std::string LimitText(const insight::Limits& limits, const char* name) {
  if (name == nullptr) {
    return "not 0 V";
  }
  const insight::Limit& limit = limits.Of(name);
  const std::string critical = RangeText(limit.Critical);
  return RangeText(limit.Warning) + (critical.empty() ? "" : " (" + critical + ")");
}

bool IsConnected(const TreeElement& sensor) {
  const TreeValue* const connected = sensor.FindValue("Connected");
  return connected == nullptr || connected->Flag();
}

class TextRenderer {
 public:
  TextRenderer(const insight::Snapshot& snapshot, const Look& look)
      : m_Snapshot(snapshot),
        m_Look(look),
        m_Document(snapshot.Document.Root()),
        m_Page(look.Columns, look.Colour),
        m_Annotations(snapshot) {}

  std::string Render() {
    ShowHeadline(m_Snapshot, &m_Page);
    if (m_Look.Brief || Wants(kFindings)) {
      ShowFindings(m_Snapshot, FindingsExtent(), &m_Page);
    }
    if (Wants(kDisplay)) {
      ShowDisplay();
    }
    ShowSections(kDocumentSections, m_Document);
    ShowOutputs();
    if (Wants(kSensors)) {
      ForEachSensorList([this](const std::string& where, const TreeElement& sensors) {
        ShowSensors("Sensors " + where, sensors);
      });
    }
    if (Wants(kPoints)) {
      ShowBoards();
    }
    ShowSections(kClosingSections, m_Document);
    if (Wants(kSources)) {
      ShowSources();
    }
    return m_Page.Take();
  }

 private:
  bool Wants(const char* section) const {
    return m_Look.Sections.empty() ? !m_Look.Brief
                                   : std::ranges::count(m_Look.Sections, section) > 0;
  }

  Extent FindingsExtent() const {
    if (m_Look.Brief) {
      return Extent::kBrief;
    }
    return m_Look.Sections.empty() ? Extent::kAbridged : Extent::kFull;
  }

  // How much attention the values need that the text has.
  Mark MarkOf(const Filled& filled) const {
    Mark mark = Mark::kNone;
    for (const TreeValue* const value : filled.Used) {
      const auto found = m_Annotations.Marks.find(value);
      mark = std::max(mark, found == m_Annotations.Marks.end() ? Mark::kNone : found->second);
    }
    return mark;
  }

  void AddCell(const char* text_template, const TreeElement& element, Row* row,
               const ValueSet* unreported = nullptr) const {
    Filled filled = Fill(text_template, element,
                         unreported == nullptr ? m_Annotations.Unreported : *unreported);
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
    const TreeElement& outputs = *m_Document.Find("Outputs");
    for (const TreeElement& output : outputs.Children()) {
      ShowSections(kOutputSections, output);
    }
    const bool wanted = std::ranges::any_of(
        kOutputSections, [this](const Section& section) { return Wants(section.Name); });
    if (outputs.Children().empty() && wanted) {
      m_Page.Title("Output");
      m_Page.Line(kNotReported);
    }
  }

  void ShowDisplay() {
    m_Page.Title("Display");
    const TreeElement& outputs = *m_Document.Find("Outputs");
    for (const TreeElement& output : outputs.Children()) {
      ShowDisplayFacts(output);
    }
    if (outputs.Children().empty()) {
      m_Page.Line(kNotReported);
    }
    ForEachSensorList([this](const std::string& where, const TreeElement& sensors) {
      ShowMeasured("Temperatures and voltages " + where, sensors);
    });
  }

  // Bits of the flags that rows write say nothing about the power.
  void ShowDisplayFacts(const TreeElement& output) {
    std::vector<Row> rows;
    for (const Column& fact : kDisplayFacts) {
      const bool power = std::string_view(fact.Template).ends_with(":power}");
      Row row{Mark::kNone, {fact.Heading}};
      AddCell(fact.Template, output, &row, power ? &m_Annotations.Unfed : nullptr);
      rows.push_back(std::move(row));
    }
    m_Page.Table({{""}, {""}}, rows);
  }

  // Nothing where no sensor measures any.
  void ShowMeasured(const std::string& title, const TreeElement& sensors) {
    std::vector<Row> rows;
    for (const TreeElement& sensor : sensors.Children()) {
      for (const Measured& measured : kMeasured) {
        if (sensor.IsA(measured.Class)) {
          Row row;
          AddCell("{Class} {#}", sensor, &row);
          AddCell(sensor.FindValue("Address") == nullptr ? "" : "{Address}", sensor, &row);
          AddCell(IsConnected(sensor) ? measured.Template : "not connected", sensor, &row);
          row.Cells.push_back(LimitText(m_Look.Limits, measured.Limit));
          rows.push_back(std::move(row));
        }
      }
    }
    if (!rows.empty()) {
      m_Page.Title(title);
      m_Page.Table({{"Sensor"}, {"Address", Align::kRight}, {"Reading"}, {"Limits (critical)"}},
                   rows, 2);
    }
  }

  void ShowBlocks(const Blocks& blocks, const TreeElement& element) {
    const TreeElement* before = nullptr;
    for (const Block& block : blocks) {
      const TreeElement* const shown = element.Find(block.Path);
      const bool empty = shown == nullptr || (shown->IsList() && shown->Children().empty());
      if (block.Title != nullptr) {
        m_Page.Title(block.Title);
      } else if (empty && shown == before) {
        continue;  // said already
      } else {
        m_Page.Gap();
      }
      before = shown;
      if (shown == nullptr) {
        m_Page.Line(std::string(NameOf(block.Shown)) + ": " + kNotReported);
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
    m_Page.Table({{""}, {""}}, rows);
  }

  // Readings, which differ by class, make one more column.
  void ShowList(const Columns& columns, const TreeElement& list, bool readings = false) {
    if (list.Children().empty()) {
      m_Page.Line(std::string(NameOf(columns)) + ": " + kNotReported);
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
    m_Page.Table(headings, rows);
  }

  static const char* ReadingTemplate(const TreeElement& sensor) {
    const auto reading =
        std::find_if(kReadings.begin(), kReadings.end(),
                     [&sensor](const Reading& each) { return sensor.IsA(each.Class); });
    return reading == kReadings.end() ? "" : reading->Template;
  }

  // "on the controller", "behind TravexRouterDisplayInterface 0".
  template <class Visit>
  void ForEachSensorList(const Visit& visit) const {
    visit("on the controller", *m_Document.Find("Sensors"));
    ForEachInterface([&visit](const TreeElement& interface) {
      visit(Fill("behind {Class} {#}", interface).Text, *interface.Find("Sensors"));
    });
  }

  void ShowSensors(const std::string& title, const TreeElement& sensors) {
    m_Page.Title(title);
    ShowList(kSensorReadings, sensors, true);
    if (!sensors.Children().empty()) {
      m_Page.Gap();
      ShowList(kSensorAddresses, sensors);
    }
  }

  void ShowBoards() {
    for (const Board& board : FindBoards()) {
      m_Page.Title(board.Title);
      ShowBlocks(kPointBlocks, *board.Holder->Find("Points"));
      if (const TreeElement* const fans = board.Holder->Find("FanRpms")) {
        m_Page.Gap();
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
    add(*m_Document.Find("Sensors"), " on the controller");
    ForEachInterface([&add](const TreeElement& interface) {
      add(*interface.Find("Sensors"), Fill(" behind {Class} {#}", interface).Text);
    });
    for (const TreeElement& output : m_Document.Find("Outputs")->Children()) {
      add(*output.Find("DisplayInterfaces"), "");
    }
    return boards;
  }

  template <class Visit>
  void ForEachInterface(const Visit& visit) const {
    for (const TreeElement& output : m_Document.Find("Outputs")->Children()) {
      for (const TreeElement& interface : output.Find("DisplayInterfaces")->Children()) {
        visit(interface);
      }
    }
  }

  // What answered, and what did not.
  void ShowSources() {
    m_Page.Title("Sources");
    std::vector<Row> rows;
    for (const insight::Source& source : m_Snapshot.Sources) {
      const std::string reason =
          source.StoppedBy.empty() ? source.Reason : "stopped by " + source.StoppedBy;
      rows.push_back({Mark::kNone,
                      {Printable(source.Name), insight::NameOf(source.State),
                       source.Required ? "" : "optional", Printable(reason)}});
    }
    if (rows.empty()) {
      m_Page.Line(kNotReported);
    } else {
      m_Page.Table({{"Source"}, {"State"}, {""}, {"Reason"}}, rows);
    }
  }

  const insight::Snapshot& m_Snapshot;
  const Look& m_Look;
  const TreeElement& m_Document;
  Page m_Page;
  const Annotations m_Annotations;
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
