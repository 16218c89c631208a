#include "host/library_lines.h"

#include <unistd.h>

#include <string_view>

namespace host {
namespace {

constexpr std::string_view kRemoved = "27:removed ";
constexpr std::string_view kDigits = "0123456789";

void Pass(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
    if (count <= 0) {
      return;  // nothing reads it
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

// Whether the line begins as those of the library do; the program's begin with its name.
bool IsOfLibrary(std::string_view line) {
  const std::size_t end = line.find_first_not_of(kDigits);
  return end != 0 && end != std::string_view::npos && line[end] == ':';
}

}  // namespace

LibraryLines::LibraryLines() : before_(stderr) {
  cookie_io_functions_t functions = {};
  functions.write = [](void* cookie, const char* text, std::size_t size) {
    static_cast<LibraryLines*>(cookie)->Take(text, size);
    return static_cast<ssize_t>(size);
  };
  filter_ = fopencookie(this, "w", functions);
  if (filter_ != nullptr) {  // without memory the lines stay
    static_cast<void>(std::setvbuf(filter_, nullptr, _IONBF, 0));
    stderr = filter_;
  }
}

LibraryLines::~LibraryLines() {
  if (filter_ != nullptr) {
    stderr = before_;
    static_cast<void>(std::fclose(filter_));
  }
  End();
}

void LibraryLines::Take(const char* text, std::size_t size) {
  for (const char c : std::string_view(text, size)) {
    line_[length_++] = c;
    if (c == '\n' || length_ == sizeof line_) {
      End();
    }
  }
}

void LibraryLines::End() {
  const std::string_view line(line_, length_);
  length_ = 0;
  if (line.starts_with(kRemoved)) {
    Pass("statuscollector: removed ");
    Pass(line.substr(kRemoved.size()));
  } else if (!IsOfLibrary(line)) {
    Pass(line);
  }
}

}  // namespace host
