// The signals that interrupt, stop or end a process.
#pragma once

#include <csignal>

namespace StandIn {

// Has a handler called for every signal that interrupts or ends a process, unless that is ignored. When the handler
// returns false, the signal does what it does when nobody catches it.
void InterruptsCatch(bool (*handler)(int number));

// The signal that interrupted the process first, or 0.
int InterruptTaken();

// Has a handler called for a signal, unless that is ignored or caught otherwise, and keeps what was done before.
void SignalCatch(int number, void (*handler)(int), struct sigaction* before);

// Has `step`, which has to be fit for handlers, called first when a signal interrupts the process.
void InterruptFirst(void (*step)());

// Does with a signal what the system does when nobody catches it. Returns when the process goes on. Fit for handlers.
void SignalDefaultRaise(int number);

// Holds back every signal that is caught here, for as long as the object lives.
class SignalsHeld {
public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t Before{};
};

} // namespace StandIn
