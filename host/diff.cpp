// diff: list what differs between two documents; schema: print their schema.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/commands.h"
#include "host/output.h"
#include "host/printable.h"
#include "model/compare.h"
#include "model/schema.h"
#include "model/tree.h"
#include "model/xml.h"

namespace host {
namespace {

constexpr std::size_t kBlock = 65536;  // what is written at a time

struct Files {
  std::string Before;
  std::string After;
};

QtSts::DocumentTree Read(const std::string& path) {
  QtSts::XmlError error;
  const auto document = QtSts::ReadDocumentFile(path, &error);
  if (document == nullptr) {
    throw std::runtime_error(path + ": " + error.Text());
  }
  return QtSts::DocumentTree(*document);
}

int Diff(const Files& files) {
  const QtSts::DocumentTree before = Read(files.Before);
  const QtSts::DocumentTree after = Read(files.After);
  const StandardOutput output;
  std::string text;
  bool equal = true;
  QtSts::Compare(before, after, [&](const QtSts::Difference& difference) {
    equal = false;
    text += Printable(difference.Text()) + "\n";
    if (text.size() >= kBlock) {
      output.Write(text);
      text.clear();
    }
  });
  output.Write(text);
  return equal ? kAllWell : kFailed;
}

}  // namespace

Declaration DeclareDiff() {
  const auto files = std::make_shared<Files>();
  return {{{"before", "BEFORE", "XML document to start from", &files->Before},
           {"after", "AFTER", "XML document to compare it with", &files->After}},
          [files] { return Diff(*files); }};
}

Declaration DeclareSchema() {
  return {{}, [] {
            StandardOutput().Write(QtSts::WriteSchema());
            return static_cast<int>(kAllWell);
          }};
}

}  // namespace host
