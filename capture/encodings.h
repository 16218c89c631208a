// Texts within texts.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace capture {

// What a text that was decoded is to be.
using Recode = std::function<std::string(std::string_view decoded)>;

// Each decodes what is encoded in `text`, and encodes it again where `recode` changes it.
std::string RewriteEscapes(std::string_view text,
                           const Recode& recode);  // "10%2E0", "&#46;", "\x2e"
std::string RewriteBase64(std::string_view text, const Recode& recode);           // "MTAuMC4wLjE="
std::string RewriteHexadecimalText(std::string_view text, const Recode& recode);  // "31302e302e"
std::string RewritePairs(std::string_view text, const Recode& recode);  // "31 30 2e", "0x31, 0x30"
std::string RewriteWideText(std::string_view text, const Recode& recode);  // UTF-16, UTF-32

}  // namespace capture
