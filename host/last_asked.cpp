#include "host/last_asked.h"

#include <string_view>
#include <utility>

#include "host/trouble.h"

namespace host {
namespace {

// What a call does to a source.
const char* VerbOf(observe::Call call) {
  switch (call) {
    case observe::Call::kOpen:
      return "opening ";
    case observe::Call::kRead:
      return "reading ";
    case observe::Call::kRequest:
      return "request of ";
    default:
      return "asking ";
  }
}

// A file that was found is opened once more, by its descriptor: its name came before.
bool IsAgain(const observe::Asks& asks) {
  return std::string_view(asks.Source).starts_with("/proc/thread-self/fd/");
}

std::string TextOf(const observe::Asks& asks) {
  return VerbOf(asks.What) + std::string(*asks.Source == '\0' ? "the system" : asks.Source);
}

}  // namespace

LastAsked::LastAsked() : before_(observe::SetObserver(this)) {}

LastAsked::~LastAsked() { observe::SetObserver(before_); }

void LastAsked::See(const observe::Event& event) {
  if (const auto* const asks = event.As<observe::Asks>(); asks && !IsAgain(*asks)) {
    Set(TextOf(*asks));
  } else if (event.As<observe::AsksDatabase>() != nullptr) {
    Set(std::string("reading ") + kDatabaseFile);
  }
  if (before_ != nullptr) {
    before_->See(event);
  }
}

std::string LastAsked::InWords() const {
  const std::lock_guard lock(mutex_);
  return words_;
}

void LastAsked::Set(std::string words) {
  const std::lock_guard lock(mutex_);
  words_ = std::move(words);
}

}  // namespace host
