// The signals that interrupt, stop or end a process.
#include "machine/host/Signals.h"

#include <atomic>
#include <cerrno>

namespace StandIn {

namespace {

// Every signal that ends a process, but for those that tell of a fault in its code: it winds down for all of them.
constexpr int InterruptSignals[] = {SIGINT,    SIGTERM, SIGHUP,  SIGPIPE, SIGQUIT, SIGALRM,
                                    SIGVTALRM, SIGPROF, SIGUSR1, SIGUSR2, SIGXCPU, SIGPOLL};

bool (*Handler)(int number) = nullptr;
volatile std::sig_atomic_t Taken = 0;
std::atomic<void (*)()> FirstStep = nullptr;

sigset_t CaughtSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : InterruptSignals) {
        sigaddset(&set, number);
    }
    sigaddset(&set, SIGTSTP);
    return set;
}

// Runs in the middle of a wait or a write of the process's only thread, so that the handler must not wait for anything.
void InterruptTake(int number) {
    const int error = errno;
    if (Taken == 0) {
        Taken = number;
    } else if (number == SIGQUIT) {
        SignalDefaultRaise(number); // for who does not want to wait
    }
    if (void (*const step)() = FirstStep; step != nullptr) {
        step();
    }
    if (!Handler(number)) {
        SignalDefaultRaise(number);
    }
    errno = error;
}

} // namespace

void InterruptsCatch(bool (*handler)(int number)) {
    const SignalsHeld held;
    Handler = handler;
    for (const int number : InterruptSignals) {
        struct sigaction before {};
        SignalCatch(number, InterruptTake, &before);
    }
}

int InterruptTaken() {
    return Taken;
}

void InterruptFirst(void (*step)()) {
    FirstStep = step;
}

// A wait or a write ends when the signal comes.
void SignalCatch(int number, void (*handler)(int), struct sigaction* before) {
    sigaction(number, nullptr, before);
    if (before->sa_handler == SIG_IGN || (before->sa_handler != SIG_DFL && before->sa_handler != handler)) {
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
