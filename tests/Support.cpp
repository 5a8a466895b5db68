// What the tests share.
#include "tests/Support.h"

#include "Lib/API/RyxOption.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/LibraryReset.h"
#include "machine/windows/MachineSet.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerMain.h"
#include "viewer/ViewerState.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Tests expect what the program does by default, whatever the user of the shell that runs them likes to see.
[[maybe_unused]] const int WholeTableUnset = unsetenv("QUARRINET_WHOLE");

std::string ContentOf(int file) {
    std::string content;
    char piece[4096];
    lseek(file, 0, SEEK_SET);
    for (ssize_t got; (got = read(file, piece, sizeof piece)) > 0;) {
        content.append(piece, static_cast<std::size_t>(got));
    }
    return content;
}

} // namespace

void StartOver(StandIn::Machine machine) {
    // Nobody waits in earnest, but for other processes.
    static std::uint64_t now = 0;
    if (machine.StateFolder.empty()) {
        machine.Clock = [](std::uint32_t pause) { return now += pause; };
    }
    DriverRequest(DriverUnload);
    StandIn::MachineSet(std::move(machine));
    LibraryReset();
    ViewerStateReset();
}

std::string Decoded(std::uint8_t type, const StandIn::SmbiosBuilder& table, std::uint8_t version,
                    const Selection& selection) {
    std::string shown[2];
    for (const bool legacy : {false, true}) {
        StartOver(StandIn::MachineWithTable(table, version / 10, version % 10, legacy));
        EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
        LibraryContextGet().WholeTable = selection.Whole;
        ViewerFieldSelected = selection.Field;
        ViewerInstanceFirst = selection.InstanceFirst;
        ViewerInstanceEnd = selection.InstanceEnd;
        shown[legacy ? 1 : 0] = Captured([type] { EXPECT_EQ((*StructDecoderTable[type])(type), RyxOk); });
        ViewerBinsRelease();
        DriverRequest(DriverUnload);
    }
    EXPECT_EQ(shown[0], shown[1]) << "type " << int(type) << " on the firmware road and on the legacy road";
    return shown[1];
}

Viewed View(const std::vector<std::string>& arguments, StandIn::Machine machine, bool whole) {
    StartOver(std::move(machine));
    LibraryContextGet().WholeTable = whole;
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    ArgumentVector argv(Behind("Quarrinet", arguments));
    RyxArgsSet(argv.Count(), argv.Data());
    Viewed viewed{};
    viewed.Output = Captured([&viewed] { viewed.Error = ViewerMain(); });
    LibraryContextGet().Arguments = nullptr;
    LibraryContextGet().ArgumentCount = 0;
    return viewed;
}

Ran RunProgram(const std::vector<std::string>& arguments, const std::string& machine, const std::string& folder) {
    const int output = memfd_create("output", 0);
    const int errors = memfd_create("errors", 0);
    ArgumentVector argv(Behind(QUARRINET_PROGRAM, arguments));
    std::vector<std::string> settings{"QUARRINET_MACHINE=" + machine};
    for (char** setting = environ; *setting != nullptr; ++setting) {
        if (std::string(*setting).rfind("QUARRINET_MACHINE=", 0) != 0) {
            settings.emplace_back(*setting);
        }
    }
    ArgumentVector envp(settings);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    if (!folder.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    }
    pid_t process = 0;
    int state = 0;
    Ran ran{-1, "", ""};
    if (posix_spawn(&process, QUARRINET_PROGRAM, &actions, nullptr, argv.Data(), envp.Data()) == 0 &&
        waitpid(process, &state, 0) == process && WIFEXITED(state)) {
        ran.ExitCode = WEXITSTATUS(state);
    }
    posix_spawn_file_actions_destroy(&actions);
    ran.Output = ContentOf(output);
    ran.Errors = ContentOf(errors);
    close(output);
    close(errors);
    return ran;
}

void SignalsAsAtLogin() {
    for (const int number : {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM}) {
        std::signal(number, SIG_DFL);
    }
}
