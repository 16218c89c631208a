// Requests to the server: lines of input are method, path, body or none, address at which it comes
// in, entity tags, and names in Host headers. Also addresses to listen on, against what they write.
#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"
#include "serve/answer.h"
#include "serve/host_check.h"

namespace {

constexpr std::size_t kLargestInput = 8192;

std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

void CheckListenAddress(const std::string& text) {
  try {
    const serve::ListenAddress address = serve::ParseListenAddress(text);
    sockaddr_storage storage = {};
    FUZZ_CHECK(address.Fill(&storage) <= sizeof storage);
    FUZZ_CHECK(serve::AddressOf(reinterpret_cast<const sockaddr*>(&storage)) == address.Address);
    FUZZ_CHECK(address.Port != 0);
  } catch (const std::runtime_error&) {
    // It says why.
  }
}

serve::Request RequestOf(const std::vector<std::string_view>& lines) {
  const auto line = [&](std::size_t at) { return at < lines.size() ? lines[at] : ""; };
  constexpr std::size_t kTags = 4;
  constexpr std::size_t kHosts = 5;
  serve::Request request = {.Method = line(0), .Path = line(1), .HasBody = line(2) == "body"};
  request.Local = serve::ParseIpAddress(line(3)).value_or(serve::IpAddress());
  request.IfNoneMatch = {line(kTags)};
  for (std::size_t at = kHosts; at < lines.size(); ++at) {
    request.Hosts.push_back(lines[at]);
  }
  return request;
}

void CheckAnswer(const serve::Request& request, const std::vector<std::string>& names,
                 serve::Bodies* bodies) {
  const serve::Answer answer = serve::AnswerTo(request, names, bodies);
  const bool well_asked = (request.Method == "GET" || request.Method == "HEAD") &&
                          !request.HasBody && request.Hosts.size() == 1;
  const bool known = well_asked && serve::JudgeHost(request.Hosts.front(), request.Local, names) ==
                                       serve::HostVerdict::kKnown;
  switch (answer.Status) {
    case 200:
      FUZZ_CHECK(known && (answer.IsEvents || answer.Text != nullptr));
      break;
    case 304:
      FUZZ_CHECK(known && answer.Text == nullptr && answer.Tag == bodies->Tag());
      break;
    case 404:
    case 503:
      FUZZ_CHECK(known && answer.Text != nullptr);
      break;
    case 421:
      FUZZ_CHECK(well_asked && !known);
      break;
    case 400:
    case 405:
    case 413:
      FUZZ_CHECK(!known && answer.Text != nullptr);
      break;
    default:
      FUZZ_CHECK(false);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kLargestInput) {
    return 0;
  }
  const std::string text(fuzz::Text(data, size));
  CheckListenAddress(text);
  const serve::History history(std::chrono::seconds(10), "");
  serve::Bodies bodies(std::chrono::seconds(10), history);
  const std::vector<std::string> names = {"display-7.example"};
  const std::vector<std::string_view> lines = LinesOf(text);
  CheckAnswer(RequestOf(lines), names, &bodies);
  return 0;
}
