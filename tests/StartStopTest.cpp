// Tests of the library's start and stop: processors, rights, the driver's life, the running tools.
#include "Lib/API/RyxLib.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/Instance.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/PowerRequest.h"
#include "Lib/Platform/Files.h"
#include "Lib/Platform/Registry.h"
#include "machine/kernel/Kernel.h"
#include "machine/model/Faults.h"
#include "machine/windows/Files.h"
#include "machine/windows/Handles.h"
#include "machine/windows/MachineSet.h"
#include "machine/windows/Services.h"
#include "machine/windows/State.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>

namespace {

using StandIn::Machine;
using StandIn::MachineGet;

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

TEST(DriverLoading, InstallsRetriesAndFails) {
    constexpr std::uint32_t keyOnly = 0xFFFFFFFF;
    const auto start = Named("StartServiceA");
    struct Case {
        const char* Name;
        std::vector<StandIn::Fault> Faults;
        std::uint64_t Attempts;
        RyxStatus Status;
        std::optional<std::uint32_t> Count = std::nullopt;
        std::optional<std::uint32_t> CountBefore = std::nullopt; // keyOnly: the key without its value
    };
    const Case cases[] = {
        {"first", {}, 1, RyxOk, 1},
        {"a count from before a restart", {}, 1, RyxOk, 1, 5},
        {"a key without a count", {}, 1, RyxOk, std::nullopt, keyOnly},
        {"second attempt", {{start, 0, 1}}, 2, RyxOk, 1},
        {"third attempt", {{start, 0, 1}, {start, 0, 2}}, 3, RyxOk, 1},
        {"no fourth attempt", {{start}}, 3, RyxErrorDriverLoad},
        {"no creation", {{Named("CreateServiceA")}}, 3, RyxErrorDriverLoad},
        {"no file anywhere", {{Named("CreateFileA")}}, 0, RyxErrorDriverLoad},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.Name);
        Machine machine;
        machine.Faults = expected.Faults;
        StartOver(machine);
        if (expected.CountBefore) {
            const RegistryKey key = RegistryKeyCreate("Software\\RyxDrv", RegistryView::Bits64);
            if (*expected.CountBefore != keyOnly) {
                RegistryNumberWrite(key, "RefCount", *expected.CountBefore);
            }
        }
        EXPECT_EQ(DriverRequest(DriverLoad), expected.Status);
        EXPECT_EQ(DriverCount(), expected.Count);
        EXPECT_EQ(StandIn::CallCount("CreateServiceA"), expected.Attempts);
        EXPECT_EQ(StandIn::CallCount("SetFileAttributesA"), expected.Attempts > 1 ? 1U : 0U);
        const std::string file = DriverFile();
        EXPECT_EQ(file.empty(), expected.Status != RyxOk) << file;
        EXPECT_EQ(file.find("RyxLib64.sys") != std::string::npos, expected.Status == RyxOk) << file;

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

constexpr char TemporaryDriver[] = "C:\\Windows\\Temp\\RyxLib64.sys";
constexpr char Victim[] = "C:\\Windows\\Temp\\victim.txt";
constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Writes a file as any other program of the user would; false when it can't.
bool FilePut(const char* path, const std::string& text, DWORD disposition = CREATE_NEW) {
    const HANDLE file = CreateFileA(path, GENERIC_WRITE, ShareAll, nullptr, disposition, 0, nullptr);
    DWORD written = 0;
    return file != INVALID_HANDLE_VALUE &&
           WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) && CloseHandle(file);
}

// What other programs of the same user try to do to the driver file.
bool DriverReplace() {
    return DeleteFileA(TemporaryDriver) && FilePut(TemporaryDriver, "another driver");
}
bool DriverOverwrite() {
    MachineGet().Administrator = false;
    const bool overwritten = FilePut(TemporaryDriver, "another driver", OPEN_EXISTING);
    MachineGet().Administrator = true;
    return overwritten;
}
void LinkLayAt(const char* path, const std::string& target) {
    StandIn::SharedAccess shared;
    shared.Change().Files[StandIn::FileKey(path)] = {path, FILE_ATTRIBUTE_REPARSE_POINT,
                                                     StandIn::Bytes(target.begin(), target.end())};
}
void LinkLay() {
    LinkLayAt(TemporaryDriver, Victim);
}

TEST(DriverLoading, NobodyElseDecidesWhichDriverStarts) {
    // In a load, the file is created, opened again, and then the device is opened.
    const auto open = Named("CreateFileA");
    const auto start = Named("StartServiceA");
    struct Case {
        const char* Name;
        const char* Folder; // of the driver that is started; null: none is
        StandIn::Operation Before;
        std::uint64_t At; // 0: before the load
        std::function<void()> Act;
    };
    const char* const temporary = "C:\\Windows\\Temp";
    const Case cases[] = {
        {"replaced before the check", nullptr, open, 2, [] { EXPECT_TRUE(DriverReplace()); }},
        {"a link before the check", nullptr, open, 2, [] { DeleteFileA(TemporaryDriver), LinkLay(); }},
        {"replaced before the start", temporary, start, 1, [] { EXPECT_FALSE(DriverReplace()); }},
        {"written to before the check", temporary, open, 2, [] { EXPECT_FALSE(DriverOverwrite()); }},
        {"written to before the start", temporary, start, 1, [] { EXPECT_FALSE(DriverOverwrite()); }},
        {"a file was there", temporary, open, 0, [] { FilePut(TemporaryDriver, "another"); }},
        {"a file was there that can't be deleted", "/", open, 0,
         [] {
             FilePut(TemporaryDriver, "another");
             CreateFileA(TemporaryDriver, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                         nullptr);
         }},
        {"a link was there", temporary, open, 0, LinkLay},
        {"a link comes before the creation", "/", open, 1, LinkLay},
    };
    for (const Case& attacked : cases) {
        SCOPED_TRACE(attacked.Name);
        StartOver(Machine());
        FilePut(Victim, "precious");
        if (attacked.At == 0) {
            attacked.Act();
        }
        StandIn::CallsForget();
        MachineGet().Intrusions = {{attacked.Before, attacked.At, attacked.Act}};
        EXPECT_EQ(DriverRequest(DriverLoad), attacked.Folder != nullptr ? RyxOk : RyxErrorDriverLoad);
        const StandIn::SharedAccess shared;
        EXPECT_EQ(shared->Files.at(StandIn::FileKey(Victim)).Data,
                  StandIn::Bytes({'p', 'r', 'e', 'c', 'i', 'o', 'u', 's'}));
        if (attacked.Folder == nullptr) {
            EXPECT_EQ(StandIn::CallCount("StartServiceA"), 0U) << "a driver that was changed is not started";
            EXPECT_EQ(shared->Files.size(), 1U);
            EXPECT_TRUE(shared->Services.empty());
            EXPECT_TRUE(shared->Keys.empty());
            continue;
        }
        if (!ServiceRuns()) {
            ADD_FAILURE() << "no driver runs";
            continue;
        }
        const std::string path = shared->Services.begin()->second.Path;
        EXPECT_EQ(path.rfind(attacked.Folder, 0), 0U) << path;
        const StandIn::StoredFile& file = shared->Files.at(StandIn::FileKey(path));
        EXPECT_TRUE(file.Guarded);
        EXPECT_EQ(file.Data, StandIn::DriverImage(true));
        EXPECT_FALSE(StandIn::HandleOpenFor(StandIn::HandleKind::File, StandIn::FileKey(path)));
    }
}

// The service gets the path of the file that is held, so that a link above it, laid anew, leads nobody to another.
TEST(DriverLoading, ALinkAboveTheDriverLeadsItsStartNowhereElse) {
    constexpr char other[] = "C:\\Second\\RyxLib64.sys";
    StartOver(Machine());
    LinkLayAt("C:\\Windows\\Temp", "C:\\First");
    {
        StandIn::SharedAccess shared;
        shared.Change().Files[StandIn::FileKey(other)] = {other, 0, StandIn::DriverImage(true)};
    }
    MachineGet().Intrusions = {{Named("CreateServiceA"), 1, [] { LinkLayAt("C:\\Windows\\Temp", "C:\\Second"); }}};
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    const auto path = [] { return StandIn::SharedAccess()->Services.at("ryxlib").Path; };
    EXPECT_EQ(path(), "C:\\First\\RyxLib64.sys");
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(DriverFile(), std::string(other) + "C:\\Windows\\Temp") << "its own file goes, and nothing else";
    // An older system does not tell the path.
    Machine older;
    older.WindowsMajor = 5;
    StartOver(older);
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(path(), TemporaryDriver);
    DriverRequest(DriverUnload);
}

TEST(DriverLoading, ALinkToTheDriverIsNotHeld) {
    StartOver(Machine());
    const StandIn::Bytes image = StandIn::DriverImage(true);
    const auto size = static_cast<std::uint32_t>(image.size());
    FilePut(Victim, std::string(image.begin(), image.end()));
    LinkLay();
    EXPECT_EQ(FileHold(TemporaryDriver, image.data(), size), nullptr);
    EXPECT_NE(FileHold(Victim, image.data(), size), nullptr);
}

// Another tool, which has loaded the driver and runs on; the count of its like is as given, 0 for a key without a
// count.
void OtherToolStart(std::uint32_t count) {
    StartOver(Machine());
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    DriverStateReset();
    StandIn::KernelFilesClose();
    StandIn::HandlesForget();
    RegistryKey key = RegistryKeyOpen("Software\\RyxDrv", RegistryView::Bits64);
    if (count != 0) {
        RegistryNumberWrite(key, "RefCount", count);
    } else {
        RegistryValueDelete(key, "RefCount");
    }
    key.reset();
    StandIn::CallsForget();
}

TEST(DriverLoading, FailingTakesBackOnlyItsOwn) {
    const auto key = Named("RegOpenKeyExA");
    const auto value = Named("RegQueryValueExA");
    const auto resource = Named("FindResourceA");
    const auto file = Named("CreateFileA");
    const auto read = Named("ReadFile");
    const auto start = Named("StartServiceA");
    struct Case {
        const char* Name;
        std::uint32_t Count; // of the other tools
        std::vector<StandIn::Fault> Faults;
        bool CountStays;
        bool ServiceStays;
    };
    const Case cases[] = {
        {"before anything is made", 1, {{key}, {resource}}, true, true},
        {"before anything is made", 3, {{value}, {resource}}, true, true},
        {"before anything is made", 0, {{resource}}, true, true},
        {"no file", 0, {{file}}, true, true},
        {"with a file", 1, {{key}, {read}}, true, true},
        {"with a file", 3, {{value}, {read}}, true, true},
        {"with a file", 0, {{read}}, true, true},
        {"with a count that was stale", 3, {{file}}, false, true},
        {"with a service", 1, {{key}, {start}}, true, false},
        {"with a service", 0, {{start}}, true, false},
    };
    for (const Case& failing : cases) {
        SCOPED_TRACE(failing.Name + std::string(", ") + std::to_string(failing.Count));
        OtherToolStart(failing.Count);
        std::vector<std::string> expected = StandIn::Leftovers();
        const auto goes = [&failing](const std::string& line) {
            const bool count = line.rfind("registry", 0) == 0;
            const bool service = line.rfind("driver", 0) == 0 || line.rfind("service", 0) == 0;
            return (count && !failing.CountStays) || (service && !failing.ServiceStays);
        };
        expected.erase(std::remove_if(expected.begin(), expected.end(), goes), expected.end());
        MachineGet().Faults = failing.Faults;
        EXPECT_EQ(DriverRequest(DriverLoad), RyxErrorDriverLoad);
        MachineGet().Faults.clear();
        EXPECT_EQ(StandIn::Leftovers(), expected);
    }
}

TEST(DriverLoading, JoinsOnceMoreBeforeItFails) {
    // A tool of another kind starts the driver while this one tries to, and keeps this one from it.
    const auto otherStarts = [] {
        StandIn::SharedAccess shared;
        shared.Change().Services["ryxlib"] = {"RYXLIB", TemporaryDriver, true};
    };
    for (const std::uint64_t pauses : {0U, 2U}) {
        StartOver(Machine());
        MachineGet().Faults = {{Named("FindResourceA")}};
        MachineGet().Intrusions = {{Named("RegOpenKeyExA"), 2 + pauses, otherStarts}};
        EXPECT_EQ(DriverRequest(DriverLoad), RyxOk) << pauses;
        EXPECT_EQ(DriverCount(), 2U);
        EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
        EXPECT_EQ(DriverCount(), 1U);
        EXPECT_TRUE(ServiceRuns());
    }
    // The file that it wrote then is of no use.
    StartOver(Machine());
    MachineGet().Faults = {{Named("ReadFile")}};
    MachineGet().Intrusions = {{Named("ReadFile"), 1, [&] {
                                    otherStarts();
                                    StandIn::SharedAccess shared;
                                    shared.Change().Services["ryxlib"].Path = "C:\\Elsewhere\\RyxLib64.sys";
                                }}};
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(DriverFile(), "");
}

TEST(DriverLoading, ACountThatCantBeReachedStays) {
    for (const char* const refused : {"RegOpenKeyExA", "RegQueryValueExA"}) {
        SCOPED_TRACE(refused);
        OtherToolStart(3);
        MachineGet().Faults = {{Named(refused), 0, 1}};
        EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
        EXPECT_EQ(DriverCount(), 3U);
        EXPECT_EQ(StandIn::CallCount("RegCreateKeyExA"), 0U);
        EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
        EXPECT_EQ(DriverCount(), 3U) << "who is not counted does not take itself out";
        EXPECT_TRUE(ServiceRuns());
    }
    // Nor does a tool take itself out of a count that it could not be added to.
    OtherToolStart(1);
    MachineGet().Faults = {{Named("RegSetValueExA"), 0, 1}};
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(DriverCount(), 1U);
    EXPECT_TRUE(ServiceRuns());
    // Four bytes of another type are no count.
    Machine machine;
    machine.RegistryBinary["Software\\RyxDrv\\RefCount"] = {3, 0, 0, 0};
    StartOver(machine);
    EXPECT_EQ(DriverCount(), std::nullopt);
}

TEST(DriverLoading, TheKeyIsDeletedWithoutRightsToItsParent) {
    StartOver(Machine());
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    MachineGet().RegistryReadOnly = {"Software"};
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
    StartOver(Machine());
    ASSERT_EQ(Start(), RyxOk);
    const std::uint64_t lastRead = StandIn::CallCount("ReadFile"); // that of the program's own file
    const char* const denied = "\nFlash tool must be run with administrator privilege!\n\n";
    struct Case {
        StandIn::Fault Fault;
        const char* Output;
        RyxStatus Status;
        RyxStatus Image;
    };
    const Case cases[] = {
        {{Named("AccessCheck")}, denied, RyxErrorNotAdministrator, RyxErrorArgument},
        {{Named("StartServiceA")}, "\nFlash tool load driver failed!\n\n", RyxErrorDriverLoad, RyxErrorArgument},
        {{Named("GetFileSize")}, "Open file failed.\nGet file failed.\n", RyxOk, RyxErrorFileRead},
        {{Named("ReadFile"), 0, lastRead}, "Get file failed.\n", RyxOk, RyxErrorFileRead},
        {{Named("CreateFileW")}, "Open file failed.\nGet file failed.\n", RyxOk, RyxErrorFileRead},
        {{Named("GetModuleFileNameW")}, "Open file failed.\nGet file failed.\n", RyxOk, RyxErrorFileRead},
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

TEST(Start, KnowsItsFileByAnyName) {
    std::string longName;
    for (int i = 0; i < 200; ++i) {
        longName += "\u0439";
    }
    const std::string names[] = {"\u041a\u0432\u0430\u0440\u0440\u0438\u043d\u0435\u0442.exe", "a b \"c\" 'd'.exe",
                                 longName, "\U0001F5A5.exe"};
    for (const bool utf8 : {true, false}) {
        for (const std::string& name : names) {
            SCOPED_TRACE(name);
            Machine machine;
            machine.Utf8 = utf8;
            machine.Program = "C:\\Windows\\Temp\\" + name;
            StartOver(machine);
            ASSERT_TRUE(FilePut(machine.Program.c_str(), "MZ"));
            // Somebody writes to it meanwhile, and lets others do what they want.
            CreateFileA(machine.Program.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, ShareAll, nullptr,
                        OPEN_EXISTING, 0, nullptr);
            EXPECT_EQ(Captured([] { EXPECT_EQ(Start(), RyxOk); }), "");
            EXPECT_EQ(States().second, RyxInstanceFirst);
            EXPECT_EQ(RyxLibExit(), RyxOk);
        }
    }
    // A name on this computer may be no text at all.
    const TemporaryFolder folder;
    Machine machine;
    machine.Program = folder.Write("\xFF\xC0\xAF \xD0.exe", std::string("MZ"));
    StartOver(machine);
    EXPECT_EQ(Captured([] { EXPECT_EQ(Start(), RyxOk); }), "");
    EXPECT_EQ(RyxLibExit(), RyxOk);
}

TEST(Start, AMutexOfAnotherUserIsACopyThatRuns) {
    const TemporaryFolder folder;
    Machine machine;
    machine.Program = folder.Write("Tool.exe", std::string("abc"));
    machine.OtherUsersMutexes = {"Global\\{A9993E36476816A}"}; // the digest begins with A9 99 3E 36 47 06 81 6A
    StartOver(machine);
    ASSERT_EQ(Start(), RyxOk);
    EXPECT_EQ(States(), std::pair(RyxInstanceFirst, RyxInstanceAnother));
    EXPECT_EQ(RyxLibExit(), RyxOk);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>{"registry key Software\\RyxTool"});
}

TEST(Start, ACountOfToolsThatCantBeReachedStays) {
    const RegistryView view = RegistryView::Bits64;
    for (const char* const refused : {"RegCreateKeyExA", "RegQueryValueExA", "RegSetValueExA"}) {
        SCOPED_TRACE(refused);
        StartOver(Machine());
        RegistryNumberWrite(RegistryKeyCreate("Software\\RyxTool", view), "ToolsRefCount", 2);
        ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
        // The second query is that of the increment.
        const std::uint64_t later = std::string(refused) == "RegQueryValueExA" ? 2 : 1;
        MachineGet().Faults = {{Named(refused), 0, StandIn::CallCount(refused) + later}};
        EXPECT_EQ(RyxInstanceRegister(), RyxOk);
        EXPECT_EQ(ToolCount(), 2U);
        EXPECT_EQ(RyxInstanceUnregister(), RyxOk);
        EXPECT_EQ(ToolCount(), 2U);
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
    EXPECT_EQ(RyxLibInit(1, nullptr), RyxOk);
    EXPECT_FALSE(InstanceStateGet().PackageFolderSet) << "without arguments neither is looked at";
    unsetenv("PACKORGDIR");
}

TEST(Start, TheEnvironmentAsksForTheWholeTable) {
    StartOver(Machine());
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
