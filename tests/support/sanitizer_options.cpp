// What the checks of tests print before they end a program.

// Checks that only trap, as cmake/with-clang has them compiled, say where.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
const char* __asan_default_options() { return "handle_sigill=1"; }
