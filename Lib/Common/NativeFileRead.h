// Whole-file reads from the file system.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// Reads the file of that name into a new block; the results are those of RyxFileRead.
RyxStatus NativeFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size);
