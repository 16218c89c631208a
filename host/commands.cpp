#include "host/commands.h"

#include <iterator>

namespace host {

const Command kCommands[] = {
    {"show", "Run collection cycles and show the document", &DeclareShow},
    {"init", "Create the status database and its tables", &DeclareInit},
    {"diff", "List what differs between two documents", &DeclareDiff},
    {"schema", "Print the XML schema of the document", &DeclareSchema},
};
const std::size_t kCommandCount = std::size(kCommands);

}  // namespace host
