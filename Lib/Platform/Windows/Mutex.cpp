// Named mutexes, shared between processes.
#include "Lib/Platform/Mutex.h"

#include <windows.h>

MutexHandle MutexCreate(const char* name, bool* existed) {
    SetLastError(ERROR_SUCCESS);
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    if (existed != nullptr) {
        *existed = mutex != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
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
