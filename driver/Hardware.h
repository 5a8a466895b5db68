// The machine under the driver: physical memory, I/O ports, and which memory Windows manages. Each build of the driver
// has one source behind this header.
#pragma once

#include "driver/Kernel.h"

namespace RyxDriver {

// Called once when the driver starts, before everything else here.
void HardwareStart();

// How requests' pages are mapped: with the usual priority and, where the system can, so that nothing in them can be
// executed.
MM_PAGE_PRIORITY HardwareMappingPriority();

// Copies `length` bytes of physical memory to `data`, or the other way round. The range is not empty and ends at 4 GiB
// at the latest. STATUS_ACCESS_DENIED, and nothing is copied, when it can't be mapped.
NTSTATUS HardwareRead(ULONG address, ULONG length, UCHAR* data);
NTSTATUS HardwareWrite(ULONG address, ULONG length, const UCHAR* data);

// Gives the system's copy of the firmware's ACPI table with this signature, and how long it is. An error when there is
// none; STATUS_BUFFER_TOO_SMALL when there is one, which is longer than `size`, at most LargestFirmwareTable;
// STATUS_INSUFFICIENT_RESOURCES when the system can't tell just now.
NTSTATUS HardwareTableGet(ULONG signature, UCHAR* table, ULONG size, ULONG* length);

// Writes a byte to an I/O port.
void HardwarePortWrite(USHORT port, UCHAR value);

// Allocates `size` bytes of zeroed, physically contiguous, uncached memory between 64 KiB and 4 GiB and gives its
// physical address; null when there is none. The caller frees it, with the same size.
UCHAR* HardwareBufferAllocate(ULONG size, ULONG* address);
void HardwareBufferFree(UCHAR* buffer, ULONG size);

// The ranges of physical memory that Windows manages, ended by one of address and length 0; null when they can't be
// had. The caller gives them back.
PHYSICAL_MEMORY_RANGE* HardwareRangesGet();
void HardwareRangesFree(PHYSICAL_MEMORY_RANGE* ranges);

} // namespace RyxDriver
