// The library's numbered options, the recorded arguments, whole-file reads and the platform's name.
#pragma once

#include "Lib/Common/NativeFileRead.h"
#include "Lib/Common/PlatformName.h"
#include "Lib/RyxNumbers.h"
#include "Lib/RyxStatus.h"

#include <cstdint>

// Sets an option from a low and a high 32-bit word. RyxErrorArgument: an option number above 38, or a value that the
// option does not take; the option keeps its value then. Option 21: RyxErrorUnsupported for the value 1. Options 27, 28
// and 29 switch the firmware communication method (3, 4, 2) and return the switch's status; a failed switch leaves the
// flag 0.
RyxStatus RyxOptionSet(std::uint32_t option, std::uint32_t low, std::uint32_t high);

// Records the process arguments for the argument collection; the array is kept, not copied, and must outlive the
// library's use. RyxErrorArgument: no array or a count of 0 (nothing is recorded).
RyxStatus RyxArgsSet(std::uint32_t count, char** arguments);

// The code of the platform that the library is built for: 1 DOS, 2 Shell, 3 Windows, 4 Linux.
std::uint32_t RyxPlatformIdGet();
