// The error number of the operation that failed last, for each thread.
#include "machine/windows/LastError.h"

namespace {

thread_local DWORD LastError = 0;

} // namespace

DWORD WINAPI GetLastError() {
    return LastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    LastError = dwErrCode;
}
