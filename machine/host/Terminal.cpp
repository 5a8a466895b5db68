// The controlling terminal's keyboard.
#include "machine/host/Terminal.h"

#include "machine/host/HostFile.h"
#include "machine/host/Signals.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace StandIn {

namespace {

constexpr int NoKey = -1;
constexpr int Escape = 0x1B;
constexpr int CodeFollows = 0xE0;
constexpr int OtherCharacter = '?'; // stands for NUL and for every character beyond ASCII

// How long the rest of a key press that comes as several bytes may take.
constexpr int RestMilliseconds = 50;

// The terminal while a key is waited for, with its modes before and meanwhile; -1 at other times.
volatile std::sig_atomic_t Keyboard = -1;
termios ModesBefore{};
termios ModesMeanwhile{};

// The second code of the key that was read last, or 0.
int SecondCode = 0;

// What the terminal's own key that stops the process did before the wait.
struct sigaction StopActionBefore {};

// The process stops here, with the terminal as it was. When it goes on, so does the wait.
void StopSignalTake(int number) {
    const int error = errno;
    tcsetattr(Keyboard, TCSANOW, &ModesBefore);
    SignalDefaultRaise(number);
    tcsetattr(Keyboard, TCSANOW, &ModesMeanwhile);
    errno = error;
}

// Gives the terminal back as it was. Fit for signal handlers.
void TerminalRestore() {
    const SignalsHeld held;
    if (Keyboard < 0) {
        return;
    }
    tcsetattr(Keyboard, TCSANOW, &ModesBefore);
    sigaction(SIGTSTP, &StopActionBefore, nullptr);
    close(Keyboard);
    Keyboard = -1;
}

void WaitBegin() {
    const SignalsHeld held;
    if (Keyboard >= 0 || InterruptTaken() != 0) {
        return;
    }
    std::fflush(stdout);
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (terminal < 0) {
        return;
    }
    if (tcgetattr(terminal, &ModesBefore) != 0) {
        close(terminal);
        return;
    }
    ModesMeanwhile = ModesBefore;
    ModesMeanwhile.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    ModesMeanwhile.c_cc[VMIN] = 1;
    ModesMeanwhile.c_cc[VTIME] = 0;
    Keyboard = terminal;
    InterruptFirst(TerminalRestore);
    SignalCatch(SIGTSTP, StopSignalTake, &StopActionBefore);
    tcsetattr(terminal, TCSANOW, &ModesMeanwhile);
}

// The next byte when it comes in time, or -1.
int ByteRead() {
    pollfd wait{Keyboard, POLLIN, 0};
    unsigned char byte = 0;
    return poll(&wait, 1, RestMilliseconds) == 1 && read(Keyboard, &byte, 1) == 1 ? byte : NoKey;
}

// Reads what follows the first byte of a UTF-8 character.
int CharacterRead(int first) {
    for (int lead = first; first >= 0xC0 && (lead & 0x40) != 0; lead <<= 1) {
        ByteRead();
    }
    return first != 0 && first < 0x80 ? first : OtherCharacter;
}

// Reads what follows an escape: "[", parameters and a letter; "O" and a letter; or a character. -1 when nothing does.
int SequenceRead() {
    int code = ByteRead();
    while (code == Escape) {
        code = ByteRead();
    }
    if (code == '[') {
        do {
            code = ByteRead();
        } while (code >= ' ' && code < '@');
        return code == '[' ? ByteRead() : code;
    }
    return code == 'O' ? ByteRead() : CharacterRead(code);
}

} // namespace

bool TerminalReadable() {
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    termios modes{};
    return terminal >= 0 && tcgetattr(terminal, &modes) == 0;
}

bool TerminalKeyWaits() {
    if (SecondCode != 0) {
        return true;
    }
    WaitBegin();
    if (Keyboard < 0) {
        return InterruptTaken() == 0;
    }
    pollfd wait{Keyboard, POLLIN, 0};
    return poll(&wait, 1, 0) > 0;
}

int TerminalKeyRead() {
    int key = SecondCode;
    SecondCode = 0;
    if (key != 0) {
        return key;
    }
    key = ByteRead();
    if (key == Escape) {
        if (const int code = SequenceRead(); code > 0) {
            key = CodeFollows;
            SecondCode = code;
        }
    } else {
        key = CharacterRead(key);
    }
    TerminalRestore();
    return key;
}

} // namespace StandIn
