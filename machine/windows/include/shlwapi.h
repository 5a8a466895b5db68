// The path operations that the operating-system bindings use, answered by the stand-in.
#pragma once

#include <windows.h>

extern "C" BOOL WINAPI PathRemoveFileSpecA(LPSTR pszPath);
