// The machine as the kernel gives access to it: in the driver that ships.
#include "driver/FirmwareTable.h"
#include "driver/Hardware.h"

namespace RyxDriver {

namespace {

// What not every system has is looked up: null where it is missing.
struct Calls {
    PHYSICAL_MEMORY_RANGE*(NTAPI* RangesGet)();
    NTSTATUS(NTAPI* InformationQuery)(ULONG kind, PVOID information, ULONG length, ULONG* needed);
    // Mappings that can't be executed, since versions 10 and 8.
    PVOID(NTAPI* SpaceMap)(PHYSICAL_ADDRESS place, SIZE_T size, ULONG protection);
    PVOID(NTAPI* BufferAllocate)
    (SIZE_T size, PHYSICAL_ADDRESS lowest, PHYSICAL_ADDRESS highest, PHYSICAL_ADDRESS boundary, ULONG protection,
     ULONG node);
};

constinit Calls System{};

template <typename Call, USHORT Size> void LookUp(Call* call, const WCHAR (&text)[Size]) {
    UNICODE_STRING name = NameOf(text);
    *call = reinterpret_cast<Call>(MmGetSystemRoutineAddress(&name));
}

constexpr ULONG NoExecute = 0x40000000; // MdlMappingNoExecute
constexpr ULONG AnyNode = 0x80000000;   // MM_ANY_NODE_OK

// What the system is asked for a table, and the table behind it, in the system's own layout.
struct TableAnswer {
    ULONG Provider;
    ULONG Action;
    ULONG Signature;
    ULONG Length; // of Table
    UCHAR Table[LargestFirmwareTable];
};

constexpr ULONG FirmwareTableInformation = 76;
constexpr ULONG ProviderAcpi = 0x41435049; // 'ACPI'
constexpr ULONG ActionGet = 1;
constexpr ULONG AnswerHead = 16;

// The requests come one after another, and it would be too large for a kernel stack.
constinit TableAnswer Answer{};

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

void* Map(ULONG address, ULONG length, ULONG protection) {
    return System.SpaceMap != nullptr ? System.SpaceMap(Physical(address), length, protection | PAGE_NOCACHE)
                                      : MmMapIoSpace(Physical(address), length, MmNonCached);
}

} // namespace

void HardwareStart() {
#ifndef RYX_FOR_WINE // where there is no such operation behind the name
    LookUp(&System.RangesGet, L"MmGetPhysicalMemoryRanges");
#endif
    LookUp(&System.InformationQuery, L"ZwQuerySystemInformation");
    LookUp(&System.SpaceMap, L"MmMapIoSpaceEx");
    LookUp(&System.BufferAllocate, L"MmAllocateContiguousNodeMemory");
}

// The operation came with the same version, 8.
MM_PAGE_PRIORITY HardwareMappingPriority() {
    return static_cast<MM_PAGE_PRIORITY>(NormalPagePriority | (System.BufferAllocate != nullptr ? NoExecute : 0));
}

NTSTATUS HardwareRead(ULONG address, ULONG length, UCHAR* data) {
    void* const mapped = Map(address, length, PAGE_READONLY);
    if (mapped == nullptr) {
        return STATUS_ACCESS_DENIED;
    }
    CopyFrom(static_cast<const volatile UCHAR*>(mapped), length, data);
    MmUnmapIoSpace(mapped, length);
    return STATUS_SUCCESS;
}

NTSTATUS HardwareWrite(ULONG address, ULONG length, const UCHAR* data) {
    void* const mapped = Map(address, length, PAGE_READWRITE);
    if (mapped == nullptr) {
        return STATUS_ACCESS_DENIED;
    }
    CopyTo(static_cast<volatile UCHAR*>(mapped), length, data);
    MmUnmapIoSpace(mapped, length);
    return STATUS_SUCCESS;
}

NTSTATUS HardwareTableGet(ULONG signature, UCHAR* table, ULONG size, ULONG* length) {
    if (System.InformationQuery == nullptr) {
        return STATUS_NOT_FOUND;
    }
    Answer.Provider = ProviderAcpi;
    Answer.Action = ActionGet;
    Answer.Signature = signature;
    Answer.Length = size;
    ULONG needed = 0;
    const NTSTATUS status = System.InformationQuery(FirmwareTableInformation, &Answer, AnswerHead + size, &needed);
    if (NT_SUCCESS(status)) {
        *length = Answer.Length < size ? Answer.Length : size;
        CopyFrom(Answer.Table, *length, table);
    }
    return status;
}

void HardwarePortWrite(USHORT port, UCHAR value) {
    __asm__ __volatile__("outb %0, %1" : : "a"(value), "Nd"(port) : "memory");
}

UCHAR* HardwareBufferAllocate(ULONG size, ULONG* address) {
    void* const buffer = System.BufferAllocate != nullptr
                             ? System.BufferAllocate(size, Physical(LowestBuffer), Physical(HighestBuffer), Physical(0),
                                                     PAGE_READWRITE | PAGE_NOCACHE, AnyNode)
                             : MmAllocateContiguousMemorySpecifyCache(
                                   size, Physical(LowestBuffer), Physical(HighestBuffer), Physical(0), MmNonCached);
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
    if (System.BufferAllocate != nullptr) {
        MmFreeContiguousMemory(buffer);
    } else {
        MmFreeContiguousMemorySpecifyCache(buffer, size, MmNonCached);
    }
}

PHYSICAL_MEMORY_RANGE* HardwareRangesGet() {
    return System.RangesGet == nullptr ? nullptr : System.RangesGet();
}

void HardwareRangesFree(PHYSICAL_MEMORY_RANGE* ranges) {
    ExFreePool(ranges);
}

} // namespace RyxDriver
