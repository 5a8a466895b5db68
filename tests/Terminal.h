// A program at a terminal of its own.
#pragma once

#include "tests/Support.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>
#include <vector>

// Quarrinet, or another program, on a machine, with a pseudo-terminal for its standard streams. It can be kept from
// having a keyboard: then the terminal does not control it.
class Terminal {
public:
    Terminal(const std::vector<std::string>& arguments, const std::string& machine, unsigned short rows,
             bool keyboard = true, const std::string& program = QUARRINET_PROGRAM) {
        const winsize size{rows, 80, 0, 0};
        int slave = -1;
        if (openpty(&Master, &slave, nullptr, nullptr, &size) != 0) {
            ADD_FAILURE() << "no pseudo-terminal";
            return;
        }
        Process = fork();
        if (Process == 0) {
            close(Master);
            SignalsAsAtLogin();
            if (keyboard) {
                login_tty(slave);
            } else {
                setsid();
                for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
                    dup2(slave, stream);
                }
            }
            setenv("QUARRINET_MACHINE", machine.c_str(), 1);
            execv(program.c_str(), ArgumentVector(Behind(program, arguments)).Data());
            _exit(127);
        }
        close(slave);
    }
    ~Terminal() {
        if (Process > 0) {
            kill(Process, SIGKILL);
            waitpid(Process, nullptr, 0);
        }
        close(Slave);
        close(Master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // What was shown until `ending` came, or until the program ended. Line ends are as the program wrote them.
    std::string ShownUntil(const std::string& ending) {
        std::string shown;
        while (shown.find(ending) == std::string::npos || ending.empty()) {
            pollfd wait{Master, POLLIN, 0};
            char piece[4096];
            const ssize_t got = poll(&wait, 1, 20000) == 1 ? read(Master, piece, sizeof piece) : -1;
            if (got <= 0) {
                break;
            }
            std::copy_if(piece, piece + got, std::back_inserter(shown),
                         [](char shownByte) { return shownByte != '\r'; });
        }
        return shown;
    }
    // Whether the terminal is as it was found, which it is not while the program waits for a key.
    bool Plain() const {
        termios mode{};
        return tcgetattr(Master, &mode) == 0 && (mode.c_lflag & ECHO) != 0 && (mode.c_lflag & ICANON) != 0;
    }
    void KeyWaitAwait() const {
        for (int waited = 0; waited < 20000 && Plain(); ++waited) {
            usleep(1000);
        }
    }
    // Presses a key once the program waits for one: the bytes that a terminal sends for it.
    void Press(const std::string& key) const {
        KeyWaitAwait();
        Type(key);
    }
    void Type(const std::string& bytes) const {
        EXPECT_EQ(write(Master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void Signal(int number) const { kill(Process, number); }

    // Waits until the program ends, and gives its exit code, or 1000 and the number of the signal that ended it. The
    // modes of the terminal stay to be looked at, as long as nothing more is read from it.
    int ExitCode() {
        if (const char* const name = ptsname(Master)) {
            Slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        }
        int state = 0;
        for (int waited = 0; waitpid(Process, &state, WNOHANG) == 0; ++waited) {
            if (waited == 20000) {
                ADD_FAILURE() << "the program does not end";
                kill(Process, SIGKILL);
            }
            usleep(1000);
        }
        Process = -1;
        return WIFEXITED(state) ? WEXITSTATUS(state) : 1000 + WTERMSIG(state);
    }
    // What was shown up to the end of the program.
    std::string ShownAtEnd() {
        close(Slave);
        Slave = -1;
        return ShownUntil("");
    }

private:
    int Master = -1;
    int Slave = -1;
    pid_t Process = -1;
};
