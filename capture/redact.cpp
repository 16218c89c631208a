#include "capture/redact.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "capture/recorder.h"
#include "hardware/parse_network.h"
#include "hardware/paths.h"
#include "model/document.h"
#include "model/xml.h"

namespace capture {
namespace {

namespace paths = hardware::paths;

constexpr std::string_view kGuid = " GUID=\"";
// Of a row, in bytes, as a handler gets it.
constexpr std::size_t kLongestKey = 127;
constexpr std::size_t kLongestValue = 511;
const std::string kMark(1, '\0');  // stands in no document

// The attribute that begins with `name`, with its value; "" when there is none.
std::string AttributeIn(const std::string& document, std::string_view name) {
  const std::size_t begin = document.find(name);
  const std::size_t end = document.find('"', begin + name.size());
  return begin == std::string::npos || end == std::string::npos
             ? ""
             : document.substr(begin, end + 1 - begin);
}

// How a document writes `guid`.
std::string GuidAttribute(const std::string& guid) {
  QtSts::CStatus status;
  status.GUID = guid;
  return AttributeIn(QtSts::WriteDocument(status), kGuid);
}

// As a document has it.
std::string Escaped(const std::string& text) {
  const std::string attribute = GuidAttribute(text);
  return attribute.empty() ? ""
                           : attribute.substr(kGuid.size(), attribute.size() - kGuid.size() - 1);
}

std::string SerialAttribute(std::uint32_t number) {
  return " SerialNumber=\"" + std::to_string(number) + "\"";
}

void ReplaceOnce(const std::string& before, const std::string& now, std::string* text) {
  const std::size_t place = before.empty() ? std::string::npos : text->find(before);
  if (place != std::string::npos) {
    text->replace(place, before.size(), now);
  }
}

bool IsCapital(char c) { return c >= 'A' && c <= 'Z'; }

std::string Small(std::string text) {
  for (char& c : text) {
    c = IsCapital(c) ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return text;
}

}  // namespace

Redaction::Redaction(const Recording& recording, const std::string& host, std::mt19937_64* random)
    : identities_(FindIdentities(recording, host)),
      pseudonyms_(MakePseudonyms(identities_, random)),
      text_(identities_, pseudonyms_) {
  for (const Cycle& cycle : recording.Cycles) {
    if (const auto file = cycle.Files.find(paths::kUuid.Path); file != cycle.Files.end()) {
      for (const Reading& reading : file->second.Readings) {
        AddGuid(reading.Bytes.substr(0, reading.Bytes.find('\0')));
      }
    }
    for (const Row& row : cycle.Rows) {
      if (IsGuid(row)) {
        AddGuid(row.Value->substr(0, kLongestValue));
      }
    }
  }
}

void Redaction::AddGuid(const std::string& text) {
  guids_[GuidAttribute(text)] = GuidAttribute(Guid(text));
}

void Redaction::Apply(Recording* recording) const {
  for (Cycle& cycle : recording->Cycles) {
    Apply(&cycle);
  }
  if (recording->Stopped && recording->Stopped->Last) {
    std::string& source = recording->Stopped->Last->Source;
    source = text_.Words(source);
  }
}

// The names of interfaces have hardware addresses in them, "enx001a2b3c4d5e".
template <class Map>
void Redaction::Rename(Map* map) const {
  Map renamed;
  for (auto& [name, what] : *map) {
    renamed.insert_or_assign(text_.Words(name), std::move(what));
  }
  *map = std::move(renamed);
}

void Redaction::Apply(Cycle* cycle) const {
  const std::vector<Cut> cuts = CutsOf(*cycle);
  for (auto& [path, file] : cycle->Files) {
    for (Reading& reading : file.Readings) {
      reading.Bytes = FileBytes(path, reading.Bytes);
      if (reading.GoesOn || reading.ReadError != 0) {
        reading.Bytes = text_.End(reading.Bytes);
      }
    }
    for (std::string& link : file.Links) {
      link = text_.Text(link);
    }
  }
  for (auto& [path, device] : cycle->Devices) {
    for (auto& [request, answers] : device.Answers) {
      for (Answer& answer : answers) {
        answer.Result = Number(answer.Result);
      }
    }
  }
  Rename(&cycle->Files);
  for (InterfaceEntry& entry : cycle->Interfaces) {
    for (const std::size_t which : {entry::kName, entry::kAddress, entry::kBroadcast}) {
      entry.Texts.at(which) = text_.Text(entry.Texts.at(which));
    }
  }
  for (auto& [interface, address] : cycle->HardwareAddresses) {
    address.Text = text_.Text(address.Text);
  }
  Rename(&cycle->HardwareAddresses);
  for (std::string& interface : cycle->WithoutText) {
    interface = text_.Words(interface);
  }
  for (Row& row : cycle->Rows) {
    Apply(&row);
  }
  for (DatabaseFailure& failure : cycle->Failures) {
    failure.Message = text_.Text(failure.Message);
  }
  if (cycle->Document) {
    cycle->Document = Document(*cycle);
    for (const Cut& cut : cuts) {
      ReplaceCut(cut, &*cycle->Document);
    }
  }
}

// What a handler got of long keys and values, when a value to replace goes on after that.
std::vector<Redaction::Cut> Redaction::CutsOf(const Cycle& cycle) const {
  std::vector<Cut> cuts;
  const auto add = [&](const std::optional<std::string>& text, std::size_t length) {
    if (text && text->size() > length) {
      const std::string now = text_.Text(*text).substr(0, length);
      const Cut cut = {Escaped(text_.Text(text->substr(0, length))), Escaped(now)};
      if (cut.There != cut.Now) {
        cuts.push_back(cut);
      }
    }
  };
  for (const Row& row : cycle.Rows) {
    add(row.Key, kLongestKey);
    add(row.Value, kLongestValue);
  }
  return cuts;
}

// An attribute that has the end of the text has the beginning of the value that was cut.
void Redaction::ReplaceCut(const Cut& cut, std::string* document) {
  constexpr std::size_t kLeast = 5;  // a shorter one may have that from elsewhere
  const auto [there, now] = std::ranges::mismatch(cut.There, cut.Now);
  const std::string_view left(there, cut.There.end());
  const std::string_view instead(now, cut.Now.end());
  for (std::size_t at = document->find("=\""); at != std::string::npos;
       at = document->find("=\"", at)) {
    at += 2;
    const std::size_t end = std::min(document->find('"', at), document->size());
    const std::string_view value = std::string_view(*document).substr(at, end - at);
    if (value.size() >= std::max(kLeast, left.size()) && cut.There.ends_with(value)) {
      document->replace(end - left.size(), left.size(), instead);
    }
  }
}

void Redaction::Apply(Row* row) const {
  if (row->Value) {
    row->Value = IsGuid(*row) ? Guid(*row->Value) : text_.Text(*row->Value);
  }
  if (row->Key) {
    row->Key = text_.Text(*row->Key);
  }
}

// In the letters of the text, which may be the controller's GUID.
std::string Redaction::Guid(const std::string& text) const {
  const std::string own = Trimmed(text);
  const auto made = pseudonyms_.Words.find(Small(own));
  if (made == pseudonyms_.Words.end()) {
    return text_.Text(text);
  }
  std::string now = made->second;
  for (std::size_t i = 0; i < now.size(); ++i) {
    const bool letter = now[i] >= 'a' && now[i] <= 'z';
    now[i] = letter && IsCapital(own[i]) ? static_cast<char>(now[i] - 'a' + 'A') : now[i];
  }
  return now + text_.Text(text.substr(own.size()));
}

std::string Redaction::FileBytes(const std::string& path, const std::string& bytes) const {
  if (path == paths::kUuid.Path) {
    return Guid(bytes);
  }
  const std::string own = Trimmed(bytes);
  if (path == paths::kSerial.Path && own == identities_.Serial) {
    return pseudonyms_.Serial + text_.Text(bytes.substr(own.size()));
  }
  return text_.Text(bytes);
}

std::int64_t Redaction::Number(std::int64_t number) const {
  const auto made = text_.Number(static_cast<std::uint32_t>(number));
  return made ? static_cast<std::int32_t>(*made) : number;
}

// Most of it follows where a text is replaced in source and document; the rest is what the
// collector makes of a text.
std::string Redaction::Document(const Cycle& cycle) const {
  std::string document = *cycle.Document;
  ReplaceGuid(&document);
  // Not also as a number, which may be short.
  const std::string serial = SerialAttribute(pseudonyms_.OldSerialNumber);
  const bool had_serial = document.find(serial) != std::string::npos;
  ReplaceOnce(serial, kMark, &document);
  document = text_.Text(document);
  if (had_serial) {
    ReplaceOnce(kMark, SerialAttribute(pseudonyms_.SerialNumber), &document);
  }
  ReplaceNameServers(cycle, &document);
  return document;
}

// A document writes some characters otherwise.
void Redaction::ReplaceGuid(std::string* document) const {
  const std::string there = AttributeIn(*document, kGuid);
  if (const auto known = guids_.find(there); known != guids_.end()) {
    ReplaceOnce(there, known->second, document);
  }
}

// Of an address with other characters than digits and dots a document has the beginning.
void Redaction::ReplaceNameServers(const Cycle& cycle, std::string* document) {
  const auto file = cycle.Files.find(paths::kResolver.Path);
  if (file == cycle.Files.end() || file->second.Readings.empty()) {
    return;
  }
  constexpr std::string_view kBefore = " Address=\"";
  std::size_t at = 0;
  for (const std::string& server :
       hardware::ParseNameServers(file->second.Readings.back().Bytes.c_str())) {
    at = document->find("<Address Index=", at);
    const std::size_t begin = document->find(kBefore, at);
    if (at == std::string::npos || begin == std::string::npos) {
      return;
    }
    at = begin + kBefore.size();
    document->replace(at, document->find('"', at) - at, server);
  }
}

std::vector<Replaced> Redaction::List() const {
  std::vector<Replaced> list;
  for (const auto& [word, about] : identities_.Words) {
    list.push_back({about.Kind, pseudonyms_.Words.at(word)});
  }
  if (pseudonyms_.Serial != identities_.Serial) {
    list.push_back({"serial number", pseudonyms_.Serial});
  }
  for (const auto& pair : pseudonyms_.Version4) {
    list.push_back({"IPv4 address", TextOf(pair.second)});
  }
  for (const auto& pair : pseudonyms_.Version6) {
    list.push_back({"IPv6 address", TextOf(pair.second)});
  }
  for (const auto& [before, now] : pseudonyms_.Stations) {
    list.push_back({"hardware address", InTheSpellingOf("AA:AA:AA:AA:AA:AA", now)});
  }
  return list;
}

// What would be replaced once more is left, or a pseudonym is by chance what something else is.
void Redaction::Check(const Entries& contents) const {
  for (const auto& [name, entry] : contents) {
    const bool numbers = name != "capture.json" && !name.ends_with("uptime");
    const std::string again = numbers ? text_.Text(entry.Bytes) : text_.Words(entry.Bytes);
    if (again != entry.Bytes || text_.Words(name) != name) {
      throw std::runtime_error("not everything could be replaced in " + name +
                               "; capture once more");
    }
  }
}

}  // namespace capture
