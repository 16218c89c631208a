// Documents of any contents: the input makes the choices of which fields hold what. Written and
// read, as XML and as JSON, each must come back as it was, and so must a copy. Its tree must say
// what its XML says.
#include "fuzz/fuzz.h"
#include "model/compare.h"
#include "model/copy.h"
#include "model/json.h"
#include "model/xml.h"
#include "tests/support/random_document.h"
#include "tests/support/tree_of_xml.h"

namespace {

constexpr std::size_t kLargestInput = std::size_t{32} << 10;

// Eight bytes of the input at a time, and nothing but zeros once it is used up.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(fuzz::Text(data, size)) {}

  std::uint64_t Next() {
    std::uint64_t choice = 0;
    const std::size_t count = std::min(rest_.size(), sizeof choice);
    std::memcpy(&choice, rest_.data(), count);
    rest_.remove_prefix(count);
    return choice;
  }

 private:
  std::string_view rest_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  Input input(data, size);
  const auto document = test_support::RandomDocument([&input] { return input.Next(); });
  const std::string written = QtSts::WriteDocument(*document);
  QtSts::XmlError error;
  const auto read = QtSts::ReadDocument(written, &error);
  FUZZ_CHECK(read != nullptr);
  FUZZ_CHECK(QtSts::Compare(*document, *read).empty());
  FUZZ_CHECK(QtSts::WriteDocument(*read) == written);
  FUZZ_CHECK(test_support::TreeDiffersFromXml(*document, written).empty());
  QtSts::JsonError json_error;
  const auto of_json = QtSts::ReadJson(QtSts::WriteJson(*document), &json_error);
  FUZZ_CHECK(of_json != nullptr);
  FUZZ_CHECK(QtSts::WriteDocument(*of_json) == written);
  FUZZ_CHECK(QtSts::WriteDocument(*QtSts::Copy(*document)) == written);
  return 0;
}
