// Runs that end early: interrupted, stopped, or with nowhere to print to.
#include "machine/model/Machine.h"
#include "machine/model/SampleMachine.h"
#include "machine/model/SmbiosBuilder.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"
#include "tests/Terminal.h"

#include <windows.h>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char Pause[] = "Press any key to continue...\n";
constexpr int BySignal = 1000; // as Terminal tells it

// The sample machine with a state that outlives its programs.
struct LastingMachine {
    explicit LastingMachine(const std::string& lines = "") {
        mkdir(State().c_str(), 0777);
        Folder.Write("rsmb", *StandIn::SampleMachine().SmbiosTable);
        Path = Folder.Write("machine", "firmware-table RSMB = rsmb\nstate = " + State() + "\n" + lines);
    }
    std::string State() const { return Folder.Path + "/state"; }

    // The machine seen from this process.
    void Enter() const {
        StandIn::Machine machine;
        machine.StateFolder = State();
        StartOver(machine);
    }
    // What programs left: the key of the running tools stays after every run, without a value.
    std::vector<std::string> Left() const {
        Enter();
        std::vector<std::string> left = StandIn::Leftovers();
        StartOver({});
        return left;
    }

    TemporaryFolder Folder;
    std::string Path;
};

const std::vector<std::string> Clean{"registry key Software\\RyxTool"};

// The program with a pipe behind its standard output. `prepare` runs in the new process.
class Piped {
public:
    explicit Piped(
        const std::string& machine, const std::function<void()>& prepare = [] {}) {
        int output[2];
        int errors[2];
        if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
            ADD_FAILURE() << "no pipe";
            return;
        }
        fcntl(output[1], F_SETPIPE_SZ, 4096); // far less than the listing
        Process = fork();
        if (Process == 0) {
            dup2(output[1], STDOUT_FILENO);
            dup2(errors[1], STDERR_FILENO);
            SignalsAsAtLogin();
            setenv("QUARRINET_MACHINE", machine.c_str(), 1);
            prepare();
            execl(QUARRINET_PROGRAM, QUARRINET_PROGRAM, "/type", nullptr);
            _exit(127);
        }
        close(output[1]);
        close(errors[1]);
        Output = output[0];
        Errors = errors[0];
    }
    ~Piped() {
        if (Process > 0) {
            kill(Process, SIGKILL);
            End();
        }
        close(Output);
        close(Errors);
    }
    Piped(const Piped&) = delete;
    Piped& operator=(const Piped&) = delete;

    bool Prints() const {
        pollfd wait{Output, POLLIN, 0};
        return poll(&wait, 1, 20000) == 1;
    }
    void ReaderLeaves() {
        close(Output);
        Output = -1;
    }
    void Signal(int number) const { kill(Process, number); }
    int End() {
        int state = 0;
        waitpid(Process, &state, 0);
        Process = -1;
        return WIFEXITED(state) ? WEXITSTATUS(state) : BySignal + WTERMSIG(state);
    }
    std::string Printed() const { return Rest(Output); }
    std::string Said() const { return Rest(Errors); }

private:
    static std::string Rest(int from) {
        std::string rest;
        char piece[4096];
        for (ssize_t got; (got = read(from, piece, sizeof piece)) > 0;) {
            rest.append(piece, static_cast<std::size_t>(got));
        }
        return rest;
    }

    int Output = -1;
    int Errors = -1;
    pid_t Process = -1;
};

TEST(Interrupted, InTheStart) {
    const LastingMachine machine("firmware = variables\n");
    machine.Enter();
    const HANDLE held = CreateMutexA(nullptr, FALSE, "RyxGlobalMutex");
    ASSERT_EQ(WaitForSingleObject(held, 0), WAIT_OBJECT_0);
    Piped program(machine.Path);
    const auto counted = [] {
        HKEY key = nullptr;
        const bool found = RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\RyxTool", 0, KEY_READ | KEY_WOW64_64KEY,
                                         &key) == ERROR_SUCCESS;
        DWORD count = 0;
        DWORD size = sizeof count;
        const bool there = found && RegQueryValueExA(key, "ToolsRefCount", nullptr, nullptr,
                                                     reinterpret_cast<BYTE*>(&count), &size) == ERROR_SUCCESS;
        RegCloseKey(key);
        return there;
    };
    for (int waited = 0; waited < 20000 && !counted(); ++waited) {
        usleep(1000);
    }
    ASSERT_TRUE(counted()) << "it waits for the mutex, with the driver loaded and counted";
    program.Signal(SIGTERM);
    ReleaseMutex(held);
    CloseHandle(held);
    EXPECT_EQ(program.End(), BySignal + SIGTERM);
    EXPECT_EQ(program.Printed() + program.Said(), "");
    EXPECT_EQ(machine.Left(), Clean);
}

TEST(Interrupted, InAListing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const LastingMachine machine;
        Piped program(machine.Path);
        ASSERT_TRUE(program.Prints());
        program.Signal(number); // while the pipe is full, or soon will be
        EXPECT_EQ(program.End(), BySignal + number);
        EXPECT_EQ(program.Printed().find("ERROR"), std::string::npos);
        EXPECT_EQ(program.Said(), "");
        EXPECT_EQ(machine.Left(), Clean);
    }
}

TEST(Interrupted, AReaderThatLeavesEndsItAsQuietly) {
    const LastingMachine machine;
    Piped program(machine.Path);
    ASSERT_TRUE(program.Prints());
    program.ReaderLeaves();
    EXPECT_EQ(program.End(), BySignal + SIGPIPE);
    EXPECT_EQ(program.Said(), "");
    EXPECT_EQ(machine.Left(), Clean);

    Piped ignoring(machine.Path, [] { std::signal(SIGPIPE, SIG_IGN); });
    ASSERT_TRUE(ignoring.Prints());
    ignoring.ReaderLeaves();
    EXPECT_EQ(ignoring.End(), 0);
    EXPECT_EQ(ignoring.Said(), "");
}

TEST(Interrupted, InAPause) {
    const auto waitAtPause = [](Terminal& terminal) {
        EXPECT_NE(terminal.ShownUntil(Pause).find(Pause), std::string::npos);
        terminal.KeyWaitAwait();
        EXPECT_FALSE(terminal.Plain());
    };
    for (const int number : {0, SIGINT, SIGTERM, SIGHUP}) {
        const LastingMachine machine;
        Terminal terminal({"/b", "/type", "0"}, machine.Path, 10);
        waitAtPause(terminal);
        if (number == 0) {
            terminal.Type("\x03"); // Ctrl+C
        } else {
            terminal.Signal(number);
        }
        EXPECT_EQ(terminal.ExitCode(), BySignal + (number == 0 ? SIGINT : number));
        EXPECT_TRUE(terminal.Plain()) << number;
        EXPECT_EQ(terminal.ShownAtEnd(), "");
        EXPECT_EQ(machine.Left(), Clean);
    }

    Terminal quit({"/b", "/type", "0"}, "sample", 10);
    waitAtPause(quit);
    quit.Type("\x1C"); // Ctrl+backslash
    EXPECT_EQ(quit.ExitCode(), BySignal + SIGQUIT);
    EXPECT_TRUE(quit.Plain());
}

TEST(Interrupted, AStoppedPauseGoesOnWaiting) {
    Terminal terminal(
        {"-c", "set -m; \"$0\" /nologo /b /type 0; read line; fg >/dev/null; echo code $?", QUARRINET_PROGRAM},
        "sample", 10, true, "/bin/sh");
    std::string whole = terminal.ShownUntil(Pause);
    terminal.Press("\x1A"); // Ctrl+Z
    for (int waited = 0; waited < 20000 && !terminal.Plain(); ++waited) {
        usleep(1000);
    }
    EXPECT_TRUE(terminal.Plain());
    terminal.Type("on\n");
    std::string shown;
    do {
        terminal.Press(" ");
        shown = terminal.ShownUntil(Pause);
        whole += shown;
    } while (shown.find(Pause) != std::string::npos);
    EXPECT_NE(whole.find("\ncode 0\n"), std::string::npos) << whole;
    EXPECT_NE(whole.find("Type : BIOS"), std::string::npos) << whole;
}

TEST(Interrupted, WhatWasIgnoredStaysIgnored) {
    const LastingMachine machine;
    Piped program(machine.Path, [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(program.Prints());
    program.Signal(SIGHUP);
    EXPECT_EQ(program.Printed(), RunProgram({"/type"}).Output);
    EXPECT_EQ(program.End(), 0);
}

TEST(Output, ThatIsLostIsReportedAndChangesNoExitCode) {
    const auto openFull = [] { dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); };
    const auto closed = [] { close(STDOUT_FILENO); };
    const LastingMachine machine;
    Piped full(machine.Path, openFull);
    EXPECT_EQ(full.End(), 0);
    EXPECT_EQ(full.Said(), "quarrinet: the output could not be written: No space left on device\n");
    Piped none(machine.Path, closed);
    EXPECT_EQ(none.End(), 0);
    EXPECT_EQ(none.Said(), "quarrinet: the output could not be written: Bad file descriptor\n");
    EXPECT_EQ(machine.Left(), Clean) << "and no other file takes the place of standard output";
    const LastingMachine refusing("administrator = no\n");
    Piped start(refusing.Path, openFull);
    EXPECT_EQ(start.End(), 255);
    EXPECT_EQ(start.Said(), "quarrinet: the output could not be written: No space left on device\n");
}

} // namespace
