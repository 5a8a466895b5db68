// Whole-file reads.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// Reads a whole file into a new block. An empty file gives RyxOk, no block and size 0. RyxErrorArgument: no name or
// no out-parameter; RyxErrorFileOpen, RyxErrorFileClose, RyxErrorFileRead: the file can't be opened, closed or read
// whole; RyxErrorMemory: no memory for the block.
RyxStatus RyxFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size);

// Reads the file of that name from the file system; the results are those of RyxFileRead.
RyxStatus NativeFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size);
