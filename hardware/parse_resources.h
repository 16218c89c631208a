// Memory, uptime and storage.
#pragma once

#include <cstdint>
#include <string>

#include "model/document.h"

namespace hardware {

// Memory total and free, in kB, from the kernel's list; a label that is absent leaves its field.
void ParseMemory(const char* meminfo, QtSts::CStatus* status);

// ISO 8601 duration of an uptime in seconds: "P1DT2H3M4S".
std::string UptimeText(long uptime);

// A count of file system blocks in kB, if they have 4096 bytes.
std::uint64_t StorageKB(std::uint64_t blocks);

}  // namespace hardware
