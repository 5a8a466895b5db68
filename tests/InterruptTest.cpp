// Runs that end early: interrupted, stopped, or with nowhere to print to.
#include "machine/model/Machine.h"
#include "machine/model/SampleMachine.h"
#include "machine/model/SmbiosBuilder.h"
#include "machine/windows/MachineSet.h"
#include "tests/LastingMachine.h"
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
