// Named mutexes, shared between processes.
#include "Lib/Platform/Mutex.h"

#include <windows.h>

MutexHandle MutexCreate(const char* name, bool* existed) {
    SetLastError(ERROR_SUCCESS);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    if (existed != nullptr) {
        // A mutex of another user can't be opened, which tells that it is there.
        *existed = GetLastError() == (mutex != nullptr ? ERROR_ALREADY_EXISTS : ERROR_ACCESS_DENIED);
    }
    return mutex;
}

void MutexClose(MutexHandle mutex) {
    if (mutex != nullptr) {
        CloseHandle(mutex);
    }
}

bool MutexAcquire(MutexHandle mutex, std::uint32_t milliseconds) {
    const DWORD outcome = WaitForSingleObject(mutex, milliseconds);
    return outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
}

void MutexRelease(MutexHandle mutex) {
    ReleaseMutex(mutex);
}
