#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// The line formats of a scenario have this in common.
namespace sandbox {

// Calls `use` for each line of `text`, without its line feed.
void ForEachRawLine(std::string_view text, const std::function<void(const std::string&)>& use);

// Calls `use` with the words of each line that has any; `#` at the start of a word begins a
// comment. An exception of `use` is rethrown as std::runtime_error with the line number.
void ForEachLine(std::string_view text,
                 const std::function<void(const std::vector<std::string>&)>& use);

}  // namespace sandbox
