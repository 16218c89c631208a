#include "capture/replacer.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

#include "capture/characters.h"

namespace capture {
namespace {

std::string Small(std::string_view text) {
  std::string small(text);
  std::ranges::transform(small, small.begin(), Lower);
  return small;
}

bool Fits(Edge sides, std::string_view text, std::size_t begin, std::size_t end) {
  const char before = begin == 0 ? '\n' : text[begin - 1];
  const char after = end < text.size() ? text[end] : '\n';
  const auto neither = [&](auto is) { return !is(before) && !is(after); };
  switch (sides) {
    case Edge::kAnything:
      return true;
    case Edge::kNoDigit:
      return neither(IsDigit);
    case Edge::kNoNumber: {
      const bool fraction = after == '.' && end + 1 < text.size() && IsDigit(text[end + 1]);
      const bool whole = before == '.' && begin > 1 && IsDigit(text[begin - 2]);
      return neither(IsDigit) && !fraction && !whole;
    }
    case Edge::kNoHexadecimal:
      return neither(IsHexadecimal);
    case Edge::kNoGroup:
      return neither([](char c) { return IsHexadecimal(c) || c == ':'; });
    case Edge::kNoLetter:
      return neither([](char c) { return IsLetter(c) || IsDigit(c); });
  }
  return false;
}

// The pair of bytes at `at`; the last byte has a zero after it.
std::size_t PairAt(std::string_view text, std::size_t at) {
  const auto byte = [text](std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
  };
  return byte(at) << 8 | byte(at + 1);
}

}  // namespace

// A text in which spellings are replaced one after the other, each from its begin to its end. What
// stands in the place of one may make others; so the text around it is searched again.
class Replacer::Work {
 public:
  Work(const Replacer& replacer, std::string_view text, bool with_numbers)
      : replacer_(replacer), with_numbers_(with_numbers), text_(text), small_(Small(text)) {}

  std::string Run() {
    waiting_ = Find(0, text_.size());
    for (next_ = 0; next_ < waiting_.size();) {
      const Place place = waiting_[next_++];
      if (place.Spelling != done_.Spelling) {
        done_ = {place.Spelling, 0};
      }
      if (place.At >= done_.At && StandsAt(place)) {
        ReplaceAt(place);
      }
    }
    return std::move(text_);
  }

 private:
  // In the order in which they are replaced.
  struct Place {
    std::size_t Spelling;
    std::size_t At;
    bool operator==(const Place& other) const {
      return Spelling == other.Spelling && At == other.At;
    }
    bool operator<(const Place& other) const {
      return std::tie(Spelling, At) < std::tie(other.Spelling, other.At);
    }
  };

  const std::string& Searched(const Spelling& spelling) const {
    return spelling.What == As::kBytes ? text_ : small_;
  }

  // All that begins in this part of the text.
  std::vector<Place> Find(std::size_t begin, std::size_t end) const {
    std::vector<Place> places;
    for (const auto& [index, where] :
         {std::pair(&replacer_.letters_, &small_), std::pair(&replacer_.bytes_, &text_)}) {
      for (std::size_t at = begin; at < end; ++at) {
        for (const std::size_t length : index->Lengths[PairAt(*where, at)]) {
          const auto found = index->Places.find(std::string_view(*where).substr(at, length));
          if (at + length <= text_.size() && found != index->Places.end() &&
              IsWanted(replacer_.spellings_[found->second])) {
            places.push_back({found->second, at});
          }
        }
      }
    }
    std::sort(places.begin(), places.end());
    return places;
  }

  bool IsWanted(const Spelling& spelling) const {
    return with_numbers_ || spelling.What == As::kText;
  }

  // Not any more where another one was replaced, or not with what is beside it.
  bool StandsAt(const Place& place) const {
    const Spelling& spelling = replacer_.spellings_[place.Spelling];
    const std::size_t length = spelling.Before.size();
    return Searched(spelling).compare(place.At, length, spelling.Before) == 0 &&
           Fits(spelling.Sides, text_, place.At, place.At + length);
  }

  void ReplaceAt(const Place& place) {
    const Spelling& spelling = replacer_.spellings_[place.Spelling];
    const std::size_t length = spelling.Before.size();
    const bool capitals = spelling.What != As::kBytes &&
                          HasCapitals(std::string_view(text_).substr(place.At, length));
    const std::string now = capitals ? InCapitals(spelling.Now) : spelling.Now;
    text_.replace(place.At, length, now);
    small_.replace(place.At, length, Small(now));
    done_ = {place.Spelling, place.At + now.size()};
    if (now.size() != length) {
      Move(place.At, length, now.size());
    }
    const std::size_t longest = replacer_.spellings_.front().Before.size();
    for (const Place& made : Find(place.At - std::min(place.At, longest - 1), done_.At)) {
      const auto begin = waiting_.begin() + static_cast<std::ptrdiff_t>(next_);
      const auto later = std::lower_bound(begin, waiting_.end(), made);
      if (!(made < done_) && (later == waiting_.end() || !(*later == made))) {
        waiting_.insert(later, made);
      }
    }
  }

  // After a replacement at `begin` by something longer or shorter: forgets what began in that part
  // of the text, and moves what begins after it.
  void Move(std::size_t begin, std::size_t before, std::size_t now) {
    const auto first = waiting_.begin() + static_cast<std::ptrdiff_t>(next_);
    const auto gone = std::remove_if(first, waiting_.end(), [&](const Place& place) {
      return place.At >= begin && place.At < begin + before;
    });
    waiting_.erase(gone, waiting_.end());
    for (auto place = first; place != waiting_.end(); ++place) {
      if (place->At > begin) {
        place->At = place->At - before + now;
      }
    }
  }

  const Replacer& replacer_;
  const bool with_numbers_;
  std::string text_;
  std::string small_;  // the same in small letters
  std::vector<Place> waiting_;
  std::size_t next_ = 0;  // of those that wait
  Place done_ = {0, 0};   // the spelling that is replaced now, and how far
};

Replacer::Replacer(std::vector<Spelling> spellings) : spellings_(std::move(spellings)) {
  std::ranges::stable_sort(spellings_, [](const Spelling& one, const Spelling& next) {
    return one.Before.size() > next.Before.size();
  });
  for (std::size_t place = 0; place < spellings_.size(); ++place) {
    const Spelling& spelling = spellings_[place];
    (spelling.What == As::kBytes ? bytes_ : letters_).Add(spelling.Before, place);
  }
}

void Replacer::Index::Add(std::string_view spelling, std::size_t place) {
  Places.emplace(spelling, place);
  const std::size_t pair = PairAt(spelling, 0);
  const std::size_t last = spelling.size() == 1 ? pair | 0xFF : pair;  // whatever comes next
  for (std::size_t one = pair; one <= last; ++one) {
    if (Lengths[one].empty() || Lengths[one].back() != spelling.size()) {
      Lengths[one].push_back(spelling.size());
    }
  }
}

std::string Replacer::Replace(std::string_view text, bool with_numbers) const {
  return Work(*this, text, with_numbers).Run();
}

std::string Replacer::ReplaceEnd(std::string_view text) const {
  constexpr std::size_t kLeast = 4;  // characters that may say something
  const std::string small = Small(text);
  for (const Spelling& spelling : spellings_) {
    for (std::size_t length = std::min(spelling.Before.size() - 1, small.size());
         spelling.What == As::kText && length >= kLeast; --length) {
      const std::size_t begin = small.size() - length;
      const bool fits = spelling.Sides == Edge::kAnything || begin == 0 ||
                        Fits(spelling.Sides, small, begin, small.size());
      if (fits && small.ends_with(std::string_view(spelling.Before).substr(0, length))) {
        return std::string(text.substr(0, begin)) + spelling.Now.substr(0, length);
      }
    }
  }
  return std::string(text);
}

}  // namespace capture
