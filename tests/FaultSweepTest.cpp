// The sweeps of platform calls: whole runs in which a call fails, once or from then on.
#include "machine/model/Faults.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"
#include "tests/Sweep.h"
#include "tests/ToolRun.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iostream>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using StandIn::FirmwareKind;
using StandIn::Machine;

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
        } else if (line != "Error: Type 0 is not supported.") {
            printed.push_back(line);
        }
    }
    EXPECT_LE(messages, 1U);
    EXPECT_EQ(run.ExitCode, error);
    while (error != 0 && !printed.empty() && printed.back().empty()) {
        printed.pop_back(); // blank lines before the error line
    }
    EXPECT_EQ(StrangeLine(printed, undisturbed.Output), "");
    return true;
}

// What a failing call makes of the run. Calls that are not listed change nothing that the user sees.
using Effect = std::string_view;
constexpr Effect NoEffect = "nothing";
constexpr Effect NotAdministrator = "no administrator rights";
constexpr Effect NoDriver = "no driver";
constexpr Effect RegistryWarning = "a warning of the registry";
constexpr Effect NoImage = "a warning of the program's file";
constexpr Effect Listing = "a listing without what could not be read";

struct CallEffects {
    const char* Call;
    Phase When;
    std::vector<Effect> Possible; // several where the same operation is called for several purposes
};

const CallEffects Effects[] = {
    {"OpenThreadToken", PhaseStart, {NotAdministrator}},
    {"OpenProcessToken", PhaseStart, {NotAdministrator, NoEffect}},
    {"DuplicateToken", PhaseStart, {NotAdministrator}},
    {"AllocateAndInitializeSid", PhaseStart, {NotAdministrator}},
    {"InitializeAcl", PhaseStart, {NotAdministrator}},
    {"AddAccessAllowedAce", PhaseStart, {NotAdministrator}},
    {"InitializeSecurityDescriptor", PhaseStart, {NotAdministrator}},
    {"SetSecurityDescriptorDacl", PhaseStart, {NotAdministrator}},
    {"SetSecurityDescriptorOwner", PhaseStart, {NotAdministrator}},
    {"SetSecurityDescriptorGroup", PhaseStart, {NotAdministrator}},
    {"AccessCheck", PhaseStart, {NotAdministrator}},
    // Without an answer on its kind the system counts as a 32-bit one, and its driver does not start on this machine.
    {"GetModuleHandleA", PhaseStart, {NoDriver, NoEffect}},
    {"GetProcAddress", PhaseStart, {NoDriver, NoEffect}},
    {"IsWow64Process", PhaseStart, {NoDriver}},
    {"PathRemoveFileSpecA", PhaseStart, {NoDriver}},
    {"FindResourceA", PhaseStart, {NoDriver}},
    {"LoadResource", PhaseStart, {NoDriver}},
    {"LockResource", PhaseStart, {NoDriver}},
    {"SizeofResource", PhaseStart, {NoDriver}},
    {"GetTempPathA", PhaseStart, {NoDriver}},
    {"WriteFile", PhaseStart, {NoDriver}},
    {"RegCreateKeyExA", PhaseStart, {RegistryWarning, NoEffect}},
    {"GetModuleFileNameA", PhaseStart, {NoDriver}},
    {"GetModuleFileNameW", PhaseStart, {NoImage}},
    {"CreateFileA", PhaseStart, {NoDriver, NoEffect}},
    {"CreateFileW", PhaseStart, {NoImage}},
    {"GetFileSize", PhaseStart, {NoImage}},
    {"ReadFile", PhaseStart, {NoDriver, NoImage}},
    {"DeviceIoControl", PhaseListing, {Listing, NoEffect}},
    {"MmMapLockedPagesSpecifyCache", PhaseListing, {Listing, NoEffect}},
    {"MmMapIoSpace", PhaseListing, {Listing, NoEffect}},
    {"GetModuleHandleA", PhaseListing, {Listing}},
    {"GetProcAddress", PhaseListing, {Listing}},
    {"GetSystemFirmwareTable", PhaseListing, {Listing}},
};

Effect EffectSeen(const Course& run, const Course& undisturbed, Phase phase) {
    constexpr char errorLine[] = "\nERROR 255 - RYX library initialization failed!\n";
    if (phase == PhaseListing) {
        return ListingDiffers(run, undisturbed) ? Listing : NoEffect;
    }
    if (run.ExitCode == 255) {
        const bool driver = run.Output.find("driver") != std::string::npos;
        EXPECT_EQ(run.Output, std::string(driver ? "\nFlash tool load driver failed!\n\n"
                                                 : "\nFlash tool must be run with administrator privilege!\n\n") +
                                  errorLine);
        return driver ? NoDriver : NotAdministrator;
    }
    EXPECT_EQ(run.ExitCode, 0U);
    if (run.Output == undisturbed.Output) {
        return NoEffect;
    }
    if (run.Output == "Warning: Failed to create registry for driver.\n" + undisturbed.Output) {
        return RegistryWarning;
    }
    const std::string warning =
        run.Output.starts_with("Open") ? "Open file failed.\nGet file failed.\n" : "Get file failed.\n";
    EXPECT_EQ(FirstDifference(run.Output, warning + undisturbed.Output), "");
    return NoImage;
}

using EffectsSeen = std::set<std::tuple<std::string, Phase, Effect>>;

// What a run may leave behind, beside the key, when a call fails in its stop, or for good. It all serves or is cleaned
// up by later runs, or is what a refused clean-up leaves by design. Beside other tools, it is how what they have may
// change: lines that go, with -, and lines that come, with +.
struct CallLeftovers {
    const char* Call;
    Lines Alone;
    Lines Beside;
};

constexpr char Key[] = "registry key Software\\RyxDrv";
constexpr char Count[] = "registry value Software\\RyxDrv\\RefCount = 1";
constexpr char Tools[] = "registry value Software\\RyxTool\\ToolsRefCount = 1";
constexpr char Mutex[] = "handle of mutex RyxGlobalMutex";
constexpr char Service[] = "service RYXLIB";
constexpr char File[] = "file C:\\Windows\\Temp\\RyxLib64.sys";
constexpr char Driver[] = "driver RYXLIB from C:\\Windows\\Temp\\RyxLib64.sys";

// The others lose their driver, or a count stays too high; or a count can't be reached, and the driver is installed
// anew, or taken away by one who counts as the last.
const Lines Lost = {"-driver ", "-service ", "-file ", "-registry key Software\\RyxDrv",
                    "-registry value Software\\RyxDrv\\RefCount"};
const Lines Late = {"-registry value ", "+registry value "};
const Lines Anew = {"-driver ", "-service ", "-file ", "-registry ", "+registry value ", "+driver ", "+file "};

const CallLeftovers Leftovers[] = {
    // While the count says that there are other tools, the mutex stays open.
    {"RegOpenKeyExA", {Tools, Mutex, Key, Count}, Anew},
    {"RegQueryValueExA", {Tools, Mutex, Key, Count}, Anew},
    {"RegSetValueExA", {}, Late},
    {"RegDeleteValueA", {Tools, Mutex}, {}},
    {"RegDeleteKeyA", {Key, Count}, {}},
    {"OpenSCManagerA", {Driver, File, Service}, {}},
    {"OpenServiceA", {Driver, File, Service}, {}},
    {"ControlService", {Driver, File, Service}, {}},
    {"DeleteService", {Service}, {}},
    {"DeleteFileA", {File}, {}},
    {"SetFirmwareEnvironmentVariableW", {"firmware session open"}, {}},
    // A device that does not open makes the count a stale one.
    {"CreateFileA", {}, Lost},
    // As a program of a 32-bit system it does not find the count, and its driver does not start.
    {"GetModuleHandleA", {}, Lost},
    {"GetProcAddress", {}, Lost},
    {"IsWow64Process", {}, Lost},
    // The driver keeps its buffer, and the rest of the stop is skipped.
    {"DeviceIoControl",
     {Tools, Mutex, Key, Count, Service, File, Driver, "communication buffer of 4096 bytes",
      "handle of device Global\\RYXLIB", "handle of mutex Global\\{"},
     Late},
};

// The machine with tools on it that were started before and still run.
void StartBesideOthers(const Machine& machine, unsigned others) {
    StartOver(machine);
    for (unsigned tool = 0; tool < others; ++tool) {
        ASSERT_EQ(Start(), RyxOk);
        ProcessEnd();
    }
    StandIn::CallsForget();
}

// How what is left differs from what was there before. Mutexes, which go with the process, and the driver's buffer are
// looked at where no other tools run.
Lines Change(const Lines& before, const Lines& left) {
    Lines change;
    const auto append = [&change](char sign, const Lines& some, const Lines& others) {
        for (const std::string& line : some) {
            const bool other = line.starts_with("communication buffer") || line.starts_with("handle of") ||
                               line.starts_with("mutex held");
            if (!other && std::ranges::find(others, line) == others.end()) {
                change.push_back(sign + line);
            }
        }
    };
    append('-', before, left);
    append('+', left, before);
    return change;
}

struct SweepCase {
    const char* Name;
    FirmwareKind Firmware;
    bool Legacy; // the table in the legacy segment, or only behind the firmware table service
    std::vector<std::string> Arguments;
    unsigned Others; // tools that were started before
};

const SweepCase Cases[] = {
    {"no firmware", FirmwareKind::None, true, {"/eps", "/type"}, 0},
    {"beside another tool", FirmwareKind::None, true, {"/eps", "/type"}, 1},
    {"firmware variables", FirmwareKind::Variables, true, {"/eps", "/type"}, 0},
    {"firmware interrupts", FirmwareKind::Smi, true, {"/eps", "/type"}, 0},
    {"firmware table service", FirmwareKind::None, false, {"/eps", "/type", "0"}, 0},
    {"beside two other tools", FirmwareKind::Smi, true, {"/eps", "/type"}, 2},
};

// A sweep without its check, in which calls fail once or, when they stay, from then on.
Sweep CallSweep(const SweepCase& swept, bool stays) {
    StandIn::SmbiosBuilder table;
    table.Begin(0).String("Example Works").String("1.02").Word(0xE000).String("01/02/2015").Byte(0x3F).Qword(8);
    table.Begin(127);
    Machine machine = StandIn::MachineWithTable(table, 2, 8, swept.Legacy);
    machine.Firmware = swept.Firmware;
    machine.Console = StandIn::ConsoleKind::None;
    const auto fail = [stays](const SweepFault* fault) {
        StandIn::MachineGet().Faults.clear();
        if (fault != nullptr) {
            StandIn::MachineGet().Faults = {{*StandIn::OperationFind(fault->Call), 0, fault->Number, stays}};
        }
    };
    return {std::string(swept.Name) + (stays ? ", for good" : ", once"),
            [machine, others = swept.Others] { StartBesideOthers(machine, others); }, swept.Arguments, fail, nullptr};
}

// The calls to fail: every one of the start and the stop; of the listing, which asks for the same over and over, of
// each operation the first ones, the last ones and some between.
std::vector<SweepFault> CallsToFail(const Course& undisturbed, std::uint64_t edge, std::uint64_t samples) {
    std::vector<SweepFault> faults;
    for (std::size_t which = 0; which + 1 < std::size(StandIn::OperationNames); ++which) {
        const std::uint64_t start = undisturbed.StartEnd[which];
        const std::uint64_t end = undisturbed.ListingEnd[which];
        const std::uint64_t step = (end - start) / samples + 1;
        for (std::uint64_t call = 1; call <= undisturbed.End[which]; ++call) {
            const bool middle = call > start + edge && call + edge <= end;
            if (!middle || (call - start) % step == 0) {
                const Phase when = call <= start ? PhaseStart : call <= end ? PhaseListing : PhaseStop;
                faults.push_back({std::string(StandIn::OperationNames[which]), call, when});
            }
        }
    }
    return faults;
}

// Sweeps through a case. Whoever starts next finds the machine as the first run was allowed to leave it.
void CallsSweep(const SweepCase& swept, bool stays, std::uint64_t edge, std::uint64_t samples, EffectsSeen* seen) {
    Sweep sweep = CallSweep(swept, stays);
    sweep.Prepare();
    const Lines before = StandIn::Leftovers();
    const Course undisturbed = Undisturbed(sweep);
    EXPECT_EQ(Change(swept.Others != 0 ? before : Lines{ToolKey}, undisturbed.Left), Lines());
    sweep.Check = [&](const SweepFault& fault, const Course& run, const Course* next) {
        if (!stays) {
            EXPECT_GE(run.End[static_cast<std::size_t>(*StandIn::OperationFind(fault.Call))], fault.Number);
            const Effect effect = EffectSeen(run, undisturbed, fault.When);
            const auto listed = std::ranges::find_if(
                Effects, [&fault](const CallEffects& one) { return one.Call == fault.Call && one.When == fault.When; });
            const auto possible = listed != std::end(Effects) ? listed->Possible : std::vector{NoEffect};
            EXPECT_TRUE(std::ranges::find(possible, effect) != possible.end()) << "made of the run: " << effect;
            seen->emplace(fault.Call, fault.When, effect);
        }
        const auto row = std::ranges::find(Leftovers, fault.Call, &CallLeftovers::Call);
        const bool may = row != std::end(Leftovers) && (stays || swept.Others != 0 || fault.When == PhaseStop);
        for (const Course* const course : {&run, next != nullptr ? next : &run}) {
            if (swept.Others == 0) {
                LinesCheck(course->Left, may ? row->Alone : Lines());
            } else {
                LinesCheck(Change(before, course->Left), may ? row->Beside : Lines());
            }
        }
    };
    const std::vector<SweepFault> faults = CallsToFail(undisturbed, edge, samples);
    SweepRun(sweep, undisturbed, faults);
    std::cout << "fault sweep: " << sweep.Name << ": " << faults.size() << " of "
              << std::accumulate(undisturbed.End.begin(), undisturbed.End.end(), std::uint64_t{0})
              << " calls failed, each in a run\n";
}

TEST(FaultSweep, EveryCallFailsOnce) {
    EffectsSeen seen;
    for (const SweepCase& swept : Cases) {
        CallsSweep(swept, false, 20, 50, &seen);
    }
    // Whatever is listed has to have been seen.
    for (const CallEffects& one : Effects) {
        for (const Effect effect : one.Possible) {
            EXPECT_EQ(seen.count({one.Call, one.When, effect}), 1U)
                << "no failing " << one.Call << " in " << one.When << " made of the run: " << effect;
        }
    }
}

TEST(FaultSweep, CallsFailForGood) {
    for (const SweepCase& swept : std::span(Cases).subspan(2)) {
        CallsSweep(swept, true, 3, 10, nullptr);
    }
}

} // namespace
