// What one source answered in one probe. Private to this library.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "collector/observer.h"
#include "insight/snapshot.h"
#include "insight/source_table.h"

namespace insight {

class Talk {
 public:
  // `interface`: the one that it is about, "" for none.
  Talk(const SourceInfo& source, std::string interface, std::string probe);

  const SourceInfo& Asked() const { return *m_Source; }
  const std::string& Interface() const { return m_Interface; }
  const std::string& Probe() const { return m_Probe; }

  void Take(const observe::Answers& answer);
  void TakeLabel(const char* label, bool found);

  // Whether the source gave what a field needs. Addresses are not known here.
  bool Gave(const Feed& feed) const;

  bool IsSilent(unsigned long request) const;

  // It failed as a whole; the probe may have ended with that.
  bool Failed() const { return m_Error != 0 && (!m_Delivered || m_Broken); }

  // What all talks with one source come to: state, errno and words. `source` has its defaults.
  static void Judge(const std::vector<const Talk*>& talks, Source* source);

 private:
  void TakeOpen(const observe::Answers& answer);
  void TakeRequest(const observe::Answers& answer);
  void TakeResult(const observe::Answers& answer);
  void Fail(int error);

  const SourceInfo* m_Source;
  std::string m_Interface;
  std::string m_Probe;

  bool m_Reached = false;    // it could be opened once
  bool m_Opened = false;     // the last time
  bool m_Regular = true;     // it is a file that can be read
  bool m_Delivered = false;  // something was read, or the call has succeeded
  bool m_Broken = false;     // after that something failed
  int m_Error = 0;
  std::string m_Words;  // of the failure, where errno does not say it

  struct Answer {
    bool Given;
    bool Lost;  // it was not stored
  };
  std::map<unsigned long, Answer> m_Requests;
  int m_SilentError = 0;        // errno of the first request without an answer
  std::vector<int> m_Elements;  // of the output's statistics: the number that each was made for
  std::map<std::string, bool, std::less<>> m_Labels;  // looked for: found
};

}  // namespace insight
