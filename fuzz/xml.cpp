// Reading of XML. What can be read can be written, and then says the same.
#include "model/xml.h"

#include "fuzz/fuzz.h"
#include "model/compare.h"

namespace {

constexpr std::size_t kLargestInput = std::size_t{64} << 10;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  QtSts::XmlError error;
  const auto document = QtSts::ReadDocument(fuzz::Text(data, size), &error);
  if (document == nullptr) {
    FUZZ_CHECK(!error.Message.empty() && !error.Text().empty());
    return 0;
  }
  const std::string written = QtSts::WriteDocument(*document);
  const auto again = QtSts::ReadDocument(written, &error);
  FUZZ_CHECK(again != nullptr);
  FUZZ_CHECK(QtSts::Compare(*document, *again).empty());
  FUZZ_CHECK(QtSts::WriteDocument(*again) == written);
  return 0;
}
