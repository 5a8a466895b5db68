// The console behind standard output.
#include "Lib/Platform/Console.h"

#include <conio.h>
#include <windows.h>

RyxStatus ConsoleSizeGet(std::uint32_t* width, std::uint32_t* height) {
    *width = 0;
    *height = 0;
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) || info.dwSize.X < 0 || info.dwSize.Y < 0) {
        return RyxErrorUnsupported;
    }
    *width = static_cast<std::uint32_t>(info.dwSize.X);
    *height = static_cast<std::uint32_t>(info.dwSize.Y);
    return RyxOk;
}

void ConsoleClear() {
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(console, &info) || info.dwSize.X < 0 || info.dwSize.Y < 0) {
        return;
    }
    const DWORD cells = static_cast<DWORD>(info.dwSize.X) * static_cast<DWORD>(info.dwSize.Y);
    const COORD home{0, 0};
    DWORD filled = 0;
    FillConsoleOutputCharacterA(console, ' ', cells, home, &filled);
    FillConsoleOutputAttribute(console, info.wAttributes, cells, home, &filled);
    SetConsoleCursorPosition(console, home);
}

void ConsoleKeyWait() {
    _getch();
}
