// Console output: RyxPrintf, and the console behind standard output.
#pragma once

#include "Lib/Common/Print.h"

#include <cstdint>

// Whether standard output is a console.
bool RyxConsoleIsOutput();

// Whether standard error is a console.
bool RyxConsoleIsErrors();

// The console's screen buffer in character cells. RyxErrorUnsupported (both 0) when standard output is no console, or
// there is none to read a key from; RyxErrorArgument for a missing out-parameter.
RyxStatus RyxConsoleSizeGet(std::uint32_t* width, std::uint32_t* height);

// Waits for one key press, unechoed, or until the process is interrupted.
void RyxKeyWait();

// From now on an interrupt (Ctrl+C, Ctrl+Break, the end of the console, of the session or of the system) stops prints
// and key waits, and leaves it to the process to end in its own time.
void RyxInterruptsCatch();

// Whether an interrupt has come since.
bool RyxInterrupted();

// Ends the process as the system ends interrupted ones.
[[noreturn]] void RyxInterruptedEnd();
