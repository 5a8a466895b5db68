// The process and the system's version: handles, processors, priority, power.
#include "machine/kernel/Kernel.h"
#include "machine/windows/Handles.h"
#include "machine/windows/LastError.h"
#include "machine/windows/Mutexes.h"
#include "machine/windows/State.h"

#include <windows.h>

using namespace StandIn;

namespace {

// A process can't be let run on processors that the machine doesn't have.
bool MaskUsable(DWORD_PTR mask) {
    return mask != 0 && (mask & ~static_cast<DWORD_PTR>(MachineGet().Processors)) == 0;
}

DWORD_PTR AffinityNow() {
    return Process().Affinity != 0 ? Process().Affinity : MachineGet().Processors;
}

} // namespace

HANDLE WINAPI GetCurrentProcess() {
    return ProcessHandle;
}

HANDLE WINAPI GetCurrentThread() {
    return ThreadHandle;
}

// A failing close releases all the same: nobody could do anything more about it.
BOOL WINAPI CloseHandle(HANDLE hObject) {
    const bool fails = FailsWith(Named("CloseHandle"), ERROR_INVALID_HANDLE);
    const Handle* const handle = HandleFindAny(hObject);
    if (handle == nullptr || handle->Kind == HandleKind::Key || handle->Kind == HandleKind::Service ||
        handle->Kind == HandleKind::ServiceManager) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    if (handle->Kind == HandleKind::Mutex) {
        MutexHandleClosed(handle->Name);
    }
    if (handle->Kind == HandleKind::Device) {
        KernelFileClose(handle->Opened);
    }
    HandleForget(hObject);
    return !fails;
}

// The build number is of no interest to anybody here.
DWORD WINAPI GetVersion() {
    return ((MachineGet().WindowsMinor & 0xFFU) << 8U) | (MachineGet().WindowsMajor & 0xFFU);
}

BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA lpVersionInformation) {
    if (FailsWith(Named("GetVersionExA"), ERROR_INSUFFICIENT_BUFFER)) {
        return FALSE;
    }
    if (lpVersionInformation == nullptr || lpVersionInformation->dwOSVersionInfoSize != sizeof *lpVersionInformation) {
        return FailFalse(ERROR_INSUFFICIENT_BUFFER);
    }
    lpVersionInformation->dwMajorVersion = MachineGet().WindowsMajor;
    lpVersionInformation->dwMinorVersion = MachineGet().WindowsMinor;
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
        return FailFalse(hThread != ThreadHandle ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
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
    if (dwPriorityClass != HIGH_PRIORITY_CLASS) {
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
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    const EXECUTION_STATE before = Process().ExecutionState;
    if ((esFlags & ES_CONTINUOUS) != 0) {
        Process().ExecutionState = esFlags;
    }
    return before;
}
