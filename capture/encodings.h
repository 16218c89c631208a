// Texts within texts.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace capture {

// What a text that was decoded is to be.
using Recode = std::function<std::string(std::string_view decoded)>;

// Each decodes what is encoded in `text`, and encodes it again where `recode` changes it.
std::string RewritePercent(std::string_view text, const Recode& recode);  // "10%2E0%2E0%2E1"
std::string RewriteBase64(std::string_view text, const Recode& recode);   // "MTAuMC4wLjE="
std::string RewriteHexadecimalText(std::string_view text, const Recode& recode);  // "31302e302e"

}  // namespace capture
