// The console behind standard output.
#include "Lib/Platform/Console.h"

#include <conio.h>
#include <windows.h>

#include <atomic>
#include <cerrno>

namespace {

constexpr DWORD KeyPollMilliseconds = 10;

// What _getch gives first for a key that is no character; a second code says which.
constexpr int KeyCodeFollows = 0;
constexpr int KeyCodeFollowsToo = 0xE0;

std::atomic<bool> Interrupted = false;

// Runs on a thread of its own.
BOOL WINAPI InterruptTake(DWORD event) {
    Interrupted = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system takes the process away as soon as this returns, and after some seconds anyway: until then the
        // main thread winds down, and ends the process.
        Sleep(INFINITE);
    }
    return TRUE;
}

} // namespace

bool ConsoleIsOutput() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

bool ConsoleIsErrors() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

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

// _getch is called only when there is a key for it: while it waits it takes Ctrl+C for one, and no interrupt ends it.
void ConsoleKeyWait() {
    while (!_kbhit()) {
        if (Interrupted) {
            return;
        }
        Sleep(KeyPollMilliseconds);
    }
    const int key = _getch();
    // A character may have the same code, but then nothing follows at once.
    if ((key == KeyCodeFollows || key == KeyCodeFollowsToo) && _kbhit()) {
        _getch();
    }
}

void ConsoleInterruptsCatch() {
    SetConsoleCtrlHandler(InterruptTake, TRUE);
}

bool ConsoleInterrupted() {
    return Interrupted;
}

void ConsoleInterruptedEnd() {
    ExitProcess(STATUS_CONTROL_C_EXIT);
}

bool OutputSizeGet(std::uint64_t* size) {
    LARGE_INTEGER bytes;
    if (!GetFileSizeEx(GetStdHandle(STD_OUTPUT_HANDLE), &bytes)) {
        return false;
    }
    *size = static_cast<std::uint64_t>(bytes.QuadPart);
    return true;
}

void OutputCut(std::uint64_t size) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    LARGE_INTEGER place;
    place.QuadPart = static_cast<long long>(size);
    if (SetFilePointerEx(output, place, nullptr, FILE_BEGIN)) {
        SetEndOfFile(output);
    }
}

// Not every C runtime has an error number of its own for all ways in which the system says so.
bool OutputReaderGone() {
    const DWORD error = GetLastError();
    return errno == EPIPE || error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED;
}
