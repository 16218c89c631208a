// Calls of SQLite that this program puts itself in front of: they fail
// (tests/support/interposed/failure.h), and a test sees what SQLite is asked for.
#pragma once

#include <functional>

#include "tests/support/interposed/failure.h"

// Flags of the last database that was opened.
extern int g_open_flags;

// Called with the text of each statement that is compiled; empty: nothing happens.
extern std::function<void(const char*)> g_on_compile;

// Called each time that a text is asked for; empty: nothing happens.
extern std::function<void()> g_on_text;
