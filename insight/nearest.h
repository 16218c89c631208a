// The known name that an unknown one was perhaps meant to be. Private to this library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace insight {

// How many letters have to be inserted, removed, replaced, or exchanged with the next one, to make
// one text of the other, whatever their case; `limit` for that many and more.
std::size_t Distance(std::string_view left, std::string_view right, std::size_t limit);

// The names that are known, which must outlive it.
class Names {
 public:
  Names() = default;
  explicit Names(const std::vector<std::string_view>& names);

  // The name that `text` differs least from; "" when it differs from each in more than a third of
  // its letters. One that `text` goes on from, or that goes on from `text`, is near.
  std::string_view Nearest(std::string_view text) const;

 private:
  struct Name {
    std::string_view Text;
    std::uint32_t Letters;
  };
  std::vector<Name> names_;
};

}  // namespace insight
