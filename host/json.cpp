#include "host/json.h"

#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "model/xml.h"

namespace host {
namespace {

using nlohmann::ordered_json;
namespace listing = QtSts::listing;

// The XML already holds each floating point number in the shortest form of its own type. The JSON
// library knows one such type and would lengthen some of them (20.025366 to 20.025366000000002), so
// they pass it as strings behind this mark, which no text of a document holds: it is U+FFFF, which
// QtSts::CleanText replaces.
constexpr std::string_view kMark = "\xEF\xBF\xBF";

ordered_json Real(std::string_view text) {
  if (text.find_first_of("NI") != std::string_view::npos) {
    return text;  // not-a-number and the infinities, which JSON has no numbers for
  }
  // Without a fraction, readers take it for the integer 0 and lose the sign.
  return std::string(kMark).append(text == "-0" ? "-0.0" : text);
}

template <class T>
ordered_json Integer(std::string_view text) {
  T number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

ordered_json Reals(std::string_view text) {
  ordered_json array = ordered_json::array();
  while (!text.empty()) {
    const std::size_t blank = text.find(' ');
    array.push_back(Real(text.substr(0, blank)));
    text = blank == std::string_view::npos ? "" : text.substr(blank + 1);
  }
  return array;
}

ordered_json Text(std::string_view text) { return text; }
ordered_json Bool(std::string_view text) { return text == "true"; }

constexpr struct {
  const QtSts::ScalarType* Type;
  ordered_json (*Convert)(std::string_view text);
} kConversions[] = {
    {&listing::kBool, &Bool},
    {&listing::kUInt8, &Integer<std::uint64_t>},
    {&listing::kUInt16, &Integer<std::uint64_t>},
    {&listing::kUInt32, &Integer<std::uint64_t>},
    {&listing::kUInt64, &Integer<std::uint64_t>},
    {&listing::kInt32, &Integer<std::int64_t>},
    {&listing::kInt64, &Integer<std::int64_t>},
    {&listing::kFloat, &Real},
    {&listing::kDouble, &Real},
    {&listing::kText, &Text},
    {&listing::kFloats, &Reals},
};

ordered_json Convert(const Value& value) {
  for (const auto& conversion : kConversions) {
    if (conversion.Type == value.Field->Scalar) {
      return conversion.Convert(value.Text);
    }
  }
  return value.Text;
}

ordered_json ToObject(const Element& element, bool with_class);

ordered_json ToArray(const Element& list) {
  ordered_json array = ordered_json::array();
  for (const Element& element : list.Children) {
    array.push_back(ToObject(element, true));
  }
  return array;
}

ordered_json ToObject(const Element& element, bool with_class) {
  ordered_json object = ordered_json::object();
  if (with_class) {
    object["Class"] = element.Class->Name;
  }
  for (const Value& value : element.Values) {
    object[value.Field->Name] = Convert(value);
  }
  for (const Element& child : element.Children) {
    object[child.Name] = child.IsList() ? ToArray(child) : ToObject(child, false);
  }
  return object;
}

// Takes the marks off, and the quotes around what they mark.
std::string Unmarked(std::string_view json) {
  std::string text;
  text.reserve(json.size());
  for (std::size_t mark = json.find(kMark); mark != std::string_view::npos;
       mark = json.find(kMark)) {
    text.append(json.substr(0, mark - 1));  // the quote before the mark stays behind
    json.remove_prefix(mark + kMark.size());
    const std::size_t quote = json.find('"');
    text.append(json.substr(0, quote));
    json.remove_prefix(quote + 1);
  }
  return text.append(json);
}

}  // namespace

std::string RenderJson(const Element& document) {
  std::string text = Unmarked(ToObject(document, false).dump(2)) + "\n";
  QtSts::EscapeSteering(&text, "\\u", "");  // they stand nowhere but in strings
  return text;
}

}  // namespace host
