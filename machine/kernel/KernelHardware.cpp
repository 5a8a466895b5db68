// The stand-in's machine as the helper driver sees it. Calls are counted by the names of the kernel operations that the
// driver calls for the same purpose on a real machine.
#include "driver/Hardware.h"
#include "machine/kernel/FirmwareModel.h"
#include "machine/kernel/KernelObjects.h"
#include "machine/kernel/Memory.h"
#include "machine/model/Faults.h"

#include <algorithm>

using namespace StandIn;

namespace {

bool RangesKnown = false;
PHYSICAL_MEMORY_RANGE NoRanges{}; // given without an allocation: most machines have no ranges, every request asks

const Bytes* AcpiTable(const std::string& signature) {
    const auto found = MachineGet().AcpiTables.find(signature);
    return found == MachineGet().AcpiTables.end() ? nullptr : &found->second;
}

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
    if (length > 0x1000 || std::uint64_t{address} + length > 0xFEC00000) {
        BugCheck("writes more than a page, or where interrupt controllers and flash memory stand");
    }
    StandIn::MemoryWrite(address, length, data);
    return STATUS_SUCCESS;
}

MM_PAGE_PRIORITY HardwareMappingPriority() {
    return static_cast<MM_PAGE_PRIORITY>(NormalPagePriority | 0x40000000); // nothing that is executed
}

NTSTATUS HardwareTableGet(ULONG signature, UCHAR* table, ULONG size, ULONG* length) {
    const Bytes* const found = AcpiTable(std::string(reinterpret_cast<const char*>(&signature), sizeof signature));
    if (Fails(Named("ZwQuerySystemInformation"))) {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    if (MachineGet().WindowsMajor < 6 || found == nullptr) {
        return STATUS_NOT_FOUND;
    }
    if (found->size() > size) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    *length = static_cast<ULONG>(found->size());
    std::copy(found->begin(), found->end(), table);
    return STATUS_SUCCESS;
}

void HardwarePortWrite(USHORT port, UCHAR value) {
    constexpr std::size_t portOffset = 48;
    const Bytes* const fadt = AcpiTable("FACP");
    if (fadt != nullptr && (fadt->size() < portOffset + 2 || (*fadt)[portOffset] != (port & 0xFFU) ||
                            (*fadt)[portOffset + 1] != port >> 8U)) {
        BugCheck("writes to a port that the firmware doesn't name");
    }
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
