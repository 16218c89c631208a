// Both versions of installed packages at once; private to this folder.
#pragma once

namespace QtSts {
class CStatus;
}

namespace hardware {

// Does what CTolmarHardware::FirmwareVersion and then DisplayFirmwareVersion do, but reads the
// package database, which has megabytes, only once. When it could not be opened or not be read to
// its end, it is read again for the second.
void StoreVersions(QtSts::CStatus* status);

}  // namespace hardware
