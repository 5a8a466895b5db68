// The kernel service of the helper driver, its device, and the driver files in the program's resources.
#include "Lib/Platform/DriverService.h"

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

} // namespace

void DriverServiceStart(const char* path) {
    if (const ServiceOwner manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)}) {
        // Whether the service is new, exists or is pending, the start below tells nothing more than the device does.
        const ServiceOwner created{CreateServiceA(manager.get(), ServiceName, ServiceName, SERVICE_ALL_ACCESS,
                                                  SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                                                  path, nullptr, nullptr, nullptr, nullptr, nullptr)};
    }
    const ServiceOwner manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT)};
    if (manager == nullptr) {
        return;
    }
    if (const ServiceOwner service{OpenServiceA(manager.get(), ServiceName, SERVICE_START)}) {
        StartServiceA(service.get(), 0, nullptr);
    }
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

DriverDevice DriverDeviceOpen() {
    constexpr DWORD globalNamesSince = 5; // the major version that brought the \\.\Global\ names
    char name[32];
    std::snprintf(name, sizeof name, (GetVersion() & 0xFFU) >= globalNamesSince ? "\\\\.\\Global\\%s" : "\\\\.\\%s",
                  ServiceName);
    const HANDLE device = CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return device == INVALID_HANDLE_VALUE ? nullptr : device;
}

void DriverDeviceClose(DriverDevice device) {
    if (device != nullptr) {
        CloseHandle(device);
    }
}

bool DriverDeviceControl(DriverDevice device, std::uint32_t code, const void* input, std::uint32_t inputLength,
                         void* output, std::uint32_t outputLength) {
    DWORD returned = 0;
    return device != nullptr && DeviceIoControl(device, code, const_cast<void*>(input), inputLength, output,
                                                outputLength, &returned, nullptr);
}

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
