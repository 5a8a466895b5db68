// The program as a process: exit codes, messages, shared state, paging at a terminal.
#include "Lib/Platform/StandIn/Machine.h"
#include "Lib/Platform/StandIn/SmbiosBuilder.h"
#include "tests/Support.h"

#include <windows.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr char InitFailed[] = "\nERROR 255 - RYX library initialization failed!\n";

// A machine file in a folder of its own, on the sample machine's tables.
struct MachineFile {
    explicit MachineFile(const std::string& lines, bool legacy = true) {
        const StandIn::Machine sample = StandIn::SampleMachine();
        Folder.Write("rsmb", *sample.SmbiosTable);
        std::string text = "firmware-table RSMB = rsmb\n";
        if (legacy) {
            int number = 0;
            for (const StandIn::MemoryRegion& region : sample.Memory) {
                const std::string name = "memory" + std::to_string(number++);
                Folder.Write(name, region.Data);
                char address[16];
                std::snprintf(address, sizeof address, "0x%X", static_cast<unsigned>(region.Address));
                text += std::string("memory ") + address + " = " + name + "\n";
            }
        }
        Path = Folder.Write("machine", text + lines);
    }
    TemporaryFolder Folder;
    std::string Path;
};

TEST(Program, TheProbeStartsNothing) {
    const Ran ran = RunProgram({"/_exec_", "/type", "1"});
    EXPECT_EQ(ran.ExitCode, 0);
    EXPECT_EQ(ran.Output + ran.Errors, "");
    EXPECT_EQ(RunProgram({"/_EXEC_"}).ExitCode, 105);
    EXPECT_EQ(RunProgram({"/type", "/_exec_"}).ExitCode, 105);
}

TEST(Program, ExitsWithTheViewersErrorNumber) {
    EXPECT_EQ(RunProgram({"/type", "1"}).ExitCode, 0);
    EXPECT_EQ(RunProgram({}).ExitCode, 105);
    EXPECT_EQ(RunProgram({"/type", " 1"}).ExitCode, 152);
    EXPECT_EQ(RunProgram({"/type", "43"}).ExitCode, 153);
    const TemporaryFolder folder;
    EXPECT_EQ(RunProgram({"/eps"}, folder.Write("empty", std::string("# nothing\n"))).ExitCode, 171);
}

TEST(Program, BothRoadsShowTheSameStructures) {
    const MachineFile legacy("");
    const MachineFile firmware("", false);
    const Ran first = RunProgram({"/type"}, legacy.Path);
    EXPECT_EQ(first.ExitCode, 0);
    EXPECT_EQ(first.Output, RunProgram({"/type"}).Output);
    EXPECT_EQ(first.Output, RunProgram({"/type"}, firmware.Path).Output);
    EXPECT_GT(first.Output.size(), 1000U);
}

TEST(Program, StartUpFailuresHaveTheirLines) {
    struct {
        const char* Lines;
        const char* Message;
    } const cases[] = {
        {"administrator = no", "\nFlash tool must be run with administrator privilege!\n\n"},
        {"fail = SetProcessAffinityMask\nfail = SetThreadAffinityMask", ""},
        {"fail = StartServiceA", "\nFlash tool load driver failed!\n\n"},
        {"fail = FindResourceA", "\nFlash tool load driver failed!\n\n"},
        {"fail = GetTempPathA", "\nFlash tool load driver failed!\n\n"},
        {"fail = RegCreateKeyExA\nfail = StartServiceA",
         "Warning: Failed to create registry for driver.\n\nFlash tool load driver failed!\n\n"},
    };
    for (const auto& test : cases) {
        const MachineFile machine(test.Lines);
        const Ran ran = RunProgram({"/type", "1"}, machine.Path);
        EXPECT_EQ(ran.ExitCode, 255) << test.Lines;
        EXPECT_EQ(ran.Output, test.Message + std::string(InitFailed)) << test.Lines;
    }
}

TEST(Program, EveryRequestOfAnUnreadableMachineSaysSo) {
    const MachineFile machine("fail = DeviceIoControl 0x222182");
    const Ran ran = RunProgram({"/nologo", "/type", "1"}, machine.Path);
    EXPECT_EQ(ran.ExitCode, 153);
    EXPECT_EQ(ran.Output,
              "Failed to read DMI entry information. Status = 800000CC\n\nError: Type 1 is not supported.\n\n"
              "\nERROR 153 - Not supported! Status = 3.\n");
}

TEST(Program, UnusableMachinesEndItBeforeItStarts) {
    const TemporaryFolder folder;
    StandIn::Bytes dump = StandIn::EntryPoint21(2, 8, 0x1000, 64, 1, 64);
    for (const std::string& machine :
         {folder.Path + "/missing", folder.Write("key", std::string("administrator = yes\nprocesors = 1\n")),
          folder.Write("line", std::string("just words\n")), folder.Write("offset.dmp", dump)}) {
        const Ran ran = RunProgram({"/type", "1"}, machine);
        EXPECT_EQ(ran.ExitCode, 255);
        EXPECT_EQ(ran.Output, "");
        EXPECT_EQ(std::count(ran.Errors.begin(), ran.Errors.end(), '\n'), 1);
        EXPECT_EQ(ran.Errors.rfind("quarrinet: ", 0), 0U) << ran.Errors;
        EXPECT_NE(ran.Errors.find(machine), std::string::npos) << ran.Errors;
    }
    EXPECT_NE(RunProgram({}, folder.Path + "/key").Errors.find("2"), std::string::npos) << "the line's number";
}

// The program at a pseudo-terminal of its own: what is shown is collected until it has been quiet for a while.
class Terminal {
public:
    Terminal(const std::vector<std::string>& arguments, const std::string& machine, unsigned short rows) {
        winsize size{rows, 80, 0, 0};
        Process = forkpty(&Master, nullptr, nullptr, &size);
        if (Process == 0) {
            setenv("QUARRINET_MACHINE", machine.c_str(), 1);
            execv(QUARRINET_PROGRAM, ArgumentVector(Behind(QUARRINET_PROGRAM, arguments)).Data());
            _exit(127);
        }
    }
    ~Terminal() {
        if (Process > 0) {
            kill(Process, SIGKILL);
            waitpid(Process, nullptr, 0);
        }
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
    // Presses a key once the program waits for one: from then on the terminal does not echo.
    void Press(char key) const {
        termios mode{};
        for (int waited = 0; waited < 20000 && tcgetattr(Master, &mode) == 0 && (mode.c_lflag & ECHO) != 0; ++waited) {
            usleep(1000);
        }
        EXPECT_EQ(write(Master, &key, 1), 1);
    }
    int ExitCode() {
        int state = 0;
        waitpid(Process, &state, 0);
        Process = -1;
        return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
    }

private:
    int Master = -1;
    pid_t Process = -1;
};

TEST(Paging, PausesAtATerminalAndNowhereElse) {
    const std::string pause = "Press any key to continue...\n";
    const std::string redirected = RunProgram({"/b", "/type", "0"}).Output;
    EXPECT_EQ(redirected.find(pause), std::string::npos);

    Terminal terminal({"/b", "/type", "0"}, "sample", 25);
    std::string shown = terminal.ShownUntil(pause);
    std::string whole;
    int pauses = 0;
    for (std::size_t at; (at = shown.find(pause)) != std::string::npos; ++pauses) {
        const std::string page = shown.substr(0, at);
        EXPECT_EQ(std::count(page.begin(), page.end(), '\n'), 23);
        whole += page;
        terminal.Press('q');
        shown = terminal.ShownUntil(pause);
        const std::string cleared = "\033[2J\033[H";
        ASSERT_EQ(shown.rfind(cleared, 0), 0U) << "the key is not echoed and the screen is cleared";
        shown.erase(0, cleared.size());
    }
    EXPECT_GE(pauses, 2);
    EXPECT_EQ(whole + shown, redirected);
    EXPECT_EQ(terminal.ExitCode(), 0);
}

// A count in the registry that processes share; -1 when it is not there.
int SharedCount(const std::string& state, const std::string& key, const std::string& value) {
    StandIn::Machine machine;
    machine.StateFolder = state;
    StandIn::MachineSet(machine);
    HKEY open = nullptr;
    DWORD count = 0;
    DWORD size = sizeof count;
    const bool found =
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, &open) == ERROR_SUCCESS &&
        RegQueryValueExA(open, value.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&count), &size) ==
            ERROR_SUCCESS;
    RegCloseKey(open);
    StandIn::MachineSet({});
    return found ? static_cast<int>(count) : -1;
}

// Two programs on one machine. The first is kept alive by its pager, which waits for a key.
TEST(Shared, TheLastOfTwoProgramsRemovesTheDriver) {
    const TemporaryFolder state;
    const MachineFile machine("state = " + state.Path + "\n");
    {
        Terminal first({"/b", "/type", "0"}, machine.Path, 10);
        ASSERT_NE(first.ShownUntil("Press any key").find("Press any key"), std::string::npos);
        EXPECT_EQ(SharedCount(state.Path, "Software\\RyxDrv", "RefCount"), 1);
        const Ran second = RunProgram({"/type", "1"}, machine.Path);
        EXPECT_EQ(second.ExitCode, 0) << second.Output;
        EXPECT_EQ(SharedCount(state.Path, "Software\\RyxDrv", "RefCount"), 1) << "the first still runs";
        EXPECT_EQ(SharedCount(state.Path, "Software\\RyxTool", "ToolsRefCount"), 1);
        for (std::string shown = "Press any key"; shown.find("Press any key") != std::string::npos;) {
            first.Press(' ');
            shown = first.ShownUntil("Press any key");
        }
        EXPECT_EQ(first.ExitCode(), 0);
    }
    EXPECT_EQ(SharedCount(state.Path, "Software\\RyxDrv", "RefCount"), -1);
    EXPECT_EQ(SharedCount(state.Path, "Software\\RyxTool", "ToolsRefCount"), -1);
    StandIn::Machine left;
    left.StateFolder = state.Path;
    StartOver(left);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>{"registry key Software\\RyxTool"}) << "without a value";
    StartOver({});
}

TEST(Shared, AKilledProgramLeavesACountThatTheNextStartCopesWith) {
    const TemporaryFolder state;
    const MachineFile machine("state = " + state.Path + "\n");
    {
        Terminal killed({"/b", "/type", "0"}, machine.Path, 10);
        ASSERT_NE(killed.ShownUntil("Press any key").find("Press any key"), std::string::npos);
    }
    EXPECT_EQ(SharedCount(state.Path, "Software\\RyxDrv", "RefCount"), 1);
    EXPECT_EQ(RunProgram({"/type", "1"}, machine.Path).ExitCode, 0);
    EXPECT_EQ(SharedCount(state.Path, "Software\\RyxDrv", "RefCount"), 1) << "the count only grows after a crash";
    EXPECT_EQ(SharedCount(state.Path, "Software\\RyxTool", "ToolsRefCount"), 1);
}

} // namespace
