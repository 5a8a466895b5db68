// Console output: the one formatted print of viewer, decoders and library, with quiet mode and paging.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

#if defined(__MINGW32__)
#define RYX_PRINTF_LIKE __attribute__((format(gnu_printf, 1, 2)))
#else
#define RYX_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#endif

// Prints to standard output and flushes it. One call prints at most 1023 characters; the rest is cut. With option 0
// (quiet) set, and once the process is interrupted, it does nothing; with option 22 (paging) set it counts the lines of
// the format and pauses after a screenful. RyxErrorArgument: no format; RyxOk otherwise. Not reentrant.
RyxStatus RyxPrintf(const char* format, ...) RYX_PRINTF_LIKE;

// The number of the error (as of errno) for which something printed did not reach standard output; 0 when all of it
// did, or when only nobody reads there any more.
int RyxOutputErrorGet();

// Whether standard output is a console.
bool RyxConsoleIsOutput();

// The console's screen buffer in character cells. RyxErrorUnsupported (both 0) when standard output is no console, or
// there is none to read a key from; RyxErrorArgument for a missing out-parameter.
RyxStatus RyxConsoleSizeGet(std::uint32_t* width, std::uint32_t* height);

// Fills the console's screen buffer with spaces and homes the cursor; nothing when standard output is no console.
void RyxConsoleClear();

// Waits for one key press, unechoed, or until the process is interrupted.
void RyxKeyWait();

// From now on an interrupt (Ctrl+C, Ctrl+Break, the end of the console, of the session or of the system) stops prints
// and key waits, and leaves it to the process to end in its own time.
void RyxInterruptsCatch();

// Whether an interrupt has come since.
bool RyxInterrupted();

// Ends the process as the system ends interrupted ones.
[[noreturn]] void RyxInterruptedEnd();
