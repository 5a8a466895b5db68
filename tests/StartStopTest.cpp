// Tests of the library's start and stop: processors, rights, the driver's life, the running tools.
#include "Lib/API/RyxLib.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/PowerRequest.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/Registry.h"
#include "Lib/Platform/StandIn/Handles.h"
#include "Lib/Platform/StandIn/State.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>

namespace {

using StandIn::Machine;

StandIn::Operation Named(std::string_view name) {
    return StandIn::OperationFind(name).value();
}

std::optional<std::uint32_t> Number(const char* key, const char* value) {
    std::optional<std::uint32_t> number;
    for (const RegistryView view : {RegistryView::Own, RegistryView::Bits64}) {
        if (const RegistryKey open = RegistryKeyOpen(key, view)) {
            std::uint32_t read = 0;
            if (RegistryNumberRead(open, value, &read)) {
                number = read;
            }
            RegistryKeyClose(open);
        }
    }
    return number;
}

std::optional<std::uint32_t> ToolCount() {
    return Number("Software\\RyxTool", "ToolsRefCount");
}
std::optional<std::uint32_t> DriverCount() {
    return Number("Software\\RyxDrv", "RefCount");
}

// The driver file of the machine, empty when there is none.
std::string DriverFile() {
    std::string found;
    const StandIn::SharedAccess shared;
    for (const auto& [key, file] : shared->Files) {
        found += file.Path;
    }
    return found;
}

bool ServiceRuns() {
    const StandIn::SharedAccess shared;
    return !shared->Services.empty() && shared->Services.begin()->second.Running;
}

std::pair<RyxStatus, RyxStatus> States() {
    std::pair<RyxStatus, RyxStatus> states;
    RyxInstanceStateGet(&states.first, &states.second);
    return states;
}

TEST(Start, PinsTheProcessToOneProcessor) {
    struct Case {
        std::uint32_t Allowed;
        std::vector<const char*> Failing;
        std::uint64_t ProcessCalls;
        std::uint64_t ThreadCalls;
        std::uint64_t Affinity; // 0: left as it is
        RyxStatus Status;
    };
    const Case cases[] = {
        {1, {}, 0, 0, 0, RyxOk},
        {2, {}, 0, 0, 0, RyxOk},
        {3, {}, 1, 0, 1, RyxOk},
        {7, {"SetProcessAffinityMask"}, 1, 1, 0, RyxOk},
        {7, {"SetProcessAffinityMask", "SetThreadAffinityMask"}, 1, 1, 0, RyxErrorGeneral},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.Allowed);
        Machine machine;
        machine.Processors = expected.Allowed;
        for (const char* name : expected.Failing) {
            machine.Faults.push_back({Named(name)});
        }
        StartOver(machine);
        EXPECT_EQ(Start(), expected.Status);
        EXPECT_EQ(StandIn::CallCount("SetProcessAffinityMask"), expected.ProcessCalls);
        EXPECT_EQ(StandIn::CallCount("SetThreadAffinityMask"), expected.ThreadCalls);
        EXPECT_EQ(StandIn::Process().Affinity, expected.Affinity);
        EXPECT_EQ(StandIn::Process().PriorityClass, expected.Status == RyxOk ? 0x80U : 0x20U);
        EXPECT_EQ(DriverCount().has_value(), expected.Status == RyxOk);
    }
}

TEST(Start, NeedsAnAdministrator) {
    Machine machine;
    machine.Administrator = false;
    StartOver(machine);
    RyxStatus status = RyxOk;
    EXPECT_EQ(Captured([&] { status = Start(); }), "\nFlash tool must be run with administrator privilege!\n\n");
    EXPECT_EQ(status, RyxErrorNotAdministrator);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>());
    EXPECT_EQ(Captured(RyxLibInitErrorPrint), "\nERROR 255 - RYX library initialization failed!\n");
    EXPECT_EQ(RyxLibErrorCodeGet(), 255);
}

TEST(Start, StopUndoesIt) {
    StartOver(Machine());
    EXPECT_EQ(States(), std::pair(RyxErrorArgument, RyxErrorArgument));
    ASSERT_EQ(Start({"/type"}), RyxOk);
    EXPECT_EQ(States(), std::pair(RyxInstanceFirst, RyxInstanceFirst));
    EXPECT_EQ(ToolCount(), 1U);
    EXPECT_EQ(DriverCount(), 1U);
    EXPECT_TRUE(ServiceRuns());
    EXPECT_NE(DriverFile().find("RyxLib64.sys"), std::string::npos) << DriverFile();
    EXPECT_EQ(StandIn::Process().ExecutionState, 0x80000043U);
    EXPECT_NE(InstanceStateGet().DriverVersion, 0);
    RyxInstanceStateGet(nullptr, nullptr);

    ASSERT_EQ(RyxLibExit(), RyxOk);
    EXPECT_EQ(States(), std::pair(RyxErrorArgument, RyxErrorArgument));
    EXPECT_EQ(ToolCount(), std::nullopt);
    EXPECT_EQ(DriverCount(), std::nullopt);
    EXPECT_EQ(DriverFile(), "");
    EXPECT_EQ(StandIn::Process().ExecutionState, 0x80000000U);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>{"registry key Software\\RyxTool"});
}

TEST(Start, ToolsAreCountedAcrossProcesses) {
    const TemporaryFolder folder;
    Machine machine;
    machine.StateFolder = folder.Path + "/state";
    const auto startThere = [&machine] {
        StartOver(machine);
        Start();
        const auto [tools, image] = States();
        return (tools & 0xFFFFU) << 16U | (image & 0xFFFFU);
    };
    const auto stopThere = [] { RyxLibExit(); };
    StartOver(machine);
    ASSERT_EQ(Start(), RyxOk);
    {
        OtherProcess other(startThere, stopThere);
        EXPECT_EQ(other.Told, 0x00140014U) << "another tool, and another copy of it";
        EXPECT_EQ(ToolCount(), 2U);
        EXPECT_EQ(DriverCount(), 2U);
        other.LetGoOn();
    }
    EXPECT_EQ(ToolCount(), 1U);
    EXPECT_EQ(DriverCount(), 1U);
    EXPECT_TRUE(ServiceRuns());
    // The first ends before the second: the service stays, and then goes without the file, which was the first one's.
    {
        OtherProcess other(startThere, stopThere);
        EXPECT_EQ(RyxLibExit(), RyxOk);
        EXPECT_EQ(ToolCount(), 1U);
        EXPECT_TRUE(ServiceRuns());
        other.LetGoOn();
    }
    EXPECT_EQ(ToolCount(), std::nullopt);
    EXPECT_EQ(DriverCount(), std::nullopt);
    EXPECT_FALSE(ServiceRuns());
    EXPECT_NE(DriverFile(), "");
    // A tool that is another program sees the count, and no other copy of itself.
    {
        OtherProcess other(startThere, stopThere);
        Machine changed = machine;
        changed.Program = folder.Write("Other.exe", std::string("another program"));
        StartOver(changed);
        ASSERT_EQ(Start(), RyxOk);
        EXPECT_EQ(States(), std::pair(RyxInstanceAnother, RyxInstanceFirst));
        EXPECT_EQ(RyxLibExit(), RyxOk);
        other.LetGoOn();
    }
    StartOver(machine);
    // A killed tool leaves its counts and the running driver, which the next one joins.
    {
        OtherProcess other(startThere, stopThere);
        EXPECT_EQ(other.Told, 0x00130013U);
    }
    StartOver(machine);
    ASSERT_EQ(Start(), RyxOk);
    EXPECT_EQ(States(), std::pair(RyxInstanceAnother, RyxInstanceFirst)) << "the mutex went with its process";
    EXPECT_EQ(ToolCount(), 2U);
    EXPECT_EQ(DriverCount(), 2U);
    EXPECT_EQ(StandIn::CallCount("CreateServiceA"), 0U);
    EXPECT_EQ(RyxLibExit(), RyxOk);
}

// The driver as it is loaded on a machine with faults and with what is in the registry before.
struct LoadCase {
    const char* Name;
    std::vector<StandIn::Fault> Faults;
    std::optional<std::uint32_t> CountBefore; // 0xFFFFFFFF: the key without its value
    RyxStatus Status;
    std::optional<std::uint32_t> Count;
    std::uint64_t Attempts;
    const char* File; // in the driver file's path; empty: no file is written
};

TEST(DriverLoading, InstallsRetriesAndFails) {
    constexpr std::uint32_t keyOnly = 0xFFFFFFFF;
    const auto start = Named("StartServiceA");
    const auto create = Named("CreateFileA");
    const LoadCase cases[] = {
        {"first", {}, std::nullopt, RyxOk, 1, 1, "RyxLib64.sys"},
        {"a count from before a restart", {}, 5, RyxOk, 1, 1, "RyxLib64.sys"},
        {"a key without a count", {}, keyOnly, RyxOk, std::nullopt, 1, "RyxLib64.sys"},
        {"second attempt", {{start, 0, 1}}, std::nullopt, RyxOk, 1, 2, "RyxLib64.sys"},
        {"third attempt", {{start, 0, 1}, {start, 0, 2}}, std::nullopt, RyxOk, 1, 3, "RyxLib64.sys"},
        {"no fourth attempt", {{start}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 3, ""},
        {"no creation", {{Named("CreateServiceA")}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 3, ""},
        {"no temporary folder", {{Named("GetTempPathA")}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 0, ""},
        {"no resource", {{Named("FindResourceA")}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 0, ""},
        {"no file anywhere", {{create}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 0, ""},
        {"disk full", {{Named("WriteFile")}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 0, ""},
        {"no executable path", {{Named("GetModuleFileNameA")}}, std::nullopt, RyxErrorDriverLoad, std::nullopt, 0, ""},
    };
    for (const LoadCase& expected : cases) {
        SCOPED_TRACE(expected.Name);
        Machine machine;
        machine.Faults = expected.Faults;
        StartOver(machine);
        if (expected.CountBefore) {
            const RegistryKey key = RegistryKeyCreate("Software\\RyxDrv", RegistryView::Bits64);
            if (*expected.CountBefore != keyOnly) {
                RegistryNumberWrite(key, "RefCount", *expected.CountBefore);
            }
            RegistryKeyClose(key);
        }
        EXPECT_EQ(DriverRequest(DriverLoad), expected.Status);
        EXPECT_EQ(DriverCount(), expected.Count);
        EXPECT_EQ(StandIn::CallCount("StartServiceA"),
                  std::string(expected.Name) == "no creation" ? 0 : expected.Attempts);
        EXPECT_EQ(StandIn::CallCount("SetFileAttributesA"), expected.Attempts > 1 ? 1U : 0U);
        const std::string file = DriverFile();
        EXPECT_EQ(file.empty(), *expected.File == '\0') << file;
        EXPECT_NE(file.find(expected.File), std::string::npos) << file;

        // A driver that is unloaded leaves nothing, and so does a load that fails.
        EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
        EXPECT_EQ(StandIn::Leftovers(), expected.CountBefore == keyOnly
                                            ? std::vector<std::string>{"registry key Software\\RyxDrv"}
                                            : std::vector<std::string>());
    }
}

TEST(DriverLoading, FileGoesBesideTheExecutableAndIsTheSystemsOwn) {
    const std::pair<StandIn::Wow64, const char*> systems[] = {{StandIn::Wow64::Yes, "\\RyxLib64.sys"},
                                                              {StandIn::Wow64::No, "\\RyxLib.sys"},
                                                              {StandIn::Wow64::Unknown, "\\RyxLib.sys"}};
    for (const auto& [bits, name] : systems) {
        Machine machine;
        machine.UnderWow64 = bits;
        StartOver(machine);
        ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
        const std::string temporary = DriverFile();
        EXPECT_NE(temporary.find(name), std::string::npos) << temporary;

        machine.Faults = {{Named("CreateFileA"), 0, 1}};
        StartOver(machine);
        ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
        const std::string beside = DriverFile();
        EXPECT_NE(beside.find(name), std::string::npos) << beside;
        EXPECT_NE(beside, temporary);
        DriverRequest(DriverUnload);
        EXPECT_EQ(DriverFile(), "");
    }
}

TEST(DriverLoading, OpensTheDeviceByTheNameOfTheVersion) {
    for (const std::uint32_t major : {4U, 5U, 10U}) {
        Machine machine;
        machine.WindowsMajor = major;
        StartOver(machine);
        ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
        EXPECT_EQ(StandIn::HandleOpenFor(StandIn::HandleKind::Device, "RYXLIB"), major < 5);
        EXPECT_EQ(StandIn::HandleOpenFor(StandIn::HandleKind::Device, "Global\\RYXLIB"), major >= 5);
        DriverRequest(DriverUnload);
    }
}

TEST(DriverLoading, WarnsWithoutARegistry) {
    Machine machine;
    machine.Faults = {{Named("RegCreateKeyExA")}};
    StartOver(machine);
    EXPECT_EQ(Captured([] { EXPECT_EQ(DriverRequest(DriverLoad), RyxOk); }),
              "Warning: Failed to create registry for driver.\n");
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>());
}

TEST(DriverRequests, CheckTheirArguments) {
    StartOver(Machine());
    std::uint8_t byte = 0;
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk) << "nothing is loaded";
    EXPECT_EQ(DriverRequest(3), RyxErrorUnsupported);
    EXPECT_EQ(PhysicalMemoryRead(0, 1, &byte), RyxErrorPhysicalMemory);
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(PhysicalMemoryRead(0, 1, &byte), RyxOk);
    EXPECT_EQ(PhysicalMemoryRead(0, 0, &byte), RyxErrorArgument);
    EXPECT_EQ(DriverRequest(DriverControl, 0x222100), RyxErrorDriverRequest);
    DriverRequest(DriverUnload);
}

TEST(Start, FailuresHaveTheirMessageAndStatus) {
    struct Case {
        StandIn::Fault Fault;
        const char* Output;
        RyxStatus Status;
        RyxStatus Image;
    };
    const Case cases[] = {
        {{Named("StartServiceA")}, "\nFlash tool load driver failed!\n\n", RyxErrorDriverLoad, RyxErrorArgument},
        {{Named("GetFileSize")}, "Open file failed.\nGet file failed.\n", RyxOk, RyxErrorFileRead},
        {{Named("ReadFile")}, "Get file failed.\n", RyxOk, RyxErrorFileRead},
        {{Named("SetThreadExecutionState")}, "", RyxOk, RyxInstanceFirst},
        {{Named("DeviceIoControl"), DriverVersionRead}, "", RyxOk, RyxInstanceFirst},
    };
    for (const Case& expected : cases) {
        Machine machine;
        machine.Faults = {expected.Fault};
        StartOver(machine);
        RyxStatus status = RyxOk;
        EXPECT_EQ(Captured([&] { status = Start(); }), expected.Output);
        EXPECT_EQ(status, expected.Status);
        EXPECT_EQ(States().second, expected.Image);
        EXPECT_EQ(ToolCount().has_value(), status == RyxOk);
    }
}

TEST(Start, LooksAtArgumentsAndEnvironment) {
    const std::pair<std::vector<std::string>, int> lines[] = {
        {{}, 0},          {{"/file", "x"}, 0}, {{"/FILE", "x", "-type"}, 1}, {{"-file", "/files"}, 1},
        {{"x", "@y"}, 0}, {{"-"}, 1},
    };
    for (const auto& [arguments, option] : lines) {
        StartOver(Machine());
        EXPECT_EQ(Start(arguments), RyxOk);
        EXPECT_EQ(LibraryContextGet().Options.Byte[23], option);
        EXPECT_FALSE(InstanceStateGet().PackageFolderSet);
    }
    const std::string folder(300, 'x');
    setenv("PACKORGDIR", folder.c_str(), 1);
    StartOver(Machine());
    EXPECT_EQ(Start(), RyxOk);
    EXPECT_TRUE(InstanceStateGet().PackageFolderSet);
    EXPECT_EQ(InstanceStateGet().PackageFolder, folder.substr(0, 255));
    StartOver(Machine());
    EXPECT_EQ(RyxLibInit(0, nullptr), RyxOk);
    EXPECT_FALSE(InstanceStateGet().PackageFolderSet) << "without arguments neither is looked at";
    unsetenv("PACKORGDIR");
}

TEST(Start, TheEnvironmentAsksForTheWholeTable) {
    EXPECT_EQ(RyxLibInit(0, nullptr), RyxOk);
    EXPECT_FALSE(RyxSmbiosWholeGet());
    for (const auto& [value, whole] : {std::pair{"1", true}, {"", false}, {"yes", true}, {"0", false}, {"00", true}}) {
        setenv("QUARRINET_WHOLE", value, 1);
        StartOver(Machine());
        EXPECT_EQ(RyxLibInit(0, nullptr), RyxOk);
        EXPECT_EQ(RyxSmbiosWholeGet(), whole) << value;
    }
    unsetenv("QUARRINET_WHOLE");
}

TEST(Power, AsksByVersion) {
    const std::pair<std::uint32_t, std::uint32_t> versions[] = {
        {4, 0x80000000}, {5, 0x80000003}, {6, 0x80000043}, {10, 0x80000043}};
    for (const auto& [major, state] : versions) {
        Machine machine;
        machine.WindowsMajor = major;
        StartOver(machine);
        EXPECT_EQ(PowerRequest(6), RyxOk);
        EXPECT_EQ(StandIn::Process().ExecutionState, state);
        EXPECT_EQ(PowerExecutionState(), major >= 5 ? 1U : 0U);
        EXPECT_EQ(PowerRequest(7), RyxOk);
        EXPECT_EQ(StandIn::Process().ExecutionState, 0x80000000U);
        EXPECT_EQ(PowerExecutionState(), 0U);
    }
    EXPECT_EQ(PowerRequest(0), RyxErrorUnsupported);
    EXPECT_EQ(PowerRequest(10), RyxErrorUnsupported);
}

} // namespace
