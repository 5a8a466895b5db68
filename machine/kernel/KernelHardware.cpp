// The stand-in's machine as the helper driver sees it. Calls are counted by the names of the kernel operations that the
// driver calls for the same purpose on a real machine.
#include "driver/Hardware.h"
#include "machine/kernel/FirmwareModel.h"
#include "machine/kernel/Memory.h"
#include "machine/model/Faults.h"

using namespace StandIn;

namespace {

bool RangesKnown = false;
PHYSICAL_MEMORY_RANGE NoRanges{}; // given without an allocation: most machines have no ranges, every request asks

// A place that nothing uses, far below the end of the address space.
std::uint32_t BufferPlace(std::uint32_t size) {
    constexpr std::uint32_t top = 0x3F000000;
    constexpr std::uint32_t step = 0x10000;
    std::uint32_t address = top;
    while (address > step && MemoryCovered(address, size)) {
        address -= step;
    }
    return address;
}

} // namespace

namespace RyxDriver {

void HardwareStart() {
    RangesKnown = !Fails(Named("MmGetSystemRoutineAddress")) && MachineGet().WindowsMemory.has_value();
}

NTSTATUS HardwareRead(ULONG address, ULONG length, UCHAR* data) {
    if (Fails(Named("MmMapIoSpace"))) {
        return STATUS_ACCESS_DENIED;
    }
    StandIn::MemoryRead(address, length, data);
    return STATUS_SUCCESS;
}

NTSTATUS HardwareWrite(ULONG address, ULONG length, const UCHAR* data) {
    if (Fails(Named("MmMapIoSpace"))) {
        return STATUS_ACCESS_DENIED;
    }
    StandIn::MemoryWrite(address, length, data);
    return STATUS_SUCCESS;
}

void HardwarePortWrite(USHORT port, UCHAR value) {
    PortWrite(port, value);
}

UCHAR* HardwareBufferAllocate(ULONG size, ULONG* address) {
    AllocatedMemory& memory = MemoryAllocated();
    if (Fails(Named("MmAllocateContiguousMemorySpecifyCache")) || !memory.Data.empty()) {
        return nullptr;
    }
    memory.Address = BufferPlace(size);
    memory.Data.assign(size, 0);
    *address = memory.Address;
    return memory.Data.data();
}

void HardwareBufferFree(UCHAR*, ULONG) {
    MemoryAllocated() = AllocatedMemory{};
}

PHYSICAL_MEMORY_RANGE* HardwareRangesGet() {
    const auto& ranges = MachineGet().WindowsMemory;
    if (!RangesKnown || Fails(Named("MmGetPhysicalMemoryRanges")) || !ranges) {
        return nullptr;
    }
    if (ranges->empty()) {
        return &NoRanges;
    }
    auto* const given = new PHYSICAL_MEMORY_RANGE[ranges->size() + 1]();
    for (std::size_t index = 0; index < ranges->size(); ++index) {
        given[index].BaseAddress.QuadPart = static_cast<LONGLONG>((*ranges)[index].Address);
        given[index].NumberOfBytes.QuadPart = static_cast<LONGLONG>((*ranges)[index].Length);
    }
    return given;
}

void HardwareRangesFree(PHYSICAL_MEMORY_RANGE* ranges) {
    if (ranges != &NoRanges) {
        delete[] ranges;
    }
}

} // namespace RyxDriver
