#include "insight/source_talk.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
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
    : m_Source(&source), m_Interface(std::move(interface)), m_Probe(std::move(probe)) {}

void Talk::Take(const Answers& answer) {
  switch (answer.Question->What) {
    case Call::kOpen:
      TakeOpen(answer);
      break;
    case Call::kFileStatus:
      m_Regular = !m_Opened || answer.Status == nullptr || S_ISREG(answer.Status->st_mode);
      if (answer.Result < 0) {
        Fail(answer.Error);
      }
      break;
    case Call::kRead:
      if (answer.Result > 0) {
        m_Delivered = true;
      } else if (answer.Result < 0 && answer.Error != EINTR) {
        Fail(answer.Error);
      }
      break;
    case Call::kPathStatus:
      if (answer.Result < 0 &&
          !(IsMarker(*m_Source) && StateOf(answer.Error) == SourceState::kMissing)) {
        Fail(answer.Error);
      } else {
        m_Error = 0;
        m_Delivered |= IsMarker(*m_Source);
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
  m_Opened = answer.Result >= 0 && !place;
  if (m_Opened) {
    m_Reached = true;
    m_Regular = true;
    m_Broken = false;
    m_Error = 0;
  } else if (answer.Result < 0) {
    m_Error = answer.Error;
  }
}

void Talk::TakeRequest(const Answers& answer) {
  const unsigned long request = answer.Question->Number;
  const bool given = answer.Result != -1;
  m_Delivered = true;
  if (!given && m_SilentError == 0) {
    m_SilentError = answer.Error;
  }
  bool lost = false;
  const auto feed = std::ranges::find_if(FeedTable(), [&](const Feed& row) {
    return row.Needs == Part::kStatistic && row.Request == request && m_Probe == row.Probe &&
           std::strcmp(row.Source, m_Source->Id) == 0;
  });
  // An answer appends one element at most: without the one before, its own is not there.
  if (feed != FeedTable().end() && given) {
    const auto element = static_cast<std::size_t>(feed->Element);
    if (element >= m_Elements.size()) {
      m_Elements.push_back(feed->Element);
    }
    lost = element >= m_Elements.size();
  }
  m_Requests[request] = {given, lost};
}

void Talk::TakeResult(const Answers& answer) {
  if (answer.Question->What == Call::kHostText) {
    if (answer.Result != 0) {
      m_Words = std::string("address of ") + answer.Question->Source + ": " +
                gai_strerror(static_cast<int>(answer.Result));
      Fail(answer.Error == 0 ? EINVAL : answer.Error);
    }
  } else if (answer.Result < 0) {
    Fail(answer.Error);
  } else if (answer.Question->What != Call::kSocket) {
    m_Delivered = true;
  }
}

void Talk::Fail(int error) {
  m_Broken = true;
  if (m_Error == 0) {
    m_Error = error;
  }
}

void Talk::TakeLabel(const char* label, bool found) { m_Labels[label] |= found; }

bool Talk::IsSilent(unsigned long request) const {
  const auto answer = m_Requests.find(request);
  return answer != m_Requests.end() && !answer->second.Given;
}

bool Talk::Gave(const Feed& feed) const {
  switch (feed.Needs) {
    case Part::kOpened:
      return m_Reached;
    case Part::kRequest:
    case Part::kStatistic: {
      const auto answer = m_Requests.find(feed.Request);
      return answer != m_Requests.end() && answer->second.Given && !answer->second.Lost;
    }
    case Part::kElement: {
      const auto element = static_cast<std::size_t>(feed.Element);
      return element < m_Elements.size() && m_Elements[element] == feed.Element;
    }
    case Part::kLabel: {
      const auto label = m_Labels.find(feed.Label);
      return m_Reached && (label == m_Labels.end() || label->second);
    }
    case Part::kRow: {
      const auto row = m_Labels.find(m_Interface);
      return row != m_Labels.end() && row->second;
    }
    default:
      return m_Delivered && !Failed();
  }
}

void Talk::Judge(const std::vector<const Talk*>& talks, Source* source) {
  if (talks.empty()) {
    return;
  }
  std::size_t requests = 0;
  std::size_t silent = 0;
  std::set<std::string> labels;
  std::set<std::string> missing;
  source->State = SourceState::kOk;
  for (const Talk* const talk : talks) {
    if (talk->Failed()) {
      source->State = talk->m_Words.empty() ? StateOf(talk->m_Error) : SourceState::kFailed;
      source->Error = talk->m_Error;
      source->Reason = talk->m_Words.empty() ? WordsOf(talk->m_Error) : talk->m_Words;
      return;
    }
    for (const auto& [request, answer] : talk->m_Requests) {
      ++requests;
      silent += answer.Given ? 0 : 1;
      if (!answer.Given && source->Error == 0) {
        source->Error = talk->m_SilentError;
      }
    }
    for (const auto& [label, found] : talk->m_Labels) {
      labels.insert(label);
      if (!found) {
        missing.insert(label);
      }
    }
  }
  if (silent > 0) {
    source->State = SourceState::kNoAnswer;
    source->Reason =
        "no answer to " + std::to_string(silent) + " of " + std::to_string(requests) + " requests";
    return;
  }
  const auto empty =
      std::ranges::find_if(talks, [](const Talk* talk) { return !talk->m_Delivered; });
  if (empty != talks.end()) {
    source->State = SourceState::kEmpty;
    source->Reason = (*empty)->m_Regular ? "nothing in it" : "not a regular file";
  } else if (!missing.empty()) {
    source->State = SourceState::kMalformed;
    source->Reason = Missing(missing, labels.size());
  }
}

}  // namespace insight
