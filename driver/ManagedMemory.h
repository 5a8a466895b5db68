// Which physical memory the driver keeps its hands off.
#pragma once

#include "driver/Hardware.h"

namespace RyxDriver {

// The memory that Windows manages, as it is while the object lives. When the system does not tell, everything counts as
// managed but the firmware's own segments below 1 MiB.
class ManagedMemory {
public:
    ManagedMemory();
    ~ManagedMemory();
    ManagedMemory(const ManagedMemory&) = delete;
    ManagedMemory& operator=(const ManagedMemory&) = delete;

    // Whether `length` bytes from an address on end at 4 GiB at the latest, and none of them is managed.
    bool Allows(ULONGLONG address, ULONG length) const;

    // Where the highest managed memory below 4 GiB ends; 4 GiB at most.
    ULONGLONG LowEnd() const;

    // Moves `begin` up to the first byte before `end` that isn't managed, and gives where the managed memory goes on,
    // or `end`. False when there is no such byte.
    bool StretchFind(ULONGLONG* begin, ULONGLONG end, ULONGLONG* stretchEnd) const;

private:
    PHYSICAL_MEMORY_RANGE* Given;
};

} // namespace RyxDriver
