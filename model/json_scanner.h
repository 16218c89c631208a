// Takes strict JSON (RFC 8259, UTF-8) apart, value by value and without a tree of it; private to
// this folder.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace QtSts {

// A walk through a text. Each function that takes something returns false when the text is not JSON
// there; then Fault says why, and Position where. Blanks in front of what is taken are passed over.
class JsonScanner {
 public:
  explicit JsonScanner(std::string_view text) : text_(text) {}

  // What the next value begins with: '{', '[', '"', a digit or '-', a letter; zero at the end.
  char Next();

  // In bytes from the begin, of the value that comes next. A walk may go back to one.
  std::size_t Position();
  void GoTo(std::size_t position) { position_ = position; }
  long LineOf(std::size_t position) const;

  // A text, its escapes replaced. One that XML cannot carry is a fault.
  bool TakeText(std::string* text);
  // A number, true, false or null, as it stands.
  bool TakeWord(std::string_view* word);
  // Any value, with all that it holds.
  bool Skip();
  // The end of the text.
  bool TakeEnd();

  // An array: `visit` takes the value of each element. An object: `visit(name)` takes the value of
  // each member. Both end at once, without a fault, when `visit` returns false.
  template <class Visit>
  bool TakeElements(const Visit& visit) {
    return TakeAll('[', ']', visit);
  }
  template <class Visit>
  bool TakeMembers(const Visit& visit) {
    return TakeAll('{', '}', [this, &visit] {
      std::string name;
      return TakeText(&name) && Take(':') && visit(std::string_view(name));
    });
  }

  const char* Fault() const { return fault_; }  // null without one

 private:
  // Deeper values are refused: a document has about a dozen levels.
  static constexpr int kMaximumDepth = 64;

  bool Fail(const char* message);
  bool Take(char wanted);
  bool TakeIf(char wanted);
  bool TakeEscape(std::string* text);
  bool TakeCode(unsigned int* code);

  template <class Visit>
  bool TakeAll(char open, char close, const Visit& visit) {
    if (depth_ == kMaximumDepth) {
      return Fail("nested too deeply");
    }
    if (!Take(open)) {
      return false;
    }
    ++depth_;
    bool good = true;
    if (Next() != close) {
      do {
        good = visit();
      } while (good && TakeIf(','));
    }
    --depth_;
    return good && Take(close);
  }

  std::string_view text_;
  std::size_t position_ = 0;
  int depth_ = 0;
  const char* fault_ = nullptr;
};

}  // namespace QtSts
