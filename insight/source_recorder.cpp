#include "insight/source_recorder.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>

#include "insight/source_table.h"

namespace insight {
namespace {

using observe::Call;

constexpr char kNetwork[] = "Network";
constexpr char kNumberMark[] = "%d";
constexpr char kInterfaceMark[] = "%s";

bool Is(const char* text, const char* wanted) { return std::strcmp(text, wanted) == 0; }

// The name without an alias's suffix.
std::string BaseOf(const char* interface) { return {interface, std::strcspn(interface, ":")}; }

std::string Replaced(std::string text, const char* mark, const std::string& with) {
  const std::size_t place = text.find(mark);
  return place == std::string::npos ? text : text.replace(place, std::strlen(mark), with);
}

// The interface for which `name`, with its mark, is this path; "" when it is not.
std::string InterfaceIn(const std::string& name, const std::string& path) {
  const std::size_t mark = name.find(kInterfaceMark);
  const std::string_view before = std::string_view(name).substr(0, mark);
  const std::string_view after = std::string_view(name).substr(mark + std::strlen(kInterfaceMark));
  if (path.size() <= before.size() + after.size() || !path.starts_with(before) ||
      !path.ends_with(after)) {
    return "";
  }
  return path.substr(before.size(), path.size() - before.size() - after.size());
}

void AddOnce(const std::string& path, std::vector<std::string>* paths) {
  if (std::ranges::find(*paths, path) == paths->end()) {
    paths->push_back(path);
  }
}

std::string IdOf(const SourceInfo& info, const std::string& interface) {
  return info.Bound ? std::string(info.Id) + ':' + interface : info.Id;
}

}  // namespace

void SourceRecorder::BeginCycle() {
  m_Database.BeginCycle();
  m_Talks.clear();
  m_Last = nullptr;
  m_Probe.clear();
  m_LastOf.clear();
  m_Interface.clear();
  m_Interfaces.clear();
  m_Written.clear();
  m_Positions.clear();
}

void SourceRecorder::See(const observe::Event& event) {
  if (const auto* const answers = event.As<observe::Answers>()) {
    SeeAnswer(*answers);
  } else if (const auto* const label = event.As<observe::Label>()) {
    SeeLabel(*label);
  } else if (const auto* const begins = event.As<observe::ProbeBegins>()) {
    m_Probe = begins->Probe;
    m_Last = nullptr;
  } else if (event.As<observe::ProbeEnds>() != nullptr) {
    m_LastOf[m_Probe] = m_Last;
    m_Probe.clear();
  } else {
    m_Database.See(event);
  }
}

void SourceRecorder::SeeAnswer(const observe::Answers& answer) {
  if (m_Probe.empty()) {
    return;
  }
  if (answer.Question->What == Call::kHostText) {
    SeeAddress(answer);
  }
  if (Talk* const talk = TalkOf(*answer.Question)) {
    m_Last = talk;
    talk->Take(answer);
  }
}

void SourceRecorder::SeeLabel(const observe::Label& label) {
  const auto feed = std::ranges::find_if(FeedTable(), [&](const Feed& row) {
    return row.Needs == Part::kLabel && m_Probe == row.Probe && Is(row.Label, label.Text);
  });
  if (feed != FeedTable().end()) {
    TalkWith(SourceNamed(feed->Source))->TakeLabel(label.Text, label.Found);
  } else if (m_Last != nullptr && Is(m_Last->Asked().Id, "link-counters")) {
    // An interface that the routes do not name has no gateway: that is an answer, too.
    m_Last->TakeLabel(label.Text, label.Found);
  }
}

// Of an entry with an IPv4 address the mask comes second, and third what the document has not.
void SourceRecorder::SeeAddress(const observe::Answers& answer) {
  m_Interface = BaseOf(answer.Question->Source);
  if (m_Addresses == 0 && answer.Question->Address != nullptr) {
    m_Family = answer.Question->Address->sa_family;
  }
  const int number = m_Addresses++;
  if (answer.Result != 0) {
    return;
  }
  if (m_Family == AF_INET6) {
    m_Written.insert(m_Interface + "/IPv6Address");
  } else if (number < 2) {
    m_Written.insert(m_Interface + (number == 0 ? "/IPv4Address" : "/Netmask"));
  }
}

Talk* SourceRecorder::TalkOf(const observe::Asks& question) {
  switch (question.What) {
    case Call::kInterfaces:
    case Call::kHostText:
      return TalkWith(SourceNamed("interfaces"));
    case Call::kSocket:
    case Call::kHardwareAddress:
      return TalkWith(SourceNamed("hardware-address"));
    case Call::kStorage:
      return TalkWith(SourceNamed("storage"));
    case Call::kSystem:
      return TalkWith(SourceNamed("sysinfo"));
    case Call::kTime:
    case Call::kLocalTime:
    case Call::kUtcTime:
      return TalkWith(SourceNamed("clock"));
    default:
      return TalkOfPath(question.Source);
  }
}

Talk* SourceRecorder::TalkOfPath(const std::string& path) {
  const SourceInfo* walked = nullptr;
  for (const Feed& feed : FeedTable()) {
    if (m_Probe != feed.Probe) {
      continue;
    }
    const SourceInfo& source = SourceNamed(feed.Source);
    if (source.Name == path) {
      return TalkWith(source);
    }
    const std::string interface = Is(source.Id, "carrier") ? InterfaceIn(source.Name, path) : "";
    if (!interface.empty()) {
      m_Interface = BaseOf(interface.c_str());
      m_Addresses = 0;
      // An alias has no carrier of its own.
      return m_Interface == interface ? TalkWith(source) : nullptr;
    }
    if (source.Trusted) {
      walked = &source;
    }
  }
  // A name on the way to the file, or the file itself once more.
  return walked == nullptr || path.starts_with("/proc/thread-self/fd/") ? m_Last
                                                                        : TalkWith(*walked);
}

Talk* SourceRecorder::TalkWith(const SourceInfo& source) {
  const bool about_interface = source.Bound || Is(source.Id, "routes");
  const std::string interface = about_interface ? m_Interface : "";
  if (about_interface && std::ranges::find(m_Interfaces, interface) == m_Interfaces.end()) {
    m_Interfaces.push_back(interface);
  }
  const auto same = std::ranges::find_if(m_Talks, [&](const Talk& talk) {
    return &talk.Asked() == &source && talk.Interface() == interface && talk.Probe() == m_Probe;
  });
  return same != m_Talks.end() ? &*same : &m_Talks.emplace_back(source, interface, m_Probe);
}

std::vector<Source> SourceRecorder::EndCycle(const QtSts::DocumentTree& document,
                                             DatabaseState* database) {
  for (const QtSts::TreeElement& device : document.Root().Find("Network/Devices")->Children()) {
    m_Positions.insert({std::string(device.FindValue("Name")->Text()), device.Position()});
  }
  std::vector<Source> sources;
  for (const SourceInfo& info : SourceTable()) {
    if (Is(info.Id, kDatabaseId)) {
      sources.push_back(m_Database.EndCycle());
    } else if (!info.Bound) {
      sources.push_back(Assemble(info, "", document));
    } else {
      for (const std::string& interface : m_Interfaces) {
        // Without a link nothing but the carrier is asked.
        if (Is(info.Id, "carrier") || m_Positions.contains(interface)) {
          sources.push_back(Assemble(info, interface, document));
        }
      }
    }
  }
  m_Age.Look(database);
  return sources;
}

Source SourceRecorder::Assemble(const SourceInfo& info, const std::string& interface,
                                const QtSts::DocumentTree& document) const {
  Source source;
  source.Id = IdOf(info, interface);
  source.Name = Replaced(info.Name, kInterfaceMark, interface);
  source.Required = info.Required;
  std::vector<const Talk*> talks;
  for (const Talk& talk : m_Talks) {
    if (&talk.Asked() == &info && (!info.Bound || talk.Interface() == interface)) {
      talks.push_back(&talk);
    }
  }
  Talk::Judge(talks, &source);
  if (Is(info.Id, "interfaces") && source.State == SourceState::kOk && m_Interfaces.empty()) {
    source.State = SourceState::kEmpty;
    source.Reason = "no interface runs";
  }

  const auto add = [&](const Feed& feed, const std::string& field, const std::string& of) {
    if (field.empty()) {
      return;
    }
    AddOnce(field, &source.Fields);
    if (!WasFed(feed, of)) {
      AddOnce(field, &source.Unfed);
      Explain(feed, of, &source);
    }
  };
  for (const Feed& feed : FeedTable()) {
    if (!Is(feed.Source, info.Id)) {
      continue;
    }
    if (source.State == SourceState::kNotAsked) {
      Explain(feed, interface, &source);
    }
    if (feed.Needs == Part::kSpoils) {
      AddSpoiled(feed, document, &source);
      continue;
    }
    if (std::strstr(feed.Field, kNumberMark) == nullptr) {
      add(feed, feed.Field, interface);
      continue;
    }
    for (const auto& [name, position] : m_Positions) {
      if (!info.Bound || name == interface) {
        add(feed, Replaced(feed.Field, kNumberMark, std::to_string(position)), name);
      }
    }
  }
  return source;
}

void SourceRecorder::AddSpoiled(const Feed& feed, const QtSts::DocumentTree& document,
                                Source* source) const {
  const Talk* const talk = TalkFor(feed, "");
  if (talk == nullptr || !talk->IsSilent(feed.Request)) {
    return;
  }
  for (const QtSts::TreeElement& element : document.Elements()) {
    if (const QtSts::TreeValue* const value = element.FindValue(feed.Field)) {
      source->Fields.push_back(element.PathOf(*value));
      source->Unfed.push_back(source->Fields.back());
    }
  }
}

const Talk* SourceRecorder::TalkFor(const Feed& feed, const std::string& interface) const {
  const auto talk = std::ranges::find_if(m_Talks, [&](const Talk& candidate) {
    return Is(candidate.Asked().Id, feed.Source) && candidate.Probe() == feed.Probe &&
           (candidate.Interface().empty() || candidate.Interface() == interface);
  });
  return talk == m_Talks.end() ? nullptr : &*talk;
}

bool SourceRecorder::WasFed(const Feed& feed, const std::string& interface) const {
  switch (feed.Needs) {
    case Part::kInterfaces:
      return !m_Interfaces.empty();
    case Part::kAddress:
      return m_Written.contains(interface + std::strrchr(feed.Field, '/'));
    default: {
      const Talk* const talk = TalkFor(feed, interface);
      return talk != nullptr && talk->Gave(feed);
    }
  }
}

void SourceRecorder::Explain(const Feed& feed, const std::string& interface, Source* source) const {
  if (TalkFor(feed, interface) != nullptr || !source->StoppedBy.empty()) {
    return;
  }
  const auto last = m_LastOf.find(feed.Probe);
  if (last == m_LastOf.end() || last->second == nullptr) {
    return;
  }
  const Talk& stopped = *last->second;
  if (stopped.Failed() || (Is(feed.Probe, kNetwork) && m_Interfaces.empty())) {
    source->StoppedBy = IdOf(stopped.Asked(), stopped.Interface());
  } else if (source->State == SourceState::kNotAsked) {
    source->Reason = "no IPv4 address";
  }
}

}  // namespace insight
