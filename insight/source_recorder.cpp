#include "insight/source_recorder.h"

#include <net/if.h>
#include <netinet/in.h>
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

// An address that somebody has given to the interface: the system itself gives loopback addresses
// and those that hold on one link only.
bool IsOwnAddress(const ifaddrs& entry) {
  if (entry.ifa_addr == nullptr || (entry.ifa_flags & IFF_LOOPBACK) != 0) {
    return false;
  }
  if (entry.ifa_addr->sa_family == AF_INET6) {
    sockaddr_in6 address;
    std::memcpy(&address, entry.ifa_addr, sizeof address);
    return !IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr);
  }
  return entry.ifa_addr->sa_family == AF_INET;
}

std::string IdOf(const SourceInfo& info, const std::string& interface) {
  return info.Bound ? std::string(info.Id) + ':' + interface : info.Id;
}

}  // namespace

void SourceRecorder::BeginCycle() {
  database_.BeginCycle();
  talks_.clear();
  last_ = nullptr;
  probe_.clear();
  feeds_ = {};
  last_of_.clear();
  interface_.clear();
  interfaces_.clear();
  written_.clear();
  positions_.clear();
  addressed_.clear();
  listed_.clear();
  routed_ = false;
}

void SourceRecorder::See(const observe::Event& event) {
  if (const auto* const answers = event.As<observe::Answers>()) {
    SeeAnswer(*answers);
  } else if (const auto* const label = event.As<observe::Label>()) {
    SeeLabel(*label);
  } else if (const auto* const begins = event.As<observe::ProbeBegins>()) {
    probe_ = begins->Probe;
    feeds_ = FeedsOf(probe_);
    last_ = nullptr;
  } else if (event.As<observe::ProbeEnds>() != nullptr) {
    last_of_[probe_] = last_;
    probe_.clear();
    feeds_ = {};
  } else {
    database_.See(event);
  }
}

void SourceRecorder::SeeAnswer(const observe::Answers& answer) {
  if (probe_.empty()) {
    return;
  }
  if (answer.Question->What == Call::kHostText) {
    SeeAddress(answer);
  } else if (answer.Question->What == Call::kInterfaces) {
    SeeInterfaces(answer.Interfaces);
  }
  if (Talk* const talk = TalkOf(*answer.Question)) {
    last_ = talk;
    talk->Take(answer);
  }
}

void SourceRecorder::SeeLabel(const observe::Label& label) {
  if (!label.Readable && *label.Text == '\0') {
    if (last_ != nullptr) {
      last_->TakeUnreadable(label.Text);
    }
    return;
  }
  const auto feed = std::ranges::find_if(feeds_, [&](const Feed& row) {
    return row.Needs == Part::kLabel && Is(row.Label, label.Text);
  });
  if (feed != feeds_.end()) {
    Talk* const talk = TalkWith(SourceNamed(feed->Source));
    talk->TakeLabel(label.Text, label.Found);
    if (!label.Readable) {
      talk->TakeUnreadable(label.Text);
    }
  } else if (last_ != nullptr && Is(last_->Asked().Id, "link-counters")) {
    last_->TakeLabel(label.Text, label.Found);
  } else if (last_ != nullptr && Is(last_->Asked().Id, "routes")) {
    // An interface that the routes do not name has no gateway: that is an answer, too.
    routed_ = routed_ || label.Found;
  }
}

// Of an entry with an IPv4 address the mask comes second, and third what the document has not.
void SourceRecorder::SeeAddress(const observe::Answers& answer) {
  interface_ = BaseOf(answer.Question->Source);
  if (addresses_ == 0 && answer.Question->Address != nullptr) {
    family_ = answer.Question->Address->sa_family;
  }
  const int number = addresses_++;
  if (answer.Result != 0) {
    return;
  }
  if (family_ == AF_INET6) {
    written_.insert(interface_ + "/IPv6Address");
  } else if (number < 2) {
    written_.insert(interface_ + (number == 0 ? "/IPv4Address" : "/Netmask"));
  }
}

void SourceRecorder::SeeInterfaces(const ifaddrs* first) {
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    listed_.insert(BaseOf(entry->ifa_name));
    if (IsOwnAddress(*entry)) {
      addressed_[BaseOf(entry->ifa_name)] = entry->ifa_flags;
    }
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
  for (const Feed& feed : feeds_) {
    const SourceInfo& source = SourceNamed(feed.Source);
    if (source.Name == path) {
      return TalkWith(source);
    }
    const std::string interface = Is(source.Id, "carrier") ? InterfaceIn(source.Name, path) : "";
    if (!interface.empty()) {
      interface_ = BaseOf(interface.c_str());
      addresses_ = 0;
      // An alias has no carrier of its own.
      return interface_ == interface ? TalkWith(source) : nullptr;
    }
    if (source.Trusted) {
      walked = &source;
    }
  }
  // A name on the way to the file, or the file itself once more.
  return walked == nullptr || path.starts_with("/proc/thread-self/fd/") ? last_ : TalkWith(*walked);
}

Talk* SourceRecorder::TalkWith(const SourceInfo& source) {
  const bool about_interface = source.Bound || Is(source.Id, "routes");
  const std::string interface = about_interface ? interface_ : "";
  if (about_interface && std::ranges::find(interfaces_, interface) == interfaces_.end()) {
    interfaces_.push_back(interface);
  }
  const auto same = std::ranges::find_if(talks_, [&](const Talk& talk) {
    return &talk.Asked() == &source && talk.Interface() == interface && talk.Probe() == probe_;
  });
  return same != talks_.end() ? &*same : &talks_.emplace_back(source, interface, probe_);
}

std::vector<Source> SourceRecorder::EndCycle(const QtSts::DocumentTree& document,
                                             DatabaseState* database) {
  for (const QtSts::TreeElement& device : document.Root().Find("Network/Devices")->Children()) {
    positions_.insert({std::string(device.FindValue("Name")->Text()), device.Position()});
  }
  std::vector<Source> sources;
  for (const SourceInfo& info : SourceTable()) {
    if (Is(info.Id, kDatabaseId)) {
      sources.push_back(database_.EndCycle());
    } else if (!info.Bound) {
      sources.push_back(Assemble(info, "", document));
    } else {
      for (const std::string& interface : interfaces_) {
        // Without a link nothing but the carrier is asked.
        if (Is(info.Id, "carrier") || positions_.contains(interface)) {
          sources.push_back(Assemble(info, interface, document));
        }
      }
    }
  }
  AddUnusedLinks(&sources);
  age_.Look(database);
  return sources;
}

// The system numbers such interfaces from 0; other names, such as enp3s0, have no order.
std::string SourceRecorder::MissingInterface() const {
  for (const std::string family : {"eth", "wlan"}) {
    const auto is_there = [&](char digit) { return listed_.contains(family + digit); };
    for (char digit = '0'; digit < '9'; ++digit) {
      for (char later = digit; !is_there(digit) && later <= '9'; ++later) {
        if (is_there(later)) {
          return family + digit;
        }
      }
    }
  }
  return "";
}

void SourceRecorder::AddUnusedLinks(std::vector<Source>* sources) const {
  const SourceInfo& carrier = SourceNamed("carrier");
  for (const auto& [interface, flags] : addressed_) {
    const bool runs = (flags & IFF_RUNNING) != 0;
    const bool asked = std::ranges::find(interfaces_, interface) != interfaces_.end();
    // After the carrier nothing is asked about an interface that has none.
    const bool used = std::ranges::any_of(talks_, [&, &name = interface](const Talk& talk) {
      return talk.Interface() == name && &talk.Asked() != &carrier;
    });
    if (used || (runs && !asked)) {
      continue;
    }
    const std::string id = IdOf(carrier, interface);
    auto source = std::ranges::find(*sources, id, &Source::Id);
    if (source == sources->end()) {
      const auto next = std::ranges::find_if(
          *sources, [](const Source& other) { return other.Id == "interfaces"; });
      source = sources->insert(next + 1, Source());
      source->Id = id;
      source->Name = Replaced(carrier.Name, kInterfaceMark, interface);
    }
    source->Reason = (flags & IFF_UP) != 0 ? kNoLink : kSwitchedOff;
  }
}

Source SourceRecorder::Assemble(const SourceInfo& info, const std::string& interface,
                                const QtSts::DocumentTree& document) const {
  Source source;
  source.Id = IdOf(info, interface);
  source.Name = Replaced(info.Name, kInterfaceMark, interface);
  source.Required = info.Required;
  std::vector<const Talk*> talks;
  for (const Talk& talk : talks_) {
    if (&talk.Asked() == &info && (!info.Bound || talk.Interface() == interface)) {
      talks.push_back(&talk);
    }
  }
  Talk::Judge(talks, &source);
  if (Is(info.Id, "interfaces") && source.State == SourceState::kOk && interfaces_.empty()) {
    source.State = SourceState::kEmpty;
    source.Reason = "no interface runs";
  } else if (Is(info.Id, "interfaces") && source.State == SourceState::kOk &&
             !MissingInterface().empty()) {
    source.Reason = kNoDevice + MissingInterface();
  } else if (Is(info.Id, "routes") && source.State == SourceState::kOk && !routed_) {
    source.Reason = kNoRoute;
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
    for (const auto& [name, position] : positions_) {
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
  const auto talk = std::ranges::find_if(talks_, [&](const Talk& candidate) {
    return Is(candidate.Asked().Id, feed.Source) && candidate.Probe() == feed.Probe &&
           (candidate.Interface().empty() || candidate.Interface() == interface);
  });
  return talk == talks_.end() ? nullptr : &*talk;
}

bool SourceRecorder::WasFed(const Feed& feed, const std::string& interface) const {
  switch (feed.Needs) {
    case Part::kInterfaces:
      return !interfaces_.empty();
    case Part::kAddress:
      return written_.contains(interface + std::strrchr(feed.Field, '/'));
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
  const auto last = last_of_.find(feed.Probe);
  if (last == last_of_.end() || last->second == nullptr) {
    return;
  }
  const Talk& stopped = *last->second;
  if (stopped.Failed() || (Is(feed.Probe, kNetwork) && interfaces_.empty())) {
    source->StoppedBy = IdOf(stopped.Asked(), stopped.Interface());
  } else if (source->State == SourceState::kNotAsked) {
    source->Reason = "no IPv4 address";
  }
}

}  // namespace insight
