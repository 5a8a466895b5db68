// The fault sweep: a whole run, once per platform call with that call failing.
#include "Lib/API/RyxLib.h"
#include "Lib/Common/LibraryReset.h"
#include "Lib/Platform/System.h"
#include "machine/kernel/Kernel.h"
#include "machine/model/Faults.h"
#include "machine/windows/Handles.h"
#include "machine/windows/MachineSet.h"
#include "machine/windows/Mutexes.h"
#include "machine/windows/State.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"
#include "viewer/ViewerMain.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <tuple>

namespace {

using StandIn::FirmwareKind;
using StandIn::Machine;
using Lines = std::vector<std::string>;

enum class Phase { Start, Listing, Stop };

// A whole run, as the program's entry makes it, and what it left in the machine.
struct Course {
    std::uint32_t ExitCode = 0;
    std::string Output;
    Lines Left;
    std::uint64_t StartEnd = 0; // calls made up to there
    std::uint64_t ListingEnd = 0;
    std::uint64_t Total = 0;
};

Course WholeRun(const std::vector<std::string>& arguments) {
    Course run;
    run.Output = Captured([&] {
        if (Start(arguments) != RyxOk) {
            RyxLibInitErrorPrint();
            run.ExitCode = RyxLibErrorCodeGet();
            return;
        }
        run.StartEnd = StandIn::CallTotal();
        run.ExitCode = ViewerMain();
        run.ListingEnd = StandIn::CallTotal();
        RyxLibExit();
    });
    run.Total = StandIn::CallTotal();
    run.Left = StandIn::Leftovers();
    return run;
}

// The end of a process: its handles and mutexes go, what other processes see stays.
void ProcessEnd() {
    StandIn::FailCall(0);
    StandIn::KernelFilesClose();
    StandIn::HandlesForget();
    StandIn::MutexesForget();
    StandIn::Process() = StandIn::ProcessState{};
    LibraryReset();
}

Lines LinesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Whether a line is one of the undisturbed listing, or its label with the mark of a value that could not be read.
bool LineMatches(const std::string& printed, const std::string& undisturbed) {
    constexpr std::string_view mark = "N/S";
    const bool marked = printed.size() > mark.size() && printed.substr(printed.size() - mark.size()) == mark;
    return printed == undisturbed ||
           (marked && undisturbed.rfind(printed.substr(0, printed.size() - mark.size()), 0) == 0);
}

bool IsSubsequence(const Lines& part, const Lines& whole) {
    auto at = whole.begin();
    for (const std::string& line : part) {
        at = std::find_if(at, whole.end(), [&line](const std::string& other) { return LineMatches(line, other); });
        if (at == whole.end()) {
            return false;
        }
        ++at;
    }
    return true;
}

// A listing whose reads fail: what is printed is what could be read, the message of the failed read, and the error
// line. Gives whether anything is different from the undisturbed listing.
bool ListingDiffers(const Course& run, const Course& undisturbed) {
    if (run.ExitCode == 0 && run.Output == undisturbed.Output) {
        return false;
    }
    Lines printed;
    std::size_t messages = 0;
    std::uint32_t error = 0;
    for (const std::string& line : LinesOf(run.Output)) {
        if (line == "Failed to read DMI entry information. Status = 800000CC" ||
            line == "Failed to read physical memory data(SMBIOS) to buffer. Status = 800000CC" ||
            line == "Failed to read DMI struct. Status = 8000000E") {
            ++messages;
        } else if (line.rfind("ERROR 171 - Parser entry point or data failed! Status = ", 0) == 0) {
            error = 171;
        } else if (line == "ERROR 153 - Not supported! Status = 3.") { // the structure that was asked for is not seen
            error = 153;
        } else if (line != "SMBIOS Version : 0.0" && line != "Error: Type 0 is not supported.") {
            printed.push_back(line);
        }
    }
    EXPECT_LE(messages, 1U) << run.Output;
    EXPECT_EQ(run.ExitCode, error);
    while (error != 0 && !printed.empty() && printed.back().empty()) {
        printed.pop_back(); // blank lines before the error line
    }
    EXPECT_TRUE(IsSubsequence(printed, LinesOf(undisturbed.Output))) << run.Output;
    return true;
}

// What a failing call makes of the run. Calls that are not listed change nothing that the user sees.
enum class Effect { None, NotAdministrator, NoDriver, RegistryWarning, NoImage, Listing };

struct CallEffects {
    const char* Call;
    Phase When;
    std::vector<Effect> Possible; // several where the same operation is called for several purposes
};

const CallEffects Effects[] = {
    {"OpenThreadToken", Phase::Start, {Effect::NotAdministrator}},
    {"OpenProcessToken", Phase::Start, {Effect::NotAdministrator, Effect::None}},
    {"DuplicateToken", Phase::Start, {Effect::NotAdministrator}},
    {"AllocateAndInitializeSid", Phase::Start, {Effect::NotAdministrator}},
    {"InitializeAcl", Phase::Start, {Effect::NotAdministrator}},
    {"AddAccessAllowedAce", Phase::Start, {Effect::NotAdministrator}},
    {"InitializeSecurityDescriptor", Phase::Start, {Effect::NotAdministrator}},
    {"SetSecurityDescriptorDacl", Phase::Start, {Effect::NotAdministrator}},
    {"SetSecurityDescriptorOwner", Phase::Start, {Effect::NotAdministrator}},
    {"SetSecurityDescriptorGroup", Phase::Start, {Effect::NotAdministrator}},
    {"AccessCheck", Phase::Start, {Effect::NotAdministrator}},
    // Without an answer on its kind the system counts as a 32-bit one, and its driver does not start on this machine.
    {"GetModuleHandleA", Phase::Start, {Effect::NoDriver, Effect::None}},
    {"GetProcAddress", Phase::Start, {Effect::NoDriver, Effect::None}},
    {"IsWow64Process", Phase::Start, {Effect::NoDriver}},
    {"PathRemoveFileSpecA", Phase::Start, {Effect::NoDriver}},
    {"FindResourceA", Phase::Start, {Effect::NoDriver}},
    {"LoadResource", Phase::Start, {Effect::NoDriver}},
    {"LockResource", Phase::Start, {Effect::NoDriver}},
    {"SizeofResource", Phase::Start, {Effect::NoDriver}},
    {"GetTempPathA", Phase::Start, {Effect::NoDriver}},
    {"WriteFile", Phase::Start, {Effect::NoDriver}},
    {"RegCreateKeyExA", Phase::Start, {Effect::RegistryWarning, Effect::None}},
    {"GetModuleFileNameA", Phase::Start, {Effect::NoDriver}},
    {"GetModuleFileNameW", Phase::Start, {Effect::NoImage}},
    {"CreateFileA", Phase::Start, {Effect::NoDriver, Effect::None}},
    {"CreateFileW", Phase::Start, {Effect::NoImage}},
    {"GetFileSize", Phase::Start, {Effect::NoImage}},
    {"ReadFile", Phase::Start, {Effect::NoDriver, Effect::NoImage}},
    {"DeviceIoControl", Phase::Listing, {Effect::Listing, Effect::None}},
    {"MmMapLockedPagesSpecifyCache", Phase::Listing, {Effect::Listing, Effect::None}},
    {"MmMapIoSpace", Phase::Listing, {Effect::Listing, Effect::None}},
    {"GetModuleHandleA", Phase::Listing, {Effect::Listing}},
    {"GetProcAddress", Phase::Listing, {Effect::Listing}},
    {"GetSystemFirmwareTable", Phase::Listing, {Effect::Listing}},
};

Effect EffectSeen(const Course& run, const Course& undisturbed, Phase phase) {
    constexpr char errorLine[] = "\nERROR 255 - RYX library initialization failed!\n";
    if (phase == Phase::Listing) {
        return ListingDiffers(run, undisturbed) ? Effect::Listing : Effect::None;
    }
    if (run.ExitCode == 255) {
        const bool driver = run.Output.find("driver") != std::string::npos;
        EXPECT_EQ(run.Output, std::string(driver ? "\nFlash tool load driver failed!\n\n"
                                                 : "\nFlash tool must be run with administrator privilege!\n\n") +
                                  errorLine);
        return driver ? Effect::NoDriver : Effect::NotAdministrator;
    }
    EXPECT_EQ(run.ExitCode, 0U);
    if (run.Output == undisturbed.Output) {
        return Effect::None;
    }
    if (run.Output == "Warning: Failed to create registry for driver.\n" + undisturbed.Output) {
        return Effect::RegistryWarning;
    }
    EXPECT_TRUE(run.Output == "Get file failed.\n" + undisturbed.Output ||
                run.Output == "Open file failed.\nGet file failed.\n" + undisturbed.Output)
        << run.Output;
    return Effect::NoImage;
}

// The effects of a call in a phase, as they are listed.
std::vector<Effect> EffectsOf(const std::string& call, Phase phase) {
    for (const CallEffects& one : Effects) {
        if (one.Call == call && one.When == phase) {
            return one.Possible;
        }
    }
    return {Effect::None};
}

using EffectsSeen = std::set<std::tuple<std::string, Phase, Effect>>;

// Whatever is listed has to have been seen.
void EffectsCheck(const EffectsSeen& seen) {
    for (const CallEffects& one : Effects) {
        for (const Effect effect : one.Possible) {
            EXPECT_EQ(seen.count({one.Call, one.When, effect}), 1U)
                << one.Call << " in phase " << static_cast<int>(one.When) << " had no effect "
                << static_cast<int>(effect);
        }
    }
}

constexpr char ToolKey[] = "registry key Software\\RyxTool"; // stays after every run

// What a disturbed run may leave behind, beside the key. It all serves or is cleaned up by later runs, or is what a
// refused clean-up leaves by design. A failed start leaves nothing.
Lines LeftoversAllowed(const std::string& call, Phase phase) {
    const char* const key = "registry key Software\\RyxDrv";
    const char* const count = "registry value Software\\RyxDrv\\RefCount = 1";
    const char* const tools = "registry value Software\\RyxTool\\ToolsRefCount = 1";
    const char* const mutex = "handle of mutex RyxGlobalMutex";
    const char* const service = "service RYXLIB";
    const char* const file = "file C:\\Windows\\Temp\\\\RyxLib64.sys";
    const char* const driver = "driver RYXLIB from C:\\Windows\\Temp\\\\RyxLib64.sys";
    if (phase != Phase::Stop) {
        return {};
    }
    const std::map<std::string, Lines> stop = {
        // While the count says that there are other tools, the mutex stays open.
        {"RegOpenKeyExA", {tools, mutex, key, count}},
        {"RegQueryValueExA", {tools, mutex, key, count}},
        {"RegDeleteValueA", {tools, mutex}},
        {"RegDeleteKeyA", {key, count}},
        {"OpenSCManagerA", {driver, file, service}},
        {"OpenServiceA", {driver, file, service}},
        {"ControlService", {driver, file, "service RYXLIB (marked for deletion)"}},
        {"DeleteService", {service}},
        {"DeleteFileA", {file}},
        {"SetFirmwareEnvironmentVariableW", {"firmware session open"}},
        // The driver keeps its buffer, and the rest of the stop is skipped.
        {"DeviceIoControl",
         {tools, mutex, key, count, service, file, driver, "communication buffer of 4096 bytes",
          "handle of device Global\\RYXLIB", "handle of mutex Global\\{"}},
    };
    const auto found = stop.find(call);
    return found != stop.end() ? found->second : Lines{};
}

void LeftoversCheck(const Lines& left, const Lines& allowed) {
    for (const std::string& line : left) {
        const bool known = line == ToolKey || std::any_of(allowed.begin(), allowed.end(),
                                                          [&line](const auto& one) { return line.rfind(one, 0) == 0; });
        EXPECT_TRUE(known) << line;
    }
}

// The numbers of the calls to fail: every one of the start and the stop; of the listing, which asks for the same over
// and over, the first ones, the last ones and some between.
std::vector<std::uint64_t> CallsToFail(const Course& undisturbed) {
    constexpr std::uint64_t edge = 60;
    constexpr std::uint64_t samples = 300;
    const std::uint64_t listing = undisturbed.ListingEnd - undisturbed.StartEnd;
    const std::uint64_t step = listing / samples + 1;
    std::vector<std::uint64_t> calls;
    for (std::uint64_t call = 1; call <= undisturbed.Total; ++call) {
        const bool middle = call > undisturbed.StartEnd + edge && call + edge <= undisturbed.ListingEnd;
        if (!middle || listing <= 4 * edge || call % step == 0) {
            calls.push_back(call);
        }
    }
    return calls;
}

// The folder of this test's program.
std::string OwnFolder() {
    char folder[4096];
    return ExecutableFolderGet(folder, sizeof folder) ? folder : "";
}

// The machine with tools on it that were started before and still run.
void StartBesideOthers(const Machine& machine, unsigned others) {
    StartOver(machine);
    for (unsigned tool = 0; tool < others; ++tool) {
        ASSERT_EQ(Start(), RyxOk);
        ProcessEnd();
    }
    StandIn::CallsForget();
}

bool StartsWith(const std::string& text, std::string_view front) {
    return text.rfind(front, 0) == 0;
}

// How what is left differs from what was there before: lines that went with -, lines that came with +. Mutexes, which
// go with the process, and the driver's buffer are looked at where no other tools run.
std::string Change(const Lines& before, const Lines& left) {
    std::string change;
    const auto append = [&change](char sign, const Lines& some, const Lines& others) {
        for (const std::string& line : some) {
            const bool other = StartsWith(line, "communication buffer") || StartsWith(line, "handle of") ||
                               StartsWith(line, "mutex held");
            if (!other && std::find(others.begin(), others.end(), line) == others.end()) {
                change += sign + line + "\n";
            }
        }
    };
    append('-', before, left);
    append('+', left, before);
    return change;
}

// How a disturbed run may change what other tools, so many, have in the machine: one of these texts, or nothing.
Lines ChangesAllowed(const std::string& call, Phase phase, unsigned others) {
    const std::string key = "registry key Software\\RyxDrv\n";
    const std::string count = "registry value Software\\RyxDrv\\RefCount = ";
    const std::string tools = "registry value Software\\RyxTool\\ToolsRefCount = ";
    const std::string now = std::to_string(others) + "\n";
    const std::string more = std::to_string(others + 1) + "\n";
    const std::string driver = "driver RYXLIB from ";
    const std::string service = "service RYXLIB\n";
    const std::string name = "\\RyxLib64.sys\n";
    const std::string own = OwnFolder() + name;
    const std::string temporary = "C:\\Windows\\Temp\\" + name;
    const std::string countLate = "-" + count + now + "+" + count + more;
    const std::string toolsLate = "-" + tools + now + "+" + tools + more;
    const std::map<std::pair<Phase, std::string>, Lines> changes = {
        // A count that can't be reached is left alone, and the driver is installed anew, for the others too.
        {{Phase::Start, "RegOpenKeyExA"}, {"-" + driver + temporary + "+" + driver + own + "+file " + own}},
        {{Phase::Start, "RegQueryValueExA"}, {"-" + driver + temporary + "+" + driver + own + "+file " + own}},
        // A device that does not open makes the count a stale one.
        {{Phase::Start, "CreateFileA"}, {"-" + driver + temporary + "-" + key + "-" + count + now + "-" + service}},
        // As a program of a 32-bit system it does not find the count, and its driver does not start.
        {{Phase::Start, "GetModuleHandleA"}, {"-" + driver + temporary + "-" + service}},
        {{Phase::Start, "GetProcAddress"}, {"-" + driver + temporary + "-" + service}},
        {{Phase::Start, "IsWow64Process"}, {"-" + driver + temporary + "-" + service}},
        // Whoever can't read the count of the driver's users is the last one.
        {{Phase::Stop, "RegOpenKeyExA"},
         {toolsLate, "-" + driver + temporary + "-" + count + now + "-" + service + "+" + count + more}},
        {{Phase::Stop, "RegQueryValueExA"},
         {toolsLate, "-" + driver + temporary + "-" + count + now + "-" + service + "+" + count + more}},
        {{Phase::Stop, "RegSetValueExA"}, {toolsLate, countLate}},
        {{Phase::Stop, "DeviceIoControl"},
         {"-" + count + now + "-" + tools + now + "+" + count + more + "+" + tools + more}},
    };
    const auto found = changes.find({phase, call});
    return found != changes.end() ? found->second : Lines{};
}

// A run beside other tools leaves the machine to them as it was, or as the rules have it; and so does the next one.
void ChangeCheck(const Lines& before, const Lines& left, const Lines& allowed) {
    const std::string change = Change(before, left);
    EXPECT_TRUE(change.empty() || std::find(allowed.begin(), allowed.end(), change) != allowed.end()) << change;
}

bool ServiceLeft(const Lines& left) {
    return std::find(left.begin(), left.end(), "service RYXLIB") != left.end();
}

struct SweepCase {
    const char* Name;
    FirmwareKind Firmware;
    bool Legacy; // the table in the legacy segment, or only behind the firmware table service
    std::vector<std::string> Arguments;
    unsigned Others; // tools that were started before
};

TEST(FaultSweep, EveryCallFailsOnce) {
    const SweepCase cases[] = {
        {"no firmware", FirmwareKind::None, true, {"/eps", "/type"}, 0},
        {"firmware variables", FirmwareKind::Variables, true, {"/eps", "/type"}, 0},
        {"firmware interrupts", FirmwareKind::Smi, true, {"/eps", "/type"}, 0},
        {"firmware table service", FirmwareKind::None, false, {"/eps", "/type", "0"}, 0},
        {"beside another tool", FirmwareKind::None, true, {"/eps", "/type"}, 1},
        {"beside two other tools", FirmwareKind::Smi, true, {"/eps", "/type"}, 2},
    };
    std::uint64_t failed = 0;
    std::uint64_t all = 0;
    std::set<std::string> outcomes;
    EffectsSeen seen;
    for (const SweepCase& swept : cases) {
        StandIn::SmbiosBuilder table;
        table.Begin(0).String("Example Works").String("1.02").Word(0xE000).String("01/02/2015").Byte(0x3F).Qword(8);
        table.Begin(127);
        Machine machine = StandIn::MachineWithTable(table, 2, 8, swept.Legacy);
        machine.Firmware = swept.Firmware;
        machine.Console = StandIn::ConsoleKind::None;
        StartBesideOthers(machine, swept.Others);
        const Lines before = swept.Others != 0 ? StandIn::Leftovers() : Lines{ToolKey};
        const Course undisturbed = WholeRun(swept.Arguments);
        ASSERT_EQ(undisturbed.ExitCode, 0U) << undisturbed.Output;
        EXPECT_EQ(Change(before, undisturbed.Left), "");
        ProcessEnd();
        all += undisturbed.Total;
        for (const std::uint64_t call : CallsToFail(undisturbed)) {
            StartBesideOthers(machine, swept.Others);
            StandIn::FailCall(call);
            const Course run = WholeRun(swept.Arguments);
            const std::string name = StandIn::FailedCallName();
            const Phase phase = call <= undisturbed.StartEnd     ? Phase::Start
                                : call <= undisturbed.ListingEnd ? Phase::Listing
                                                                 : Phase::Stop;
            SCOPED_TRACE(std::string(swept.Name) + ", call " + std::to_string(call) + " " + name);
            EXPECT_NE(name, "") << "the call did not come";
            ++failed;
            const Effect effect = EffectSeen(run, undisturbed, phase);
            const std::vector<Effect> possible = EffectsOf(name, phase);
            EXPECT_NE(std::find(possible.begin(), possible.end(), effect), possible.end())
                << "effect " << static_cast<int>(effect);
            seen.emplace(name, phase, effect);
            const Lines allowed =
                swept.Others != 0 ? ChangesAllowed(name, phase, swept.Others) : LeftoversAllowed(name, phase);
            if (swept.Others != 0) {
                ChangeCheck(before, run.Left, allowed);
            } else {
                LeftoversCheck(run.Left, allowed);
            }
            std::string outcome = std::to_string(run.ExitCode) + run.Output;
            for (const std::string& line : run.Left) {
                outcome += "\n" + line;
            }
            outcomes.insert(outcome);
            ProcessEnd();
            // The next process finds the machine as this one left it.
            if (phase != Phase::Listing || run.Left != undisturbed.Left) {
                const Course next = WholeRun(swept.Arguments);
                EXPECT_EQ(next.ExitCode, 0U);
                EXPECT_EQ(next.Output, undisturbed.Output);
                if (swept.Others == 0) {
                    LeftoversCheck(next.Left, allowed);
                } else if (ServiceLeft(run.Left)) {
                    ChangeCheck(before, next.Left, allowed);
                } else {
                    EXPECT_FALSE(ServiceLeft(next.Left)) << "a driver that the others lost is this one's alone";
                }
                ProcessEnd();
            }
            if (HasFailure()) {
                return;
            }
        }
    }
    EffectsCheck(seen);
    std::cout << "fault sweep: " << failed << " of " << all << " calls failed, one a run; " << outcomes.size()
              << " distinct outcomes\n";
}

} // namespace
