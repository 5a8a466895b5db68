// Tests of the helper driver: requests as the kernel sends them, and what the driver leaves when it goes.
#include "Lib/LittleEndian.h"
#include "machine/kernel/Kernel.h"
#include "machine/kernel/KernelObjects.h"
#include "machine/kernel/Memory.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/model/Faults.h"
#include "machine/model/Machine.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"

#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <ntddk.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

using StandIn::Bytes;
using StandIn::Machine;
using Ranges = std::vector<StandIn::MemoryRange>;

namespace {

constexpr ULONG ReadMemory = 0x222182;
constexpr ULONG WriteMemory = 0x222186;
constexpr ULONG GetBuffer = 0x22218A;
constexpr ULONG ReleaseBuffer = 0x22218E;
constexpr ULONG WritePort = 0x22219E;
constexpr ULONG LocateRsdt = 0x2221AA;
constexpr ULONG GetVersion = 0x2221B0;
constexpr ULONG LocateRsdtNear = 0x2221C2;

constexpr std::size_t LargestTransfer = 16U << 20U;
constexpr std::uint64_t FourGiB = 1ULL << 32U;

// The requests that the driver serves, and the lengths that it takes.
struct Lengths {
    ULONG Code;
    std::size_t Input;
    std::size_t Least; // of the output
    std::size_t Most;
};
constexpr Lengths Served[] = {{ReadMemory, 4, 1, LargestTransfer},
                              {WriteMemory, 4, 1, LargestTransfer},
                              {GetBuffer, 4, 4, 4},
                              {ReleaseBuffer, 4, 0, 0},
                              {WritePort, 6, 0, 0},
                              {LocateRsdt, 0, 4, 4},
                              {GetVersion, 0, 2, 2},
                              {LocateRsdtNear, 4, 4, 4}};

Bytes LittleEndian(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U),
            static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 24U)};
}

std::uint32_t Number(const Bytes& bytes) {
    return static_cast<std::uint32_t>(LittleEndianRead(bytes.data(), bytes.size()));
}

// A machine on which Windows manages these ranges, or doesn't say.
Machine Managed(std::optional<Ranges> ranges) {
    Machine machine;
    machine.WindowsMemory = std::move(ranges);
    return machine;
}

// The loaded driver on a machine.
class Loaded {
public:
    explicit Loaded(Machine machine) {
        StandIn::MachineSet(std::move(machine));
        EXPECT_EQ(DriverEntry(&Driver, nullptr), STATUS_SUCCESS);
    }
    ~Loaded() { Unload(); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    // Unloads it, whatever is open; it must then have left nothing.
    void Unload() {
        if (Driver.DriverUnload != nullptr) {
            Driver.DriverUnload(&Driver);
            Driver.DriverUnload = nullptr;
            EXPECT_EQ(StandIn::KernelLeftovers(), std::vector<std::string>());
        }
    }

    FILE_OBJECT* Open() {
        IO_SECURITY_CONTEXT security{FILE_READ_DATA | FILE_WRITE_DATA};
        Files.push_back({Driver.DeviceObject, nullptr});
        EXPECT_EQ(StandIn::PlainSend(&Files.back(), IRP_MJ_CREATE, &security), STATUS_SUCCESS);
        return &Files.back();
    }

    static void Close(FILE_OBJECT* file) { EXPECT_EQ(StandIn::PlainSend(file, IRP_MJ_CLOSE), STATUS_SUCCESS); }

    // Sends a control request. `output` is as long as the request's, and gets what comes.
    NTSTATUS Control(FILE_OBJECT* file, ULONG code, const Bytes& input, Bytes* output) {
        std::uint32_t returned = 0;
        const NTSTATUS status =
            StandIn::ControlSend(file, code, input.data(), static_cast<std::uint32_t>(input.size()), output->data(),
                                 static_cast<std::uint32_t>(output->size()), &returned);
        EXPECT_EQ(returned, NT_SUCCESS(status) && code != WriteMemory ? output->size() : 0);
        return status;
    }

    NTSTATUS Read(FILE_OBJECT* file, std::uint32_t address, std::size_t length) {
        Bytes output(length);
        return Control(file, ReadMemory, LittleEndian(address), &output);
    }

    NTSTATUS Write(FILE_OBJECT* file, std::uint32_t address, Bytes data) {
        return Control(file, WriteMemory, LittleEndian(address), &data);
    }

    // The buffer's address; 0 when there is none to be had.
    std::uint32_t BufferGet(FILE_OBJECT* file, std::uint32_t size = 4096) {
        Bytes address(4, 0xEE);
        const NTSTATUS status = Control(file, GetBuffer, LittleEndian(size), &address);
        EXPECT_EQ(status, Number(address) != 0 ? STATUS_SUCCESS : STATUS_INSUFFICIENT_RESOURCES);
        return Number(address);
    }

    NTSTATUS BufferRelease(FILE_OBJECT* file) {
        Bytes none;
        return Control(file, ReleaseBuffer, LittleEndian(4096), &none);
    }

    DRIVER_OBJECT Driver{};

private:
    std::list<FILE_OBJECT> Files;
};

// The table of the firmware's port.
Bytes FixedTable(std::uint32_t port, std::size_t size = 244) {
    Bytes table = StandIn::AcpiBuilder("FACP", size).Put(48, port).Table();
    table.resize(size);
    StandIn::BytesPut(table, 4, static_cast<std::uint32_t>(size));
    return table;
}

// The table of the windows to the PCI configuration.
struct Window {
    std::uint64_t Address;
    std::uint8_t First;
    std::uint8_t Last;
};
Bytes Windows(const std::vector<Window>& windows) {
    StandIn::AcpiBuilder table("MCFG", 44);
    for (std::size_t at = 44; const Window& one : windows) {
        table.Put(at, one.Address).Put(at + 10, one.First).Put(at + 11, one.Last).Put(at + 12, std::uint32_t{0});
        at += 16;
    }
    return table.Table();
}

bool BufferExists() {
    return !StandIn::MemoryAllocated().Data.empty();
}

void Put(Machine* machine, std::uint64_t address, std::string_view text) {
    machine->Memory.push_back({address, Bytes(text.begin(), text.end())});
}

} // namespace

TEST(Driver, ServesItsCodesAndNoOther) {
    Loaded driver(Managed(Ranges()));
    FILE_OBJECT* const file = driver.Open();
    for (const ULONG base : {0x222000U, 0x220000U, 0x22E000U, 0x70000U, 0xFFFFF000U, 0U}) {
        for (ULONG code = base; code - base < 0x1000; ++code) {
            if (std::ranges::find(Served, code, &Lengths::Code) == std::end(Served)) {
                Bytes output(8, 0xEE);
                ASSERT_EQ(driver.Control(file, code, Bytes(8), &output), STATUS_INVALID_DEVICE_REQUEST) << code;
                ASSERT_EQ(output, Bytes(8, 0xEE));
            }
        }
    }
    const std::set<int> functions = {IRP_MJ_CREATE, IRP_MJ_CLOSE, IRP_MJ_DEVICE_CONTROL};
    for (int function = 0; function <= IRP_MJ_MAXIMUM_FUNCTION; ++function) {
        EXPECT_EQ(driver.Driver.MajorFunction[function] != nullptr, functions.count(function) != 0) << function;
    }
    Bytes version(2);
    EXPECT_EQ(driver.Control(file, GetVersion, {}, &version), STATUS_SUCCESS);
    EXPECT_EQ(version, (Bytes{1, 1}));
}

TEST(Driver, LengthsAreCheckedForEachCode) {
    Loaded driver(Managed(Ranges()));
    FILE_OBJECT* const file = driver.Open();
    for (const Lengths& one : Served) {
        const auto send = [&](std::size_t input, std::size_t output) {
            Bytes data(output, 0xEE);
            const NTSTATUS status = driver.Control(file, one.Code, Bytes(input), &data);
            EXPECT_TRUE(NT_SUCCESS(status) || data == Bytes(output, 0xEE) || one.Code == GetBuffer);
            return status;
        };
        SCOPED_TRACE(one.Code);
        EXPECT_EQ(send(one.Input + 1, one.Least), STATUS_INVALID_PARAMETER);
        EXPECT_EQ(send(one.Input, one.Most + 1), STATUS_INVALID_PARAMETER);
        if (one.Input != 0) {
            EXPECT_EQ(send(one.Input - 1, one.Least), STATUS_INVALID_PARAMETER);
            EXPECT_EQ(send(0, one.Least), STATUS_INVALID_PARAMETER);
        }
        if (one.Least != 0) {
            EXPECT_EQ(send(one.Input, one.Least - 1), STATUS_BUFFER_TOO_SMALL);
        }
        for (const std::size_t output : {one.Least, one.Most}) {
            const NTSTATUS status = send(one.Input, output);
            EXPECT_NE(status, STATUS_BUFFER_TOO_SMALL);
            // A buffer of size 0 can't be had, and there is none to release.
            EXPECT_TRUE(status != STATUS_INVALID_PARAMETER || one.Code == ReleaseBuffer);
        }
    }
}

TEST(Driver, MissingBuffersAreAStatus) {
    Loaded driver(Managed(Ranges()));
    FILE_OBJECT* const file = driver.Open();
    Bytes input(6);
    Bytes output(4);
    struct Given {
        ULONG Code;
        ULONG OutputLength;
        bool System;
        std::optional<ULONG> Pages;
        NTSTATUS Expected;
    };
    const Given all[] = {{ReadMemory, 4, true, std::nullopt, STATUS_INVALID_PARAMETER},
                         {ReadMemory, 4, true, 3, STATUS_INVALID_PARAMETER},
                         {ReadMemory, 4, false, 4, STATUS_INVALID_PARAMETER},
                         {ReadMemory, 4, true, 4, STATUS_SUCCESS},
                         {WriteMemory, 4, true, std::nullopt, STATUS_INVALID_PARAMETER},
                         {GetVersion, 2, false, std::nullopt, STATUS_INVALID_PARAMETER}};
    for (const Given& one : all) {
        for (const bool mappingFails : {false, true}) {
            IRP irp{};
            MDL pages{};
            IO_STACK_LOCATION stack{};
            stack.MajorFunction = IRP_MJ_DEVICE_CONTROL;
            stack.FileObject = file;
            stack.Parameters.DeviceIoControl = {one.OutputLength, one.Code == GetVersion ? 0U : 4U, one.Code};
            pages.StartVa = output.data();
            pages.ByteCount = one.Pages.value_or(0);
            irp.AssociatedIrp.SystemBuffer = one.System ? input.data() : nullptr;
            irp.MdlAddress = one.Pages ? &pages : nullptr;
            if (mappingFails) {
                StandIn::MachineGet().Faults = {{StandIn::Named("MmMapLockedPagesSpecifyCache")}};
            }
            const bool mapped = one.Expected == STATUS_SUCCESS;
            EXPECT_EQ(StandIn::RequestSend(&irp, &stack),
                      mapped && mappingFails ? STATUS_INSUFFICIENT_RESOURCES : one.Expected);
            StandIn::MachineGet().Faults.clear();
        }
    }
}

TEST(Driver, LeavesTheMemoryThatWindowsManagesAlone) {
    Machine machine =
        Managed(Ranges{{0x200000, 0x1000}, {0x1000, 0x9E000}, {0x201000, 0x3000}, {0x300000, 0}, {0xFFFFF000, 0x9000}});
    machine.Memory = {{0, Bytes(0x300000, 7)}};
    Loaded driver(machine);
    FILE_OBJECT* const file = driver.Open();
    struct Range {
        std::uint32_t Address;
        std::size_t Length;
        bool Allowed;
    };
    const Range ranges[] = {
        {0, 0x1000, true},          {0xFFF, 2, false},          {0x1000, 1, false},
        {0x9EFFF, 1, false},        {0x9F000, 1, true},         {0, 0x100000, false},
        {0x9F000, 0x161000, true},  {0x9F000, 0x161001, false}, {0x1FFFFF, 1, true},
        {0x200FFF, 2, false},       {0x203FFF, 1, false},       {0x204000, 16, true},
        {0xFFFFEFFF, 1, true},      {0xFFFFEFFF, 2, false},     {0xFFFFFFFF, 1, false},
        {0xFFFFFFFF, 2, false},     {0xFFFFFFF0, 0x100, false}, {0x204000, LargestTransfer, true},
        {0xFF000000, 0x1000, true}, {0x9F000, 0x1000, true},
    };
    for (const Range& one : ranges) {
        SCOPED_TRACE(testing::Message() << std::hex << one.Address << ' ' << one.Length);
        const NTSTATUS expected = one.Allowed ? STATUS_SUCCESS : STATUS_ACCESS_DENIED;
        EXPECT_EQ(driver.Read(file, one.Address, one.Length), expected);
        const bool written = one.Allowed && one.Length <= 4096 && one.Address + one.Length <= 0xFEC00000;
        EXPECT_EQ(driver.Write(file, one.Address, Bytes(one.Length, written ? 7 : 8)),
                  written ? STATUS_SUCCESS : STATUS_ACCESS_DENIED);
    }
    EXPECT_EQ(StandIn::MachineGet().Memory[0].Data, Bytes(0x300000, 7)) << "a refused write wrote";
}

TEST(Driver, WritesReachNoMoreThanTheFirmwareChannelNeeds) {
    Machine machine = Managed(Ranges{{0x100000, 0x7EF00000}});
    machine.AcpiTables["MCFG"] = Windows({{0xE0000000, 0, 0xFF}, {0xF0000000, 0x10, 0x11}, {FourGiB, 0, 0xFF}});
    struct Range {
        std::uint32_t Address;
        std::size_t Length;
        bool Allowed;
    };
    const Range ranges[] = {
        {0x7F000000, 4096, true},  {0x7F000001, 4096, true},  {0x7F000000, 4097, false}, {0x7EFFFFFF, 2, false},
        {0xDFFFFFFF, 1, true},     {0xDFFFFFFF, 2, false},    {0xEFFFFFFF, 1, false},    {0xF0000000, 4096, true},
        {0xF0FFFFFF, 1, true},     {0xF0FFFFFF, 2, false},    {0xF11FFFFF, 1, false},    {0xF1200000, 1, true},
        {0xFEBFF000, 4096, true},  {0xFEBFF001, 4096, false}, {0xFEC00000, 1, false},    {0xFEE00000, 4, false},
        {0xFF000000, 4096, false}, {0xFFFFFFFF, 1, false},
    };
    for (const Range& one : ranges) {
        SCOPED_TRACE(testing::Message() << std::hex << one.Address << ' ' << one.Length);
        machine.Memory = {{one.Address, Bytes(one.Length, 7)}};
        Loaded driver(machine);
        EXPECT_EQ(driver.Write(driver.Open(), one.Address, Bytes(one.Length, 8)),
                  one.Allowed ? STATUS_SUCCESS : STATUS_ACCESS_DENIED);
        EXPECT_EQ(StandIn::MachineGet().Memory[0].Data, Bytes(one.Length, one.Allowed ? 8 : 7));
    }
    // A machine whose windows can't be told has no place to write to but the buffer.
    Bytes longer = Windows({{0xE0000000, 0, 0}});
    longer.resize(4097);
    Bytes stated = Windows({});
    stated[4] = 45;
    const Bytes unfit[] = {longer, stated, Bytes(8, 36), Windows({{0xE0000000, 2, 1}}),
                           Windows(std::vector<Window>(33, {0xE0000000, 0, 0}))};
    for (const Bytes& table : unfit) {
        machine.AcpiTables["MCFG"] = table;
        Loaded driver(machine);
        FILE_OBJECT* const file = driver.Open();
        EXPECT_EQ(driver.Write(file, 0x7F000000, {1}), STATUS_ACCESS_DENIED) << table.size();
        EXPECT_EQ(driver.Write(file, driver.BufferGet(file), Bytes(4096)), STATUS_SUCCESS);
    }
}

// What the system can't tell just now counts as refused, and is asked for again.
TEST(Driver, TablesThatCantBeHadJustNowAreAskedForAgain) {
    for (const std::uint64_t failing : {1, 2}) {
        Machine machine = Managed(Ranges());
        machine.AcpiTables["FACP"] = FixedTable(0xB2);
        machine.AcpiTables["MCFG"] = Windows({{0xE0000000, 0, 0}});
        machine.Faults = {{*StandIn::OperationFind("ZwQuerySystemInformation"), 0, failing}};
        Loaded driver(machine);
        FILE_OBJECT* const file = driver.Open();
        Bytes none;
        const Bytes port{0xB2, 0, 1, 0, 0, 0};
        EXPECT_EQ(driver.Write(file, 0xE0000000, {1}), STATUS_ACCESS_DENIED);
        EXPECT_EQ(driver.Control(file, WritePort, port, &none), STATUS_SUCCESS);
        EXPECT_EQ(driver.Write(file, 0xE0000000, {1}), STATUS_ACCESS_DENIED);
        EXPECT_EQ(driver.Write(file, 0xE0100000, {1}), STATUS_SUCCESS);
    }
}

TEST(Driver, WritesThePortThatTheFirmwareNamesAndNoOther) {
    struct Case {
        const char* What;
        std::optional<Bytes> Table;
        std::uint32_t Port; // 0: none
    };
    Bytes stated = FixedTable(0x142E, 52);
    stated[4] = 51;
    const Case cases[] = {
        {"a port of two bytes", FixedTable(0x142E), 0x142E},
        {"the shortest table", FixedTable(0xB2, 52), 0xB2},
        {"a table that ends before the port", FixedTable(0xB2, 51), 0},
        {"one that says so", stated, 0},
        {"no port", FixedTable(0), 0},
        {"a number that is no port", FixedTable(0x100B2), 0},
        {"not even a header", Bytes(7, 0xB2), 0},
        {"no table", std::nullopt, 0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.What);
        Machine machine = Managed(Ranges());
        if (one.Table) {
            machine.AcpiTables["FACP"] = *one.Table;
        }
        Loaded driver(machine);
        FILE_OBJECT* const file = driver.Open();
        Bytes none;
        for (std::uint32_t port = 0; port <= 0xFFFF; ++port) {
            const Bytes input{static_cast<std::uint8_t>(port), static_cast<std::uint8_t>(port >> 8U), 0xD5, 0, 0, 0};
            ASSERT_EQ(driver.Control(file, WritePort, input, &none),
                      port != 0 && port == one.Port ? STATUS_SUCCESS : STATUS_ACCESS_DENIED)
                << port;
        }
        for (std::size_t place = 3; place < 6; ++place) { // no wider value
            Bytes input{static_cast<std::uint8_t>(one.Port), static_cast<std::uint8_t>(one.Port >> 8U), 0xD5, 0, 0, 0};
            input[place] = 1;
            EXPECT_EQ(driver.Control(file, WritePort, input, &none), STATUS_INVALID_PARAMETER);
        }
    }
}

// Where the system has no copies, the root table leads to the tables, as long as Windows doesn't manage them.
TEST(Driver, TablesAreFoundByTheRootTable) {
    constexpr std::uint32_t root = 0x2000000;
    constexpr std::uint32_t fixed = 0x2100000;
    constexpr std::uint32_t windows = 0x2200000;
    constexpr std::uint32_t hidden = 0x2300000;
    constexpr std::uint32_t empty = 0x2400000;
    struct Case {
        const char* What;
        std::vector<std::uint32_t> Entries;
        std::uint32_t More; // of the root table's length
        std::uint32_t System;
        Ranges Managed;
        bool Port;
        bool Window;
    };
    const Case cases[] = {
        {"both", {hidden, 0, fixed, windows}, 0, 10, {}, true, true},
        {"an old system", {windows, fixed}, 0, 5, {}, true, true},
        {"a root table that is longer than itself", {fixed, windows}, 0x80000000, 10, {}, true, true},
        {"none of them", {hidden}, 0, 10, {}, false, false},
        {"none of them in a root table without an end", {hidden}, 0x80000000, 10, {}, false, false},
        {"one of them behind the root table's end", {windows, fixed}, 0U - 4, 10, {}, false, true},
        {"a table without a length", {empty, windows}, 0, 10, {}, false, true},
        {"a port in managed memory", {fixed, windows}, 0, 10, {{fixed + 8, 8}}, false, true},
        {"a root table in managed memory", {fixed, windows}, 0, 10, {{root + 36, 0x100}}, false, false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.What);
        Machine machine = Managed(one.Managed);
        machine.WindowsMajor = one.System;
        Put(&machine, 0xE0010, std::string("IFE$") + std::string(16, 0) + std::string("\0\0\0\x02", 4));
        Bytes table = StandIn::AcpiRootTable<std::uint32_t>(one.Entries);
        StandIn::BytesPut(table, 4, static_cast<std::uint32_t>(table.size()) + one.More);
        machine.Memory.push_back({root, table});
        machine.Memory.push_back({fixed, FixedTable(0xB2)});
        machine.Memory.push_back({empty, {'F', 'A', 'C', 'P', 0, 0, 0, 0}});
        machine.Memory.push_back({windows, Windows({{0x3000000, 0, 0}})});
        if (one.System < 6) { // it can't be asked
            machine.AcpiTables["FACP"] = FixedTable(0xB3);
        }
        Loaded driver(machine);
        if (one.System < 6) {
            StandIn::MachineGet().AcpiTables.clear();
        }
        FILE_OBJECT* const file = driver.Open();
        Bytes none;
        const auto port = [&] {
            EXPECT_EQ(driver.Control(file, WritePort, {0xB2, 0, 1, 0, 0, 0}, &none),
                      one.Port ? STATUS_SUCCESS : STATUS_ACCESS_DENIED);
        };
        StandIn::KernelHere().OnMutexFree = port; // two who look for the tables at once find the same
        port();
        EXPECT_EQ(driver.Write(file, 0x3000000, {1}), one.Window ? STATUS_ACCESS_DENIED : STATUS_SUCCESS);
    }
}

TEST(Driver, WithoutAnAccountOfMemoryOnlyTheFirmwaresIsOpen) {
    for (const bool known : {false, true}) {
        Machine machine = Managed(known ? std::optional(Ranges()) : std::nullopt);
        if (known) { // the system has one, but can't give it
            machine.Faults = {{*StandIn::OperationFind("MmGetPhysicalMemoryRanges"), 0, 0}};
        }
        Loaded driver(machine);
        FILE_OBJECT* const file = driver.Open();
        EXPECT_EQ(driver.Read(file, 0xA0000, 0x60000), STATUS_SUCCESS);
        EXPECT_EQ(driver.Read(file, 0x9FFFF, 1), STATUS_ACCESS_DENIED);
        EXPECT_EQ(driver.Read(file, 0xFFFFF, 2), STATUS_ACCESS_DENIED);
        EXPECT_EQ(driver.Write(file, 0x100000, {1}), STATUS_ACCESS_DENIED);
        EXPECT_EQ(driver.Read(file, 0xFFFFFFFF, 1), STATUS_ACCESS_DENIED);
        const std::uint32_t buffer = driver.BufferGet(file);
        EXPECT_EQ(driver.Read(file, buffer, 4096), STATUS_SUCCESS);
    }
}

TEST(Driver, BufferIsSharedCountedAndTheOnlyExceptionToTheRanges) {
    Loaded driver(Managed(Ranges{{0, FourGiB}}));
    FILE_OBJECT* const first = driver.Open();
    FILE_OBJECT* const second = driver.Open();
    EXPECT_EQ(driver.BufferGet(first, 0), 0U);
    EXPECT_EQ(driver.BufferGet(first, LargestTransfer + 1), 0U);
    EXPECT_FALSE(BufferExists());

    const std::uint32_t address = driver.BufferGet(first);
    EXPECT_GE(address, 0x10000U);
    EXPECT_EQ(driver.BufferGet(second), address);
    EXPECT_EQ(driver.BufferGet(second, 4097), 0U) << "the one that is there is smaller";
    EXPECT_EQ(driver.Write(first, address + 4095, {5}), STATUS_SUCCESS);
    EXPECT_EQ(driver.Write(first, address + 4095, {5, 5}), STATUS_ACCESS_DENIED);
    EXPECT_EQ(driver.Read(first, address - 1, 2), STATUS_ACCESS_DENIED);
    EXPECT_EQ(driver.Read(first, address + 4096, 1), STATUS_ACCESS_DENIED);
    Bytes data(2);
    EXPECT_EQ(driver.Control(second, ReadMemory, LittleEndian(address + 4094), &data), STATUS_SUCCESS);
    EXPECT_EQ(data, (Bytes{0, 5}));

    // Who holds nothing has nothing to give back, even while others hold it.
    FILE_OBJECT* const third = driver.Open();
    EXPECT_EQ(driver.BufferRelease(third), STATUS_INVALID_PARAMETER);
    EXPECT_EQ(driver.BufferRelease(first), STATUS_SUCCESS);
    EXPECT_EQ(driver.BufferRelease(first), STATUS_INVALID_PARAMETER);
    EXPECT_TRUE(BufferExists());
    EXPECT_EQ(driver.BufferRelease(second), STATUS_SUCCESS);
    EXPECT_FALSE(BufferExists());
    EXPECT_EQ(driver.Read(first, address, 1), STATUS_ACCESS_DENIED);
}

TEST(Driver, CloseGivesBackWhatACrashedUserHeld) {
    Loaded driver(Managed(Ranges()));
    FILE_OBJECT* const lives = driver.Open();
    FILE_OBJECT* const crashes = driver.Open();
    driver.BufferGet(lives);
    driver.BufferGet(crashes);
    driver.BufferGet(crashes);
    driver.Close(crashes);
    EXPECT_TRUE(BufferExists());
    driver.Close(driver.Open()); // one that never held it
    EXPECT_TRUE(BufferExists());
    EXPECT_EQ(driver.BufferRelease(lives), STATUS_SUCCESS);
    EXPECT_FALSE(BufferExists());

    // Unloading frees everything, whoever holds it.
    driver.BufferGet(driver.Open());
    driver.Unload();
    EXPECT_FALSE(BufferExists());
}

TEST(Driver, OpensOnlyForReadingAndWritingByTheRightUsers) {
    Loaded driver(Managed(Ranges()));
    const std::pair<ACCESS_MASK, NTSTATUS> asked[] = {
        {FILE_READ_DATA, STATUS_ACCESS_DENIED},
        {FILE_WRITE_DATA, STATUS_ACCESS_DENIED},
        {0, STATUS_ACCESS_DENIED},
        {0x120080, STATUS_ACCESS_DENIED}, // attributes only
        {FILE_READ_DATA | FILE_WRITE_DATA, STATUS_SUCCESS},
    };
    for (const auto& [access, expected] : asked) {
        IO_SECURITY_CONTEXT security{access};
        FILE_OBJECT file{driver.Driver.DeviceObject, nullptr};
        EXPECT_EQ(StandIn::PlainSend(&file, IRP_MJ_CREATE, &security), expected) << access;
    }
    FILE_OBJECT nobodys{driver.Driver.DeviceObject, nullptr};
    EXPECT_EQ(StandIn::PlainSend(&nobodys, IRP_MJ_CREATE), STATUS_ACCESS_DENIED) << "without a security context";
    // Its open was refused, so that it has nothing to say.
    Bytes version(2);
    EXPECT_EQ(driver.Control(&nobodys, GetVersion, {}, &version), STATUS_ACCESS_DENIED);
    driver.Close(&nobodys);
    // A request that came through no file.
    for (const UCHAR function : {IRP_MJ_CREATE, IRP_MJ_CLOSE, IRP_MJ_DEVICE_CONTROL}) {
        IRP irp{};
        IO_STACK_LOCATION stack{};
        if (function == IRP_MJ_DEVICE_CONTROL) {
            stack.Parameters.DeviceIoControl = {2, 0, GetVersion};
        }
        irp.CurrentStackLocation = &stack;
        EXPECT_EQ(driver.Driver.MajorFunction[function](driver.Driver.DeviceObject, &irp),
                  function == IRP_MJ_CLOSE ? STATUS_SUCCESS : STATUS_ACCESS_DENIED);
        EXPECT_EQ(irp.Completions, 1U);
    }
    // Allowed, in 20 bytes, with all rights of a file: S-1-5-18, the system.
    const Bytes system{0, 0, 20, 0, 0xFF, 0x01, 0x1F, 0, 1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0};
    const Bytes& access = StandIn::KernelHere().Devices.front().Descriptor;
    EXPECT_NE(std::search(access.begin(), access.end(), system.begin(), system.end()), access.end());
    driver.Unload();

    constexpr std::uint32_t readWrite = 0xC0000000;
    StandIn::MachineSet({});
    ASSERT_EQ(StandIn::KernelDriverStart(), 0U);
    void* file = nullptr;
    EXPECT_EQ(StandIn::KernelFileOpen("RYXLIB", readWrite, false, &file), 5U); // the access list
    EXPECT_EQ(StandIn::KernelFileOpen("RYXLIB", 0x80000000, true, &file), 5U); // the driver
    EXPECT_EQ(StandIn::KernelFileOpen("RyxLib2", readWrite, true, &file), 2U);
}

TEST(Driver, RootTableSearchLooksOnlyWhereItMay) {
    constexpr std::uint32_t start = 0x200000;
    constexpr std::uint32_t piece = 0x4000; // that the search looks at at once
    const std::string table("RSDT\x28\0\0\0", 8);
    const std::string record = std::string("IFE$") + std::string(16, 0) + std::string("\0\0\x20\0", 4);
    struct Case {
        const char* What;
        Ranges Managed;
        std::vector<std::uint32_t> Tables;
        std::uint32_t Found; // 0: none
    };
    const Case cases[] = {
        {"the second of two", {}, {start + 0x1000, start + 0x100000}, start + 0x100000},
        {"the second of three", {}, {start, start + 0x30, start + 0x100000}, start + 0x30},
        {"one inside another is none", {}, {start + 8, start + 0x10}, start + 8},
        {"across the border of two pieces", {}, {start + piece - 2}, start + piece - 2},
        {"a signature at the end of a piece", {}, {start + 2 * piece - 4}, start + 2 * piece - 4},
        {"the last header that fits", {}, {start + (32U << 20U) - 36}, start + (32U << 20U) - 36},
        {"a header too late", {}, {start + (32U << 20U) - 35}, 0},
        {"in managed memory", {{start + 0x1000, 0x1000}}, {start + 0x1000, start + 0x3000}, start + 0x3000},
        {"partly in managed memory", {{start + 0x1000, 0x1000}}, {start + 0xFF0}, 0},
        {"between managed ranges in no order",
         {{start + 0x3000, 0x2000000}, {start, 0x1000}, {start + 0x1000, 0x800}},
         {start + 0x17F0, start + 0x1800, start + 0x3000},
         start + 0x1800},
        {"in less room than a header takes", {{start + 35, 0x2000000}}, {start}, 0},
        {"none but managed memory", {{start, 0x2000000}}, {start, start + 0x1000}, 0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.What);
        Machine machine = Managed(one.Managed);
        Put(&machine, 0xE0010, record);
        Put(&machine, start + 0x3800, "RSDX"); // none
        for (const std::uint32_t place : one.Tables) {
            Put(&machine, place, table);
        }
        Loaded driver(machine);
        FILE_OBJECT* const file = driver.Open();
        Bytes found(4, 0xEE);
        EXPECT_EQ(driver.Control(file, LocateRsdt, {}, &found), one.Found != 0 ? STATUS_SUCCESS : STATUS_NOT_FOUND);
        EXPECT_EQ(Number(found), one.Found != 0 ? one.Found : 0xEEEEEEEE);
        if (one.Found != 0) { // it is kept
            StandIn::MachineGet().Memory.clear();
            EXPECT_EQ(driver.Control(file, LocateRsdtNear, LittleEndian(0), &found), STATUS_SUCCESS);
            EXPECT_EQ(Number(found), one.Found);
        }
    }
}

TEST(Driver, RootTableSearchNearAnAddress) {
    const std::array<std::uint64_t, 3> cases[] = {
        // where it asks, where a table is, what is found (0: nothing)
        {0x1000000, 0x1000000, 0x1000000},
        {0x1000000, 0x17FFFDC, 0x17FFFDC},
        {0x1000000, 0x17FFFDD, 0},
        {0x1000000, 0x800000, 0x800000},
        {0x1000000, 0x7FFFFF, 0},
        {0x1000000, 0xFFFFDC, 0xFFFFDC},
        {0, 0x1000000, 0},
        {0xFFFFFFFF, 0x1000000, 0},
        {0xFFFFFFFF, FourGiB + 0x1000, 0},
        {0xFFFFE000, 0xFFFFE000, 0xFFFFE000},
        {0xFFFFE000, 0xFFFFF000, 0},
    };
    for (const auto& [asked, place, expected] : cases) {
        // Lengths that lead nowhere, and out of the address space.
        for (const std::string_view length : {std::string_view("\1\0\0\0", 4), std::string_view("\xFF\xFF\xFF\xFF")}) {
            Machine machine = Managed(asked == 0xFFFFE000 ? Ranges{{0xFFFFF000, 0x9000}} : Ranges());
            Put(&machine, place, "RSDT" + std::string(length));
            Loaded driver(machine);
            Bytes found(4);
            EXPECT_EQ(
                driver.Control(driver.Open(), LocateRsdtNear, LittleEndian(static_cast<std::uint32_t>(asked)), &found),
                expected != 0 ? STATUS_SUCCESS : STATUS_NOT_FOUND);
            EXPECT_EQ(Number(found), expected);
        }
    }
    Machine machine = Managed(Ranges());
    machine.Faults = {{*StandIn::OperationFind("MmMapIoSpace"), 0, 0}};
    Loaded driver(machine);
    Bytes found(4);
    EXPECT_EQ(driver.Control(driver.Open(), LocateRsdtNear, LittleEndian(0), &found), STATUS_NOT_FOUND);
}

TEST(Driver, RootTableSearchEndsWithTheFirmwareAboveLowMemory) {
    constexpr std::uint32_t top = 0x40000000;
    constexpr std::uint32_t end = top + (64U << 20U);
    const std::array<std::uint32_t, 3> cases[] = {
        // where it asks, where a table is, what is found (0: nothing)
        {top, top, top}, {end - 0x1000, end - 36, end - 36}, {end - 0x1000, end - 35, 0},
        {end, end, 0},   {end + 0x1000, end - 36, end - 36}, {0xC0000000, 0xC0000000, 0},
    };
    for (const auto& [asked, place, expected] : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << asked << ' ' << place);
        Machine machine = Managed(Ranges{{0x100000, top - 0x100000}, {FourGiB, FourGiB}});
        Put(&machine, place, std::string("RSDT\x28\0\0\0", 8));
        Loaded driver(machine);
        Bytes found(4);
        EXPECT_EQ(driver.Control(driver.Open(), LocateRsdtNear, LittleEndian(asked), &found),
                  expected != 0 ? STATUS_SUCCESS : STATUS_NOT_FOUND);
        EXPECT_EQ(Number(found), expected);
    }
}

// While one searches, others search, hold the buffer and go.
TEST(Driver, RootTableSearchLetsOthersHaveTheirTurn) {
    Machine machine = Managed(Ranges());
    Put(&machine, 0x1001000, std::string("RSDT\x28\0\0\0", 8));
    Put(&machine, 0x1404000, std::string("RSDT\x28\0\0\0", 8));
    Loaded driver(machine);
    FILE_OBJECT* const file = driver.Open();
    int turns = 0;
    std::function<void()> others = [&] {
        Bytes found(4);
        if (++turns == 5) {
            EXPECT_EQ(driver.Control(driver.Open(), LocateRsdtNear, LittleEndian(0x1002000), &found), STATUS_SUCCESS);
            EXPECT_EQ(Number(found), 0x1404000U);
            driver.BufferGet(file);
        } else if (turns < 20) {
            EXPECT_EQ(driver.Read(file, 0x1000000, 0x10000), STATUS_SUCCESS);
            StandIn::KernelHere().OnMutexFree = others;
        }
    };
    StandIn::KernelHere().OnMutexFree = others;
    Bytes found(4);
    EXPECT_EQ(driver.Control(file, LocateRsdtNear, LittleEndian(0x1000000), &found), STATUS_SUCCESS);
    EXPECT_EQ(Number(found), 0x1404000U);
    EXPECT_GE(turns, 5);
    EXPECT_EQ(driver.BufferRelease(file), STATUS_SUCCESS) << "what was taken meanwhile is kept";
    EXPECT_FALSE(BufferExists());
}

TEST(Driver, EntryThatFailsLeavesNothing) {
    for (const char* const call :
         {"IoCreateDevice", "ObOpenObjectByPointer", "ZwSetSecurityObject", "IoCreateSymbolicLink"}) {
        SCOPED_TRACE(call);
        Machine machine;
        machine.Faults = {{*StandIn::OperationFind(call), 0, 0}};
        StandIn::MachineSet(machine);
        DRIVER_OBJECT driver{};
        EXPECT_FALSE(NT_SUCCESS(DriverEntry(&driver, nullptr)));
        EXPECT_EQ(StandIn::KernelLeftovers(), std::vector<std::string>());
        EXPECT_EQ(driver.DeviceObject, nullptr);
    }
}

// What users see of a machine whose firmware keeps its table where Windows has its own memory.
TEST(Driver, TableInManagedMemoryIsAnErrorThatTheToolTells) {
    StandIn::SmbiosBuilder table;
    table.Begin(1).String("Example");
    Machine machine = StandIn::MachineWithTable(table, 2, 8);
    machine.WindowsMemory = Ranges{{0x1000, 0x9E000}, {0xE0000, 0x1000}};
    const Viewed viewed = View({"/nologo", "/type", "1"}, machine);
    EXPECT_EQ(viewed.Error, 153U);
    EXPECT_EQ(viewed.Output, "Failed to read physical memory data(SMBIOS) to buffer. Status = 800000CC\n\n"
                             "Error: Type 1 is not supported.\n\n\nERROR 153 - Not supported! Status = 3.\n");
}
