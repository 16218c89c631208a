#include "tests/capture/capture_fixture.h"

#include <filesystem>
#include <regex>

#include "sandbox/enter.h"
#include "sandbox/files.h"
#include "sandbox/testing.h"
#include "tests/support/paths.h"

namespace captured {

using test_support::ProgramResult;
using test_support::RunProgram;

sandbox::Scenario Load(const std::string& name) {
  return sandbox::Scenario::Load(sandbox::SourcePath("scenarios/" + name));
}

ProgramResult Capture(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {test_support::HostProgram(), "capture"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return RunProgram(command);
}

Entries Read(const std::string& file) { return Unpack(sandbox::ReadFile(file)); }

Entries CaptureNow(const std::vector<std::string>& options) {
  sandbox::MakeFolder("/captures");
  std::vector<std::string> arguments = options;
  arguments.emplace_back(kFile);
  const ProgramResult result = Capture(arguments);
  EXPECT_EQ(result.ExitCode, 0) << result.Errors;
  EXPECT_EQ(result.Output, "");
  return Read();
}

nlohmann::json Description(const Entries& capture) {
  return nlohmann::json::parse(capture.at("capture.json").Bytes);
}

std::string Show() {
  return RunProgram({test_support::HostProgram(), "show", "--format", "xml"}).Output;
}

std::string ShowAgain(const Entries& capture) {
  const char* const folder = "/replayed";
  std::filesystem::remove_all(folder);
  Write(capture, folder);
  const sandbox::Scenario replayed = sandbox::Scenario::Load(folder);
  sandbox::Scenario().Apply();
  replayed.Apply();
  return Show();
}

std::string Comparable(std::string document) {
  static const std::regex other("(LocalTime|Uptime|StorageTotal|StorageFree)=\"[^\"]*\"");
  return std::regex_replace(document, other, "$1");
}

void CaptureTest::SetUp() {
  if (!sandbox::DevicesAvailable()) {
    GTEST_SKIP() << "no device nodes: " << sandbox::DevicesRefusal();
  }
}

}  // namespace captured
