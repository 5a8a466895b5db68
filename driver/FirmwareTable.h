// The firmware's ACPI tables, as the driver needs them for itself.
#pragma once

#include "driver/Kernel.h"

namespace RyxDriver {

// The largest table that is taken.
constexpr ULONG LargestFirmwareTable = 0x1000;

// Gives the bytes of the table with this signature and its length, at least that of a header: the system's copy or,
// where it has none, the one that the root table names to which the firmware's record leads. Null when there is none;
// `unfit` then tells whether there may be one that can't be taken, for good or just now. The bytes stay until the lock
// is paused or given back, and this call itself may pause it.
const UCHAR* FirmwareTableGet(const char* signature, ULONG* length, bool* unfit);

} // namespace RyxDriver
