// Control requests to the helper driver's device.
#include "machine/kernel/Kernel.h"
#include "machine/model/Faults.h"
#include "machine/windows/Handles.h"

#include <windows.h>

using namespace StandIn;

BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
                            LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED) {
    ControlSeen(dwIoControlCode);
    std::uint32_t error = ERROR_SUCCESS;
    const Handle* handle = nullptr;
    if (Fails(Named("DeviceIoControl"), dwIoControlCode)) {
        error = ERROR_ACCESS_DENIED;
    } else if ((handle = HandleFindAny(hDevice)) == nullptr) {
        error = ERROR_INVALID_HANDLE;
    } else if (handle->Kind != HandleKind::Device) {
        error = ERROR_INVALID_FUNCTION;
    } else if (lpBytesReturned == nullptr || (lpInBuffer == nullptr && nInBufferSize != 0) ||
               (lpOutBuffer == nullptr && nOutBufferSize != 0)) {
        error = ERROR_NOACCESS;
    } else {
        std::uint32_t returned = 0;
        error = KernelControl(handle->Opened, dwIoControlCode, lpInBuffer, nInBufferSize, lpOutBuffer, nOutBufferSize,
                              &returned);
        if (error == ERROR_SUCCESS) {
            *lpBytesReturned = returned;
            return TRUE;
        }
    }
    SetLastError(error);
    return FALSE;
}
