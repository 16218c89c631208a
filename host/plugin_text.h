// Text in the output of a monitoring plugin.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Any bytes as a part of one line of text: printable, cut to a length that clients take, and
// without "|", which would begin the performance data.
std::string PluginText(std::string_view text);

}  // namespace host
