#include "insight/row_remarks.h"

#include <algorithm>
#include <utility>

#include "model/text.h"

namespace insight {

Excerpt WholeKey(const Row& row) { return KeyFrom(row, 0); }
Excerpt WholeValue(const Row& row) { return {RowPart::kValue, 0, row.Value.size()}; }
Excerpt KeyFrom(const Row& row, std::size_t begin) {
  return {RowPart::kKey, std::min(begin, row.Key.size()), row.Key.size()};
}

void AddRemark(Row* row, Outcome what, std::string text, const Excerpt& place) {
  if (!HasRemark(*row, what)) {
    row->Remarks.push_back({what, std::move(text), place.Part, place.Begin, place.End});
  }
}

bool HasRemark(const Row& row, Outcome what) {
  return std::ranges::find(row.Remarks, what, &Remark::What) != row.Remarks.end();
}

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::size_t size = 0;
  for (const std::string_view part : parts) {
    size += part.size();
  }
  std::string text;
  text.reserve(size);
  for (const std::string_view part : parts) {
    text += part;
  }
  return text;
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  constexpr std::size_t kEnd = 12;
  std::string whole(text);
  if (text.size() > kLongest) {
    whole = std::string(text.substr(0, kLongest - kEnd)) + "..." +
            std::string(text.substr(text.size() - kEnd));
  }
  std::string quoted = "\"";
  for (const char c : whole) {
    switch (c) {
      case '\n':
        quoted += "\\n";
        break;
      case '\r':
        quoted += "\\r";
        break;
      case '\t':
        quoted += "\\t";
        break;
      default:
        quoted += c;
    }
  }
  QtSts::CleanText(&quoted);
  return quoted + '"';
}

std::string NearestIs(std::string_view nearest) {
  return nearest.empty() ? "" : "; the nearest is " + Quoted(nearest);
}

std::string Counted(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace insight
