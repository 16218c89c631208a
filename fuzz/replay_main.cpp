// Runs a fuzz target once on every file of the folders that are named, without a fuzzer.
// usage: replay_TARGET FOLDER...
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::size_t Replay(const fs::path& folder) {
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::fprintf(stderr, "%s\n", entry.path().c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) try {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    count += Replay(argv[i]);
  }
  std::printf("%zu inputs\n", count);
  return count > 0 ? 0 : 1;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
