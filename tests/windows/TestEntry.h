// What the tests' driver images share: files whose names stand in the registry.
#pragma once

#include "driver/Kernel.h"

constexpr USHORT PathCapacity = 300;

// Reads a path from the registry as the kernel names files: "\??\C:\...". It stays empty when there is none.
void PathRead(UNICODE_STRING value, WCHAR (&path)[PathCapacity]);

bool FileOpen(WCHAR* path, ACCESS_MASK access, ULONG disposition, HANDLE* file);

// Called when the driver goes; null: nothing is.
extern void (*AtUnload)();
