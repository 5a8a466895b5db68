// Memory that runs out: each allocation whose failure the product looks at, failing once or from then on.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/AcpiXsdtTableGet.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DriverLoad.h"
#include "machine/model/AcpiBuilder.h"
#include "tests/Support.h"
#include "tests/Sweep.h"
#include "tests/ToolRun.h"

#include <gtest/gtest.h>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

std::uint64_t Allocations = 0; // since the last AllocationFail
std::uint64_t Failing = 0;     // the number of the one that fails; 0: none
bool FailingStays = false;     // as do all after it

void AllocationFail(std::uint64_t number, bool stays = false) {
    Allocations = 0;
    Failing = number;
    FailingStays = stays;
}

// Gets the block by the plain operator, so that the operator that releases it matches.
void* Allocate(void* (*plain)(std::size_t), std::size_t size) noexcept {
    if (++Allocations == Failing || (FailingStays && Allocations > Failing)) {
        return nullptr;
    }
    try {
        return plain(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate([](std::size_t wanted) { return operator new(wanted); }, size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate([](std::size_t wanted) { return operator new[](wanted); }, size);
}

namespace {

using StandIn::AcpiBuilder;
using StandIn::Machine;
using Statuses = std::set<RyxStatus>;

Machine TableMachine(bool legacy, std::size_t stringLength = 1) {
    StandIn::SmbiosBuilder table;
    table.Begin(11).Byte(1).SetString(std::string(stringLength, 'x'));
    Machine machine = StandIn::MachineWithTable(table, 2, 8, legacy);
    machine.Console = StandIn::ConsoleKind::None;
    machine.Firmware = legacy ? StandIn::FirmwareKind::Smi : StandIn::FirmwareKind::Variables;
    return machine;
}

// The ACPI root table in the registry, or found around the DSDT of a FADT that the system serves.
Machine RootTableMachine(bool registry) {
    const StandIn::Bytes root = StandIn::AcpiRootTable<std::uint32_t>({});
    Machine machine;
    if (registry) {
        machine.RegistryBinary["HARDWARE\\ACPI\\RSDT\\Example\\Board\\00000001"] = root;
    } else {
        machine.AcpiTables["FACP"] = AcpiBuilder("FACP", 244).Put(40, std::uint32_t{0x4000000}).Table();
        machine.WindowsMemory = {{0x2000000, 0x1000000}}; // the driver looks at what firmware keeps right above
        machine.Memory.push_back({0x4001000, root});
    }
    return machine;
}

// What an operation answers on a machine when one of its allocations fails, whichever it is. With none left to fail it
// has to succeed.
Statuses Answers(const Machine& machine, const std::function<RyxStatus()>& operation) {
    Statuses answers;
    RyxStatus last = RyxOk;
    for (std::uint64_t failing = 1; failing == 1 || Allocations + 1 >= failing; ++failing) {
        StartOver(machine);
        EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
        AllocationFail(failing);
        Captured([&] { last = operation(); });
        Failing = 0;
        if (Allocations >= failing) {
            answers.insert(last);
        }
    }
    EXPECT_EQ(last, RyxOk);
    return answers;
}

RyxStatus FieldGet() {
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosDataGet(11 * RyxFieldsPerType, 1, &bin);
    const RyxBinOwner owner(bin);
    return status;
}

RyxStatus TableRead() {
    DmiTableCopy copy{};
    return DmiFirmwareTableRead(&copy);
}

RyxStatus RootTableGet() {
    RyxBin* table = nullptr;
    const RyxStatus status = AcpiXsdtTableGet(&table);
    const RyxBinOwner owner(table);
    return status;
}

TEST(Allocations, HaveTheirStatus) {
    constexpr RyxStatus buffer = RyxErrorBuffer;
    const Machine legacy = TableMachine(true);
    // A walk does without the memory to remember it by.
    EXPECT_EQ(Answers(legacy, FieldGet), (Statuses{RyxErrorNotFound, buffer, RyxErrorMemory, RyxOk}));
    EXPECT_EQ(Answers(TableMachine(false), TableRead), Statuses{RyxErrorNotFound});
    EXPECT_EQ(Answers(TableMachine(false, 0x10000), TableRead), Statuses{RyxErrorNotFound});
    // A registry copy that there is no memory for leaves the ways behind it; there, memory that is missing ends the
    // search, except for what the driver can find as well.
    EXPECT_EQ(Answers(RootTableMachine(true), RootTableGet), (Statuses{RyxErrorRootTable, buffer}));
    EXPECT_EQ(Answers(RootTableMachine(false), RootTableGet), (Statuses{buffer, RyxErrorRootTable, RyxOk}));
    // Without a copy of the DSDT only the sleep states are missing.
    EXPECT_EQ(Answers(legacy, AcpiDataCollect), (Statuses{buffer, RyxOk}));
}

// A response file: an option that there is no memory for is an error, or is left out.
TEST(Allocations, OfTheCommandLine) {
    const TemporaryFolder folder;
    ArgumentVector file({"Quarrinet", "@" + folder.Write("args.rsp", std::string("/a b \"c\" d"))});
    std::set<std::pair<RyxStatus, std::string>> collected;
    Answers(TableMachine(true), [&] {
        RyxArgsSet(file.Count(), file.Data());
        const RyxStatus status = ArgumentCollect();
        std::string text;
        for (const ArgNode* node = ArgumentCommandsGet(); node != nullptr;
             node = node->Params != nullptr ? node->Params : node->Next) {
            text += node->Text;
        }
        collected.emplace(status, text);
        return status;
    });
    constexpr RyxStatus memory = RyxErrorMemory;
    constexpr RyxStatus none = RyxErrorNotFound;
    EXPECT_EQ(collected,
              (decltype(collected){{none, ""}, {memory, ""}, {RyxOk, "acd"}, {RyxOk, "abc"}, {RyxOk, "abcd"}}));

    ArgumentVector type({"Quarrinet", "/type"});
    const auto defaultAdd = [&] {
        RyxArgsSet(type.Count(), type.Data());
        RyxArgCommandRegister("type", "", "%d=99", "");
        return RyxArgSyntaxProcess(1, 0, nullptr);
    };
    EXPECT_EQ(Answers(TableMachine(true), defaultAdd), (Statuses{none, memory}));
}

// A sweep of all allocations, without its check, of which one fails or, when it stays, all from one on.
Sweep AllocationSweep(bool legacy, bool stays) {
    return {std::string(legacy ? "legacy road" : "firmware road") + (stays ? ", for good" : ", once"),
            [legacy] {
                StartOver(TableMachine(legacy));
                AllocationFail(0);
            },
            {"/eps", "/type", "11", "1"},
            [stays](const SweepFault* fault) { AllocationFail(fault != nullptr ? fault->Number : 0, stays && fault); },
            nullptr};
}

std::vector<SweepFault> AllocationsToFail() {
    std::vector<SweepFault> faults;
    for (std::uint64_t number = 1, all = Allocations; number <= all; ++number) {
        faults.push_back({"allocation", number, PhaseAny});
    }
    return faults;
}

void AllocationsSweep(bool legacy, bool stays, std::set<std::string>* endings) {
    Sweep sweep = AllocationSweep(legacy, stays);
    const Course undisturbed = Undisturbed(sweep);
    const std::vector<SweepFault> faults = AllocationsToFail();
    sweep.Check = [&](const SweepFault&, const Course& run, const Course* next) {
        LinesCheck(run.Left, {});
        LinesCheck(next->Left, {});
        Lines printed;
        for (const std::string& line : LinesOf(run.Output)) {
            if (line.find("ailed") != std::string::npos || line.starts_with("ERROR")) {
                endings->insert(line);
            } else {
                printed.push_back(line);
            }
        }
        if (run.ExitCode == 0) {
            EXPECT_EQ(StrangeLine(printed, undisturbed.Output), "");
        }
    };
    SweepRun(sweep, undisturbed, faults);
}

// For programs an object is whole or not there at all, whichever allocation fails.
TEST(Allocations, ForProgramsEveryObjectIsWhole) {
    setenv("QUARRINET_FORMAT", "json", 1);
    for (const bool stays : {false, true}) {
        Sweep sweep = AllocationSweep(true, stays);
        EXPECT_EQ(LinesOf(Undisturbed(sweep).Output).size(), 2U);
        sweep.Check = [stays](const SweepFault&, const Course& run, const Course*) {
            const Lines objects = LinesOf(run.Output);
            for (const std::string& line : objects) {
                EXPECT_TRUE(line.starts_with("{\"") && line.ends_with("}}")) << line;
            }
            EXPECT_TRUE(stays || run.ExitCode != 0 || !objects.empty())
                << "one that there is no memory for takes the rest away";
        };
        SweepRun(sweep, Undisturbed(sweep), AllocationsToFail());
    }
    unsetenv("QUARRINET_FORMAT");
}

TEST(Allocations, LeaveNothingBehind) {
    std::set<std::string> endings;
    for (const bool legacy : {true, false}) {
        AllocationsSweep(legacy, false, &endings);
    }
    EXPECT_EQ(endings, (std::set<std::string>{
                           "Allocate memory failed.",
                           "ERROR 105 - Command line error! Status = 14.",
                           "ERROR 105 - Command line error! Status = 30.",
                           "ERROR 105 - Command line error! Status = 9.",
                           "ERROR 153 - Not supported! Status = 3.",
                           "ERROR 171 - Parser entry point or data failed! Status = 3.",
                           "Failed to read DMI entry information. Status = 800000C9",
                           "Failed to read DMI struct. Status = 8000000E",
                           "Get file failed.",
                       }));
    for (const bool legacy : {true, false}) {
        AllocationsSweep(legacy, true, &endings);
    }
}

} // namespace
