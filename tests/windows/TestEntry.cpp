// The driver's entry in the tests' images, around the driver's own. It writes each control request to a log, and makes
// up for what Wine, on which the tests run, does otherwise than Windows: it sends opens without a security context, and
// unloads a driver before the last close has come to it. The images that ship have none of this. The tests' images are
// built with two names: DriverEntry stands for the driver's own entry, and RYX_FOR_WINE says that Wine is below.
//
// The registry names files under HKEY_LOCAL_MACHINE\Software\RyxDouble: "Log" is the log; without it there is none.
#include "tests/windows/TestEntry.h"

namespace {

WCHAR LogPath[PathCapacity];
volatile LONG Opens = 0; // open files of the device
DRIVER_OBJECT Served;    // what the driver's own entry has set

UNICODE_STRING NameFrom(WCHAR* text) {
    USHORT length = 0;
    while (text[length] != 0) {
        ++length;
    }
    return {static_cast<USHORT>(length * sizeof(WCHAR)), static_cast<USHORT>((length + 1) * sizeof(WCHAR)), text};
}

} // namespace

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

namespace {

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
    const NTSTATUS status = Served.MajorFunction[IRP_MJ_DEVICE_CONTROL](device, irp); // the request is gone afterwards
    line.Number(static_cast<ULONG>(status));
    line.Log();
    return status;
}

// Wine asks for reading and writing and doesn't say so.
NTSTATUS NTAPI CreateServe(DEVICE_OBJECT* device, IRP* irp) {
    IO_SECURITY_CONTEXT asked{};
    asked.DesiredAccess = FILE_READ_DATA | FILE_WRITE_DATA;
    IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    if (stack->Parameters.Create.SecurityContext == nullptr) {
        stack->Parameters.Create.SecurityContext = &asked;
    }
    const NTSTATUS status = Served.MajorFunction[IRP_MJ_CREATE](device, irp);
    if (NT_SUCCESS(status)) {
        InterlockedIncrement(&Opens);
    }
    return status;
}

NTSTATUS NTAPI CloseServe(DEVICE_OBJECT* device, IRP* irp) {
    const NTSTATUS status = Served.MajorFunction[IRP_MJ_CLOSE](device, irp);
    InterlockedDecrement(&Opens);
    return status;
}

// The last close is waited for, up to three seconds.
void NTAPI UnloadServe(DRIVER_OBJECT* driver) {
    LARGE_INTEGER pause;
    pause.QuadPart = -100000; // 10 ms, from now on
    for (int round = 0; round < 300 && Opens > 0; ++round) {
        KeDelayExecutionThread(KernelMode, FALSE, &pause);
    }
    Served.DriverUnload(driver);
    if (AtUnload != nullptr) {
        AtUnload();
    }
    Line line;
    line.Word("unload");
    line.Log();
}

} // namespace

void (*AtUnload)() = nullptr;

// The driver's own entry has another name in this build.
extern "C" NTSTATUS NTAPI DriverEntryServed(DRIVER_OBJECT* driver, UNICODE_STRING* path);
#undef DriverEntry

extern "C" NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* path) {
    PathRead(RyxDriver::NameOf(L"Log"), LogPath);
    const NTSTATUS status = DriverEntryServed(driver, path);
    if (NT_SUCCESS(status)) {
        for (int function = 0; function <= IRP_MJ_MAXIMUM_FUNCTION; ++function) {
            Served.MajorFunction[function] = driver->MajorFunction[function];
        }
        Served.DriverUnload = driver->DriverUnload;
        driver->MajorFunction[IRP_MJ_CREATE] = CreateServe;
        driver->MajorFunction[IRP_MJ_CLOSE] = CloseServe;
        driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = ControlLogged;
        driver->DriverUnload = UnloadServe;
    }
    return status;
}
