// What requests may touch: no more than the firmware channel and the SMBIOS table need.
#pragma once

#include "driver/Kernel.h"

namespace RyxDriver {

// Called once when the driver starts.
void PermissionStart();

// Whether the range may be read: nothing that Windows manages, nothing beyond 4 GiB.
bool PermissionRead(ULONG address, ULONG length);

// Whether the range may be written: at most a page, in memory that Windows doesn't manage, below the places of the
// interrupt controllers, and in no window to the PCI configuration. The lock may be paused meanwhile.
bool PermissionWrite(ULONG address, ULONG length);

// Whether it is the port that raises the firmware's interrupt. The lock may be paused meanwhile.
bool PermissionPort(USHORT port);

} // namespace RyxDriver
