// The machine as the kernel gives access to it: in the driver that ships.
#include "driver/Hardware.h"

namespace RyxDriver {

namespace {

using RangesCall = PHYSICAL_MEMORY_RANGE*(NTAPI*)();

constinit RangesCall RangesGet = nullptr; // null: there is none, or it has nothing to tell

constexpr ULONG LowestBuffer = 0x10000;
constexpr ULONG HighestBuffer = 0xFFFFFFFF;

PHYSICAL_ADDRESS Physical(ULONG address) {
    PHYSICAL_ADDRESS physical;
    physical.QuadPart = address;
    return physical;
}

// Copies in whole words where one side, the mapped one, is aligned: each access to uncached memory takes its time. The
// accesses are volatile, so that they stay as they are written.
using Word = ULONG_PTR;

bool Aligned(const volatile void* place) {
    return reinterpret_cast<ULONG_PTR>(place) % sizeof(Word) == 0;
}

void CopyFrom(const volatile UCHAR* mapped, ULONG length, UCHAR* data) {
    while (length != 0) {
        if (length >= sizeof(Word) && Aligned(mapped)) {
            Word word = *reinterpret_cast<const volatile Word*>(mapped);
            for (ULONG byte = 0; byte < sizeof word; ++byte) {
                *data++ = static_cast<UCHAR>(word);
                word >>= 8;
            }
            mapped += sizeof word;
            length -= sizeof word;
        } else {
            *data++ = *mapped++;
            --length;
        }
    }
}

void CopyTo(volatile UCHAR* mapped, ULONG length, const UCHAR* data) {
    while (length != 0) {
        if (length >= sizeof(Word) && Aligned(mapped)) {
            Word word = 0;
            for (ULONG byte = 0; byte < sizeof word; ++byte) {
                word |= static_cast<Word>(*data++) << (8 * byte);
            }
            *reinterpret_cast<volatile Word*>(mapped) = word;
            mapped += sizeof word;
            length -= sizeof word;
        } else {
            *mapped++ = *data++;
            --length;
        }
    }
}

} // namespace

// Where not even a page of the firmware can be mapped, the system under the driver doesn't run on the machine itself,
// and its account of the machine's memory isn't asked for. Nothing is read there.
void HardwareStart() {
    constexpr ULONG firmwarePage = 0xF0000;
    constexpr ULONG pageSize = 0x1000;
    RangesGet = nullptr;
    void* const mapped = MmMapIoSpace(Physical(firmwarePage), pageSize, MmCached);
    if (mapped == nullptr) {
        return;
    }
    MmUnmapIoSpace(mapped, pageSize);
    UNICODE_STRING name = NameOf(L"MmGetPhysicalMemoryRanges");
    RangesGet = reinterpret_cast<RangesCall>(MmGetSystemRoutineAddress(&name));
}

NTSTATUS HardwareRead(ULONG address, ULONG length, UCHAR* data) {
    void* const mapped = MmMapIoSpace(Physical(address), length, MmNonCached);
    if (mapped == nullptr) {
        return STATUS_ACCESS_DENIED;
    }
    CopyFrom(static_cast<const volatile UCHAR*>(mapped), length, data);
    MmUnmapIoSpace(mapped, length);
    return STATUS_SUCCESS;
}

NTSTATUS HardwareWrite(ULONG address, ULONG length, const UCHAR* data) {
    void* const mapped = MmMapIoSpace(Physical(address), length, MmNonCached);
    if (mapped == nullptr) {
        return STATUS_ACCESS_DENIED;
    }
    CopyTo(static_cast<volatile UCHAR*>(mapped), length, data);
    MmUnmapIoSpace(mapped, length);
    return STATUS_SUCCESS;
}

void HardwarePortWrite(USHORT port, UCHAR value) {
    __asm__ __volatile__("outb %0, %1" : : "a"(value), "Nd"(port) : "memory");
}

UCHAR* HardwareBufferAllocate(ULONG size, ULONG* address) {
    void* const buffer = MmAllocateContiguousMemorySpecifyCache(size, Physical(LowestBuffer), Physical(HighestBuffer),
                                                                Physical(0), MmNonCached);
    if (buffer == nullptr) {
        return nullptr;
    }
    const PHYSICAL_ADDRESS place = MmGetPhysicalAddress(buffer);
    *address = place.u.LowPart;
    // Whatever stood there before is nobody's to read.
    for (ULONG byte = 0; byte < size; ++byte) {
        static_cast<volatile UCHAR*>(buffer)[byte] = 0;
    }
    return static_cast<UCHAR*>(buffer);
}

void HardwareBufferFree(UCHAR* buffer, ULONG size) {
    MmFreeContiguousMemorySpecifyCache(buffer, size, MmNonCached);
}

PHYSICAL_MEMORY_RANGE* HardwareRangesGet() {
    return RangesGet == nullptr ? nullptr : RangesGet();
}

void HardwareRangesFree(PHYSICAL_MEMORY_RANGE* ranges) {
    ExFreePool(ranges);
}

} // namespace RyxDriver
