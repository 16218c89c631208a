// Fields of the document that no row wrote. Private to this library.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace insight {

// Paths of fields, in little memory: there may be several of each of 100,000 elements.
class Unwritten {
 public:
  void Clear();

  // Adds the field at `path`.
  void Add(std::string path);
  // Adds the field `place`, such as "/Celsius", of the element at `path`; those of one element
  // follow one another. `place` must stay.
  void Add(const std::string& path, std::string_view place);

  std::vector<std::string> Sorted() const;

 private:
  struct Element {
    std::string Path;
    std::size_t Begin;  // of its places
  };

  std::vector<Element> elements_;
  std::vector<std::string_view> places_;
};

}  // namespace insight
