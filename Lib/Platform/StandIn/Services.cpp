// The service control manager, as far as kernel drivers need it, and the images of the helper driver.
#include "Lib/Platform/StandIn/Services.h"

#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/Files.h"
#include "Lib/Platform/StandIn/Handles.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace StandIn {

namespace {

constexpr char DriverDevice[] = "ryxlib";

// No real driver: a heading that tells the two apart, and filler that makes a cut or mixed-up file noticed.
Bytes ImageMake(std::string_view heading, std::size_t size, std::uint8_t step) {
    Bytes image(heading.begin(), heading.end());
    std::uint8_t filler = 0;
    while (image.size() < size) {
        image.push_back(filler = static_cast<std::uint8_t>(filler * 5 + step));
    }
    return image;
}

void DriverStop(SharedState* state, Service* service) {
    service->Running = false;
    // The buffer's memory is lost when the driver goes before its users gave it back.
    state->BuffersLost += state->BufferUsers != 0 ? 1 : 0;
    state->BufferUsers = 0;
    Process().CommunicationBuffer.clear();
    Process().RootTable = 0;
}

// Removes a service that was marked for deletion, once nothing uses it. Handles of other processes don't count: they
// may belong to processes that are gone.
void RemoveIfUnused(SharedState* state, const std::string& key) {
    const auto found = state->Services.find(key);
    if (found != state->Services.end() && found->second.Marked && !found->second.Running &&
        !HandleOpenFor(HandleKind::Service, key)) {
        state->Services.erase(found);
    }
}

} // namespace

const Bytes& DriverImage(bool bits64) {
    static const Bytes narrow = ImageMake("MZ stand-in driver, 32 bits\n", 4096, 11);
    static const Bytes wide = ImageMake("MZ stand-in driver, 64 bits\n", 5120, 17);
    return bits64 ? wide : narrow;
}

bool DriverDeviceExists(const SharedState& state, const std::string& name) {
    return Lower(name) == DriverDevice && std::any_of(state.Services.begin(), state.Services.end(),
                                                      [](const auto& one) { return one.second.Running; });
}

} // namespace StandIn

using namespace StandIn;

namespace {

void* FailNull(std::uint32_t error) {
    SetLastError(error);
    return nullptr;
}

BOOL FailFalse(std::uint32_t error) {
    SetLastError(error);
    return FALSE;
}

SC_HANDLE ServiceHandle(HandleKind kind, const std::string& key, DWORD access) {
    Handle handle;
    handle.Kind = kind;
    handle.Name = key;
    handle.Access = access;
    void* const value = HandleOpen(std::move(handle));
    return static_cast<SC_HANDLE>(value != nullptr ? value : FailNull(ERROR_NO_SYSTEM_RESOURCES));
}

// The service of a handle that grants a right; null with the last error set.
Service* ServiceFind(SharedState* state, SC_HANDLE value, DWORD right) {
    const Handle* const handle = HandleFind(value, HandleKind::Service);
    if (handle == nullptr) {
        return static_cast<Service*>(FailNull(ERROR_INVALID_HANDLE));
    }
    if ((handle->Access & right) != right) {
        return static_cast<Service*>(FailNull(ERROR_ACCESS_DENIED));
    }
    const auto found = state->Services.find(handle->Name);
    return found != state->Services.end() ? &found->second
                                          : static_cast<Service*>(FailNull(ERROR_SERVICE_MARKED_FOR_DELETE));
}

// Why the driver of a service can't be started; 0 when it can.
std::uint32_t StartError(const SharedState& state, const Service& service) {
    if (service.Running) {
        return ERROR_SERVICE_ALREADY_RUNNING;
    }
    if (service.Marked) {
        return ERROR_SERVICE_MARKED_FOR_DELETE;
    }
    const std::string key = FileKey(service.Path);
    const auto file = state.Files.find(key);
    if (file == state.Files.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (FileHeldExclusively(key)) {
        return ERROR_SHARING_VIOLATION;
    }
    if (file->second.Data != DriverImage(MachineGet().Bits == Wow64::Yes)) {
        return ERROR_BAD_EXE_FORMAT;
    }
    // A second instance finds the name of its device taken.
    return DriverDeviceExists(state, DriverDevice) ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
}

} // namespace

SC_HANDLE WINAPI OpenSCManagerA(LPCSTR, LPCSTR, DWORD dwDesiredAccess) {
    if (FailsWith(Named("OpenSCManagerA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    if ((dwDesiredAccess & ~static_cast<DWORD>(SC_MANAGER_CONNECT)) != 0 && !MachineGet().Administrator) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_ACCESS_DENIED));
    }
    return ServiceHandle(HandleKind::ServiceManager, "", dwDesiredAccess);
}

SC_HANDLE WINAPI CreateServiceA(SC_HANDLE hSCManager, LPCSTR lpServiceName, LPCSTR, DWORD dwDesiredAccess,
                                DWORD dwServiceType, DWORD, DWORD, LPCSTR lpBinaryPathName, LPCSTR, LPDWORD, LPCSTR,
                                LPCSTR, LPCSTR) {
    if (FailsWith(Named("CreateServiceA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    const Handle* const manager = HandleFind(hSCManager, HandleKind::ServiceManager);
    if (manager == nullptr) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_INVALID_HANDLE));
    }
    if ((manager->Access & SC_MANAGER_CREATE_SERVICE) == 0) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_ACCESS_DENIED));
    }
    if (lpServiceName == nullptr || *lpServiceName == 0 || lpBinaryPathName == nullptr || *lpBinaryPathName == 0 ||
        dwServiceType != SERVICE_KERNEL_DRIVER) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_INVALID_PARAMETER));
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<SC_HANDLE>(FailNull(state.Error()));
    }
    const std::string key = Lower(lpServiceName);
    RemoveIfUnused(&*state, key);
    const auto found = state->Services.find(key);
    if (found != state->Services.end()) {
        return static_cast<SC_HANDLE>(
            FailNull(found->second.Marked ? ERROR_SERVICE_MARKED_FOR_DELETE : ERROR_SERVICE_EXISTS));
    }
    state->Services[key] = Service{lpServiceName, lpBinaryPathName};
    if (const std::uint32_t error = state.Commit(); error != 0) {
        return static_cast<SC_HANDLE>(FailNull(error));
    }
    return ServiceHandle(HandleKind::Service, key, dwDesiredAccess);
}

SC_HANDLE WINAPI OpenServiceA(SC_HANDLE hSCManager, LPCSTR lpServiceName, DWORD dwDesiredAccess) {
    if (FailsWith(Named("OpenServiceA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    if (HandleFind(hSCManager, HandleKind::ServiceManager) == nullptr) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_INVALID_HANDLE));
    }
    if (lpServiceName == nullptr) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_INVALID_PARAMETER));
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<SC_HANDLE>(FailNull(state.Error()));
    }
    const std::string key = Lower(lpServiceName);
    RemoveIfUnused(&*state, key);
    if (state->Services.count(key) == 0) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_SERVICE_DOES_NOT_EXIST));
    }
    if (!MachineGet().Administrator) {
        return static_cast<SC_HANDLE>(FailNull(ERROR_ACCESS_DENIED));
    }
    return ServiceHandle(HandleKind::Service, key, dwDesiredAccess);
}

BOOL WINAPI StartServiceA(SC_HANDLE hService, DWORD, LPCSTR*) {
    if (FailsWith(Named("StartServiceA"), ERROR_GEN_FAILURE)) {
        return FALSE;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    Service* const service = ServiceFind(&*state, hService, SERVICE_START);
    if (service == nullptr) {
        return FALSE;
    }
    std::uint32_t error = StartError(*state, *service);
    if (error == 0) {
        service->Running = true;
        error = state.Commit();
    }
    return error == 0 ? TRUE : FailFalse(error);
}

BOOL WINAPI ControlService(SC_HANDLE hService, DWORD dwControl, LPSERVICE_STATUS lpServiceStatus) {
    if (FailsWith(Named("ControlService"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    Service* const service = ServiceFind(&*state, hService, SERVICE_STOP);
    if (service == nullptr) {
        return FALSE;
    }
    if (dwControl != SERVICE_CONTROL_STOP) {
        return FailFalse(ERROR_INVALID_SERVICE_CONTROL);
    }
    if (!service->Running) {
        return FailFalse(ERROR_SERVICE_NOT_ACTIVE);
    }
    DriverStop(&*state, service);
    if (const std::uint32_t error = state.Commit(); error != 0) {
        return FailFalse(error);
    }
    if (lpServiceStatus != nullptr) {
        *lpServiceStatus = SERVICE_STATUS{SERVICE_KERNEL_DRIVER, SERVICE_STOPPED, 0, NO_ERROR, 0, 0, 0};
    }
    return TRUE;
}

BOOL WINAPI DeleteService(SC_HANDLE hService) {
    if (FailsWith(Named("DeleteService"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    Service* const service = ServiceFind(&*state, hService, DELETE);
    if (service == nullptr) {
        return FALSE;
    }
    if (service->Marked) {
        return FailFalse(ERROR_SERVICE_MARKED_FOR_DELETE);
    }
    // The handle itself still uses it; the service goes when that is closed and the driver has stopped.
    service->Marked = true;
    const std::uint32_t error = state.Commit();
    return error == 0 ? TRUE : FailFalse(error);
}

// A failing close releases all the same: nobody could do anything more about it.
BOOL WINAPI CloseServiceHandle(SC_HANDLE hSCObject) {
    const bool fails = FailsWith(Named("CloseServiceHandle"), ERROR_INVALID_HANDLE);
    Handle* handle = HandleFind(hSCObject, HandleKind::ServiceManager);
    if (handle != nullptr) {
        HandleForget(handle);
        return !fails;
    }
    handle = HandleFind(hSCObject, HandleKind::Service);
    if (handle == nullptr) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    const std::string key = handle->Name;
    HandleForget(handle);
    SharedAccess state;
    if (state.Error() == 0) {
        RemoveIfUnused(&*state, key);
        state.Commit();
    }
    return !fails;
}
