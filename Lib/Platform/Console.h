// The console behind standard output: its size, its keyboard, and the interrupts that it and the system send.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Whether standard output is a console.
bool ConsoleIsOutput();

// Whether standard error is a console.
bool ConsoleIsErrors();

// Width and height of the screen buffer in cells. RyxErrorUnsupported (both 0) when standard output is no console, or
// when there is no console to read a key from.
RyxStatus ConsoleSizeGet(std::uint32_t* width, std::uint32_t* height);

// Fills the screen buffer with spaces in the current colour and homes the cursor; nothing when there is no console.
void ConsoleClear();

// Waits for one key press, unechoed, or for an interrupt. A press that arrives as several codes is one press.
void ConsoleKeyWait();

// From now on an interrupt (Ctrl+C, Ctrl+Break, the end of the console, of the session or of the system) does not end
// the process, but is there to be asked for. One that the process was started to ignore stays ignored.
void ConsoleInterruptsCatch();

// Whether an interrupt has come since.
bool ConsoleInterrupted();

// Ends the process as the system ends interrupted ones.
[[noreturn]] void ConsoleInterruptedEnd();

// The size in bytes of the file that standard output goes to. False when it is none.
bool OutputSizeGet(std::uint64_t* size);

// Makes that file so long, and writes on from there.
void OutputCut(std::uint64_t size);

// Whether the write to standard output that has just failed found that nobody reads there any more.
bool OutputReaderGone();
