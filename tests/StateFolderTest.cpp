// State folders: programs that run beside each other on one, and what a folder may do to its users.
#include "Lib/Common/DriverLoad.h"
#include "machine/host/HostFile.h"
#include "machine/windows/State.h"
#include "tests/LastingMachine.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <windows.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <set>
#include <sstream>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <thread>

namespace {

using StandIn::Machine;

std::string Content(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// In a new process: sets a limit of it, soft and hard.
std::function<void()> Limited(__rlimit_resource resource, rlim_t limit) {
    return [=] {
        const rlimit both{limit, limit};
        setrlimit(resource, &both);
    };
}

TEST(Together, EightAtOnceNeitherFailNorMiscount) {
    const std::string listing = RunProgram({"/type"}).Output;
    for (int round = 0; round < 4; ++round) {
        const LastingMachine machine;
        std::list<Piped> programs;
        for (int i = 0; i < 8; ++i) {
            programs.emplace_back(machine.Path);
        }
        std::list<std::thread> readers;
        std::vector<std::string> printed(programs.size());
        std::size_t number = 0;
        for (Piped& program : programs) {
            readers.emplace_back([&program, &text = printed[number++]] { text = program.Printed(); });
        }
        for (std::thread& reader : readers) {
            reader.join();
        }
        for (Piped& program : programs) {
            EXPECT_EQ(program.Said(), "");
            EXPECT_EQ(program.End(), 0);
        }
        EXPECT_EQ(std::count(printed.begin(), printed.end(), listing), 8);
        EXPECT_EQ(machine.Left(), Clean);
    }
}

// A kernel keeps a driver whose device is open, though its service is stopped and gone, and starts no second one beside
// it. Whoever ends gives the device back.
TEST(Together, ADriverWhoseDeviceIsOpenKeepsItsName) {
    const LastingMachine machine;
    machine.Enter();
    const auto startThere = [&machine] {
        machine.Enter();
        return Start();
    };
    OtherProcess other(startThere, [] {});
    ASSERT_EQ(other.Told, RyxOk);
    machine.Enter();
    DriverServiceRemove();
    EXPECT_FALSE(DriverDeviceOpen());
    EXPECT_EQ(DriverRequest(DriverLoad), RyxErrorDriverLoad);
    other.Kill();
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    StartOver({});
}

TEST(Together, AMutexThatCantBeHadIsGoneWithout) {
    const LastingMachine machine;
    machine.Enter();
    const HANDLE held = CreateMutexA(nullptr, FALSE, "Global\\RyxDriverMutex");
    ASSERT_EQ(WaitForSingleObject(held, 0), WAIT_OBJECT_0);
    // Interrupted while it waits, a start comes to nothing at once.
    Piped interrupted(machine.Path);
    usleep(300000);
    interrupted.Signal(SIGTERM);
    EXPECT_EQ(interrupted.End(), BySignal + SIGTERM);
    EXPECT_EQ(interrupted.Printed() + interrupted.Said(), "");
    CloseHandle(held);
    EXPECT_EQ(machine.Left(), std::vector<std::string>());
    // Another user's mutex can't even be opened.
    Machine others;
    others.OtherUsersMutexes = {"Global\\RyxDriverMutex"};
    StartOver(others);
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>());
}

TEST(Together, EverySignalThatEndsARunLeavesNothing) {
    for (const int number : {SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF, SIGXCPU, SIGPOLL}) {
        const LastingMachine machine;
        Piped program(machine.Path);
        ASSERT_TRUE(program.Prints());
        program.Signal(number);
        EXPECT_EQ(program.End(), BySignal + number);
        EXPECT_EQ(machine.Left(), Clean) << number;
    }
}

TEST(StateFolder, FollowsNoLinks) {
    for (const char* const name : {"state.new", "lock", "device", "mutex-RyxGlobalMutex.owner"}) {
        for (const bool symbolic : {true, false}) {
            SCOPED_TRACE(name);
            const LastingMachine machine("firmware = variables\n");
            const std::string victim = machine.Folder.Write("victim", std::string("precious"));
            const std::string path = machine.State() + "/" + name;
            if (symbolic) {
                std::filesystem::create_symlink(victim, path);
            } else {
                std::filesystem::create_hard_link(victim, path);
            }
            const Ran ran = RunProgram({"/type", "1"}, machine.Path);
            EXPECT_EQ(Content(victim), "precious");
            if (!symbolic && std::string(name) == "state.new") {
                EXPECT_EQ(ran.ExitCode, 0) << "another name for a file is taken out of the way";
                continue;
            }
            EXPECT_EQ(ran.ExitCode, 255);
            EXPECT_NE(ran.Errors.find(path), std::string::npos) << ran.Errors;
        }
    }
}

TEST(StateFolder, WithoutRoomIsNamed) {
    const LastingMachine machine;
    Piped before(machine.Path, Limited(RLIMIT_FSIZE, 1024));
    EXPECT_EQ(before.End(), 255);
    EXPECT_EQ(before.Printed(), "");
    EXPECT_EQ(before.Said(), "quarrinet: " + machine.Path + ":2: state: " + machine.State() +
                                 ": no room for what a run keeps: File too large\n");
    Piped later(machine.Path);
    ASSERT_TRUE(later.Prints());
    later.Limit(RLIMIT_FSIZE, 0);
    EXPECT_EQ(later.Printed(), RunProgram({"/type"}).Output);
    EXPECT_EQ(later.Said(), "quarrinet: " + machine.State() + "/state.new: File too large\n");
    EXPECT_EQ(later.End(), 0);
}

TEST(StateFolder, ALongWaitForItsLockIsExplained) {
    const LastingMachine machine;
    EXPECT_EQ(RunProgram({"/type", "1"}, machine.Path).Errors, "");
    const StandIn::Descriptor lock = StandIn::StateFileOpen(machine.State() + "/lock");
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    Piped program(machine.Path);
    usleep(1500000);
    ASSERT_EQ(flock(lock, LOCK_UN), 0);
    EXPECT_EQ(program.Printed(), RunProgram({"/type"}).Output);
    EXPECT_EQ(program.Said(), "quarrinet: waiting for " + machine.State() + "/lock, which another program holds\n");
    EXPECT_EQ(program.End(), 0);
}

// How much this process has read from files.
std::size_t BytesRead() {
    std::istringstream lines(Content("/proc/self/io"));
    std::string name;
    std::size_t number = 0;
    lines >> name >> number;
    return number;
}

void LargeStateWrite(const LastingMachine& machine, int keys) {
    std::ofstream state(machine.State() + "/state");
    state << "quarrinet-machine-state 1\n";
    for (int i = 0; i < keys; ++i) {
        state << "key Software\\Maker\\Key" << i << "\nvalue Software\\Maker\\Key" << i << " Name 3 00112233445566\n";
    }
}

TEST(StateFolder, IsReadAnewOnlyWhenAnotherProcessWroteIt) {
    const LastingMachine machine;
    LargeStateWrite(machine, 4000);
    machine.Enter();
    const std::size_t size = std::filesystem::file_size(machine.State() + "/state");
    const std::size_t before = BytesRead();
    ASSERT_EQ(Start(), RyxOk);
    EXPECT_EQ(RyxLibExit(), RyxOk);
    EXPECT_LT(BytesRead() - before, 2 * size);
    OtherProcess other(
        [&machine] {
            machine.Enter();
            return Start();
        },
        [] { RyxLibExit(); });
    const auto running = [] {
        const StandIn::SharedAccess state;
        return state->Services.size();
    };
    EXPECT_EQ(running(), 1U);
    other.LetGoOn();
    EXPECT_EQ(running(), 0U);
    StartOver({});
}

// The program under limits.
TEST(Limits, TooLittleMemoryEndsARunInOrder) {
    if (UnderSanitizer) {
        GTEST_SKIP();
    }
    const LastingMachine machine;
    LargeStateWrite(machine, 9000);
    std::set<int> codes;
    for (rlim_t kilobytes = 5000; kilobytes < 20000 && codes.count(0) == 0; kilobytes += 100) {
        Piped program(machine.Path, Limited(RLIMIT_AS, kilobytes * 1024));
        const std::string printed = program.Printed();
        const std::string said = program.Said();
        const int code = program.End();
        codes.insert(code);
        EXPECT_TRUE(code == 0 || code == 255) << code << ": " << said;
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), code == 0 ? 0 : 1) << said;
        const std::string state = Content(machine.State() + "/state");
        EXPECT_EQ(state.find("RyxDrv"), std::string::npos) << kilobytes;
    }
    EXPECT_EQ(codes, (std::set<int>{0, 255}));
}

TEST(Limits, AFewPagesOfStackAreEnough) {
    if (UnderSanitizer) {
        GTEST_SKIP();
    }
    const LastingMachine machine;
    Piped program(machine.Path, Limited(RLIMIT_STACK, 136 << 10));
    EXPECT_EQ(program.Printed(), RunProgram({"/type"}).Output);
    EXPECT_EQ(program.End(), 0);
}

} // namespace
