// The error number of the operation that failed last, for each thread.
#include "machine/windows/LastError.h"

#include <cstring>

namespace {

thread_local DWORD LastError = 0;

} // namespace

// The stand-in has texts for what its own operations fail with most.
DWORD WINAPI FormatMessageA(DWORD, LPCVOID, DWORD dwMessageId, DWORD, LPSTR lpBuffer, DWORD nSize, void*) {
    const char* const text = dwMessageId == ERROR_ACCESS_DENIED    ? "Access is denied. "
                             : dwMessageId == ERROR_FILE_NOT_FOUND ? "There is no such file. "
                                                                   : "";
    const std::size_t length = std::strlen(text);
    if (length == 0 || length >= nSize) {
        SetLastError(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    std::memcpy(lpBuffer, text, length + 1);
    return static_cast<DWORD>(length);
}

DWORD WINAPI GetLastError() {
    return LastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    LastError = dwErrCode;
}
