// The last way to the ACPI root table: the FADT that the system serves, a memory search, and the driver's own search.
// It is the platform's, because it rests on what only this one has: the table service and the driver, by version.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Gives the physical address of an RSDT that the driver knows of; one that a search around the DSDT finds is preferred.
// RyxErrorArgument: no out-parameter; RyxErrorRootTable: the driver finds none.
RyxStatus GetRsdtFromSystemTable(std::uint32_t* address);

// Releases the FADT that the search keeps.
void SystemTableRelease();
