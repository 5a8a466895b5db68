// Whole files of the platform: the driver file and the program's own executable.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// Creates the file (an older one of that name is replaced) and writes `size` bytes. RyxErrorFileOpen: it can't be
// created; RyxErrorGeneral: the bytes could not all be written, and the file is removed again.
RyxStatus FileWriteWhole(const char* path, const void* data, std::uint32_t size);

// Reads the whole file into a new block of `size` bytes. RyxErrorFileOpen: it can't be opened or its size is not told;
// RyxErrorMemory; RyxErrorFileRead: the bytes could not all be read.
RyxStatus FileReadWhole(const char* path, std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size);

// Removes the file's read-only, hidden and system marks; removes the file. Failures are left alone.
void FileAttributesClear(const char* path);
void FileRemove(const char* path);
