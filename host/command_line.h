// The command line of the program.
#pragma once

namespace host {

// Runs the command that is given, after the name of the program, and returns what to end with.
// Throws what the command throws.
int RunCommandLine(int argc, char** argv);

}  // namespace host
