// The operations of the kernel that the helper driver calls.
#include "machine/kernel/KernelObjects.h"

#include "Lib/LittleEndian.h"
#include "machine/model/Faults.h"
#include "machine/model/Lower.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace StandIn {

namespace {

[[gnu::init_priority(StatePriority)]] KernelState Current;

std::string NameFrom(const UNICODE_STRING* name) {
    std::string text;
    for (std::size_t at = 0; at < name->Length / sizeof(WCHAR); ++at) {
        text += static_cast<char>(name->Buffer[at]);
    }
    return Lower(text);
}

} // namespace

KernelState& KernelHere() {
    return Current;
}

[[noreturn]] void BugCheck(const char* what) {
    std::fprintf(stderr, "stand-in kernel: the driver %s\n", what);
    std::abort();
}

KernelDevice* DeviceFind(const std::string& name) {
    for (KernelDevice& device : KernelHere().Devices) {
        if (device.Name == name) {
            return &device;
        }
    }
    return nullptr;
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
    KernelDevice& device = KernelHere().Devices.emplace_back();
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
    KernelHere().Devices.remove_if([DeviceObject](const KernelDevice& one) { return &one.Object == DeviceObject; });
}

NTSTATUS NTAPI IoCreateSymbolicLink(PUNICODE_STRING SymbolicLinkName, PUNICODE_STRING DeviceName) {
    if (Fails(Named("IoCreateSymbolicLink"))) {
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    const KernelDevice* const device = DeviceFind(NameFrom(DeviceName));
    // A name that programs know makes the device theirs to open: who may do so has to be settled by then.
    if (device == nullptr || device->Descriptor.empty() ||
        (device->Object.Characteristics & FILE_DEVICE_SECURE_OPEN) == 0) {
        BugCheck("made a name for a device that isn't guarded");
    }
    KernelHere().Links.emplace_back(NameFrom(SymbolicLinkName), device->Name);
    return STATUS_SUCCESS;
}

NTSTATUS NTAPI IoDeleteSymbolicLink(PUNICODE_STRING SymbolicLinkName) {
    const std::string name = NameFrom(SymbolicLinkName);
    KernelHere().Links.remove_if([&name](const auto& one) { return one.first == name; });
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
    ++KernelHere().MutexesTaken;
    return STATUS_SUCCESS;
}

LONG NTAPI KeReleaseMutex(PRKMUTEX Mutex, BOOLEAN) {
    if (Mutex->Taken-- != 1) {
        BugCheck("releases a mutex that it doesn't hold");
    }
    --KernelHere().MutexesTaken;
    if (const auto act = std::exchange(KernelHere().OnMutexFree, nullptr)) {
        act();
    }
    return 0;
}

PVOID NTAPI MmMapLockedPagesSpecifyCache(PMDL MemoryDescriptorList, KPROCESSOR_MODE, MEMORY_CACHING_TYPE, PVOID, ULONG,
                                         ULONG Priority) {
    constexpr ULONG noExecute = 0x40000000;
    if (Priority != (NormalPagePriority | noExecute)) {
        BugCheck("maps pages that can be executed");
    }
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
    for (KernelDevice& device : KernelHere().Devices) {
        if (&device.Object == Object && DesiredAccess == WRITE_DAC) {
            KernelHere().ObjectHandles.push_back(&device);
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
    const auto& handles = KernelHere().ObjectHandles;
    const auto found = std::find(handles.begin(), handles.end(), Handle);
    if (found == handles.end()) {
        return STATUS_UNSUCCESSFUL;
    }
    // Its parts are the head, of version 1 with a list and all in one piece, and the list behind it, alone.
    const auto* const bytes = static_cast<const std::uint8_t*>(SecurityDescriptor);
    constexpr std::size_t head = 20;
    constexpr std::uint8_t places[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, head};
    if (bytes[0] != 1 || (bytes[2] & 0x04) == 0 || (bytes[3] & 0x80) == 0 ||
        std::memcmp(bytes + 4, places, sizeof places) != 0) {
        BugCheck("gave a security descriptor that is none, or whose list stands elsewhere");
    }
    (*found)->Descriptor.assign(bytes, bytes + head + LittleEndianRead<std::uint16_t>(bytes + head + 2));
    return STATUS_SUCCESS;
}

NTSTATUS NTAPI ZwClose(HANDLE Handle) {
    auto& handles = KernelHere().ObjectHandles;
    const auto found = std::find(handles.begin(), handles.end(), Handle);
    if (found == handles.end()) {
        BugCheck("closed a handle that isn't open");
    }
    handles.erase(found);
    return STATUS_SUCCESS;
}
