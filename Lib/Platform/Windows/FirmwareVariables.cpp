// Firmware environment variables.
#include "Lib/Platform/FirmwareVariables.h"

#include "Lib/Platform/Handle.h"

#include <windows.h>

#include <cstddef>

namespace {

// A text in the system's own wide characters, cut after 63 of them.
struct WideText {
    explicit WideText(const char16_t* text) {
        std::size_t at = 0;
        while (at + 1 < sizeof Characters / sizeof Characters[0] && text[at] != 0) {
            Characters[at] = static_cast<WCHAR>(text[at]);
            ++at;
        }
        Characters[at] = 0;
    }
    WCHAR Characters[64];
};

} // namespace

bool FirmwareVariablePrivilegeEnable() {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &opened)) {
        return false;
    }
    const HandleOwner token(opened);
    TOKEN_PRIVILEGES wanted{};
    wanted.PrivilegeCount = 1;
    wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!LookupPrivilegeValueA(nullptr, "SeSystemEnvironmentPrivilege", &wanted.Privileges[0].Luid)) {
        return false;
    }
    // The adjustment also succeeds when it could not grant what the token lacks; the error number tells.
    SetLastError(ERROR_SUCCESS);
    return AdjustTokenPrivileges(token.get(), FALSE, &wanted, 0, nullptr, nullptr) && GetLastError() == ERROR_SUCCESS;
}

bool FirmwareVariablesAvailable() {
    unsigned char answer[8];
    const WideText name(u"");
    const WideText guid(u"{00000000-0000-0000-0000-000000000000}");
    SetLastError(ERROR_SUCCESS);
    return GetFirmwareEnvironmentVariableW(name.Characters, guid.Characters, answer, sizeof answer) == 0 &&
           GetLastError() == ERROR_NOACCESS;
}

bool FirmwareVariableRead(const char16_t* name, const char16_t* guid, void* buffer, std::uint32_t size,
                          std::uint32_t* length) {
    const DWORD got =
        GetFirmwareEnvironmentVariableW(WideText(name).Characters, WideText(guid).Characters, buffer, size);
    if (got == 0 || got > size) {
        return false;
    }
    *length = got;
    return true;
}

bool FirmwareVariableWrite(const char16_t* name, const char16_t* guid, const void* data, std::uint32_t size) {
    return SetFirmwareEnvironmentVariableW(WideText(name).Characters, WideText(guid).Characters,
                                           const_cast<void*>(data), size) != 0;
}
