#include <statuscollector/version.h>

namespace QtSts {

const char* LibraryVersion() noexcept { return STATUSCOLLECTOR_VERSION; }
int LibraryVersionNumber() noexcept { return STATUSCOLLECTOR_VERSION_NUMBER; }

}  // namespace QtSts
