// Memory that runs out: each allocation whose failure the product looks at, failing once.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/AcpiXsdtTableGet.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/CallbackFunctions.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Platform/Flash4kBufferAllocate.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerMain.h"

#include <gtest/gtest.h>
#include <new>
#include <set>
#include <sstream>

namespace {

std::uint64_t Allocations = 0; // since the last AllocationFail
std::uint64_t Failing = 0;     // the number of the one that fails; 0: none

void AllocationFail(std::uint64_t number) {
    Allocations = 0;
    Failing = number;
}

// Gets the block by the plain operator, so that the operator that releases it matches.
void* Allocate(void* (*plain)(std::size_t), std::size_t size) noexcept {
    if (++Allocations == Failing) {
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
using Statuses = std::vector<RyxStatus>;

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
        machine.Memory.push_back({0x4001000, root});
    }
    return machine;
}

// What an operation answers on a machine with its first allocation failing, its second, and so on, until none is left
// to fail; that last answer is the undisturbed one.
Statuses Answers(const Machine& machine, const std::function<RyxStatus()>& operation) {
    Statuses answers;
    for (std::uint64_t failing = 1; failing == 1 || Allocations + 1 >= failing; ++failing) {
        StartOver(machine);
        EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
        AllocationFail(failing);
        Captured([&] { answers.push_back(operation()); });
        Failing = 0;
    }
    return answers;
}

RyxStatus FieldGet() {
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosDataGet(11 * RyxFieldsPerType, 1, &bin);
    const RyxBinOwner owner(bin);
    return status;
}

RyxStatus FieldKeep() {
    FieldValue value;
    return StructFieldRead(11 * RyxFieldsPerType, 1, &value);
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

RyxStatus CommandsRegister() {
    const RyxStatus status = RyxArgCommandRegister("c", "", "", "");
    return status != RyxOk ? status : CallbackFunctionRegister(1, [](std::uint32_t) {});
}

RyxStatus BufferAllocate() {
    Flash4kBuffer buffer;
    return Flash4kBufferAllocate(10, false, &buffer);
}

TEST(Allocations, HaveTheirStatusOneByOne) {
    constexpr RyxStatus memory = RyxErrorMemory;
    constexpr RyxStatus buffer = RyxErrorBuffer;
    constexpr RyxStatus unread = RyxErrorUnsupported;
    const Machine legacy = TableMachine(true);
    EXPECT_EQ(Answers(legacy, CommandsRegister), (Statuses{memory, memory, RyxOk}));
    EXPECT_EQ(Answers(legacy, BufferAllocate), (Statuses{memory, RyxOk}));
    // Between the table's copy and the value come the blocks that remember the walk, which can do without.
    EXPECT_EQ(Answers(legacy, FieldGet), (Statuses{RyxErrorNotFound, buffer, RyxOk, RyxOk, memory, RyxOk}));
    EXPECT_EQ(Answers(legacy, FieldKeep), (Statuses{unread, unread, RyxOk, RyxOk, unread, memory, RyxOk}));
    EXPECT_EQ(Answers(TableMachine(false), TableRead), (Statuses{RyxErrorNotFound, RyxOk}));
    EXPECT_EQ(Answers(TableMachine(false, 0x10000), TableRead), (Statuses{RyxErrorNotFound, RyxErrorNotFound, RyxOk}));
    // A registry copy that there is no memory for leaves the ways behind it; there, memory that is missing ends the
    // search, except for what the driver can find as well.
    EXPECT_EQ(Answers(RootTableMachine(true), RootTableGet), (Statuses{RyxErrorRootTable, buffer, RyxOk}));
    EXPECT_EQ(Answers(RootTableMachine(false), RootTableGet),
              (Statuses{buffer, RyxErrorRootTable, RyxOk, buffer, RyxOk}));
    // The last one that fails is the DSDT's copy, which only the sleep states need.
    EXPECT_EQ(Answers(legacy, AcpiDataCollect), (Statuses{buffer, buffer, buffer, RyxOk, RyxOk}));
}

// A response file: its block, four strings, and four nodes.
TEST(Allocations, OfTheCommandLine) {
    const TemporaryFolder folder;
    ArgumentVector file({"Quarrinet", "@" + folder.Write("args.rsp", std::string("/a b \"c\" d"))});
    std::vector<std::string> collected;
    const Statuses answers = Answers(TableMachine(true), [&] {
        RyxArgsSet(file.Count(), file.Data());
        const RyxStatus status = ArgumentCollect();
        std::string text;
        for (const ArgNode* node = ArgumentCommandsGet(); node != nullptr;
             node = node->Params != nullptr ? node->Params : node->Next) {
            text += node->Text;
        }
        collected.push_back(text);
        return status;
    });
    constexpr RyxStatus memory = RyxErrorMemory;
    constexpr RyxStatus none = RyxErrorNotFound;
    EXPECT_EQ(answers, (Statuses{none, none, RyxOk, memory, RyxOk, memory, memory, memory, memory, RyxOk}));

    EXPECT_EQ(collected, (std::vector<std::string>{"", "", "acd", "", "abc", "", "", "", "", "abcd"}));

    ArgumentVector type({"Quarrinet", "/type"});
    const auto defaultAdd = [&] {
        RyxArgsSet(type.Count(), type.Data());
        RyxArgCommandRegister("type", "", "%d=99", "");
        return RyxArgSyntaxProcess(1, 0, nullptr);
    };
    EXPECT_EQ(Answers(TableMachine(true), defaultAdd), (Statuses{none, none, none, memory, memory, RyxOk}));
}

// Whole runs: how they end, what they say about it, and that nothing stays behind that an undisturbed run takes away.
TEST(Allocations, LeaveNothingBehind) {
    std::set<std::string> endings;
    for (const bool legacy : {true, false}) {
        std::string undisturbed;
        for (std::uint64_t failing = 0; failing == 0 || Allocations + 1 >= failing; ++failing) {
            SCOPED_TRACE(failing);
            StartOver(TableMachine(legacy));
            std::uint64_t started = 0;
            const std::string output = Captured([&] {
                AllocationFail(failing);
                EXPECT_EQ(Start({"/nologo", "/eps", "/type", "11", "1"}), RyxOk);
                started = Allocations;
                ViewerMain();
                EXPECT_EQ(RyxLibExit(), RyxOk);
                Failing = 0;
            });
            EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>{"registry key Software\\RyxTool"});
            undisturbed = failing == 0 ? output : undisturbed;
            if (failing <= started && output != undisturbed) {
                EXPECT_EQ(output, "Allocate memory failed.\nGet file failed.\n" + undisturbed);
            }
            std::istringstream lines(output);
            for (std::string line; std::getline(lines, line);) {
                if (line.find("ailed") != std::string::npos || line.rfind("ERROR", 0) == 0) {
                    endings.insert(line);
                }
            }
        }
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
}

} // namespace
