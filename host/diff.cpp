// diff: list what differs between two documents; schema: print their schema.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/commands.h"
#include "host/output.h"
#include "host/printable.h"
#include "model/compare.h"
#include "model/schema.h"
#include "model/xml.h"

namespace host {
namespace {

struct Files {
  std::string Before;
  std::string After;
};

std::unique_ptr<QtSts::CStatus> Read(const std::string& path) {
  QtSts::XmlError error;
  auto document = QtSts::ReadDocumentFile(path, &error);
  if (document == nullptr) {
    throw std::runtime_error(path + ": " + Printable(error.Text()));
  }
  return document;
}

int Diff(const Files& files) {
  const auto before = Read(files.Before);
  const auto after = Read(files.After);
  std::string text;
  for (const QtSts::Difference& difference : QtSts::Compare(*before, *after)) {
    text += Printable(difference.Text()) + "\n";
  }
  StandardOutput().Write(text);
  return text.empty() ? kAllWell : kFailed;
}

}  // namespace

std::function<int()> DeclareDiff(CLI::App& command) {
  const auto files = std::make_shared<Files>();
  command.add_option("before", files->Before, "XML document to start from")
      ->required()
      ->type_name("BEFORE");
  command.add_option("after", files->After, "XML document to compare it with")
      ->required()
      ->type_name("AFTER");
  return [files] { return Diff(*files); };
}

std::function<int()> DeclareSchema(CLI::App& /*command*/) {
  return [] {
    StandardOutput().Write(QtSts::WriteSchema());
    return static_cast<int>(kAllWell);
  };
}

}  // namespace host
