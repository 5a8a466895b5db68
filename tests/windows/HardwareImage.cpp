// The machine under the driver in the tests: physical memory is what a file holds, so that the program and its driver
// can be run where there is no such machine. Each control request is written to a log.
//
// The registry names the files, under HKEY_LOCAL_MACHINE\Software\RyxDouble: "Image" the memory, as records of address
// and length (4 bytes each, little-endian) and bytes, where later records win and what none covers reads FFh; "Log" the
// log. Without "Image" there is no memory but FFh, without "Log" no log. With WINDOWS_MANAGES_ALL, Windows counts all
// of it as its own.
#include "driver/Hardware.h"

namespace {

constexpr ULONG Tag = 0x54787952; // "RyxT", which marks allocations
constexpr USHORT PathCapacity = 300;

UCHAR* Image = nullptr;
ULONG ImageSize = 0;
WCHAR LogPath[PathCapacity];
PDRIVER_DISPATCH ControlServe = nullptr;
PDRIVER_UNLOAD UnloadServe = nullptr;

UNICODE_STRING NameFrom(WCHAR* text) {
    USHORT length = 0;
    while (text[length] != 0) {
        ++length;
    }
    return {static_cast<USHORT>(length * sizeof(WCHAR)), static_cast<USHORT>((length + 1) * sizeof(WCHAR)), text};
}

// Reads a path from the registry as the kernel names files: "\??\C:\...". It stays empty when there is none.
void PathRead(UNICODE_STRING value, WCHAR (&path)[PathCapacity]) {
    static UCHAR answer[sizeof(KEY_VALUE_PARTIAL_INFORMATION) + PathCapacity * sizeof(WCHAR)];
    constexpr WCHAR prefix[] = L"\\??\\";
    constexpr ULONG prefixLength = 4;
    path[0] = 0;
    UNICODE_STRING keyName = RyxDriver::NameOf(L"\\Registry\\Machine\\Software\\RyxDouble");
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &keyName, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, nullptr, nullptr);
    HANDLE key = nullptr;
    if (!NT_SUCCESS(ZwOpenKey(&key, KEY_READ, &attributes))) {
        return;
    }
    auto* const info = reinterpret_cast<KEY_VALUE_PARTIAL_INFORMATION*>(answer);
    ULONG got = 0;
    const NTSTATUS status = ZwQueryValueKey(key, &value, KeyValuePartialInformation, info, sizeof answer, &got);
    ZwClose(key);
    const ULONG length = info->DataLength / sizeof(WCHAR);
    if (!NT_SUCCESS(status) || info->Type != REG_SZ || length + prefixLength + 1 > PathCapacity) {
        return;
    }
    for (ULONG at = 0; at < prefixLength; ++at) {
        path[at] = prefix[at];
    }
    for (ULONG at = 0; at < length; ++at) {
        path[prefixLength + at] = reinterpret_cast<const WCHAR*>(info->Data)[at];
    }
    path[prefixLength + length] = 0;
}

bool FileOpen(WCHAR* path, ACCESS_MASK access, ULONG disposition, HANDLE* file) {
    UNICODE_STRING name = NameFrom(path);
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, nullptr, nullptr);
    IO_STATUS_BLOCK status;
    return path[0] != 0 &&
           NT_SUCCESS(ZwCreateFile(file, access | SYNCHRONIZE, &attributes, &status, nullptr, FILE_ATTRIBUTE_NORMAL,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE, disposition,
                                   FILE_SYNCHRONOUS_IO_NONALERT | FILE_NON_DIRECTORY_FILE, nullptr, 0));
}

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

// A line of words and numbers of 8 hexadecimal digits.
struct Line {
    char Text[80];
    ULONG Length = 0;

    void Word(const char* word) {
        for (; *word != 0; ++word) {
            Text[Length++] = *word;
        }
    }
    void Number(ULONG number) {
        Text[Length++] = ' ';
        for (int shift = 28; shift >= 0; shift -= 4) {
            Text[Length++] = "0123456789ABCDEF"[number >> shift & 0xF];
        }
    }
    void Log() {
        Text[Length++] = '\n';
        HANDLE file = nullptr;
        if (!FileOpen(LogPath, FILE_APPEND_DATA, FILE_OPEN_IF, &file)) {
            return;
        }
        IO_STATUS_BLOCK status;
        LARGE_INTEGER end;
        end.u.HighPart = -1;
        end.u.LowPart = FILE_WRITE_TO_END_OF_FILE;
        ZwWriteFile(file, nullptr, nullptr, nullptr, &status, Text, Length, &end, nullptr);
        ZwClose(file);
    }
};

NTSTATUS NTAPI ControlLogged(DEVICE_OBJECT* device, IRP* irp) {
    const auto& asked = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl;
    const auto* const input = static_cast<const UCHAR*>(irp->AssociatedIrp.SystemBuffer);
    Line line;
    line.Word("control");
    line.Number(asked.IoControlCode);
    line.Number(asked.InputBufferLength);
    line.Number(asked.OutputBufferLength);
    line.Number(asked.InputBufferLength >= 4 && input != nullptr ? RyxDriver::Number(input) : 0);
    const NTSTATUS status = ControlServe(device, irp); // the request is gone afterwards
    line.Number(static_cast<ULONG>(status));
    line.Log();
    return status;
}

void NTAPI UnloadLogged(DRIVER_OBJECT* driver) {
    UnloadServe(driver);
    if (Image != nullptr) {
        ExFreePoolWithTag(Image, Tag);
    }
    Line line;
    line.Word("unload");
    line.Log();
}

} // namespace

namespace RyxDriver {

void HardwareStart() {}

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
    return STATUS_ACCESS_DENIED;
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

// The driver's own entry has another name in this build.
extern "C" NTSTATUS NTAPI DriverEntryServed(DRIVER_OBJECT* driver, UNICODE_STRING* path);
#undef DriverEntry

extern "C" NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* path) {
    PathRead(RyxDriver::NameOf(L"Log"), LogPath);
    ImageLoad();
    const NTSTATUS status = DriverEntryServed(driver, path);
    if (NT_SUCCESS(status)) {
        ControlServe = driver->MajorFunction[IRP_MJ_DEVICE_CONTROL];
        driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = ControlLogged;
        UnloadServe = driver->DriverUnload;
        driver->DriverUnload = UnloadLogged;
    }
    return status;
}
