// Interrupts: running out of memory, and the signals that end a process are what a console's control events are on
// Windows.
#include "machine/windows/Interrupts.h"

#include "machine/host/Signals.h"
#include "machine/model/Machine.h"
#include "machine/windows/LastError.h"

#include <windows.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using namespace StandIn;

namespace {

PHANDLER_ROUTINE Handler = nullptr;

bool MemoryOut = false;

bool InterruptTell(int number) {
    return Handler(number == SIGINT ? CTRL_C_EVENT : CTRL_BREAK_EVENT);
}

[[noreturn]] void MemoryEnd() {
    constexpr int exitUnusable = 255;
    std::fputs("quarrinet: not enough memory\n", stderr);
    std::exit(exitUnusable);
}

} // namespace

void StandIn::InterruptForMemory() {
    MemoryOut = true;
    if (Handler == nullptr) {
        MemoryEnd();
    }
    Handler(CTRL_BREAK_EVENT);
}

// There is one handler, the one added last. Nobody takes it away again.
BOOL WINAPI SetConsoleCtrlHandler(PHANDLER_ROUTINE HandlerRoutine, BOOL Add) {
    if (FailsWith(Named("SetConsoleCtrlHandler"), ERROR_NOT_ENOUGH_MEMORY)) {
        return FALSE;
    }
    if (HandlerRoutine == nullptr || !Add) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    Handler = HandlerRoutine;
    InterruptsCatch(InterruptTell);
    return TRUE;
}

// The code of an interrupted process is told by the signal.
void WINAPI ExitProcess(UINT uExitCode) {
    if (uExitCode == STATUS_CONTROL_C_EXIT && InterruptTaken() != 0) {
        SignalDefaultRaise(InterruptTaken());
    }
    if (MemoryOut) {
        MemoryEnd();
    }
    std::exit(static_cast<int>(uExitCode));
}

// Less than a second, or for ever. A signal that was caught ends it early.
void WINAPI Sleep(DWORD dwMilliseconds) {
    if (dwMilliseconds == INFINITE) {
        pause();
        return;
    }
    MachineGet().Clock(dwMilliseconds);
}
