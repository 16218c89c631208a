// Both versions of installed packages at once; private to this folder.
#pragma once

namespace QtSts {
class CStatus;
}

namespace hardware {

// What CTolmarHardware::FirmwareVersion and then DisplayFirmwareVersion do, from one reading of the
// package database, which has megabytes. The second tries again when the first could not open it or
// not read it to its end.
void StoreVersions(QtSts::CStatus* status);

}  // namespace hardware
