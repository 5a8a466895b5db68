// The search for the ACPI root table in physical memory.
#pragma once

#include "driver/Kernel.h"

namespace RyxDriver {

// Searches the 32 MiB behind the place that the firmware's record in the legacy segment names. False when there is no
// such record or no table.
bool RootTableFindByRecord(ULONG* address);

// Searches the 8 MiB from a place on, then the 8 MiB below it. False when there is no table.
bool RootTableFindNear(ULONG place, ULONG* address);

} // namespace RyxDriver
