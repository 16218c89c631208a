// Makes the list of sources out of a cycle's events. Private to this library.
#pragma once

#include <ifaddrs.h>

#include <deque>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "collector/observer.h"
#include "insight/snapshot.h"
#include "insight/source_age.h"
#include "insight/source_database.h"
#include "insight/source_talk.h"

namespace insight {

// The Reason of the carrier of an interface that has an address and no link.
inline constexpr char kNoLink[] = "no link";
inline constexpr char kSwitchedOff[] = "switched off";
// An interface is missing that comes before another one; its name follows.
inline constexpr char kNoDevice[] = "no device ";
// The routes name no interface that is in use as the way to everywhere else.
inline constexpr char kNoRoute[] = "no default route";

class SourceRecorder {
 public:
  // Of the cycle that begins.
  void BeginCycle();
  void See(const observe::Event& event);

  // What the sources of the cycle gave, and the database's state. `document` is what came of it.
  std::vector<Source> EndCycle(const QtSts::DocumentTree& document, DatabaseState* database);

 private:
  void SeeAnswer(const observe::Answers& answer);
  void SeeLabel(const observe::Label& label);
  void SeeAddress(const observe::Answers& answer);
  void SeeInterfaces(const ifaddrs* first);

  // Who is asked; null for what is no source.
  Talk* TalkOf(const observe::Asks& question);
  Talk* TalkOfPath(const std::string& path);
  Talk* TalkWith(const SourceInfo& source);

  Source Assemble(const SourceInfo& info, const std::string& interface,
                  const QtSts::DocumentTree& document) const;
  // The first one that comes before an interface of the system; "" when none is missing.
  std::string MissingInterface() const;
  // Of the carriers of interfaces that have an address, but are not in use.
  void AddUnusedLinks(std::vector<Source>* sources) const;
  // Adds what a silent request spoils.
  void AddSpoiled(const Feed& feed, const QtSts::DocumentTree& document, Source* source) const;
  // What the source of `feed` answered in its probe, about this interface if it is about one; null
  // when it was not asked.
  const Talk* TalkFor(const Feed& feed, const std::string& interface) const;
  bool WasFed(const Feed& feed, const std::string& interface) const;
  // Sets what kept `source` from being asked in the probe of `feed`, if it was.
  void Explain(const Feed& feed, const std::string& interface, Source* source) const;

  DatabaseRecorder database_;
  DatabaseAge age_;

  std::deque<Talk> talks_;  // in the order in which they began
  Talk* last_ = nullptr;    // the one that was asked last in this probe
  std::string probe_;
  std::span<const Feed> feeds_;                 // of this probe
  std::map<std::string, const Talk*> last_of_;  // the same when the probe ended

  std::string interface_;                         // that the network probe is at
  std::vector<std::string> interfaces_;           // in the order in which it came to them
  int addresses_ = 0;                             // that were written for the entry that it is at
  int family_ = 0;                                // of the entry
  std::set<std::string> written_;                 // "eth0/IPv4Address"
  std::map<std::string, std::size_t> positions_;  // of the devices, by interface
  std::map<std::string, unsigned> addressed_;     // flags of the interfaces that have an address
  std::set<std::string> listed_;                  // all interfaces that the system has
  bool routed_ = false;                           // an interface in use has a default route
};

}  // namespace insight
