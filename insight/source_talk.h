// What one source answered in one probe. Private to this library.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "collector/observer.h"
#include "insight/snapshot.h"
#include "insight/source_table.h"

namespace insight {

// What the Reason of a source without an answer to some or all requests begins with.
inline constexpr char kNoAnswerTo[] = "no answer to ";

// The Reason of one that is empty.
inline constexpr char kNothingInIt[] = "nothing in it";
// The Reason of one that is a folder, a pipe or a device, which is not read.
inline constexpr char kNotRegular[] = "not a regular file";

class Talk {
 public:
  // `interface`: the one that it is about, "" for none.
  Talk(const SourceInfo& source, std::string interface, std::string probe);

  const SourceInfo& Asked() const { return *source_; }
  const std::string& Interface() const { return interface_; }
  const std::string& Probe() const { return probe_; }

  void Take(const observe::Answers& answer);
  void TakeLabel(const char* label, bool found);
  // No value follows the label; "": there is none in what was read.
  void TakeUnreadable(const char* label) { unreadable_.insert(label); }

  // Whether the source gave what a field needs. Addresses are not known here.
  bool Gave(const Feed& feed) const;

  bool IsSilent(unsigned long request) const;

  // It failed as a whole; the probe may have ended with that.
  bool Failed() const { return error_ != 0 && (!delivered_ || broken_); }

  // What all talks with one source come to: state, errno and words. `source` has its defaults.
  static void Judge(const std::vector<const Talk*>& talks, Source* source);

 private:
  void TakeOpen(const observe::Answers& answer);
  void TakeRequest(const observe::Answers& answer);
  void TakeResult(const observe::Answers& answer);
  void Fail(int error);

  const SourceInfo* source_;
  std::string interface_;
  std::string probe_;

  bool reached_ = false;    // it could be opened once
  bool opened_ = false;     // the last time
  bool regular_ = true;     // it is a file that can be read
  bool delivered_ = false;  // something was read, or the call has succeeded
  bool broken_ = false;     // after that something failed
  int error_ = 0;
  std::string words_;  // of the failure, where errno does not say it

  struct Answer {
    bool Given;
    bool Lost;  // it was not stored
  };
  std::map<unsigned long, Answer> requests_;
  int silent_error_ = 0;       // errno of the first request without an answer
  std::vector<int> elements_;  // of the output's statistics: the number that each was made for
  std::map<std::string, bool, std::less<>> labels_;  // looked for: found
  std::set<std::string, std::less<>> unreadable_;    // found, but without a value
};

}  // namespace insight
