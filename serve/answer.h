// What is answered to a request, apart from how requests come in.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "serve/bodies.h"
#include "serve/ip_address.h"

namespace serve {

struct Request {
  std::string_view Method = {};
  std::string_view Path = {};  // without what follows '?'
  std::vector<std::pair<std::string_view, std::string_view>> Query = {};  // what follows, decoded
  std::vector<std::string_view> Hosts = {};        // the values of all Host headers
  std::vector<std::string_view> IfNoneMatch = {};  // likewise
  bool HasBody = false;
  IpAddress Local = {};  // where it came in
};

struct Answer {
  unsigned int Status = 0;
  const char* Type = "text/plain; charset=utf-8";
  std::shared_ptr<const std::string> Text = {};  // null for one without a body
  std::string Tag = {};                          // the entity tag, "" for none
  bool IsEvents = false;                         // a stream of events follows instead of Text
  bool Closes = false;                           // the connection cannot be used further
};

// The answer to a request of which nothing more is read than its header; nothing for others.
std::optional<Answer> RefusalAtOnce(const Request& request);

// `names` are those by which requests may ask beside the address. Throws std::bad_alloc.
Answer AnswerTo(const Request& request, const std::vector<std::string>& names, Bodies* bodies);

}  // namespace serve
