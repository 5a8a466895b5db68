// The machine's physical memory.
#pragma once

#include "machine/model/Machine.h"

#include <cstddef>
#include <cstdint>

namespace StandIn {

// Reads bytes; what nothing covers reads as FFh.
void MemoryRead(std::uint64_t address, std::size_t length, std::uint8_t* buffer);

// Writes bytes into whatever covers them; a write to nothing is lost.
void MemoryWrite(std::uint64_t address, std::size_t length, const std::uint8_t* data);

// Whether anything covers a part of the range.
bool MemoryCovered(std::uint64_t address, std::uint64_t length);

// Memory that the driver has allocated: it stands above everything else.
struct AllocatedMemory {
    std::uint32_t Address = 0;
    Bytes Data; // empty while there is none
};
extern AllocatedMemory MemoryOfDriver;
inline AllocatedMemory& MemoryAllocated() {
    return MemoryOfDriver;
}

} // namespace StandIn
