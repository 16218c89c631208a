// Takes what identifies a controller out of a recording.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "capture/contents.h"
#include "capture/pseudonyms.h"
#include "capture/recording.h"
#include "capture/text_redactor.h"

namespace capture {

// What one controller is called, and what it is called instead.
class Redaction {
 public:
  // Looks for it in all that was recorded; `host` is the name of the machine. Throws
  // std::runtime_error when there are too many addresses.
  Redaction(const Recording& recording, const std::string& host, std::mt19937_64* random);
  Redaction(const Redaction&) = delete;
  Redaction& operator=(const Redaction&) = delete;

  // Replaces all of it in files, rows, answers, interfaces, messages and documents, so that each
  // document is the one that follows from the sources as they are afterwards.
  void Apply(Recording* recording) const;

  // What stands there now.
  std::vector<Replaced> List() const;

  // Throws std::runtime_error when something of it is left in a capture.
  void Check(const Entries& contents) const;

 private:
  // A text in the spelling of documents, as far as a handler got it.
  struct Cut {
    std::string There = {};  // where it is replaced text by text
    std::string Now = {};    // what a handler gets afterwards
  };

  void Apply(Cycle* cycle) const;
  std::vector<Cut> CutsOf(const Cycle& cycle) const;
  static void ReplaceCut(const Cut& cut, std::string* document);
  void Apply(Row* row) const;
  template <class Map>
  void Rename(Map* map) const;
  std::string Guid(const std::string& text) const;
  std::string FileBytes(const std::string& path, const std::string& bytes) const;
  std::int64_t Number(std::int64_t number) const;
  std::string Document(const Cycle& cycle) const;
  void ReplaceGuid(std::string* document) const;
  void AddGuid(const std::string& text);
  static void ReplaceNameServers(const Cycle& cycle, std::string* document);

  const Identities identities_;
  const Pseudonyms pseudonyms_;
  const TextRedactor text_;
  std::map<std::string, std::string> guids_;  // as documents write them, before and now
};

}  // namespace capture
