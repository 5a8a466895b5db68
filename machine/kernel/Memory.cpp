// The machine's physical memory: its regions, and what the driver has allocated above them.
#include "machine/kernel/Memory.h"

#include "machine/model/Machine.h"

#include <algorithm>
#include <cstring>

namespace StandIn {

[[gnu::init_priority(StatePriority)]] AllocatedMemory MemoryOfDriver;

namespace {

// The part of a range that a region covers.
struct Overlap {
    std::size_t InRange = 0;
    std::size_t InRegion = 0;
    std::size_t Length = 0;
};

Overlap OverlapOf(std::uint64_t address, std::size_t length, std::uint64_t region, std::size_t regionLength) {
    // Addresses have 64 bits everywhere; a distance below a length has no more than that.
    if (region > address) {
        if (region - address >= length) {
            return {};
        }
        const auto gap = static_cast<std::size_t>(region - address);
        return {gap, 0, std::min(length - gap, regionLength)};
    }
    if (address - region >= regionLength) {
        return {};
    }
    const auto inside = static_cast<std::size_t>(address - region);
    return {0, inside, std::min(length, regionLength - inside)};
}

} // namespace

void MemoryRead(std::uint64_t address, std::size_t length, std::uint8_t* buffer) {
    const AllocatedMemory& allocated = MemoryAllocated();
    const auto& regions = MachineGet().Memory;
    const Overlap own = OverlapOf(address, length, allocated.Address, allocated.Data.size());
    // Mostly one region holds the whole range, and nothing that comes later touches it.
    std::size_t first = 0;
    bool whole = false;
    for (std::size_t index = regions.size(); index-- > 0;) {
        const Overlap overlap = OverlapOf(address, length, regions[index].Address, regions[index].Data.size());
        if (overlap.Length == length) {
            first = index;
            whole = true;
            break;
        }
    }
    if (!whole) {
        std::memset(buffer, 0xFF, length);
    }
    for (std::size_t index = first; index < regions.size(); ++index) {
        const Overlap overlap = OverlapOf(address, length, regions[index].Address, regions[index].Data.size());
        if (overlap.Length != 0) {
            std::memcpy(buffer + overlap.InRange, regions[index].Data.data() + overlap.InRegion, overlap.Length);
        }
    }
    if (own.Length != 0) {
        std::memcpy(buffer + own.InRange, allocated.Data.data() + own.InRegion, own.Length);
    }
}

void MemoryWrite(std::uint64_t address, std::size_t length, const std::uint8_t* data) {
    // What a later region covers can't be seen below it, so that writing to every one is as good as to the topmost.
    for (MemoryRegion& region : MachineGet().Memory) {
        const Overlap overlap = OverlapOf(address, length, region.Address, region.Data.size());
        if (overlap.Length != 0) {
            std::memcpy(region.Data.data() + overlap.InRegion, data + overlap.InRange, overlap.Length);
        }
    }
    AllocatedMemory& allocated = MemoryAllocated();
    const Overlap own = OverlapOf(address, length, allocated.Address, allocated.Data.size());
    if (own.Length != 0) {
        std::memcpy(allocated.Data.data() + own.InRegion, data + own.InRange, own.Length);
    }
}

bool MemoryCovered(std::uint64_t address, std::uint64_t length) {
    const AllocatedMemory& allocated = MemoryAllocated();
    const auto& regions = MachineGet().Memory;
    return OverlapOf(address, length, allocated.Address, allocated.Data.size()).Length != 0 ||
           std::any_of(regions.begin(), regions.end(), [&](const MemoryRegion& region) {
               return OverlapOf(address, length, region.Address, region.Data.size()).Length != 0;
           });
}

} // namespace StandIn
