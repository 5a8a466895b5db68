// The helper driver: its device, who may open it, and how requests reach the code that serves them.
#include "driver/Control.h"
#include "driver/Hardware.h"
#include "driver/Kernel.h"
#include "driver/Lock.h"

using namespace RyxDriver;

namespace {

constinit UNICODE_STRING DeviceName = NameOf(L"\\Device\\RyxLib");
constinit UNICODE_STRING LinkName = NameOf(L"\\DosDevices\\RyxLib");

// Who may open the device, as a self-relative security descriptor: the system and the administrators, with all rights
// of a file (001F01FFh), and nobody else.
// clang-format off
alignas(4) constexpr UCHAR Access[] = {
    1, 0, 0x04, 0x90,                                     // a protected list of who is allowed, all in one piece
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0,      // no owner, group or audit list; the list stands at 20
    2, 0, 52, 0, 2, 0, 0, 0,                              // the list: its size, and that it has 2 entries
    0, 0, 20, 0, 0xFF, 0x01, 0x1F, 0,                     // allow, in 20 bytes,
    1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0,                  // S-1-5-18: the system
    0, 0, 24, 0, 0xFF, 0x01, 0x1F, 0,                     // allow, in 24 bytes,
    1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0,   // S-1-5-32-544: the administrators
};
// clang-format on

NTSTATUS AccessRestrict(DEVICE_OBJECT* device) {
    HANDLE handle = nullptr;
    NTSTATUS status =
        ObOpenObjectByPointer(device, OBJ_KERNEL_HANDLE, nullptr, WRITE_DAC, nullptr, KernelMode, &handle);
    if (NT_SUCCESS(status)) {
        status = ZwSetSecurityObject(handle, DACL_SECURITY_INFORMATION, const_cast<UCHAR*>(Access));
        ZwClose(handle);
    }
    return status;
}

NTSTATUS Complete(IRP* irp, NTSTATUS status, ULONG returned = 0) {
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = returned;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

// An open must ask for reading and writing.
NTSTATUS NTAPI OnCreate(DEVICE_OBJECT*, IRP* irp) {
    constexpr ACCESS_MASK needed = FILE_READ_DATA | FILE_WRITE_DATA;
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    const IO_SECURITY_CONTEXT* const context = stack->Parameters.Create.SecurityContext;
    if (stack->FileObject == nullptr || context == nullptr || (context->DesiredAccess & needed) != needed) {
        return Complete(irp, STATUS_ACCESS_DENIED);
    }
    ControlFileOpen(stack->FileObject);
    return Complete(irp, STATUS_SUCCESS);
}

// The last request of a file, when nobody can use it any more: also when its process ended without a word.
NTSTATUS NTAPI OnClose(DEVICE_OBJECT*, IRP* irp) {
    FILE_OBJECT* const file = IoGetCurrentIrpStackLocation(irp)->FileObject;
    if (ControlFileIsOpen(file)) {
        const LockHeld lock;
        ControlFileClose(file);
    }
    return Complete(irp, STATUS_SUCCESS);
}

// Finds a request's buffers. A length of 0 goes without one.
NTSTATUS BuffersFind(IRP* irp, const ControlCode& code, ULONG outputLength, Request* request) {
    void* const buffered = irp->AssociatedIrp.SystemBuffer;
    request->Input = static_cast<const UCHAR*>(buffered);
    request->OutputLength = outputLength;
    if (code.InputLength != 0 && buffered == nullptr) {
        return STATUS_INVALID_PARAMETER;
    }
    if (outputLength == 0) {
        return STATUS_SUCCESS;
    }
    if (!OutputIsDirect(code)) {
        request->Output = static_cast<UCHAR*>(buffered);
        return buffered == nullptr ? STATUS_INVALID_PARAMETER : STATUS_SUCCESS;
    }
    MDL* const pages = irp->MdlAddress;
    if (pages == nullptr || MmGetMdlByteCount(pages) < outputLength) {
        return STATUS_INVALID_PARAMETER;
    }
    request->Output = static_cast<UCHAR*>(MmGetSystemAddressForMdlSafe(pages, HardwareMappingPriority()));
    return request->Output == nullptr ? STATUS_INSUFFICIENT_RESOURCES : STATUS_SUCCESS;
}

NTSTATUS NTAPI OnControl(DEVICE_OBJECT*, IRP* irp) {
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    const auto& asked = stack->Parameters.DeviceIoControl;
    const ControlCode* const code = ControlCodeFind(asked.IoControlCode);
    if (code == nullptr) {
        return Complete(irp, STATUS_INVALID_DEVICE_REQUEST);
    }
    Request request{};
    request.File = stack->FileObject;
    NTSTATUS status = ControlLengthsCheck(*code, asked.InputBufferLength, asked.OutputBufferLength);
    if (!ControlFileIsOpen(request.File)) {
        status = STATUS_ACCESS_DENIED;
    } else if (NT_SUCCESS(status)) {
        status = BuffersFind(irp, *code, asked.OutputBufferLength, &request);
    }
    if (NT_SUCCESS(status)) {
        const LockHeld lock;
        status = code->Serve(&request);
    }
    return Complete(irp, status, NT_SUCCESS(status) ? request.Returned : 0);
}

// The system unloads a driver whose files are all closed.
void NTAPI OnUnload(DRIVER_OBJECT* driver) {
    IoDeleteSymbolicLink(&LinkName);
    ControlEnd();
    IoDeleteDevice(driver->DeviceObject);
}

} // namespace

// Makes the device and only then, when nobody but those who may can open it, the name that programs know.
extern "C" NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING*) {
    LockMake();
    ControlStart();
    driver->MajorFunction[IRP_MJ_CREATE] = OnCreate;
    driver->MajorFunction[IRP_MJ_CLOSE] = OnClose;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = OnControl;
    driver->DriverUnload = OnUnload;
    DEVICE_OBJECT* device = nullptr;
    NTSTATUS status =
        IoCreateDevice(driver, 0, &DeviceName, FILE_DEVICE_UNKNOWN, FILE_DEVICE_SECURE_OPEN, FALSE, &device);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    status = AccessRestrict(device);
    if (NT_SUCCESS(status)) {
        status = IoCreateSymbolicLink(&LinkName, &DeviceName);
    }
    if (!NT_SUCCESS(status)) {
        IoDeleteDevice(device);
    }
    return status;
}
