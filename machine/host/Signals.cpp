// Interrupts: the signals that end a process are what a console's control events are on Windows.
#include "machine/host/Signals.h"

#include "machine/windows/Faults.h"

#include <windows.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <unistd.h>

using namespace StandIn;

namespace {

// A pipe without a reader ends a process as an interrupt does.
constexpr int InterruptSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

PHANDLER_ROUTINE Handler = nullptr;
struct sigaction ActionsBefore[std::size(InterruptSignals)];
volatile std::sig_atomic_t Taken = 0;
std::atomic<void (*)()> FirstStep = nullptr;

sigset_t CaughtSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : InterruptSignals) {
        sigaddset(&set, number);
    }
    sigaddset(&set, SIGTSTP);
    sigaddset(&set, SIGQUIT);
    return set;
}

// Interrupts a thread that waits or writes, which is the process's only one: so the handler is never told of an event
// that has it wait for the process's end.
void InterruptTake(int number) {
    const int error = errno;
    if (Taken == 0) {
        Taken = number;
    }
    if (void (*const step)() = FirstStep; step != nullptr) {
        step();
    }
    if (!Handler(number == SIGINT ? CTRL_C_EVENT : CTRL_BREAK_EVENT)) {
        SignalDefaultRaise(number);
    }
    errno = error;
}

} // namespace

namespace StandIn {

int InterruptTaken() {
    return Taken;
}

void InterruptFirst(void (*step)()) {
    FirstStep = step;
}

// A wait or a write ends when the signal comes.
void SignalCatch(int number, void (*handler)(int), struct sigaction* before) {
    sigaction(number, nullptr, before);
    if (before->sa_handler == SIG_IGN) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_mask = CaughtSignals();
    sigaction(number, &action, nullptr);
}

void SignalDefaultRaise(int number) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, &before);
    sigset_t one;
    sigset_t mask;
    sigemptyset(&one);
    sigaddset(&one, number);
    raise(number);
    pthread_sigmask(SIG_UNBLOCK, &one, &mask);
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    sigaction(number, &before, nullptr);
}

SignalsHeld::SignalsHeld() {
    const sigset_t caught = CaughtSignals();
    pthread_sigmask(SIG_BLOCK, &caught, &Before);
}

SignalsHeld::~SignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &Before, nullptr);
}

} // namespace StandIn

// There is one handler at a time.
BOOL WINAPI SetConsoleCtrlHandler(PHANDLER_ROUTINE HandlerRoutine, BOOL Add) {
    if (FailsWith(Named("SetConsoleCtrlHandler"), ERROR_NOT_ENOUGH_MEMORY)) {
        return FALSE;
    }
    if (HandlerRoutine == nullptr || Handler != (Add ? nullptr : HandlerRoutine)) {
        return FailFalse(ERROR_INVALID_PARAMETER);
    }
    const SignalsHeld held;
    Handler = Add ? HandlerRoutine : nullptr;
    for (std::size_t i = 0; i < std::size(InterruptSignals); ++i) {
        if (Add) {
            SignalCatch(InterruptSignals[i], InterruptTake, &ActionsBefore[i]);
        } else {
            sigaction(InterruptSignals[i], &ActionsBefore[i], nullptr);
        }
    }
    return TRUE;
}

// The code of an interrupted process is told by the signal.
void WINAPI ExitProcess(UINT uExitCode) {
    if (uExitCode == STATUS_CONTROL_C_EXIT && Taken != 0) {
        SignalDefaultRaise(Taken);
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
