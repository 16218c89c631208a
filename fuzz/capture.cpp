// Captures that come from anywhere: what can be read of one stays below its folder, and each of its
// texts is read back as it is written.
#include <stdexcept>

#include "fuzz/fuzz.h"
#include "replay/recording.h"
#include "sandbox/archive.h"
#include "sandbox/format/faults.h"
#include "sandbox/format/interfaces.h"
#include "sandbox/format/rows.h"
#include "sandbox/scenario.h"

namespace {

constexpr std::size_t kLargestInput = std::size_t{64} << 10;

void CheckName(const std::string& name) {
  FUZZ_CHECK(!name.empty() && name.front() != '/');
  FUZZ_CHECK(("/" + name + "/").find("/../") == std::string::npos);
}

template <class Parse, class Write>
void CheckText(const std::string& text, const Parse& parse, const Write& write) {
  const std::string written = write(parse(text));
  FUZZ_CHECK(write(parse(written)) == written);
}

void CheckTree(const sandbox::Tree& tree) {
  for (const auto& [path, node] : tree) {
    CheckName(path);
    const std::string name = path.substr(path.rfind('/') + 1);
    if (path.starts_with("root/") || path.find("/root/") != std::string::npos) {
      continue;
    }
    if (name == "capture.json") {
      replay::ParseDescription(node.Bytes);
    } else if (name == "faults") {
      CheckText(node.Bytes, sandbox::ParseFaults, sandbox::FaultsText);
    } else if (name == "interfaces") {
      CheckText(node.Bytes, sandbox::ParseInterfaces, sandbox::InterfacesText);
    } else if (name == "rows.tsv") {
      CheckText(node.Bytes, sandbox::ParseRows, sandbox::RowsText);
    }
  }
  const auto scenario = sandbox::Scenario::FromTree(tree, "capture");
  static_cast<void>(scenario.Step(scenario.Steps()));
  static_cast<void>(scenario.NotReplayed());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  try {
    CheckTree(sandbox::ParseArchive(fuzz::Text(data, size)));
  } catch (const std::runtime_error& refusal) {
    FUZZ_CHECK(*refusal.what() != '\0');
  }
  return 0;
}
