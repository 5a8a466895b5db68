// The machine under the driver in the tests: physical memory is what a file holds, so that the program and its driver
// can be run where there is no such machine. What is written is lost.
//
// The registry names the file, under HKEY_LOCAL_MACHINE\Software\RyxDouble: "Image" is the memory, as records of
// address and length (4 bytes each, little-endian) and bytes, where later records win and what none covers reads FFh.
// Without it there is no memory but FFh. With WINDOWS_MANAGES_ALL, Windows counts all of it as its own.
#include "driver/Hardware.h"
#include "tests/windows/TestEntry.h"

namespace {

constexpr ULONG Tag = 0x54787952; // "RyxT", which marks allocations

UCHAR* Image = nullptr;
ULONG ImageSize = 0;

void ImageLoad() {
    static WCHAR path[PathCapacity];
    PathRead(RyxDriver::NameOf(L"Image"), path);
    HANDLE file = nullptr;
    if (!FileOpen(path, FILE_READ_DATA, FILE_OPEN, &file)) {
        return;
    }
    FILE_STANDARD_INFORMATION about;
    IO_STATUS_BLOCK status;
    LARGE_INTEGER start;
    start.QuadPart = 0;
    if (NT_SUCCESS(ZwQueryInformationFile(file, &status, &about, sizeof about, FileStandardInformation))) {
        const ULONG size = about.EndOfFile.u.LowPart;
        Image = static_cast<UCHAR*>(ExAllocatePoolWithTag(NonPagedPool, size, Tag));
        if (Image != nullptr &&
            NT_SUCCESS(ZwReadFile(file, nullptr, nullptr, nullptr, &status, Image, size, &start, nullptr))) {
            ImageSize = static_cast<ULONG>(status.Information);
        }
    }
    ZwClose(file);
}

void ImageFree() {
    if (Image != nullptr) {
        ExFreePoolWithTag(Image, Tag);
    }
}

} // namespace

namespace RyxDriver {

void HardwareStart() {
    ImageLoad();
    AtUnload = ImageFree;
}

MM_PAGE_PRIORITY HardwareMappingPriority() {
    return NormalPagePriority;
}

NTSTATUS HardwareRead(ULONG address, ULONG length, UCHAR* data) {
    for (ULONG at = 0; at < length; ++at) {
        data[at] = 0xFF;
    }
    constexpr ULONG heading = 8;
    for (ULONG place = 0; ImageSize - place >= heading;) {
        const ULONG start = Number(Image + place);
        ULONG size = Number(Image + place + 4);
        place += heading;
        const UCHAR* const bytes = Image + place;
        size = size < ImageSize - place ? size : ImageSize - place;
        place += size;
        const ULONGLONG begin = start > address ? start : address;
        const ULONGLONG recordEnd = ULONGLONG{start} + size;
        const ULONGLONG wantedEnd = ULONGLONG{address} + length;
        const ULONGLONG end = recordEnd < wantedEnd ? recordEnd : wantedEnd;
        for (ULONGLONG at = begin; at < end; ++at) {
            data[at - address] = bytes[at - start];
        }
    }
    return STATUS_SUCCESS;
}

NTSTATUS HardwareWrite(ULONG, ULONG, const UCHAR*) {
    return STATUS_SUCCESS;
}

NTSTATUS HardwareTableGet(ULONG, UCHAR*, ULONG, ULONG*) {
    return STATUS_NOT_FOUND;
}

void HardwarePortWrite(USHORT, UCHAR) {}

UCHAR* HardwareBufferAllocate(ULONG, ULONG*) {
    return nullptr;
}

void HardwareBufferFree(UCHAR*, ULONG) {}

PHYSICAL_MEMORY_RANGE* HardwareRangesGet() {
    static PHYSICAL_MEMORY_RANGE ranges[2];
#ifdef WINDOWS_MANAGES_ALL
    ranges[0].NumberOfBytes.QuadPart = 1LL << 32;
#endif
    return ranges;
}

void HardwareRangesFree(PHYSICAL_MEMORY_RANGE*) {}

} // namespace RyxDriver
