// The console: one of a fixed size, the terminal of standard output, or none.
#include "Lib/Platform/StandIn/Faults.h"

#include <conio.h>
#include <windows.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

using namespace StandIn;

namespace {

// Values that no handle has, for their lowest bits are set.
constexpr std::intptr_t InputHandle = 3;
constexpr std::intptr_t OutputHandle = 7;
constexpr std::intptr_t ErrorHandle = 11;
constexpr WORD DefaultColour = 7; // light grey on black
constexpr int EndOfInput = -1;
constexpr int EnterKey = '\r';

// The size of the console behind standard output; false when there is none.
bool SizeGet(SHORT* columns, SHORT* rows) {
    const Machine& machine = MachineGet();
    if (machine.Console == ConsoleKind::Fixed) {
        *columns = static_cast<SHORT>(machine.ConsoleColumns);
        *rows = static_cast<SHORT>(machine.ConsoleRows);
        return true;
    }
    winsize size{};
    if (machine.Console == ConsoleKind::None || isatty(STDOUT_FILENO) == 0 ||
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        return false;
    }
    *columns = static_cast<SHORT>(size.ws_col);
    *rows = static_cast<SHORT>(size.ws_row);
    return true;
}

// Whether a handle is that of a console to write to, which has the size.
bool ConsoleOf(HANDLE handle, SHORT* columns, SHORT* rows) {
    if (reinterpret_cast<std::intptr_t>(handle) == OutputHandle && SizeGet(columns, rows)) {
        return true;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
}

bool OnTerminal() {
    return MachineGet().Console == ConsoleKind::Terminal;
}

// Goes through the stream that the program prints to, so that it comes in order with the text.
void TerminalSend(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

std::string CursorTo(COORD place) {
    if (place.X == 0 && place.Y == 0) {
        return "\x1b[H";
    }
    return "\x1b[" + std::to_string(place.Y + 1) + ";" + std::to_string(place.X + 1) + "H";
}

// Reads one byte from the controlling terminal. The interrupt key works as ever, once the terminal is as it was.
int TerminalKey() {
    std::fflush(stdout);
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    termios before{};
    if (terminal < 0 || tcgetattr(terminal, &before) != 0) {
        if (terminal >= 0) {
            close(terminal);
        }
        return EndOfInput;
    }
    termios raw = before;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(terminal, TCSADRAIN, &raw);
    unsigned char key = 0;
    ssize_t got = 0;
    do {
        got = read(terminal, &key, 1);
    } while (got < 0 && errno == EINTR);
    tcsetattr(terminal, TCSADRAIN, &before);
    close(terminal);
    if (got == 1 && (before.c_lflag & ISIG) != 0 && key == before.c_cc[VINTR]) {
        std::raise(SIGINT);
    }
    return got == 1 ? key : EndOfInput;
}

} // namespace

HANDLE WINAPI GetStdHandle(DWORD nStdHandle) {
    if (FailsWith(Named("GetStdHandle"), ERROR_INVALID_HANDLE)) {
        return INVALID_HANDLE_VALUE;
    }
    switch (nStdHandle) {
    case STD_INPUT_HANDLE:
        return reinterpret_cast<HANDLE>(InputHandle);
    case STD_OUTPUT_HANDLE:
        return reinterpret_cast<HANDLE>(OutputHandle);
    case STD_ERROR_HANDLE:
        return reinterpret_cast<HANDLE>(ErrorHandle);
    default:
        SetLastError(ERROR_INVALID_HANDLE);
        return INVALID_HANDLE_VALUE;
    }
}

BOOL WINAPI GetConsoleScreenBufferInfo(HANDLE hConsoleOutput, PCONSOLE_SCREEN_BUFFER_INFO lpConsoleScreenBufferInfo) {
    if (FailsWith(Named("GetConsoleScreenBufferInfo"), ERROR_INVALID_HANDLE)) {
        return FALSE;
    }
    SHORT columns = 0;
    SHORT rows = 0;
    if (!ConsoleOf(hConsoleOutput, &columns, &rows)) {
        return FALSE;
    }
    CONSOLE_SCREEN_BUFFER_INFO info{};
    info.dwSize = COORD{columns, rows};
    info.dwMaximumWindowSize = info.dwSize;
    info.wAttributes = DefaultColour;
    info.srWindow = SMALL_RECT{0, 0, static_cast<SHORT>(columns - 1), static_cast<SHORT>(rows - 1)};
    *lpConsoleScreenBufferInfo = info;
    return TRUE;
}

BOOL WINAPI FillConsoleOutputCharacterA(HANDLE hConsoleOutput, CHAR cCharacter, DWORD nLength, COORD dwWriteCoord,
                                        LPDWORD lpNumberOfCharsWritten) {
    SHORT columns = 0;
    SHORT rows = 0;
    if (FailsWith(Named("FillConsoleOutputCharacterA"), ERROR_INVALID_HANDLE) ||
        !ConsoleOf(hConsoleOutput, &columns, &rows)) {
        return FALSE;
    }
    const DWORD cells = static_cast<DWORD>(columns) * static_cast<DWORD>(rows);
    const bool whole = dwWriteCoord.X == 0 && dwWriteCoord.Y == 0 && nLength >= cells;
    if (OnTerminal()) {
        if (whole && cCharacter == ' ') {
            TerminalSend("\x1b[2J");
        } else {
            // The cursor stays where it is.
            const DWORD length = nLength < cells ? nLength : cells;
            TerminalSend("\x1b"
                         "7" +
                         CursorTo(dwWriteCoord) + std::string(length, cCharacter) + "\x1b" + "8");
        }
    }
    *lpNumberOfCharsWritten = nLength < cells ? nLength : cells;
    return TRUE;
}

// A terminal's cells take the colour that is current when they are erased.
BOOL WINAPI FillConsoleOutputAttribute(HANDLE hConsoleOutput, WORD, DWORD nLength, COORD,
                                       LPDWORD lpNumberOfAttrsWritten) {
    SHORT columns = 0;
    SHORT rows = 0;
    if (FailsWith(Named("FillConsoleOutputAttribute"), ERROR_INVALID_HANDLE) ||
        !ConsoleOf(hConsoleOutput, &columns, &rows)) {
        return FALSE;
    }
    const DWORD cells = static_cast<DWORD>(columns) * static_cast<DWORD>(rows);
    *lpNumberOfAttrsWritten = nLength < cells ? nLength : cells;
    return TRUE;
}

BOOL WINAPI SetConsoleCursorPosition(HANDLE hConsoleOutput, COORD dwCursorPosition) {
    SHORT columns = 0;
    SHORT rows = 0;
    if (FailsWith(Named("SetConsoleCursorPosition"), ERROR_INVALID_HANDLE) ||
        !ConsoleOf(hConsoleOutput, &columns, &rows)) {
        return FALSE;
    }
    if (dwCursorPosition.X < 0 || dwCursorPosition.Y < 0 || dwCursorPosition.X >= columns ||
        dwCursorPosition.Y >= rows) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (OnTerminal()) {
        TerminalSend(CursorTo(dwCursorPosition));
    }
    return TRUE;
}

extern "C" int _getch() {
    Seen(Named("_getch"));
    switch (MachineGet().Console) {
    case ConsoleKind::Fixed:
        return EnterKey;
    case ConsoleKind::Terminal:
        return TerminalKey();
    default:
        return EndOfInput;
    }
}
