// The service control manager, as far as kernel drivers need it, and the images of the helper driver.
#include "machine/windows/Services.h"

#include "machine/kernel/Kernel.h"
#include "machine/windows/Files.h"
#include "machine/windows/Handles.h"
#include "machine/windows/LastError.h"
#include "machine/windows/State.h"

#include <windows.h>

#include <string_view>

namespace StandIn {

namespace {

// No real driver: a heading that tells the two apart, and filler that makes a cut or mixed-up file noticed.
Bytes ImageMake(std::string_view heading, std::size_t size, std::uint8_t step) {
    Bytes image(heading.begin(), heading.end());
    std::uint8_t filler = 0;
    while (image.size() < size) {
        image.push_back(filler = static_cast<std::uint8_t>(filler * 5 + step));
    }
    return image;
}

// Removes a service that was marked for deletion, once nothing uses it. Handles of other processes don't count: they
// may belong to processes that are gone.
void RemoveIfUnused(SharedAccess* state, const std::string& key) {
    const auto found = (*state)->Services.find(key);
    if (found != (*state)->Services.end() && found->second.Marked && !found->second.Running &&
        !HandleOpenFor(HandleKind::Service, key)) {
        state->Change().Services.erase(key);
    }
}

} // namespace

const Bytes& DriverImage(bool bits64) {
    static const Bytes narrow = ImageMake("MZ stand-in driver, 32 bits\n", 4096, 11);
    static const Bytes wide = ImageMake("MZ stand-in driver, 64 bits\n", 5120, 17);
    return bits64 ? wide : narrow;
}

} // namespace StandIn

using namespace StandIn;

namespace {

SC_HANDLE FailNull(std::uint32_t error) {
    SetLastError(error);
    return nullptr;
}

SC_HANDLE ServiceGive(HandleKind kind, const std::string& key, DWORD access) {
    return static_cast<SC_HANDLE>(HandleOpen({kind, key, access}));
}

// What an operation on an open service works with: the shared state and the service in it, which is null with the last
// error set when a fault strikes, the state can't be read or the handle does not do.
struct ServiceAccess {
    ServiceAccess(Operation operation, std::uint32_t failure, SC_HANDLE value, DWORD right) {
        if (FailsWith(operation, failure)) {
            return;
        }
        const Handle* const handle = HandleFind(value, HandleKind::Service);
        if (State.Error() != 0) {
            FailFalse(State.Error());
        } else if (handle == nullptr) {
            FailFalse(ERROR_INVALID_HANDLE);
        } else if ((handle->Access & right) != right) {
            FailFalse(ERROR_ACCESS_DENIED);
        } else if (const auto found = State->Services.find(handle->Name); found == State->Services.end()) {
            FailFalse(ERROR_SERVICE_MARKED_FOR_DELETE);
        } else {
            Key = handle->Name;
            Found = &found->second;
        }
    }

    Service& Change() { return State.Change().Services.at(Key); }

    // Keeps what was changed; the operation's result.
    BOOL Commit() {
        const std::uint32_t error = State.Commit();
        return error == 0 || FailFalse(error);
    }

    SharedAccess State;
    std::string Key;
    const Service* Found = nullptr;
};

// Why the driver of a service can't be started; 0 when it can.
std::uint32_t StartError(const SharedState& state, const Service& service) {
    if (service.Running) {
        return ERROR_SERVICE_ALREADY_RUNNING;
    }
    if (service.Marked) {
        return ERROR_SERVICE_MARKED_FOR_DELETE;
    }
    const std::string key = FileKey(PathFollowed(state, service.Path));
    const auto file = state.Files.find(key);
    if (file == state.Files.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (FileHeldExclusively(key)) {
        return ERROR_SHARING_VIOLATION;
    }
    if (file->second.Data != DriverImage(MachineGet().UnderWow64 == Wow64::Yes)) {
        return ERROR_BAD_EXE_FORMAT;
    }
    // A second instance finds the name of its device taken: by a driver that runs, or by one that was stopped and stays
    // until its device is closed.
    return DriverDeviceExists(state, "ryxlib") || DriverDeviceHeld() ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
}

} // namespace

SC_HANDLE WINAPI OpenSCManagerA(LPCSTR, LPCSTR, DWORD dwDesiredAccess) {
    if (FailsWith(Named("OpenSCManagerA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    if ((dwDesiredAccess & ~static_cast<DWORD>(SC_MANAGER_CONNECT)) != 0 && !MachineGet().Administrator) {
        return FailNull(ERROR_ACCESS_DENIED);
    }
    return ServiceGive(HandleKind::ServiceManager, "", dwDesiredAccess);
}

SC_HANDLE WINAPI CreateServiceA(SC_HANDLE hSCManager, LPCSTR lpServiceName, LPCSTR, DWORD dwDesiredAccess,
                                DWORD dwServiceType, DWORD, DWORD, LPCSTR lpBinaryPathName, LPCSTR, LPDWORD, LPCSTR,
                                LPCSTR, LPCSTR) {
    if (FailsWith(Named("CreateServiceA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    const Handle* const manager = HandleFind(hSCManager, HandleKind::ServiceManager);
    if (manager == nullptr) {
        return FailNull(ERROR_INVALID_HANDLE);
    }
    if ((manager->Access & SC_MANAGER_CREATE_SERVICE) == 0) {
        return FailNull(ERROR_ACCESS_DENIED);
    }
    if (lpServiceName == nullptr || *lpServiceName == 0 || lpBinaryPathName == nullptr || *lpBinaryPathName == 0 ||
        dwServiceType != SERVICE_KERNEL_DRIVER) {
        return FailNull(ERROR_INVALID_PARAMETER);
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailNull(state.Error());
    }
    const std::string key = Lower(lpServiceName);
    RemoveIfUnused(&state, key);
    const auto found = state->Services.find(key);
    if (found != state->Services.end()) {
        return FailNull(found->second.Marked ? ERROR_SERVICE_MARKED_FOR_DELETE : ERROR_SERVICE_EXISTS);
    }
    state.Change().Services[key] = Service{lpServiceName, lpBinaryPathName};
    if (const std::uint32_t error = state.Commit(); error != 0) {
        return FailNull(error);
    }
    return ServiceGive(HandleKind::Service, key, dwDesiredAccess);
}

SC_HANDLE WINAPI OpenServiceA(SC_HANDLE hSCManager, LPCSTR lpServiceName, DWORD dwDesiredAccess) {
    if (FailsWith(Named("OpenServiceA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    if (HandleFind(hSCManager, HandleKind::ServiceManager) == nullptr) {
        return FailNull(ERROR_INVALID_HANDLE);
    }
    if (lpServiceName == nullptr) {
        return FailNull(ERROR_INVALID_PARAMETER);
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailNull(state.Error());
    }
    const std::string key = Lower(lpServiceName);
    RemoveIfUnused(&state, key);
    if (state->Services.count(key) == 0) {
        return FailNull(ERROR_SERVICE_DOES_NOT_EXIST);
    }
    if (!MachineGet().Administrator) {
        return FailNull(ERROR_ACCESS_DENIED);
    }
    return ServiceGive(HandleKind::Service, key, dwDesiredAccess);
}

BOOL WINAPI StartServiceA(SC_HANDLE hService, DWORD dwNumServiceArgs, LPCSTR* lpServiceArgVectors) {
    if (dwNumServiceArgs != 0 && lpServiceArgVectors == nullptr) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    ServiceAccess access(Named("StartServiceA"), ERROR_GEN_FAILURE, hService, SERVICE_START);
    if (access.Found == nullptr) {
        return FALSE;
    }
    std::uint32_t error = StartError(*access.State, *access.Found);
    if (error == 0) {
        error = KernelDriverStart();
    }
    if (error != 0) {
        return FailFalse(error);
    }
    access.Change().Running = true;
    const BOOL kept = access.Commit();
    if (!kept) {
        KernelDriverStop();
    }
    return kept;
}

BOOL WINAPI ControlService(SC_HANDLE hService, DWORD dwControl, LPSERVICE_STATUS) {
    ServiceAccess access(Named("ControlService"), ERROR_ACCESS_DENIED, hService, SERVICE_STOP);
    if (access.Found == nullptr) {
        return FALSE;
    }
    if (dwControl != SERVICE_CONTROL_STOP) {
        return FailFalse(ERROR_INVALID_SERVICE_CONTROL);
    }
    if (!access.Found->Running) {
        return FailFalse(ERROR_SERVICE_NOT_ACTIVE);
    }
    access.Change().Running = false;
    const BOOL kept = access.Commit();
    if (kept) {
        KernelDriverStop();
    }
    return kept;
}

BOOL WINAPI DeleteService(SC_HANDLE hService) {
    ServiceAccess access(Named("DeleteService"), ERROR_ACCESS_DENIED, hService, DELETE);
    if (access.Found == nullptr) {
        return FALSE;
    }
    if (access.Found->Marked) {
        return FailFalse(ERROR_SERVICE_MARKED_FOR_DELETE);
    }
    // The handle itself still uses it; the service goes when that is closed and the driver has stopped.
    access.Change().Marked = true;
    return access.Commit();
}

// A failing close releases all the same: nobody could do anything more about it.
BOOL WINAPI CloseServiceHandle(SC_HANDLE hSCObject) {
    const bool fails = FailsWith(Named("CloseServiceHandle"), ERROR_INVALID_HANDLE);
    const Handle* const handle = HandleFindAny(hSCObject);
    if (handle == nullptr || (handle->Kind != HandleKind::ServiceManager && handle->Kind != HandleKind::Service)) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    const bool service = handle->Kind == HandleKind::Service;
    const std::string key = handle->Name;
    HandleForget(hSCObject);
    if (service) {
        SharedAccess state;
        if (state.Error() == 0) {
            RemoveIfUnused(&state, key);
            state.Commit();
        }
    }
    return !fails;
}
