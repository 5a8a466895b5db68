// The kernel in which the helper driver runs. It watches over the driver as it serves it: a driver that breaks the
// kernel's rules ends the process, as it would end Windows.
#include "Lib/Platform/StandIn/Kernel.h"

#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/Memory.h"
#include "driver/Kernel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <utility>

namespace StandIn {

namespace {

enum Error : std::uint32_t {
    Success = 0,
    InvalidFunction = 1,
    FileNotFound = 2,
    AccessDenied = 5,
    GeneralFailure = 31,
    InvalidParameter = 87,
    InsufficientBuffer = 122,
    AlreadyExists = 183,
    NotFound = 1168,
    NoSystemResources = 1450,
};

// The error number that programs see for a status.
std::uint32_t ErrorOf(NTSTATUS status) {
    switch (status) {
    case STATUS_SUCCESS:
        return Success;
    case STATUS_INVALID_PARAMETER:
        return InvalidParameter;
    case STATUS_INVALID_DEVICE_REQUEST:
        return InvalidFunction;
    case STATUS_ACCESS_DENIED:
        return AccessDenied;
    case STATUS_BUFFER_TOO_SMALL:
        return InsufficientBuffer;
    case STATUS_OBJECT_NAME_NOT_FOUND:
        return FileNotFound;
    case STATUS_OBJECT_NAME_COLLISION:
        return AlreadyExists;
    case STATUS_NOT_FOUND:
        return NotFound;
    case STATUS_INSUFFICIENT_RESOURCES:
        return NoSystemResources;
    default:
        return GeneralFailure;
    }
}

struct Device {
    DEVICE_OBJECT Object{};
    std::string Name;
    Bytes Descriptor; // who may open it; empty: anybody
};

struct Kernel {
    bool Loaded = false;
    bool Started = false; // by the service, and not stopped since
    DRIVER_OBJECT Driver{};
    std::list<Device> Devices;
    std::list<std::pair<std::string, std::string>> Links; // a name, and the device that it stands for
    std::list<FILE_OBJECT> Files;
    std::list<Device*> ObjectHandles;
    LONG MutexesTaken = 0;
};

[[gnu::init_priority(StatePriority)]] Kernel Current;

Kernel& Here() {
    return Current;
}

[[noreturn]] void BugCheck(const char* what) {
    std::fprintf(stderr, "stand-in kernel: the driver %s\n", what);
    std::abort();
}

std::string NameFrom(const UNICODE_STRING* name) {
    std::string text;
    for (std::size_t at = 0; at < name->Length / sizeof(WCHAR); ++at) {
        text += static_cast<char>(name->Buffer[at]);
    }
    return Lower(text);
}

Device* DeviceFind(const std::string& name) {
    for (Device& device : Here().Devices) {
        if (device.Name == name) {
            return &device;
        }
    }
    return nullptr;
}

std::uint32_t NumberAt(const Bytes& bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    if (at + size > bytes.size()) {
        BugCheck("gave a security descriptor that ends early");
    }
    std::memcpy(&number, bytes.data() + at, size);
    return number;
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
    constexpr std::uint32_t genericRead = 0x80000000;
    constexpr std::uint32_t genericWrite = 0x40000000;
    constexpr ACCESS_MASK fileRead = 0x120089;
    constexpr ACCESS_MASK fileWrite = 0x120116;
    ACCESS_MASK rights = access & ~(genericRead | genericWrite);
    rights |= (access & genericRead) != 0 ? fileRead : 0;
    rights |= (access & genericWrite) != 0 ? fileWrite : 0;
    return rights;
}

NTSTATUS NTAPI RequestRefuse(DEVICE_OBJECT*, IRP* irp) {
    irp->IoStatus.Status = STATUS_INVALID_DEVICE_REQUEST;
    irp->IoStatus.Information = 0;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return STATUS_INVALID_DEVICE_REQUEST;
}

// Hands a request to the driver, which serves it before it returns.
NTSTATUS Send(IRP* irp, IO_STACK_LOCATION* stack) {
    irp->CurrentStackLocation = stack;
    DEVICE_OBJECT* const device = stack->FileObject->DeviceObject;
    const NTSTATUS status = device->DriverObject->MajorFunction[stack->MajorFunction](device, irp);
    if (irp->Completions != 1) {
        BugCheck("did not complete a request once");
    }
    if (irp->IoStatus.Status != status) {
        BugCheck("returned another status than it completed the request with");
    }
    if (Here().MutexesTaken != 0) {
        BugCheck("kept a mutex over the end of a request");
    }
    return status;
}

NTSTATUS SendPlain(FILE_OBJECT* file, UCHAR function, IO_SECURITY_CONTEXT* security = nullptr) {
    IRP irp{};
    IO_STACK_LOCATION stack{};
    stack.MajorFunction = function;
    stack.FileObject = file;
    stack.Parameters.Create.SecurityContext = security;
    return Send(&irp, &stack);
}

NTSTATUS Load() {
    Kernel& kernel = Here();
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
    Kernel& kernel = Here();
    if (kernel.Loaded && kernel.Driver.DriverUnload != nullptr) {
        kernel.Driver.DriverUnload(&kernel.Driver);
        kernel.Loaded = false;
    }
}

void UnloadIfUnused() {
    if (!Here().Started && Here().Files.empty()) {
        Unload();
    }
}

} // namespace

std::uint32_t KernelDriverStart() {
    if (Here().Files.empty()) {
        Unload(); // another process has stopped it since
    }
    const NTSTATUS status = Load();
    Here().Started = Here().Started || NT_SUCCESS(status);
    return ErrorOf(status);
}

void KernelDriverStop() {
    Here().Started = false;
    UnloadIfUnused();
}

std::uint32_t KernelFileOpen(const std::string& name, std::uint32_t access, bool administrator, void** file) {
    Kernel& kernel = Here();
    if (!kernel.Loaded) {
        if (const NTSTATUS status = Load(); !NT_SUCCESS(status)) {
            return ErrorOf(status);
        }
    }
    const std::string link = "\\dosdevices\\" + Lower(name);
    const auto found =
        std::find_if(kernel.Links.begin(), kernel.Links.end(), [&link](const auto& one) { return one.first == link; });
    Device* const device = found == kernel.Links.end() ? nullptr : DeviceFind(found->second);
    NTSTATUS status = STATUS_OBJECT_NAME_NOT_FOUND;
    if (device != nullptr) {
        IO_SECURITY_CONTEXT security{FileRights(access)};
        const bool allowed = device->Descriptor.empty() ||
                             (security.DesiredAccess & ~RightsAllowed(device->Descriptor, administrator)) == 0;
        status = STATUS_ACCESS_DENIED;
        if (allowed) {
            kernel.Files.push_front(FILE_OBJECT{&device->Object, nullptr});
            status = SendPlain(&kernel.Files.front(), IRP_MJ_CREATE, &security);
            if (NT_SUCCESS(status)) {
                *file = &kernel.Files.front();
                return Success;
            }
            kernel.Files.pop_front();
        }
    }
    UnloadIfUnused();
    return ErrorOf(status);
}

void KernelFileClose(void* file) {
    Kernel& kernel = Here();
    const auto found =
        std::find_if(kernel.Files.begin(), kernel.Files.end(), [file](const auto& one) { return &one == file; });
    if (found == kernel.Files.end()) {
        return;
    }
    SendPlain(&*found, IRP_MJ_CLEANUP);
    SendPlain(&*found, IRP_MJ_CLOSE);
    kernel.Files.erase(found);
    UnloadIfUnused();
}

void KernelFilesClose() {
    while (!Here().Files.empty()) {
        KernelFileClose(&Here().Files.front());
    }
}

std::uint32_t KernelControl(void* file, std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                            std::uint32_t outputLength, std::uint32_t* returned) {
    const std::uint32_t method = code & 3U;
    IRP irp{};
    MDL pages{};
    IO_STACK_LOCATION stack{};
    stack.MajorFunction = IRP_MJ_DEVICE_CONTROL;
    stack.FileObject = static_cast<FILE_OBJECT*>(file);
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
    const NTSTATUS status = Send(&irp, &stack);
    if (!NT_SUCCESS(status)) {
        return ErrorOf(status);
    }
    if (irp.IoStatus.Information > outputLength) {
        BugCheck("gave more output than there is room for");
    }
    *returned = static_cast<std::uint32_t>(irp.IoStatus.Information);
    if (method == METHOD_BUFFERED && *returned != 0) {
        std::memcpy(output, system, *returned);
    }
    return Success;
}

void KernelForget() {
    Here() = Kernel{};
    MemoryAllocated() = AllocatedMemory{};
}

std::vector<std::string> KernelLeftovers() {
    const Kernel& kernel = Here();
    std::vector<std::string> lines;
    if (!kernel.Loaded) {
        for (const Device& device : kernel.Devices) {
            lines.push_back("kernel device " + device.Name);
        }
        for (const auto& [name, device] : kernel.Links) {
            lines.push_back("kernel link " + name);
        }
    }
    for (const Device* device : kernel.ObjectHandles) {
        lines.push_back("kernel handle of " + device->Name);
    }
    if (!MemoryAllocated().Data.empty()) {
        lines.push_back("communication buffer of " + std::to_string(MemoryAllocated().Data.size()) + " bytes");
    }
    return lines;
}

} // namespace StandIn

using namespace StandIn;

NTSTATUS NTAPI IoCreateDevice(PDRIVER_OBJECT DriverObject, ULONG, PUNICODE_STRING DeviceName, DEVICE_TYPE,
                              ULONG DeviceCharacteristics, BOOLEAN, PDEVICE_OBJECT* DeviceObject) {
    if (Fails(Named("IoCreateDevice"))) {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    const std::string name = NameFrom(DeviceName);
    if (DeviceFind(name) != nullptr) {
        return STATUS_OBJECT_NAME_COLLISION;
    }
    Device& device = Here().Devices.emplace_back();
    device.Name = name;
    device.Object.DriverObject = DriverObject;
    device.Object.Characteristics = DeviceCharacteristics;
    device.Object.NextDevice = DriverObject->DeviceObject;
    DriverObject->DeviceObject = &device.Object;
    *DeviceObject = &device.Object;
    return STATUS_SUCCESS;
}

void NTAPI IoDeleteDevice(PDEVICE_OBJECT DeviceObject) {
    PDEVICE_OBJECT* next = &DeviceObject->DriverObject->DeviceObject;
    while (*next != nullptr && *next != DeviceObject) {
        next = &(*next)->NextDevice;
    }
    if (*next == nullptr) {
        BugCheck("deleted a device that it doesn't have");
    }
    *next = DeviceObject->NextDevice;
    Here().Devices.remove_if([DeviceObject](const Device& one) { return &one.Object == DeviceObject; });
}

NTSTATUS NTAPI IoCreateSymbolicLink(PUNICODE_STRING SymbolicLinkName, PUNICODE_STRING DeviceName) {
    if (Fails(Named("IoCreateSymbolicLink"))) {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    const Device* const device = DeviceFind(NameFrom(DeviceName));
    // A name that programs know makes the device theirs to open: who may do so has to be settled by then.
    if (device == nullptr || device->Descriptor.empty() ||
        (device->Object.Characteristics & FILE_DEVICE_SECURE_OPEN) == 0) {
        BugCheck("made a name for a device that isn't guarded");
    }
    Here().Links.emplace_back(NameFrom(SymbolicLinkName), device->Name);
    return STATUS_SUCCESS;
}

NTSTATUS NTAPI IoDeleteSymbolicLink(PUNICODE_STRING SymbolicLinkName) {
    const std::string name = NameFrom(SymbolicLinkName);
    Here().Links.remove_if([&name](const auto& one) { return one.first == name; });
    return STATUS_SUCCESS;
}

void NTAPI IoCompleteRequest(PIRP Irp, CCHAR) {
    ++Irp->Completions;
}

void NTAPI KeInitializeMutex(PRKMUTEX Mutex, ULONG) {
    Mutex->Taken = 0;
}

// Everything here runs in one thread, so that a mutex is free whenever the driver is entered.
NTSTATUS NTAPI KeWaitForSingleObject(PVOID Object, KWAIT_REASON, KPROCESSOR_MODE, BOOLEAN, PLARGE_INTEGER) {
    if (static_cast<PRKMUTEX>(Object)->Taken++ != 0) {
        BugCheck("waits for a mutex that it holds");
    }
    ++Here().MutexesTaken;
    return STATUS_SUCCESS;
}

LONG NTAPI KeReleaseMutex(PRKMUTEX Mutex, BOOLEAN) {
    if (Mutex->Taken-- != 1) {
        BugCheck("releases a mutex that it doesn't hold");
    }
    --Here().MutexesTaken;
    return 0;
}

NTSTATUS NTAPI KeDelayExecutionThread(KPROCESSOR_MODE, BOOLEAN, PLARGE_INTEGER) {
    return STATUS_SUCCESS;
}

PVOID NTAPI MmMapLockedPagesSpecifyCache(PMDL MemoryDescriptorList, KPROCESSOR_MODE, MEMORY_CACHING_TYPE, PVOID, ULONG,
                                         ULONG) {
    if (Fails(Named("MmMapLockedPagesSpecifyCache"))) {
        return nullptr;
    }
    MemoryDescriptorList->MdlFlags |= MDL_MAPPED_TO_SYSTEM_VA;
    return MemoryDescriptorList->MappedSystemVa = MemoryDescriptorList->StartVa;
}

NTSTATUS NTAPI ObOpenObjectByPointer(PVOID Object, ULONG, PACCESS_STATE, ACCESS_MASK DesiredAccess, POBJECT_TYPE,
                                     KPROCESSOR_MODE, PHANDLE Handle) {
    if (Fails(Named("ObOpenObjectByPointer"))) {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    for (Device& device : Here().Devices) {
        if (&device.Object == Object && DesiredAccess == WRITE_DAC) {
            Here().ObjectHandles.push_back(&device);
            *Handle = &device;
            return STATUS_SUCCESS;
        }
    }
    return STATUS_ACCESS_DENIED;
}

NTSTATUS NTAPI ZwSetSecurityObject(HANDLE Handle, SECURITY_INFORMATION SecurityInformation,
                                   PSECURITY_DESCRIPTOR SecurityDescriptor) {
    if (Fails(Named("ZwSetSecurityObject")) || SecurityInformation != DACL_SECURITY_INFORMATION) {
        return STATUS_ACCESS_DENIED;
    }
    const auto& handles = Here().ObjectHandles;
    const auto found = std::find(handles.begin(), handles.end(), Handle);
    if (found == handles.end()) {
        return STATUS_UNSUCCESSFUL;
    }
    // Its size is that of its parts: the head of 20 bytes, and the list behind it.
    const auto* const bytes = static_cast<const std::uint8_t*>(SecurityDescriptor);
    constexpr std::size_t head = 20;
    const std::size_t list = bytes[16];
    if (list != head) {
        BugCheck("gave a security descriptor whose list stands elsewhere");
    }
    (*found)->Descriptor.assign(bytes,
                                bytes + head + static_cast<std::size_t>(bytes[head + 2] | bytes[head + 3] << 8U));
    return STATUS_SUCCESS;
}

NTSTATUS NTAPI ZwClose(HANDLE Handle) {
    auto& handles = Here().ObjectHandles;
    const auto found = std::find(handles.begin(), handles.end(), Handle);
    if (found == handles.end()) {
        BugCheck("closed a handle that isn't open");
    }
    handles.erase(found);
    return STATUS_SUCCESS;
}
