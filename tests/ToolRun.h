// The library started in this process, and in others beside it.
#pragma once

#include "Lib/API/RyxLib.h"
#include "Lib/Common/DriverLoad.h"
#include "tests/Support.h"
#include "viewer/ProgramRun.h"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// What a process starts with: arguments behind the program's name, kept until the next start. Where the machine names
// no program, it is a small file: that of the tests themselves takes long to digest.
inline ArgumentVector& StartArguments(const std::vector<std::string>& arguments) {
    static const TemporaryFolder folder;
    static const std::string program = folder.Write("Quarrinet.exe", std::string("a program"));
    if (StandIn::MachineGet().Program.empty()) {
        StandIn::MachineGet().Program = program;
    }
    static std::optional<ArgumentVector> argv;
    return argv.emplace(Behind("/opt/Quarrinet", arguments)); // which is no switch
}

// Starts the library only.
inline RyxStatus Start(const std::vector<std::string>& arguments = {}) {
    ArgumentVector& argv = StartArguments(arguments);
    return RyxLibInit(argv.Count(), argv.Data());
}

// Runs the whole program and gives its exit code.
inline int Run(const std::vector<std::string>& arguments, const std::function<std::uint32_t()>& work = ViewerMain) {
    ArgumentVector& argv = StartArguments(arguments);
    return ProgramRun(static_cast<int>(argv.Count()), argv.Data(), work);
}

// A process that does something, tells that it has, and waits until it is let go on or killed.
class OtherProcess {
public:
    // `before` runs at once and its result is Told; `after` runs when the process is let go on.
    OtherProcess(const std::function<std::uint32_t()>& before, const std::function<void()>& after) {
        int up[2];
        int down[2];
        if (pipe(up) != 0 || pipe(down) != 0) {
            return;
        }
        Process = fork();
        if (Process == 0) {
            DriverStateReset(); // the parent's driver is not this process's
            const std::uint32_t told = before();
            char go = 0;
            const bool served = write(up[1], &told, sizeof told) == sizeof told && read(down[0], &go, 1) == 1;
            if (served) {
                after();
            }
            _exit(served ? 0 : 1);
        }
        close(up[1]);
        close(down[0]);
        if (read(up[0], &Told, sizeof Told) != sizeof Told) {
            ADD_FAILURE() << "the other process ended early";
        }
        close(up[0]);
        Go = down[1];
    }

    ~OtherProcess() { Kill(); }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    void LetGoOn() {
        EXPECT_EQ(write(Go, "g", 1), 1);
        End();
    }

    void Kill() {
        if (Process > 0) {
            kill(Process, SIGKILL);
            End();
        }
    }

    std::uint32_t Told = 0;

private:
    void End() {
        waitpid(Process, nullptr, 0);
        close(Go);
        Process = 0;
    }

    pid_t Process = 0;
    int Go = -1;
};
