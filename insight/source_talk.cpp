#include "insight/source_talk.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>
#include <utility>

namespace insight {
namespace {

using observe::Answers;
using observe::Call;

SourceState StateOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
      return SourceState::kMissing;
    case EACCES:
    case EPERM:
    case EROFS:
      return SourceState::kDenied;
    default:
      return SourceState::kFailed;
  }
}

// Never in another language.
std::string WordsOf(int error) {
  const char* const words = strerrordesc_np(error);
  return words == nullptr ? "error " + std::to_string(error) : words;
}

// Of a file whose only news is that it is there.
bool IsMarker(const SourceInfo& source) {
  return source.AskedBy == Call::kPathStatus && !source.Bound;
}

std::string Quoted(std::string_view label) {
  return '"' + std::string(label.substr(0, label.find_last_not_of(' ') + 1)) + '"';
}

// As headers of drivers write it: "0x8004DA5C".
std::string RequestNumber(unsigned long request) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%lX", request);
  return text;
}

// "0x8004DA5C (HardwareID1, ProductFamily)".
std::string WithFields(unsigned long request, const Talk& talk) {
  std::string fields;
  for (const Feed& feed : FeedsOf(talk.Probe())) {
    if (feed.Request == request && feed.Needs != Part::kSpoils &&
        std::strcmp(feed.Source, talk.Asked().Id) == 0) {
      fields += (fields.empty() ? "" : ", ") + std::string(feed.Field);
    }
  }
  return RequestNumber(request) + (fields.empty() ? "" : " (" + fields + ")");
}

// "no answer to 1 of 10 requests: " and which they are, unless there was no answer at all.
std::string Unanswered(const std::vector<std::string>& silent, std::size_t requests) {
  constexpr std::size_t kMostNamed = 3;
  std::string reason = kNoAnswerTo + std::to_string(silent.size()) + " of " +
                       std::to_string(requests) + (requests == 1 ? " request" : " requests");
  if (silent.size() == requests) {
    return reason;
  }
  const char* separator = ": ";
  for (std::size_t at = 0; at < std::min(silent.size(), kMostNamed); ++at) {
    reason += std::exchange(separator, ", ") + silent[at];
  }
  return silent.size() <= kMostNamed
             ? reason
             : reason + " and " + std::to_string(silent.size() - kMostNamed) + " more";
}

std::string Missing(const std::set<std::string>& missing, std::size_t looked_for) {
  std::string reason = "no ";
  if (missing.size() > 1) {
    reason = std::to_string(missing.size()) + " of " + std::to_string(looked_for) +
             " labels are missing: ";
  }
  const char* separator = "";
  for (const std::string& label : missing) {
    reason += separator + Quoted(label);
    separator = ", ";
  }
  return reason;
}

}  // namespace

Talk::Talk(const SourceInfo& source, std::string interface, std::string probe)
    : source_(&source), interface_(std::move(interface)), probe_(std::move(probe)) {}

void Talk::Take(const Answers& answer) {
  switch (answer.Question->What) {
    case Call::kOpen:
      TakeOpen(answer);
      break;
    case Call::kFileStatus:
      regular_ = !opened_ || answer.Status == nullptr || S_ISREG(answer.Status->st_mode);
      if (answer.Result < 0) {
        Fail(answer.Error);
      }
      break;
    case Call::kRead:
      if (answer.Result > 0) {
        delivered_ = true;
      } else if (answer.Result < 0 && answer.Error != EINTR) {
        Fail(answer.Error);
      }
      break;
    case Call::kPathStatus:
      if (answer.Result < 0 &&
          !(IsMarker(*source_) && StateOf(answer.Error) == SourceState::kMissing)) {
        Fail(answer.Error);
      } else {
        error_ = 0;
        delivered_ |= IsMarker(*source_);
      }
      break;
    case Call::kRequest:
      TakeRequest(answer);
      break;
    case Call::kLinkTarget:
      break;
    default:
      TakeResult(answer);
  }
}

// A path that is walked name by name is opened as a place again and again; what counts is the last
// opening, that of the file.
void Talk::TakeOpen(const Answers& answer) {
  const bool place = (answer.Question->Number & O_PATH) != 0;
  opened_ = answer.Result >= 0 && !place;
  if (opened_) {
    reached_ = true;
    regular_ = true;
    broken_ = false;
    error_ = 0;
  } else if (answer.Result < 0) {
    error_ = answer.Error;
  }
}

void Talk::TakeRequest(const Answers& answer) {
  const unsigned long request = answer.Question->Number;
  const bool given = answer.Result != -1;
  delivered_ = true;
  if (!given && silent_error_ == 0) {
    silent_error_ = answer.Error;
  }
  bool lost = false;
  const auto feed = std::ranges::find_if(FeedTable(), [&](const Feed& row) {
    return row.Needs == Part::kStatistic && row.Request == request && probe_ == row.Probe &&
           std::strcmp(row.Source, source_->Id) == 0;
  });
  // An answer appends one element at most: without the one before, its own is not there.
  if (feed != FeedTable().end() && given) {
    const auto element = static_cast<std::size_t>(feed->Element);
    if (element >= elements_.size()) {
      elements_.push_back(feed->Element);
    }
    lost = element >= elements_.size();
  }
  requests_[request] = {given, lost};
}

void Talk::TakeResult(const Answers& answer) {
  if (answer.Question->What == Call::kHostText) {
    if (answer.Result != 0) {
      words_ = std::string("address of ") + answer.Question->Source + ": " +
               gai_strerror(static_cast<int>(answer.Result));
      Fail(answer.Error == 0 ? EINVAL : answer.Error);
    }
  } else if (answer.Result < 0) {
    Fail(answer.Error);
  } else if (answer.Question->What != Call::kSocket) {
    delivered_ = true;
  }
}

void Talk::Fail(int error) {
  broken_ = true;
  if (error_ == 0) {
    error_ = error;
  }
}

void Talk::TakeLabel(const char* label, bool found) { labels_[label] |= found; }

bool Talk::IsSilent(unsigned long request) const {
  const auto answer = requests_.find(request);
  return answer != requests_.end() && !answer->second.Given;
}

bool Talk::Gave(const Feed& feed) const {
  switch (feed.Needs) {
    case Part::kOpened:
      return reached_;
    case Part::kRequest:
    case Part::kStatistic: {
      const auto answer = requests_.find(feed.Request);
      return answer != requests_.end() && answer->second.Given && !answer->second.Lost;
    }
    case Part::kElement: {
      const auto element = static_cast<std::size_t>(feed.Element);
      return element < elements_.size() && elements_[element] == feed.Element;
    }
    case Part::kLabel: {
      const auto label = labels_.find(feed.Label);
      return reached_ && (label == labels_.end() || label->second) &&
             !unreadable_.contains(feed.Label);
    }
    case Part::kRow: {
      const auto row = labels_.find(interface_);
      return row != labels_.end() && row->second;
    }
    default:
      return delivered_ && !Failed() && !unreadable_.contains("");
  }
}

void Talk::Judge(const std::vector<const Talk*>& talks, Source* source) {
  if (talks.empty()) {
    return;
  }
  std::size_t requests = 0;
  std::vector<std::string> silent;
  std::set<std::string> labels;
  std::set<std::string> missing;
  std::set<std::string> unreadable;
  source->State = SourceState::kOk;
  for (const Talk* const talk : talks) {
    if (talk->Failed()) {
      source->State = talk->words_.empty() ? StateOf(talk->error_) : SourceState::kFailed;
      source->Error = talk->error_;
      source->Reason = talk->words_.empty() ? WordsOf(talk->error_) : talk->words_;
      return;
    }
    for (const auto& [request, answer] : talk->requests_) {
      ++requests;
      if (!answer.Given) {
        silent.push_back(WithFields(request, *talk));
        source->Error = source->Error == 0 ? talk->silent_error_ : source->Error;
      }
    }
    unreadable.insert(talk->unreadable_.begin(), talk->unreadable_.end());
    for (const auto& [label, found] : talk->labels_) {
      labels.insert(label);
      if (!found) {
        missing.insert(label);
      }
    }
  }
  if (!silent.empty()) {
    source->State = SourceState::kNoAnswer;
    source->Reason = Unanswered(silent, requests);
    return;
  }
  const auto empty =
      std::ranges::find_if(talks, [](const Talk* talk) { return !talk->delivered_; });
  if (empty != talks.end()) {
    source->State = (*empty)->regular_ ? SourceState::kEmpty : SourceState::kFailed;
    source->Reason = (*empty)->regular_ ? kNothingInIt : kNotRegular;
  } else if (!missing.empty() || !unreadable.empty()) {
    source->State = SourceState::kMalformed;
    source->Reason = missing.empty() ? "" : Missing(missing, labels.size());
    for (const std::string& label : unreadable) {
      source->Reason += (source->Reason.empty() ? "no value " : "; no value ") +
                        (label.empty() ? "in it" : "after " + Quoted(label));
    }
  }
}

}  // namespace insight
