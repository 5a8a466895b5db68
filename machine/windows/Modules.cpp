// Modules, the operations looked up in them at run time, and the program's resources.
#include "machine/windows/Files.h"
#include "machine/windows/FirmwareTable.h"
#include "machine/windows/LastError.h"
#include "machine/windows/Services.h"
#include "machine/windows/State.h"
#include "machine/windows/WideText.h"

#include <windows.h>

#include <cstring>
#include <string>
#include <strings.h>
#include <unistd.h>

using namespace StandIn;

namespace {

struct Export {
    const char* Name;
    FARPROC Address;
};

template <typename Function> FARPROC AddressOf(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

BOOL WINAPI Wow64Query(HANDLE process, PBOOL under) {
    if (FailsWith(Named("IsWow64Process"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    if (process != ProcessHandle || under == nullptr) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    *under = MachineGet().UnderWow64 == Wow64::Yes;
    return TRUE;
}

const Export KernelExports[] = {
    {"GetFinalPathNameByHandleA", AddressOf(FinalPathQuery)},
    {"GetSystemFirmwareTable", AddressOf(FirmwareTableQuery)},
    {"IsWow64Process", AddressOf(Wow64Query)},
};

const Export AdvapiExports[] = {
    {"RegOpenKeyExA", AddressOf(RegOpenKeyExA)}, {"RegEnumKeyA", AddressOf(RegEnumKeyA)},
    {"RegOpenKeyA", AddressOf(RegOpenKeyA)},     {"RegCloseKey", AddressOf(RegCloseKey)},
    {"RegEnumValueA", AddressOf(RegEnumValueA)}, {"RegQueryValueExA", AddressOf(RegQueryValueExA)},
};

// The modules of every process; their addresses are the modules' handles.
HINSTANCE__ ProgramModule{};
HINSTANCE__ KernelModule{};
HINSTANCE__ AdvapiModule{};

HMODULE ModuleFind(LPCSTR name) {
    if (strcasecmp(name, "kernel32") == 0 || strcasecmp(name, "kernel32.dll") == 0) {
        return &KernelModule;
    }
    if (strcasecmp(name, "advapi32") == 0 || strcasecmp(name, "advapi32.dll") == 0) {
        return &AdvapiModule;
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

// An older system lacks some operations.
bool MissingHere(const char* name) {
    return (!MachineGet().FirmwareTableService && std::strcmp(name, "GetSystemFirmwareTable") == 0) ||
           (MachineGet().WindowsMajor < 6 && std::strcmp(name, "GetFinalPathNameByHandleA") == 0) ||
           (MachineGet().UnderWow64 == Wow64::Unknown && std::strcmp(name, "IsWow64Process") == 0);
}

// The resources: the helper driver's images, under their numbers.
struct Resource {
    std::uintptr_t Number;
    bool Bits64;
};
Resource Resources[] = {{2, false}, {3, true}};
constexpr char ResourceType[] = "BIN";
constexpr std::uintptr_t NumberLimit = 0x10000; // names below it are numbers

bool IsResource(const void* value) {
    return value == &Resources[0] || value == &Resources[1];
}

// The program's own path, as this computer writes it; empty when it does not tell.
std::string ProgramPath() {
    if (!MachineGet().Program.empty()) {
        return MachineGet().Program;
    }
    char own[4096];
    const ssize_t length = readlink("/proc/self/exe", own, sizeof own);
    return length > 0 ? std::string(own, static_cast<std::size_t>(length)) : std::string();
}

// Hands out a module's path, cut to the room there is; the result is its length, or the room when it was cut.
template <typename Character>
DWORD PathGive(HMODULE module, const std::basic_string<Character>& path, Character* buffer, DWORD room) {
    if ((module != nullptr && module != &ProgramModule) || buffer == nullptr || room == 0) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    if (path.empty()) {
        return FailFalse(ERROR_GEN_FAILURE);
    }
    const std::size_t given = path.copy(buffer, room - 1);
    buffer[given] = 0;
    if (given == path.size()) {
        return static_cast<DWORD>(given);
    }
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return room;
}

// What a text is in a code page that has ASCII only.
std::string AsciiText(const std::wstring& wide) {
    std::string text;
    for (const wchar_t one : wide) {
        text += one < 0x80 ? static_cast<char>(one) : '?';
    }
    return text;
}

} // namespace

HMODULE WINAPI GetModuleHandleA(LPCSTR lpModuleName) {
    if (FailsWith(Named("GetModuleHandleA"), ERROR_MOD_NOT_FOUND)) {
        return nullptr;
    }
    return lpModuleName == nullptr ? &ProgramModule : ModuleFind(lpModuleName);
}

FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName) {
    if (FailsWith(Named("GetProcAddress"), ERROR_PROC_NOT_FOUND)) {
        return nullptr;
    }
    if (hModule == &KernelModule) {
        for (const Export& one : KernelExports) {
            if (std::strcmp(one.Name, lpProcName) == 0 && !MissingHere(one.Name)) {
                return one.Address;
            }
        }
    } else if (hModule == &AdvapiModule) {
        for (const Export& one : AdvapiExports) {
            if (std::strcmp(one.Name, lpProcName) == 0) {
                return one.Address;
            }
        }
    }
    SetLastError(hModule == nullptr ? ERROR_INVALID_HANDLE : ERROR_PROC_NOT_FOUND);
    return nullptr;
}

DWORD WINAPI GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) {
    if (FailsWith(Named("GetModuleFileNameA"), ERROR_MOD_NOT_FOUND)) {
        return 0;
    }
    const std::string path = ProgramPath();
    return PathGive(hModule, MachineGet().Utf8 ? path : AsciiText(WideText(path)), lpFilename, nSize);
}

DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize) {
    if (FailsWith(Named("GetModuleFileNameW"), ERROR_MOD_NOT_FOUND)) {
        return 0;
    }
    return PathGive(hModule, WideText(ProgramPath()), lpFilename, nSize);
}

HRSRC WINAPI FindResourceA(HMODULE hModule, LPCSTR lpName, LPCSTR lpType) {
    if (FailsWith(Named("FindResourceA"), ERROR_RESOURCE_NAME_NOT_FOUND)) {
        return nullptr;
    }
    const bool typeKnown =
        reinterpret_cast<std::uintptr_t>(lpType) >= NumberLimit && strcasecmp(lpType, ResourceType) == 0;
    if ((hModule != nullptr && hModule != &ProgramModule) || !typeKnown) {
        SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
        return nullptr;
    }
    for (Resource& one : Resources) {
        if (one.Number == reinterpret_cast<std::uintptr_t>(lpName)) {
            return reinterpret_cast<HRSRC>(&one);
        }
    }
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC hResInfo) {
    if (Fails(Named("LoadResource")) || !IsResource(hResInfo)) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    return hResInfo;
}

LPVOID WINAPI LockResource(HGLOBAL hResData) {
    if (Fails(Named("LockResource")) || !IsResource(hResData)) {
        return nullptr;
    }
    return const_cast<std::uint8_t*>(DriverImage(static_cast<const Resource*>(hResData)->Bits64).data());
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC hResInfo) {
    if (Fails(Named("SizeofResource")) || !IsResource(hResInfo)) {
        return FailFalse(ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    return static_cast<DWORD>(DriverImage(reinterpret_cast<const Resource*>(hResInfo)->Bits64).size());
}
