#include "host/commands.h"

namespace host {
namespace {

constexpr Command kCommandRows[] = {
    {"show", "Run collection cycles and show the document", &DeclareShow},
    {"init", "Create the status database and its tables", &DeclareInit},
    {"diff", "List what differs between two documents", &DeclareDiff},
    {"schema", "Print the XML schema of the document", &DeclareSchema},
};

}  // namespace

const std::span<const Command> kCommands = kCommandRows;

}  // namespace host
