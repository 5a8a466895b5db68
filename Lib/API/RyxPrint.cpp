// The console behind standard output.
#include "Lib/API/RyxPrint.h"

#include "Lib/Platform/Console.h"

bool RyxConsoleIsOutput() {
    return ConsoleIsOutput();
}

bool RyxConsoleIsErrors() {
    return ConsoleIsErrors();
}

RyxStatus RyxConsoleSizeGet(std::uint32_t* width, std::uint32_t* height) {
    return width == nullptr || height == nullptr ? RyxErrorArgument : ConsoleSizeGet(width, height);
}

void RyxKeyWait() {
    ConsoleKeyWait();
}

void RyxInterruptsCatch() {
    ConsoleInterruptsCatch();
}

bool RyxInterrupted() {
    return ConsoleInterrupted();
}

void RyxInterruptedEnd() {
    ConsoleInterruptedEnd();
}
