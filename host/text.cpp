#include "host/text.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/attention.h"
#include "host/page.h"
#include "host/printable.h"
#include "host/text_sections.h"
#include "host/text_template.h"

namespace host {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// A board with points: a sensor, or a display interface.
struct Board {
  std::string Title;
  const TreeElement* Holder;
};

class TextRenderer {
 public:
  TextRenderer(const QtSts::DocumentTree& document, const Look& look)
      : m_Document(document.Root()), m_Page(look.Colour), m_Notes(FindNotes(document)) {
    for (const Note& note : m_Notes) {
      m_Causes.insert(note.Cause);
    }
    if (!look.AllRowsRead) {
      m_Notes.insert(m_Notes.begin(), Note{kRowsNotRead, "", nullptr});
    }
  }

  std::string Render() {
    ShowNotes();
    ShowBlocks(kDocumentBlocks, m_Document);
    for (const TreeElement& output : m_Document.Find("Outputs")->Children()) {
      ShowBlocks(kOutputBlocks, output);
    }
    if (m_Document.Find("Outputs")->Children().empty()) {
      m_Page.Title("Output");
      m_Page.Line(kNotReported);
    }
    ShowAllSensors();
    ShowBoards();
    ShowBlocks(kClosingBlocks, m_Document);
    return m_Page.Take();
  }

 private:
  void ShowNotes() {
    m_Page.Title(m_Notes.empty() ? "Nothing needs attention" : "Needs attention");
    // Short notes stand beside their places, aligned; a long one stands above its place.
    constexpr std::size_t kShort = 44;
    std::size_t width = 0;
    for (const Note& note : m_Notes) {
      width = std::max(width, Width(note.What) > kShort ? 0 : Width(note.What));
    }
    std::vector<Row> rows;
    for (const Note& note : m_Notes) {
      const std::string aligned = Padded(note.What, width) + "  " + note.Where;
      if (Width(note.What) <= width && Width(aligned) <= Page::kColumns - 2) {
        rows.push_back({true, {aligned}});
      } else {
        rows.push_back({true, {note.What}});
        rows.push_back({false, {"  " + note.Where}});
      }
    }
    m_Page.Table({{""}}, rows);
  }

  // Whether a value that the text tells needs attention.
  bool IsMarked(const Filled& filled) const {
    return std::any_of(filled.Used.begin(), filled.Used.end(),
                       [this](const TreeValue* value) { return m_Causes.count(value) > 0; });
  }

  void AddCell(const char* text_template, const TreeElement& element, Row* row) const {
    Filled filled = Fill(text_template, element);
    row->Marked = row->Marked || IsMarked(filled);
    row->Cells.push_back(std::move(filled.Text));
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
      Row row{false, {fact.Heading}};
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

  void ShowAllSensors() {
    ShowSensors("Sensors on the controller", *m_Document.Find("Sensors"));
    ForEachInterface([this](const TreeElement& interface) {
      ShowSensors(Fill("Sensors behind {Class} {#}", interface).Text, *interface.Find("Sensors"));
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

  const TreeElement& m_Document;
  Page m_Page;
  std::vector<Note> m_Notes;
  std::unordered_set<const TreeValue*> m_Causes;
};

}  // namespace

std::string RenderText(const QtSts::DocumentTree& document, const Look& look) {
  return TextRenderer(document, look).Render();
}

}  // namespace host
