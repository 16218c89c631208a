// diff: list what differs between two documents; schema: print their schema.
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "host/commands.h"
#include "host/document_paths.h"
#include "host/output.h"
#include "host/printable.h"
#include "model/compare.h"
#include "model/schema.h"
#include "model/tree.h"
#include "model/xml.h"

namespace host {
namespace {

constexpr std::size_t kBlock = 65536;  // what is written or read at a time
constexpr const char* kStandardInput = "-";

constexpr const char* kXsd = "xsd";
constexpr const char* kJson = "json";

struct Options {
  std::string Before;
  std::string After;
  std::vector<std::string> Ignore;
  bool All = false;
};

// Little more than a document may have, so that an endless input ends.
std::string ReadStandardInput() {
  std::string text;
  std::vector<char> block(kBlock);
  while (text.size() <= QtSts::kMaximumDocumentSize) {
    const ssize_t count = read(STDIN_FILENO, block.data(), block.size());
    if (count == -1 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "standard input");
    }
    if (count == 0) {
      break;
    }
    text.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  return text;
}

QtSts::DocumentTree Read(const std::string& path) {
  const bool standard_input = path == kStandardInput;
  QtSts::XmlError error;
  const auto document = standard_input ? QtSts::ReadDocument(ReadStandardInput(), &error)
                                       : QtSts::ReadDocumentFile(path, &error);
  if (document == nullptr) {
    throw std::runtime_error((standard_input ? "standard input" : path) + ": " + error.Text() +
                             "; give a document that show --format xml wrote");
  }
  return QtSts::DocumentTree(*document);
}

int Diff(const Options& options) {
  if (options.Before == kStandardInput && options.After == kStandardInput) {
    throw std::runtime_error(
        "only one of two documents can come from standard input; "
        "give the other one as a file");
  }
  const DocumentPaths ignored(options.Ignore);
  const QtSts::DocumentTree before = Read(options.Before);
  const QtSts::DocumentTree after = Read(options.After);
  const StandardOutput output;
  std::string text;
  bool equal = true;
  const auto visit = [&](const QtSts::Difference& difference) {
    if ((!options.All && ChangesInEachCycle(difference.Path)) || ignored.Hold(difference.Path)) {
      return;
    }
    equal = false;
    text += Printable(difference.Text()) + "\n";
    if (text.size() >= kBlock) {
      output.Write(text);
      text.clear();
    }
  };
  QtSts::Compare(before, after, QtSts::CodeText::kNumberAndName, visit);
  if (equal && isatty(output.Descriptor()) != 0) {
    text = "no differences\n";
  }
  output.Write(text);
  return equal ? kAllWell : kFailed;
}

}  // namespace

Declaration DeclareDiff() {
  const auto options = std::make_shared<Options>();
  return {
      {{"before", "BEFORE", "XML document to start from; - is standard input", &options->Before},
       {"after", "AFTER", "XML document to compare it with; - likewise", &options->After},
       {.Name = "-a,--all",
        .Type = "",
        .About = "LocalTime and Uptime, too",
        .Value = &options->All},
       {.Name = "-i,--ignore",
        .Type = "PATH",
        .About = "Leave out PATH and what is below",
        .Value = &options->Ignore}},
      [options] { return Diff(*options); }};
}

Declaration DeclareSchema() {
  const auto format = std::make_shared<std::string>(kXsd);
  return {
      {{.Name = "-f,--format",
        .Type = "NAME",
        .About = "xsd (default), of the XML, or json, of the JSON",
        .Value = format.get(),
        .Choices = {kXsd, kJson}}},
      [format] {
        StandardOutput().Write(*format == kJson ? QtSts::WriteJsonSchema() : QtSts::WriteSchema());
        return static_cast<int>(kAllWell);
      }};
}

}  // namespace host
