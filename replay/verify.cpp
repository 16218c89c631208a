#include "replay/verify.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "host/document_paths.h"
#include "model/compare.h"
#include "model/tree.h"
#include "model/xml.h"
#include "replay/cycles.h"
#include "sandbox/check.h"
#include "sandbox/descriptor.h"
#include "sandbox/enter.h"

namespace replay {
namespace {

// Fields that are other ones in every replay.
constexpr std::array kAlwaysLeftOut = {"LocalTime", "Uptime", "StorageTotal", "StorageFree"};
constexpr const char* kWholeDocument = "*";

// What a process in the sandbox leaves to the one outside, in memory: records, each a letter, the
// number of its bytes and these.
class Channel {
 public:
  Channel() : file_(sandbox::Check(memfd_create("documents", MFD_CLOEXEC), "make a file")) {}

  void Write(char kind, const std::string& bytes) const {
    std::string record = kind + std::to_string(bytes.size()) + "\n" + bytes;
    for (std::size_t done = 0; done < record.size();) {
      done += static_cast<std::size_t>(sandbox::Check(
          static_cast<int>(write(file_.Number(), record.data() + done, record.size() - done)),
          "keep a document"));
    }
  }

  std::string ReadAll() const {
    std::string text;
    std::array<char, 65536> block;
    for (ssize_t count = 0; (count = pread(file_.Number(), block.data(), block.size(),
                                           static_cast<off_t>(text.size()))) > 0;) {
      text.append(block.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  sandbox::Descriptor file_;
};

constexpr char kDocument = 'D';
constexpr char kTrouble = 'T';

// What the cycles print is not for the reader of a comparison.
void Silence() {
  const sandbox::Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
  dup2(nowhere.Number(), STDOUT_FILENO);
  dup2(nowhere.Number(), STDERR_FILENO);
}

int Body(const Recording& recording, const Channel& channel) {
  Silence();
  try {
    RunCycles(recording, [&channel](std::size_t, const std::string& document) {
      channel.Write(kDocument, document);
    });
  } catch (const std::exception& error) {
    channel.Write(kTrouble, error.what());
  }
  return 0;
}

std::unique_ptr<QtSts::CStatus> ReadDocument(const std::string& text) {
  QtSts::XmlError error;
  auto document = QtSts::ReadDocument(text, &error);
  if (document == nullptr) {
    throw std::runtime_error("document.xml: " + error.Text());
  }
  return document;
}

}  // namespace

std::vector<std::string> Compare(const std::string& before, const std::string& after,
                                 const std::vector<std::string>& left_out) {
  if (before == after || std::ranges::find(left_out, kWholeDocument) != left_out.end()) {
    return {};
  }
  std::vector<std::string> paths(kAlwaysLeftOut.begin(), kAlwaysLeftOut.end());
  std::ranges::copy_if(left_out, std::back_inserter(paths),
                       [](const std::string& path) { return path != "Result"; });
  const host::DocumentPaths ignored(paths);
  std::vector<std::string> lines;
  QtSts::Compare(*ReadDocument(before), *ReadDocument(after),
                 [&](const QtSts::Difference& difference) {
                   if (!ignored.Hold(difference.Path)) {
                     lines.push_back(difference.Text());
                   }
                 });
  return lines;
}

std::vector<std::string> DocumentsOf(const Recording& recording) {
  sandbox::Options box = sandbox::OptionsFromEnvironment();
  box.RootBytes = recording.RootBytes;
  const Channel channel;
  const int status = sandbox::RunInside(box, [&] { return Body(recording, channel); });
  std::vector<std::string> documents;
  std::string text = channel.ReadAll();
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    const std::size_t size = std::stoul(text.substr(at + 1, end - at - 1));
    const std::string bytes = text.substr(end + 1, size);
    if (text[at] == kTrouble) {
      throw std::runtime_error(bytes);
    }
    documents.push_back(bytes);
    at = end + 1 + size;
  }
  if (status != 0 || documents.size() != recording.Cycles.size()) {
    throw std::runtime_error("cycle " + std::to_string(documents.size() + 1) +
                             " ended with status " + std::to_string(status));
  }
  return documents;
}

Verdict Verify(const Recording& recording) {
  const std::vector<std::string> documents = DocumentsOf(recording);
  Verdict verdict;
  for (std::size_t cycle = 0; cycle < documents.size(); ++cycle) {
    const auto& [captured, left_out] = recording.Cycles[cycle];
    if (!captured) {
      continue;
    }
    ++verdict.Compared;
    for (const std::string& line : Compare(*captured, documents[cycle], left_out)) {
      verdict.Differences.push_back("cycle " + std::to_string(cycle + 1) + ": " + line);
    }
  }
  return verdict;
}

}  // namespace replay
