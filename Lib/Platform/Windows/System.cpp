// The operating system's version and this process: processors, priority, rights, executable, environment.
#include "Lib/Platform/System.h"

#include "Lib/Platform/Handle.h"

#include <shlwapi.h>
#include <windows.h>

#include <cstdlib>
#include <cstring>

namespace {

// The calling thread's token, or the process's when the thread has none; null when neither can be opened.
HandleOwner CurrentTokenOpen(DWORD access) {
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), access, TRUE, &token)) {
        return HandleOwner(token);
    }
    if (GetLastError() == ERROR_NO_TOKEN && OpenProcessToken(GetCurrentProcess(), access, &token)) {
        return HandleOwner(token);
    }
    return nullptr;
}

// Checks an impersonation token against a descriptor that lets only this group in.
bool TokenInGroup(HANDLE token, PSID group) {
    constexpr DWORD accessRead = 1;
    constexpr DWORD accessWrite = 2;
    alignas(ACL) unsigned char list[256];
    SECURITY_DESCRIPTOR descriptor;
    if (!InitializeAcl(reinterpret_cast<PACL>(list), sizeof list, ACL_REVISION) ||
        !AddAccessAllowedAce(reinterpret_cast<PACL>(list), ACL_REVISION, accessRead | accessWrite, group) ||
        !InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&descriptor, TRUE, reinterpret_cast<PACL>(list), FALSE) ||
        // The check refuses a descriptor without owner and group.
        !SetSecurityDescriptorOwner(&descriptor, group, FALSE) ||
        !SetSecurityDescriptorGroup(&descriptor, group, FALSE)) {
        return false;
    }
    GENERIC_MAPPING mapping{accessRead, accessWrite, 0, accessRead | accessWrite};
    PRIVILEGE_SET privileges;
    DWORD privilegesSize = sizeof privileges;
    DWORD granted = 0;
    BOOL allowed = FALSE;
    return AccessCheck(&descriptor, token, accessRead, &mapping, &privileges, &privilegesSize, &granted, &allowed) &&
           allowed;
}

} // namespace

void SystemVersionGet(std::uint32_t* major, std::uint32_t* minor) {
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    const bool told = GetVersionExA(&version) != 0;
    *major = told ? version.dwMajorVersion : 0;
    *minor = told ? version.dwMinorVersion : 0;
}

bool ProcessUnderWow64() {
    using Wow64Query = BOOL(WINAPI*)(HANDLE process, PBOOL under);
    const HMODULE module = GetModuleHandleA("kernel32");
    const Wow64Query query =
        module == nullptr
            ? nullptr
            : reinterpret_cast<Wow64Query>(reinterpret_cast<void*>(GetProcAddress(module, "IsWow64Process")));
    BOOL under = FALSE;
    return query != nullptr && query(GetCurrentProcess(), &under) && under;
}

bool ProcessAffinityGet(std::uint64_t* mask) {
    DWORD_PTR process = 0;
    DWORD_PTR system = 0;
    if (!GetProcessAffinityMask(GetCurrentProcess(), &process, &system)) {
        return false;
    }
    *mask = process;
    return true;
}

bool ProcessAffinitySet(std::uint64_t mask) {
    return SetProcessAffinityMask(GetCurrentProcess(), static_cast<DWORD_PTR>(mask)) != 0;
}

bool ThreadAffinitySet(std::uint64_t mask) {
    return SetThreadAffinityMask(GetCurrentThread(), static_cast<DWORD_PTR>(mask)) != 0;
}

void ProcessPriorityRaise() {
    SetPriorityClass(GetCurrentProcess(), HIGH_PRIORITY_CLASS);
}

bool ProcessIsAdministrator() {
    const HandleOwner token = CurrentTokenOpen(TOKEN_DUPLICATE | TOKEN_QUERY);
    HANDLE duplicate = nullptr;
    if (token == nullptr || !DuplicateToken(token.get(), SecurityImpersonation, &duplicate)) {
        return false;
    }
    const HandleOwner impersonation(duplicate);
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID administrators = nullptr;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                  &administrators)) {
        return false;
    }
    const bool member = TokenInGroup(impersonation.get(), administrators);
    FreeSid(administrators);
    return member;
}

bool ExecutableFolderGet(char* folder, std::size_t capacity) {
    // The program's name goes, so that only the folder has to fit.
    char path[0x1000];
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    if (length == 0 || length >= sizeof path || !PathRemoveFileSpecA(path)) {
        return false;
    }
    const std::size_t size = std::strlen(path) + 1;
    if (size > capacity) {
        return false;
    }
    std::memcpy(folder, path, size);
    return true;
}

bool TemporaryFolderGet(char* folder, std::size_t capacity) {
    const DWORD length = GetTempPathA(static_cast<DWORD>(capacity), folder);
    return length != 0 && length < capacity;
}

std::string SystemErrorText(std::uint32_t error) {
    char text[512];
    // Without line breaks inside; the last one and the full stop go, too.
    DWORD length =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, error, 0, text, sizeof text, nullptr);
    while (length != 0 && std::strchr(" .\r\n", text[length - 1]) != nullptr) {
        --length;
    }
    return std::string(text, length);
}

void ThreadPause(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

const char* EnvironmentGet(const char* name) {
    return std::getenv(name);
}
