#include "tests/collector/cycle_fixture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iterator>

#include "tests/collector/hooks.h"
#include "tests/collector/scratch_variables.h"

void PrintTo(const CycleResult& result, std::ostream* out) {
  *out << result.Result << " and \"" << result.Errors << '"';
}

namespace {

// What `action` writes to the descriptor of `stream`.
std::string Written(std::FILE* stream, const std::function<void()>& action) {
  const int descriptor = fileno(stream);
  std::fflush(stream);
  const int before = dup(descriptor);
  const int file = memfd_create("written", MFD_CLOEXEC);
  dup2(file, descriptor);
  action();
  std::fflush(stream);
  dup2(before, descriptor);
  close(before);
  std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  EXPECT_EQ(pread(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  close(file);
  return text;
}

}  // namespace

std::string OutputOf(const std::function<void()>& action) { return Written(stdout, action); }

std::string ErrorsOf(const std::function<void()>& action) { return Written(stderr, action); }

std::size_t OpenDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

CycleTest::CycleTest() {
  ClearScratch();
  sandbox::RemoveDatabase();
  sandbox::Scenario().Database().Apply();
}

CycleTest::~CycleTest() {
  g_on_thermal_scaler = nullptr;
  ClearScratch();
}

CycleResult CycleTest::Cycle() {
  CycleResult result{};
  result.Errors = ErrorsOf([&] { result.Result = collector_.QueryDatabase(); });
  return result;
}

void CycleTest::MakeView(const std::string& select) {
  sandbox::RunSql("DROP TABLE status; CREATE VIEW status AS " + select);
}
