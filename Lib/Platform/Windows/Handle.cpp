// Handles of the system.
#include "Lib/Platform/Handle.h"

#include <windows.h>

void HandleClose::operator()(void* handle) const {
    CloseHandle(handle);
}
