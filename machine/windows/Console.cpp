// The console: one of a fixed size, the terminal of standard output, or none.
#include "machine/host/Terminal.h"
#include "machine/windows/LastError.h"

#include <conio.h>
#include <windows.h>

#include <cstdio>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace StandIn;

namespace {

constexpr std::intptr_t OutputHandle = 7; // values that no other handle has, for their lowest bits are set
constexpr std::intptr_t ErrorHandle = 15;
constexpr WORD DefaultColour = 7; // light grey on black
constexpr int EndOfInput = -1;
constexpr int EnterKey = '\r';

// The size of the console behind standard output; false when there is none, or none that keys can be read from.
bool SizeGet(SHORT* columns, SHORT* rows) {
    const Machine& machine = MachineGet();
    if (machine.Console == ConsoleKind::Fixed) {
        *columns = static_cast<SHORT>(machine.ConsoleColumns);
        *rows = static_cast<SHORT>(machine.ConsoleRows);
        return true;
    }
    winsize size{};
    if (machine.Console == ConsoleKind::None || isatty(STDOUT_FILENO) == 0 ||
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0 || !TerminalReadable()) {
        return false;
    }
    *columns = static_cast<SHORT>(size.ws_col);
    *rows = static_cast<SHORT>(size.ws_row);
    return true;
}

// The cells of the console that a handle writes to; 0 with the last error set when it does not.
DWORD CellsOf(HANDLE handle) {
    SHORT columns = 0;
    SHORT rows = 0;
    if (reinterpret_cast<std::intptr_t>(handle) == OutputHandle && SizeGet(&columns, &rows)) {
        return static_cast<DWORD>(columns) * static_cast<DWORD>(rows);
    }
    return FailFalse(ERROR_INVALID_HANDLE);
}

// Goes through the stream that the program prints to, so that it comes in order with the text.
void TerminalSend(const char* text) {
    if (MachineGet().Console == ConsoleKind::Terminal) {
        std::fputs(text, stdout);
        std::fflush(stdout);
    }
}

bool IsHome(COORD place) {
    return place.X == 0 && place.Y == 0;
}

} // namespace

HANDLE WINAPI GetStdHandle(DWORD nStdHandle) {
    if (FailsWith(Named("GetStdHandle"), ERROR_INVALID_HANDLE)) {
        return INVALID_HANDLE_VALUE;
    }
    if (nStdHandle != STD_OUTPUT_HANDLE && nStdHandle != STD_ERROR_HANDLE) {
        SetLastError(ERROR_INVALID_HANDLE);
        return INVALID_HANDLE_VALUE;
    }
    return reinterpret_cast<HANDLE>(nStdHandle == STD_OUTPUT_HANDLE ? OutputHandle : ErrorHandle);
}

// Callers only look whether it succeeds, so the modes are always 0. A machine's console is that of standard output;
// standard error is this computer's.
BOOL WINAPI GetConsoleMode(HANDLE hConsoleHandle, LPDWORD lpMode) {
    if (FailsWith(Named("GetConsoleMode"), ERROR_INVALID_HANDLE)) {
        return FALSE;
    }
    const auto handle = reinterpret_cast<std::intptr_t>(hConsoleHandle);
    const ConsoleKind kind = MachineGet().Console;
    const bool output = handle == OutputHandle && kind != ConsoleKind::None &&
                        (kind != ConsoleKind::Terminal || isatty(STDOUT_FILENO) != 0);
    if (!output && (handle != ErrorHandle || isatty(STDERR_FILENO) == 0)) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    *lpMode = 0;
    return TRUE;
}

// The file behind standard output is this computer's.
BOOL WINAPI GetFileSizeEx(HANDLE hFile, PLARGE_INTEGER lpFileSize) {
    struct stat status {};
    if (reinterpret_cast<std::intptr_t>(hFile) != OutputHandle || fstat(STDOUT_FILENO, &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    lpFileSize->QuadPart = status.st_size;
    return TRUE;
}

BOOL WINAPI SetFilePointerEx(HANDLE hFile, LARGE_INTEGER liDistanceToMove, PLARGE_INTEGER, DWORD dwMoveMethod) {
    if (reinterpret_cast<std::intptr_t>(hFile) != OutputHandle || dwMoveMethod != FILE_BEGIN ||
        lseek(STDOUT_FILENO, liDistanceToMove.QuadPart, SEEK_SET) < 0) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    return TRUE;
}

BOOL WINAPI SetEndOfFile(HANDLE hFile) {
    const off_t place = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    if (reinterpret_cast<std::intptr_t>(hFile) != OutputHandle || place < 0 || ftruncate(STDOUT_FILENO, place) != 0) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    return TRUE;
}

BOOL WINAPI GetConsoleScreenBufferInfo(HANDLE hConsoleOutput, PCONSOLE_SCREEN_BUFFER_INFO lpConsoleScreenBufferInfo) {
    if (FailsWith(Named("GetConsoleScreenBufferInfo"), ERROR_INVALID_HANDLE)) {
        return FALSE;
    }
    SHORT columns = 0;
    SHORT rows = 0;
    if (reinterpret_cast<std::intptr_t>(hConsoleOutput) != OutputHandle || !SizeGet(&columns, &rows)) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    CONSOLE_SCREEN_BUFFER_INFO info{};
    info.dwSize = COORD{columns, rows};
    info.wAttributes = DefaultColour;
    *lpConsoleScreenBufferInfo = info;
    return TRUE;
}

// Only the whole console is ever filled, with blanks.
BOOL WINAPI FillConsoleOutputCharacterA(HANDLE hConsoleOutput, CHAR cCharacter, DWORD nLength, COORD dwWriteCoord,
                                        LPDWORD lpNumberOfCharsWritten) {
    if (FailsWith(Named("FillConsoleOutputCharacterA"), ERROR_INVALID_HANDLE)) {
        return FALSE;
    }
    const DWORD cells = CellsOf(hConsoleOutput);
    if (cells == 0) {
        return FALSE;
    }
    if (cCharacter != ' ' || nLength < cells || !IsHome(dwWriteCoord)) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    TerminalSend("\x1b[2J");
    *lpNumberOfCharsWritten = cells;
    return TRUE;
}

// Erasing a terminal has set its cells' colour already, so nothing is sent.
BOOL WINAPI FillConsoleOutputAttribute(HANDLE hConsoleOutput, WORD, DWORD, COORD, LPDWORD lpNumberOfAttrsWritten) {
    if (FailsWith(Named("FillConsoleOutputAttribute"), ERROR_INVALID_HANDLE)) {
        return FALSE;
    }
    *lpNumberOfAttrsWritten = CellsOf(hConsoleOutput);
    return *lpNumberOfAttrsWritten != 0;
}

BOOL WINAPI SetConsoleCursorPosition(HANDLE hConsoleOutput, COORD dwCursorPosition) {
    if (FailsWith(Named("SetConsoleCursorPosition"), ERROR_INVALID_HANDLE) || CellsOf(hConsoleOutput) == 0) {
        return FALSE;
    }
    if (!IsHome(dwCursorPosition)) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    TerminalSend("\x1b[H");
    return TRUE;
}

// Without a terminal there is nothing to wait for.
extern "C" int _kbhit() {
    return MachineGet().Console != ConsoleKind::Terminal || TerminalKeyWaits() ? 1 : 0;
}

extern "C" int _getch() {
    KeySeen();
    switch (MachineGet().Console) {
    case ConsoleKind::Fixed:
        return EnterKey;
    case ConsoleKind::Terminal:
        return TerminalKeyRead();
    default:
        return EndOfInput;
    }
}
