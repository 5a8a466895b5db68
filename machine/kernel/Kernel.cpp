// The kernel in which the helper driver runs: loading it, and the requests that reach its device.
#include "machine/kernel/Kernel.h"

#include "Lib/LittleEndian.h"
#include "driver/Kernel.h"
#include "machine/kernel/KernelObjects.h"
#include "machine/kernel/Memory.h"
#include "machine/model/Lower.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace StandIn {

namespace {

// The error number that programs see for a status.
std::uint32_t ErrorOf(NTSTATUS status) {
    switch (status) {
    case STATUS_SUCCESS:
        return ERROR_SUCCESS;
    case STATUS_INVALID_PARAMETER:
        return ERROR_INVALID_PARAMETER;
    case STATUS_INVALID_DEVICE_REQUEST:
        return ERROR_INVALID_FUNCTION;
    case STATUS_ACCESS_DENIED:
        return ERROR_ACCESS_DENIED;
    case STATUS_BUFFER_TOO_SMALL:
        return ERROR_INSUFFICIENT_BUFFER;
    case STATUS_OBJECT_NAME_NOT_FOUND:
        return ERROR_FILE_NOT_FOUND;
    case STATUS_OBJECT_NAME_COLLISION:
        return ERROR_ALREADY_EXISTS;
    case STATUS_NOT_FOUND:
        return ERROR_NOT_FOUND;
    case STATUS_INSUFFICIENT_RESOURCES:
        return ERROR_NO_SYSTEM_RESOURCES;
    default:
        return ERROR_GEN_FAILURE;
    }
}

std::uint32_t NumberAt(const Bytes& bytes, std::size_t at, std::size_t size) {
    if (at + size > bytes.size()) {
        BugCheck("gave a security descriptor that ends early");
    }
    return static_cast<std::uint32_t>(LittleEndianRead(bytes.data() + at, size));
}

// The rights that a self-relative security descriptor allows the system's administrators, or else ordinary users.
ACCESS_MASK RightsAllowed(const Bytes& descriptor, bool administrator) {
    constexpr std::uint32_t present = 0x0004;
    constexpr std::uint32_t selfRelative = 0x8000;
    const Bytes administrators{1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0};
    const Bytes users{1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x21, 2, 0, 0};
    const Bytes everyone{1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    const std::uint32_t control = NumberAt(descriptor, 2, 2);
    const std::size_t list = NumberAt(descriptor, 16, 4);
    if ((control & selfRelative) == 0) {
        BugCheck("gave a security descriptor in pieces");
    }
    if ((control & present) == 0 || list == 0) {
        return ~ACCESS_MASK{0};
    }
    ACCESS_MASK allowed = 0;
    std::size_t at = list + 8;
    for (std::uint32_t entries = NumberAt(descriptor, list + 4, 2); entries != 0; --entries) {
        const std::uint32_t type = NumberAt(descriptor, at, 1);
        const std::uint32_t size = NumberAt(descriptor, at + 2, 2);
        const ACCESS_MASK rights = NumberAt(descriptor, at + 4, 4);
        if (type != 0 || size <= 8 || at + size > list + NumberAt(descriptor, list + 2, 2)) {
            BugCheck("gave an access list with an entry that is none");
        }
        NumberAt(descriptor, at + size - 1, 1);
        const Bytes who(descriptor.begin() + static_cast<std::ptrdiff_t>(at) + 8,
                        descriptor.begin() + static_cast<std::ptrdiff_t>(at + size));
        if (who == users || who == everyone || (administrator && who == administrators)) {
            allowed |= rights;
        }
        at += size;
    }
    return allowed;
}

// What the generic rights mean for a file.
ACCESS_MASK FileRights(std::uint32_t access) {
    constexpr ACCESS_MASK fileRead = 0x120089;
    constexpr ACCESS_MASK fileWrite = 0x120116;
    ACCESS_MASK rights = access & ~(GENERIC_READ | GENERIC_WRITE);
    rights |= (access & GENERIC_READ) != 0 ? fileRead : 0;
    rights |= (access & GENERIC_WRITE) != 0 ? fileWrite : 0;
    return rights;
}

NTSTATUS NTAPI RequestRefuse(DEVICE_OBJECT*, IRP* irp) {
    irp->IoStatus.Status = STATUS_INVALID_DEVICE_REQUEST;
    irp->IoStatus.Information = 0;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return STATUS_INVALID_DEVICE_REQUEST;
}

NTSTATUS Load() {
    KernelState& kernel = KernelHere();
    if (kernel.Loaded) {
        return STATUS_OBJECT_NAME_COLLISION;
    }
    kernel.Driver = DRIVER_OBJECT{};
    std::fill(std::begin(kernel.Driver.MajorFunction), std::end(kernel.Driver.MajorFunction), RequestRefuse);
    UNICODE_STRING path = RyxDriver::NameOf(L"\\Registry\\Machine\\System\\CurrentControlSet\\Services\\RYXLIB");
    const NTSTATUS status = DriverEntry(&kernel.Driver, &path);
    kernel.Loaded = NT_SUCCESS(status);
    return status;
}

void Unload() {
    KernelState& kernel = KernelHere();
    if (kernel.Loaded && kernel.Driver.DriverUnload != nullptr) {
        kernel.Driver.DriverUnload(&kernel.Driver);
        kernel.Loaded = false;
    }
}

void UnloadIfUnused() {
    if (!KernelHere().Started && KernelHere().Files.empty()) {
        Unload();
    }
}

} // namespace

NTSTATUS RequestSend(IRP* irp, IO_STACK_LOCATION* stack) {
    irp->CurrentStackLocation = stack;
    DEVICE_OBJECT* const device = stack->FileObject->DeviceObject;
    const NTSTATUS status = device->DriverObject->MajorFunction[stack->MajorFunction](device, irp);
    if (irp->Completions != 1) {
        BugCheck("did not complete a request once");
    }
    if (irp->IoStatus.Status != status) {
        BugCheck("returned another status than it completed the request with");
    }
    if (KernelHere().MutexesTaken != 0) {
        BugCheck("kept a mutex over the end of a request");
    }
    return status;
}

NTSTATUS PlainSend(FILE_OBJECT* file, UCHAR function, IO_SECURITY_CONTEXT* security) {
    IRP irp{};
    IO_STACK_LOCATION stack{};
    stack.MajorFunction = function;
    stack.FileObject = file;
    stack.Parameters.Create.SecurityContext = security;
    return RequestSend(&irp, &stack);
}

std::uint32_t KernelDriverStart() {
    if (KernelHere().Files.empty()) {
        Unload(); // another process has stopped it since
    }
    const NTSTATUS status = Load();
    KernelHere().Started = KernelHere().Started || NT_SUCCESS(status);
    return ErrorOf(status);
}

void KernelDriverStop() {
    KernelHere().Started = false;
    UnloadIfUnused();
}

std::uint32_t KernelFileOpen(const std::string& name, std::uint32_t access, bool administrator, void** file) {
    KernelState& kernel = KernelHere();
    if (!kernel.Loaded) {
        if (const NTSTATUS status = Load(); !NT_SUCCESS(status)) {
            return ErrorOf(status);
        }
    }
    const std::string link = "\\dosdevices\\" + Lower(name);
    const auto found =
        std::find_if(kernel.Links.begin(), kernel.Links.end(), [&link](const auto& one) { return one.first == link; });
    KernelDevice* const device = found == kernel.Links.end() ? nullptr : DeviceFind(found->second);
    NTSTATUS status = STATUS_OBJECT_NAME_NOT_FOUND;
    if (device != nullptr) {
        IO_SECURITY_CONTEXT security{FileRights(access)};
        const bool allowed = device->Descriptor.empty() ||
                             (security.DesiredAccess & ~RightsAllowed(device->Descriptor, administrator)) == 0;
        status = STATUS_ACCESS_DENIED;
        if (allowed) {
            kernel.Files.push_front(FILE_OBJECT{&device->Object, nullptr});
            status = PlainSend(&kernel.Files.front(), IRP_MJ_CREATE, &security);
            if (NT_SUCCESS(status)) {
                *file = &kernel.Files.front();
                return ERROR_SUCCESS;
            }
            kernel.Files.pop_front();
        }
    }
    UnloadIfUnused();
    return ErrorOf(status);
}

void KernelFileClose(void* file) {
    KernelState& kernel = KernelHere();
    const auto found =
        std::find_if(kernel.Files.begin(), kernel.Files.end(), [file](const auto& one) { return &one == file; });
    if (found == kernel.Files.end()) {
        return;
    }
    PlainSend(&*found, IRP_MJ_CLEANUP);
    PlainSend(&*found, IRP_MJ_CLOSE);
    kernel.Files.erase(found);
    UnloadIfUnused();
}

void KernelFilesClose() {
    while (!KernelHere().Files.empty()) {
        KernelFileClose(&KernelHere().Files.front());
    }
}

NTSTATUS ControlSend(FILE_OBJECT* file, std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                     std::uint32_t outputLength, std::uint32_t* returned) {
    const std::uint32_t method = code & 3U;
    IRP irp{};
    MDL pages{};
    IO_STACK_LOCATION stack{};
    stack.MajorFunction = IRP_MJ_DEVICE_CONTROL;
    stack.FileObject = file;
    stack.Parameters.DeviceIoControl.IoControlCode = code;
    stack.Parameters.DeviceIoControl.InputBufferLength = inputLength;
    stack.Parameters.DeviceIoControl.OutputBufferLength = outputLength;

    // The system's copy ends where its block ends, so that a checker of memory accesses sees what goes past it.
    const std::size_t copied = method == METHOD_BUFFERED ? std::max(inputLength, outputLength) : inputLength;
    std::uint8_t small[16];
    std::unique_ptr<std::uint8_t[]> large;
    std::uint8_t* system = nullptr;
    if (method != METHOD_NEITHER && copied != 0) {
        if (copied > sizeof small) {
            large.reset(new std::uint8_t[copied]);
        }
        system = large != nullptr ? large.get() : small + sizeof small - copied;
        std::copy_n(static_cast<const std::uint8_t*>(input), inputLength, system);
    }
    irp.AssociatedIrp.SystemBuffer = system;
    if ((method == METHOD_IN_DIRECT || method == METHOD_OUT_DIRECT) && outputLength != 0) {
        pages.StartVa = output;
        pages.ByteCount = outputLength;
        irp.MdlAddress = &pages;
    }
    const NTSTATUS status = RequestSend(&irp, &stack);
    if (irp.IoStatus.Information > outputLength) {
        BugCheck("gave more output than there is room for");
    }
    *returned = static_cast<std::uint32_t>(irp.IoStatus.Information);
    if (NT_SUCCESS(status) && method == METHOD_BUFFERED && *returned != 0) {
        std::memcpy(output, system, *returned);
    }
    return status;
}

std::uint32_t KernelControl(void* file, std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                            std::uint32_t outputLength, std::uint32_t* returned) {
    std::uint32_t given = 0;
    const NTSTATUS status =
        ControlSend(static_cast<FILE_OBJECT*>(file), code, input, inputLength, output, outputLength, &given);
    if (NT_SUCCESS(status)) {
        *returned = given;
    }
    return ErrorOf(status);
}

void KernelForget() {
    KernelHere() = KernelState{};
    MemoryAllocated() = AllocatedMemory{};
}

std::vector<std::string> KernelLeftovers() {
    const KernelState& kernel = KernelHere();
    std::vector<std::string> lines;
    if (!kernel.Loaded) {
        for (const KernelDevice& device : kernel.Devices) {
            lines.push_back("kernel device " + device.Name);
        }
        for (const auto& [name, device] : kernel.Links) {
            lines.push_back("kernel link " + name);
        }
    }
    for (const KernelDevice* device : kernel.ObjectHandles) {
        lines.push_back("kernel handle of " + device->Name);
    }
    if (!MemoryAllocated().Data.empty()) {
        lines.push_back("communication buffer of " + std::to_string(MemoryAllocated().Data.size()) + " bytes");
    }
    return lines;
}

} // namespace StandIn
