#include "host/commands.h"

namespace host {
namespace {

constexpr Command kCommandRows[] = {
    {"show", "Run collection cycles and show the document",
     "0 all rows were read, 1 the last cycle failed but is shown", &DeclareShow},
    {"check", "Say what needs attention, as a monitoring plugin",
     "0 all is well, 1 warning, 2 critical, 3 unknown or wrong usage", &DeclareCheck,
     kPluginUnknown},
    {"explain", "Say what became of each source and row", "0 no row is in error, 1 some are",
     &DeclareExplain},
    {"watch", "Run cycles on a schedule and show what changes",
     "0 the last cycle read all rows, 1 it failed", &DeclareWatch},
    {"serve", "Serve document, findings and metrics over HTTP", "0 a signal has ended it",
     &DeclareServe},
    {"init", "Create the status database and its tables", "0 the database is ready, 1 it is not",
     &DeclareInit},
    {"diff", "List what differs between two documents", "0 nothing differs, 1 something does",
     &DeclareDiff},
    {"capture", "Put what a cycle is given into a file",
     "0 FILE has all cycles, 1 less, since a source did not answer", &DeclareCapture},
    {"schema", "Print the schema of the document", "0", &DeclareSchema},
};

}  // namespace

const std::span<const Command> kCommands = kCommandRows;

}  // namespace host
