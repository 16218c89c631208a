// Reading of JSON. What can be read can be written, and then says the same, as JSON and as XML.
#include "model/json.h"

#include "fuzz/fuzz.h"
#include "model/xml.h"

namespace {

constexpr std::size_t kLargestInput = std::size_t{64} << 10;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  QtSts::JsonError error;
  const auto document = QtSts::ReadJson(fuzz::Text(data, size), &error);
  if (document == nullptr) {
    FUZZ_CHECK(!error.Message.empty() && !error.Text().empty());
    return 0;
  }
  const std::string written = QtSts::WriteJson(*document);
  const auto again = QtSts::ReadJson(written, &error);
  FUZZ_CHECK(again != nullptr);
  FUZZ_CHECK(QtSts::WriteJson(*again) == written);
  QtSts::XmlError xml_error;
  const auto of_xml = QtSts::ReadDocument(QtSts::WriteDocument(*document), &xml_error);
  FUZZ_CHECK(of_xml != nullptr);
  FUZZ_CHECK(QtSts::WriteJson(*of_xml) == written);
  return 0;
}
