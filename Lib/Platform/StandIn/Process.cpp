// The process and the system's version: error number, processors, priority, power.
#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/State.h"

#include <windows.h>

#include <cstddef>

using namespace StandIn;

namespace {

thread_local DWORD LastError = 0;

BOOL FailFalse(std::uint32_t error) {
    SetLastError(error);
    return FALSE;
}

DWORD BuildNumber() {
    switch (MachineGet().WindowsMajor) {
    case 5:
        return 2600;
    case 6:
        return MachineGet().WindowsMinor == 0 ? 6002 : 7601;
    default:
        return 19045;
    }
}

// A process can't be let run on processors that the machine doesn't have.
bool MaskUsable(DWORD_PTR mask) {
    return mask != 0 && (mask & ~static_cast<DWORD_PTR>(MachineGet().Processors)) == 0;
}

DWORD_PTR AffinityNow() {
    return Process().Affinity != 0 ? Process().Affinity : MachineGet().Processors;
}

} // namespace

// Neither is counted: the stand-in itself sets error numbers all the time.
DWORD WINAPI GetLastError() {
    return LastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    LastError = dwErrCode;
}

HANDLE WINAPI GetCurrentProcess() {
    Seen(Named("GetCurrentProcess"));
    return ProcessHandle;
}

HANDLE WINAPI GetCurrentThread() {
    Seen(Named("GetCurrentThread"));
    return ThreadHandle;
}

DWORD WINAPI GetVersion() {
    Seen(Named("GetVersion"));
    return (BuildNumber() << 16U) | ((MachineGet().WindowsMinor & 0xFFU) << 8U) | (MachineGet().WindowsMajor & 0xFFU);
}

BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA lpVersionInformation) {
    if (FailsWith(Named("GetVersionExA"), ERROR_INSUFFICIENT_BUFFER)) {
        return FALSE;
    }
    if (lpVersionInformation == nullptr || lpVersionInformation->dwOSVersionInfoSize != sizeof *lpVersionInformation) {
        return FailFalse(ERROR_INSUFFICIENT_BUFFER);
    }
    *lpVersionInformation = OSVERSIONINFOA{sizeof *lpVersionInformation, MachineGet().WindowsMajor,
                                           MachineGet().WindowsMinor,    BuildNumber(),
                                           VER_PLATFORM_WIN32_NT,        {}};
    return TRUE;
}

BOOL WINAPI GetProcessAffinityMask(HANDLE hProcess, PDWORD_PTR lpProcessAffinityMask, PDWORD_PTR lpSystemAffinityMask) {
    if (FailsWith(Named("GetProcessAffinityMask"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    if (hProcess != ProcessHandle || lpProcessAffinityMask == nullptr || lpSystemAffinityMask == nullptr) {
        return FailFalse(hProcess != ProcessHandle ? ERROR_INVALID_HANDLE : ERROR_NOACCESS);
    }
    *lpProcessAffinityMask = AffinityNow();
    *lpSystemAffinityMask = MachineGet().Processors;
    return TRUE;
}

BOOL WINAPI SetProcessAffinityMask(HANDLE hProcess, DWORD_PTR dwProcessAffinityMask) {
    if (FailsWith(Named("SetProcessAffinityMask"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    if (hProcess != ProcessHandle || !MaskUsable(dwProcessAffinityMask)) {
        return FailFalse(hProcess != ProcessHandle ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
    }
    Process().Affinity = dwProcessAffinityMask;
    Process().ThreadAffinity = 0;
    return TRUE;
}

// The result is the thread's mask before, 0 for failure.
DWORD_PTR WINAPI SetThreadAffinityMask(HANDLE hThread, DWORD_PTR dwThreadAffinityMask) {
    if (FailsWith(Named("SetThreadAffinityMask"), ERROR_ACCESS_DENIED)) {
        return 0;
    }
    if (hThread != ThreadHandle || dwThreadAffinityMask == 0 || (dwThreadAffinityMask & ~AffinityNow()) != 0) {
        SetLastError(hThread != ThreadHandle ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
        return 0;
    }
    const DWORD_PTR before = Process().ThreadAffinity != 0 ? Process().ThreadAffinity : AffinityNow();
    Process().ThreadAffinity = dwThreadAffinityMask;
    return before;
}

BOOL WINAPI SetPriorityClass(HANDLE hProcess, DWORD dwPriorityClass) {
    if (FailsWith(Named("SetPriorityClass"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    if (hProcess != ProcessHandle) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    if (dwPriorityClass != NORMAL_PRIORITY_CLASS && dwPriorityClass != HIGH_PRIORITY_CLASS) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    Process().PriorityClass = dwPriorityClass;
    return TRUE;
}

// The result is the state before, 0 for failure. Away mode is known from version 6 on, and only holds continuously.
EXECUTION_STATE WINAPI SetThreadExecutionState(EXECUTION_STATE esFlags) {
    if (Fails(Named("SetThreadExecutionState"))) {
        return 0;
    }
    constexpr DWORD known = ES_CONTINUOUS | ES_AWAYMODE_REQUIRED | ES_DISPLAY_REQUIRED | ES_SYSTEM_REQUIRED;
    const bool awayMode = (esFlags & ES_AWAYMODE_REQUIRED) != 0;
    if ((esFlags & ~known) != 0 || (awayMode && (MachineGet().WindowsMajor < 6 || (esFlags & ES_CONTINUOUS) == 0))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const EXECUTION_STATE before = Process().ExecutionState;
    if ((esFlags & ES_CONTINUOUS) != 0) {
        Process().ExecutionState = esFlags;
    }
    return before;
}
