// Interrupts: the signals that end a process are what a console's control events are on Windows.
#include "machine/host/Signals.h"
#include "machine/windows/LastError.h"

#include <windows.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

using namespace StandIn;

namespace {

PHANDLER_ROUTINE Handler = nullptr;

bool InterruptTell(int number) {
    return Handler(number == SIGINT ? CTRL_C_EVENT : CTRL_BREAK_EVENT);
}

} // namespace

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
    std::exit(static_cast<int>(uExitCode));
}

// A signal that was caught ends it early.
void WINAPI Sleep(DWORD dwMilliseconds) {
    if (dwMilliseconds == INFINITE) {
        pause();
        return;
    }
    const timespec time{static_cast<std::time_t>(dwMilliseconds / 1000),
                        static_cast<long>(dwMilliseconds % 1000) * 1000000};
    nanosleep(&time, nullptr);
}
