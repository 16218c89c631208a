// Every text parser of the probe on one text.
#include <arpa/inet.h>

#include <algorithm>

#include "fuzz/fuzz.h"
#include "hardware/parse_hex.h"
#include "hardware/parse_network.h"
#include "hardware/parse_packages.h"
#include "hardware/parse_registers.h"
#include "hardware/parse_resources.h"
#include "model/compare.h"
#include "model/document.h"
#include "tests/hardware/packages_reference.h"

namespace {

// The largest text that the probe reads whole is the package database; the others end at 2662
// bytes.
constexpr std::size_t kLargestInput = std::size_t{16} << 10;

// Whether `part` lies within `whole`.
bool IsWithin(std::string_view part, std::string_view whole) {
  return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

bool HasOnly(std::string_view text, std::string_view characters) {
  return text.find_first_not_of(characters) == std::string_view::npos;
}

void CheckNetwork(std::string_view text, const char* exact) {
  if (const auto gateway = hardware::ParseDefaultGateway(text, "eth0")) {
    in_addr address{};
    FUZZ_CHECK(inet_aton(gateway->c_str(), &address) == 1);
  }
  FUZZ_CHECK(hardware::ParseLinkErrors(exact, "eth0") == hardware::ParseLinkErrors(exact, "eth0"));
  for (const std::string& server : hardware::ParseNameServers(text)) {
    FUZZ_CHECK(HasOnly(server, "0123456789."));
  }
  FUZZ_CHECK(hardware::BaseName(text).find(':') == std::string::npos);
}

// In pieces as long as the bytes of the text say.
void CheckPackages(std::string_view text) {
  hardware::PackageSearch search;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = static_cast<unsigned char>(text[at]) % 64U + 1;
    const fuzz::Exact piece(text.substr(at, size));
    if (!search.Take({piece.Get(), std::min(size, text.size() - at)})) {
      break;
    }
    at += size;
  }
  const auto [distribution, display] = search.TakeVersions();
  FUZZ_CHECK(distribution == ReferenceDistribution(text));
  FUZZ_CHECK(display == ReferenceDisplayFirmware(text));
}

// What the register and resource parsers make of the text, on top of what was there.
void Fill(const char* exact, QtSts::CStatus* status) {
  auto player = std::make_unique<QtSts::CPlayerInput>();
  hardware::ParsePlayerInput(exact, player.get());
  status->Inputs.Add(player.release());
  auto digital = std::make_unique<QtSts::CDigitalInput>();
  hardware::ParseDviInput(exact, digital.get());
  digital->MultiplexerSelected = hardware::ParseRoutesDvi(exact).value_or(false);
  status->Inputs.Add(digital.release());
  for (int cycle = 0; cycle < 2; ++cycle) {  // free memory builds on the last cycle's
    hardware::ParseMemory(exact, status);
  }
}

void CheckRegisters(std::string_view text, const char* exact) {
  QtSts::CStatus once;
  Fill(exact, &once);
  QtSts::CStatus again;
  Fill(exact, &again);
  FUZZ_CHECK(QtSts::Compare(once, again).empty());

  constexpr std::uint32_t kTrackerBits = QtSts::kFlagTrackerActive | QtSts::kFlagTrackerBlanked;
  FUZZ_CHECK((hardware::TrackerFlags(0, 0, exact) & ~kTrackerBits) == 0);
  FUZZ_CHECK(hardware::TrackerFlags(1, 0, exact) == 0);
  for (const std::string_view line : hardware::TrackerLines(text)) {
    FUZZ_CHECK(IsWithin(line, text) && line.find('\n') == std::string_view::npos &&
               line.find("pixel_tracker") != std::string_view::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  const fuzz::Exact exact(fuzz::Text(data, size));
  const std::string_view text(exact.Get(), size);
  CheckNetwork(text, exact.Get());
  CheckPackages(text);
  CheckRegisters(text, exact.Get());
  return 0;
}
