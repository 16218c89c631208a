// What the series of the history are numbers of.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "model/tree.h"
#include "serve/history_memory.h"

namespace serve {

// The elements of a document by what they are, so that one that moves in its list is known again:
// its path with class and address, number or name in place of each position:
//
//   Outputs[Output]/DisplayInterfaces[TravexRouterDisplayInterface,Address:1]/
//     Sensors[CANFanRpmSensor,Address:39,Bus:1,Face:1]
//
// The second one of several that are alike in this has "#2" before the last bracket.
class Identities {
 public:
  // `document` must outlive it.
  explicit Identities(const QtSts::DocumentTree& document);

  const std::string& Of(const QtSts::TreeElement& element) const;

  // Of the value or record at a path of the document: the identity of the innermost element of a
  // list (of the root when there is none) that holds it, and the path from there; the empty
  // identity and the whole path when the element is not there.
  std::string OfPath(std::string_view path) const;
  // Likewise of many, in time that grows with their number and that of the elements.
  std::vector<std::string> OfPaths(const std::vector<std::string_view>& paths) const;

 private:
  const QtSts::DocumentTree& document_;
  std::vector<std::string> of_;  // in the order of the document
};

// Each series has a number, which it keeps.
class HistoryNames {
 public:
  // Identities are long; those of ten thousand sensors take a half of this.
  static constexpr std::size_t kMostBytes = std::size_t{6} << 20;

  std::optional<std::uint32_t> Find(std::string_view element, std::string_view field) const;

  // The series must not be there.
  void Add(std::string_view element, std::string_view field, std::uint32_t series);

  // Takes away all that `is_used` is false for.
  void Keep(const std::vector<bool>& is_used);

  void Visit(const std::function<void(std::string_view element, std::string_view field,
                                      std::uint32_t series)>& visit) const;
  std::size_t size() const { return size_; }

 private:
  template <class T>
  using Allocator = HistoryAllocator<T, HistoryPart::kNames>;
  using Text = std::basic_string<char, std::char_traits<char>, Allocator<char>>;
  struct Hash {
    using is_transparent = void;  // NOLINT(readability-identifier-naming): the library's name
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  struct Series {
    std::uint32_t Field;  // in fields_
    std::uint32_t Number;
  };
  using Element = std::vector<Series, Allocator<Series>>;

  std::uint32_t FieldNumber(std::string_view field);

  std::unordered_map<Text, Element, Hash, std::equal_to<>,
                     Allocator<std::pair<const Text, Element>>>
      elements_;
  std::vector<Text, Allocator<Text>> fields_;
  std::unordered_map<Text, std::uint32_t, Hash, std::equal_to<>,
                     Allocator<std::pair<const Text, std::uint32_t>>>
      field_numbers_;
  std::size_t size_ = 0;
};

}  // namespace serve
