#pragma once

#include <string>
#include <string_view>

#include "sandbox/tool.h"

namespace sandbox {

// The completion of a program's command line, "" for an unknown shell.
std::string CompletionFor(const Tool& tool, std::string_view shell);

}  // namespace sandbox
