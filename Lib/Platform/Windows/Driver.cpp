// The helper driver: the image in the program's resources, the service, the device.
#include "Lib/Platform/Driver.h"

#include <windows.h>

#include <cstdio>
#include <memory>
#include <type_traits>

namespace {

constexpr char ServiceName[] = "RYXLIB";

struct ServiceClose {
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceOwner = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, ServiceClose>;

HANDLE Device = nullptr; // while it is open

} // namespace

bool DriverImageFind(bool bits64, const void** image, std::uint32_t* size) {
    const HRSRC resource = FindResourceA(nullptr, MAKEINTRESOURCEA(bits64 ? 3 : 2), "BIN");
    if (resource == nullptr) {
        return false;
    }
    const HGLOBAL loaded = LoadResource(nullptr, resource);
    if (loaded == nullptr) {
        return false;
    }
    *image = LockResource(loaded);
    *size = SizeofResource(nullptr, resource);
    return *image != nullptr && *size != 0;
}

std::uint32_t DriverServiceStart(const char* path) {
    if (const ServiceOwner manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)}) {
        // A failure does not count: the service may be there already, and whether its driver runs shows at the device.
        const ServiceOwner created{CreateServiceA(manager.get(), ServiceName, ServiceName, SERVICE_ALL_ACCESS,
                                                  SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                                                  path, nullptr, nullptr, nullptr, nullptr, nullptr)};
    }
    const ServiceOwner manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT)};
    if (manager == nullptr) {
        return GetLastError();
    }
    const ServiceOwner service{OpenServiceA(manager.get(), ServiceName, SERVICE_START)};
    return service != nullptr && StartServiceA(service.get(), 0, nullptr) ? ERROR_SUCCESS : GetLastError();
}

void DriverServiceRemove() {
    const ServiceOwner manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)};
    if (manager == nullptr) {
        return;
    }
    if (const ServiceOwner service{OpenServiceA(manager.get(), ServiceName, SERVICE_ALL_ACCESS)}) {
        SERVICE_STATUS status;
        ControlService(service.get(), SERVICE_CONTROL_STOP, &status);
        DeleteService(service.get());
    }
}

bool DriverDeviceOpen(std::uint32_t* error) {
    constexpr DWORD globalNamesSince = 5; // the major version that brought the \\.\Global\ names
    char name[32];
    std::snprintf(name, sizeof name, (GetVersion() & 0xFFU) >= globalNamesSince ? "\\\\.\\Global\\%s" : "\\\\.\\%s",
                  ServiceName);
    const HANDLE device = CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    Device = device == INVALID_HANDLE_VALUE ? nullptr : device;
    if (Device == nullptr && error != nullptr) {
        *error = GetLastError();
    }
    return DriverDeviceIsOpen();
}

bool DriverDeviceIsOpen() {
    return Device != nullptr;
}

void DriverDeviceClose() {
    CloseHandle(Device);
    DriverDeviceForget();
}

void DriverDeviceForget() {
    Device = nullptr;
}

bool DriverDeviceControl(std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                         std::uint32_t outputLength) {
    DWORD returned = 0;
    return Device != nullptr && DeviceIoControl(Device, code, const_cast<void*>(input), inputLength, output,
                                                outputLength, &returned, nullptr);
}

RyxStatus PhysicalMemoryRead(std::uint32_t address, std::uint32_t length, void* buffer) {
    if (buffer == nullptr || length == 0) {
        return RyxErrorArgument;
    }
    return DriverDeviceControl(DriverMemoryRead, &address, sizeof address, buffer, length) ? RyxOk
                                                                                           : RyxErrorPhysicalMemory;
}

RyxStatus PhysicalMemoryWrite(std::uint32_t address, std::uint32_t length, const void* buffer) {
    if (buffer == nullptr || length == 0) {
        return RyxErrorArgument;
    }
    // The bytes go down in the request's output buffer, which the driver reads.
    return DriverDeviceControl(DriverMemoryWrite, &address, sizeof address, const_cast<void*>(buffer), length)
               ? RyxOk
               : RyxErrorPhysicalMemory;
}

RyxStatus DriverVersionGet(std::uint16_t* version) {
    if (version == nullptr) {
        return RyxErrorArgument;
    }
    return DriverDeviceControl(DriverVersionRead, nullptr, 0, version, sizeof *version) ? RyxOk : RyxErrorDriverRequest;
}
