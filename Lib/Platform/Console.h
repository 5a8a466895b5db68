// The console behind standard output.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Width and height of the screen buffer in cells. RyxErrorUnsupported (both 0) when standard output is no console.
RyxStatus ConsoleSizeGet(std::uint32_t* width, std::uint32_t* height);

// Fills the screen buffer with spaces in the current colour and homes the cursor; nothing when there is no console.
void ConsoleClear();

// Waits for one key press, unechoed.
void ConsoleKeyWait();
