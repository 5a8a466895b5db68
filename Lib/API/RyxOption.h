// The library's numbered options, the recorded arguments, whole-file reads and the platform's name.
#pragma once

#include "Lib/RyxNumbers.h"
#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

// Sets an option from a low and a high 32-bit word. RyxErrorArgument: an option number above 38, or a value that the
// option does not take; the option keeps its value then. Option 21: RyxErrorUnsupported for the value 1. Options 27, 28
// and 29 switch the firmware communication method (3, 4, 2) and return the switch's status; a failed switch leaves the
// flag 0.
RyxStatus RyxOptionSet(std::uint32_t option, std::uint32_t low, std::uint32_t high);

// Records the process arguments for the argument collection; the array is kept, not copied, and must outlive the
// library's use. RyxErrorArgument: no array or a count of 0 (nothing is recorded).
RyxStatus RyxArgsSet(std::uint32_t count, char** arguments);

// Reads a whole file into a new block. An empty file gives RyxOk, no block and size 0. RyxErrorArgument: no name or
// no out-parameter; RyxErrorFileOpen, RyxErrorFileClose, RyxErrorFileRead: the file can't be opened, closed or read
// whole; RyxErrorMemory: no memory for the block.
RyxStatus RyxFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size);

// The platform description, such as "MS Windows 32-bit"; the text is the library's. RyxErrorArgument: no out-parameter.
RyxStatus RyxPlatformNameGet(const char** text);

// The code of the platform that the library is built for: 1 DOS, 2 Shell, 3 Windows, 4 Linux.
std::uint32_t RyxPlatformIdGet();
