// The list of operations, how often each was called, and which calls are to fail.
#pragma once

#include "machine/model/Machine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>

namespace StandIn {

// Every operation that the stand-in answers and that can fail; the last one can't, and is only counted. An Operation is
// an index into this list.
constexpr std::string_view OperationNames[] = {
    "AccessCheck",
    "AddAccessAllowedAce",
    "AdjustTokenPrivileges",
    "AllocateAndInitializeSid",
    "CloseHandle",
    "CloseServiceHandle",
    "ControlService",
    "ConvertStringSecurityDescriptorToSecurityDescriptorA",
    "CreateFileA",
    "CreateFileW",
    "CreateMutexA",
    "CreateServiceA",
    "DeleteFileA",
    "DeleteService",
    "DeviceIoControl",
    "DuplicateToken",
    "FillConsoleOutputAttribute",
    "FillConsoleOutputCharacterA",
    "FindResourceA",
    "GetConsoleMode",
    "GetConsoleScreenBufferInfo",
    "GetFileSize",
    "GetFinalPathNameByHandleA",
    "GetFirmwareEnvironmentVariableW",
    "GetModuleFileNameA",
    "GetModuleFileNameW",
    "GetModuleHandleA",
    "GetProcAddress",
    "GetProcessAffinityMask",
    "GetStdHandle",
    "GetSystemFirmwareTable",
    "GetTempPathA",
    "GetVersionExA",
    "InitializeAcl",
    "InitializeSecurityDescriptor",
    "IoCreateDevice",
    "IoCreateSymbolicLink",
    "IsWow64Process",
    "LoadResource",
    "LockResource",
    "LookupPrivilegeValueA",
    "MmAllocateContiguousMemorySpecifyCache",
    "MmGetPhysicalMemoryRanges",
    "MmGetSystemRoutineAddress",
    "MmMapIoSpace",
    "MmMapLockedPagesSpecifyCache",
    "ObOpenObjectByPointer",
    "OpenProcessToken",
    "OpenSCManagerA",
    "OpenServiceA",
    "OpenThreadToken",
    "PathRemoveFileSpecA",
    "ReadFile",
    "RegCloseKey",
    "RegCreateKeyExA",
    "RegDeleteKeyA",
    "RegDeleteValueA",
    "RegEnumKeyA",
    "RegEnumValueA",
    "RegOpenKeyA",
    "RegOpenKeyExA",
    "RegQueryValueExA",
    "RegSetValueExA",
    "ReleaseMutex",
    "SetConsoleCtrlHandler",
    "SetConsoleCursorPosition",
    "SetFileAttributesA",
    "SetFirmwareEnvironmentVariableW",
    "SetPriorityClass",
    "SetProcessAffinityMask",
    "SetSecurityDescriptorDacl",
    "SetSecurityDescriptorGroup",
    "SetSecurityDescriptorOwner",
    "SetThreadAffinityMask",
    "SetThreadExecutionState",
    "SizeofResource",
    "StartServiceA",
    "WaitForSingleObject",
    "WriteFile",
    "ZwQuerySystemInformation",
    "ZwSetSecurityObject",
    "_getch",
};

// The operation of a name that is known when compiling; a wrong name doesn't compile.
consteval Operation Named(std::string_view name) {
    for (std::size_t index = 0; index < std::size(OperationNames); ++index) {
        if (OperationNames[index] == name) {
            return static_cast<Operation>(index);
        }
    }
    throw "the stand-in has no such operation";
}

// The operation of that exact name, if the stand-in has it and it can fail.
std::optional<Operation> OperationFind(std::string_view name);

// How often an operation was called since MachineSet, and how often a device control code was requested.
std::uint64_t CallCount(Operation operation);
std::uint64_t CallCount(std::string_view operation);
std::uint64_t ControlCount(std::uint32_t code);

// All calls since MachineSet of operations that can fail by their documented interface.
std::uint64_t CallTotal();

// How often each operation was called.
using CallCounts = std::array<std::uint64_t, std::size(OperationNames)>;
extern CallCounts Calls;

// Runs the machine's intrusions that come before the call just counted; true when one of its faults makes it fail.
bool FaultStrikes(Operation which, std::uint32_t controlCode);

// Counts a key press that was waited for, which can't fail.
inline void KeySeen() {
    ++Calls.back();
}

// Counts a call; true when it has to fail. Every operation that can fail asks here first.
inline bool Fails(Operation which, std::uint32_t controlCode = 0) {
    ++Calls[static_cast<std::size_t>(which)];
    const Machine& machine = MachineGet();
    return (!machine.Faults.empty() || !machine.Intrusions.empty()) && FaultStrikes(which, controlCode);
}

// Counts a request with a control code; DeviceIoControl itself is counted by Fails.
void ControlSeen(std::uint32_t code);

// Forgets all counts.
void CallsForget();

} // namespace StandIn
