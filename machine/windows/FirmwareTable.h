// The firmware table service.
#pragma once

#include <windows.h>

namespace StandIn {

// What a look-up of GetSystemFirmwareTable gives: the answer's size when it fits the buffer, the size that it needs
// when it does not, and 0 when there is no such table.
UINT WINAPI FirmwareTableQuery(DWORD provider, DWORD table, PVOID buffer, DWORD size);

} // namespace StandIn
