// Tests of the ways to the ACPI root table and of what is taken from the tables.
#include "Lib/API/RyxBin.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/AcpiXsdtTableGet.h"
#include "Lib/Common/Guid.h"
#include "Lib/Platform/Driver.h"
#include "tests/Support.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>

namespace {

using StandIn::Bytes;
using StandIn::Machine;

constexpr Guid BufferGuid = GuidFromText("d29563e8-cfe1-4d41-8e54-da4322fede5c");
constexpr Guid ListGuid = GuidFromText("0d9fb197-cefc-4e91-acb1-2535d9e5a844");
constexpr Guid SmiGuid = GuidFromText("d8afdc58-6e22-42f8-9966-36ff788c9caf");
constexpr Guid AreaGuid = GuidFromText("15e896be-0cdf-47e2-9b97-a28a398bc765");

// Puts a little-endian value into bytes, which grow as needed.
template <typename Value> void Put(Bytes& bytes, std::size_t offset, Value value) {
    if (bytes.size() < offset + sizeof value) {
        bytes.resize(offset + sizeof value);
    }
    std::memcpy(&bytes[offset], &value, sizeof value);
}

void PutText(Bytes& bytes, std::size_t offset, const std::string& text) {
    if (bytes.size() < offset + text.size()) {
        bytes.resize(offset + text.size());
    }
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

// A table of a total size; its header states that size.
Bytes Table(const std::string& signature, std::uint32_t size) {
    Bytes table(size);
    PutText(table, 0, signature);
    Put(table, 4, size);
    return table;
}

template <typename Address> Bytes RootTable(const std::string& signature, const std::vector<Address>& addresses) {
    Bytes table = Table(signature, static_cast<std::uint32_t>(36 + addresses.size() * sizeof(Address)));
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        Put(table, 36 + i * sizeof(Address), addresses[i]);
    }
    return table;
}

// A root table that can be told from others by its length.
Bytes Marked(const std::string& signature, std::uint32_t mark) {
    return Table(signature, 100 + mark);
}

Bytes RootPointer(std::uint64_t xsdt, std::uint32_t rsdt) {
    Bytes pointer(36);
    PutText(pointer, 0, "RSD PTR ");
    Put(pointer, 16, rsdt);
    Put(pointer, 24, xsdt);
    return pointer;
}

Bytes GuidTable(const std::string& signature, const Guid& guid, std::uint32_t size) {
    Bytes table = Table(signature, size);
    std::copy(guid.begin(), guid.end(), table.begin() + 36);
    return table;
}

void Begin(Machine machine) {
    StartOver(std::move(machine));
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
}

// The mark of the root table that is found; 0 for none.
std::uint32_t FoundMark() {
    RyxBin* table = nullptr;
    const RyxStatus status = AcpiXsdtTableGet(&table);
    if (status != RyxOk) {
        EXPECT_EQ(status, RyxErrorRootTable);
        return 0;
    }
    const RyxBinOwner owner(table);
    return table->Size - 100;
}

// The four ways to a root table, each to one of its own.
void AddRegistry(Machine& machine) {
    machine.RegistryBinary["HARDWARE\\ACPI\\RSDT\\Example\\Board\\00000001\\00000000"] = Marked("RSDT", 1);
}

void AddMakerTable(Machine& machine) {
    Bytes maker = Table("BATB", 70);
    Put(maker, 62, std::uint64_t{0x7E000});
    machine.AcpiTables["BATB"] = maker;
    machine.Memory.push_back({0x7E000, RootPointer(0, 0x200000)});
    machine.Memory.push_back({0x200000, Marked("RSDT", 2)});
}

void AddSegment(Machine& machine, std::uint64_t offset = 61408) {
    machine.Memory.push_back({0xF0000 + offset, RootPointer(0x300000, 0x200000)});
    machine.Memory.push_back({0x300000, Marked("XSDT", 3)});
}

constexpr std::uint32_t DsdtAddress = 0x4000000;

// The system serves a FADT, and the driver finds a table by the record of the maker's firmware.
void AddSystemTable(Machine& machine) {
    Bytes fadt = Table("FACP", 244);
    Put(fadt, 40, DsdtAddress);
    machine.AcpiTables["FACP"] = fadt;
    Bytes record(32);
    PutText(record, 0, "IFE$");
    Put(record, 20, std::uint32_t{0x6000000});
    machine.Memory.push_back({0xE0100, record});
    machine.Memory.push_back({0x6000000, Marked("RSDT", 4)});
}

TEST(AcpiRootTable, WaysAreTakenInOrder) {
    Machine machine;
    EXPECT_EQ((Begin(machine), FoundMark()), 0U);
    AddSystemTable(machine);
    EXPECT_EQ((Begin(machine), FoundMark()), 4U);
    AddSegment(machine);
    EXPECT_EQ((Begin(machine), FoundMark()), 3U);
    AddMakerTable(machine);
    EXPECT_EQ((Begin(machine), FoundMark()), 2U);
    AddRegistry(machine);
    EXPECT_EQ((Begin(machine), FoundMark()), 1U);
    // A registry copy that is no root table is passed by.
    machine.RegistryBinary.begin()->second = Marked("DSDT", 1);
    EXPECT_EQ((Begin(machine), FoundMark()), 2U);
    EXPECT_EQ(AcpiXsdtTableGet(nullptr), RyxErrorArgument);
}

TEST(AcpiRootTable, SegmentIsSearchedToItsBound) {
    Machine machine;
    AddSegment(machine, 61424);
    EXPECT_EQ((Begin(machine), FoundMark()), 0U);
    machine = Machine();
    AddSegment(machine, 24); // not at a 16-byte boundary
    EXPECT_EQ((Begin(machine), FoundMark()), 0U);
    AddSegment(machine, 32);
    EXPECT_EQ((Begin(machine), FoundMark()), 3U);
}

TEST(AcpiRootTable, OwnSearchIsPreferredButNeedsTheDriver) {
    constexpr std::uint32_t span = 8U << 20U;
    // Where the table stands, as seen from the DSDT, and whether it is within the search.
    const std::pair<std::int64_t, bool> places[] = {
        {0x1000, true},
        {0xFFFE, true},
        {span - 1, true},
        {span, false},
        {-0x5000, true},
        {-std::int64_t{span}, true},
        {-std::int64_t{span} - 1, false},
    };
    for (const auto& [distance, within] : places) {
        Machine machine;
        AddSystemTable(machine);
        machine.Memory.push_back({static_cast<std::uint64_t>(DsdtAddress + distance), Marked("RSDT", 5)});
        EXPECT_EQ((Begin(machine), FoundMark()), within ? 5U : 4U) << distance;
    }
    // A mere text of four letters is no table.
    Machine machine;
    AddSystemTable(machine);
    machine.Memory.push_back({DsdtAddress + 0x800, Bytes{'R', 'S', 'D', 'T', ' ', 'h', 'e', 'r', 'e'}});
    machine.Memory.push_back({DsdtAddress + 0x2000, Marked("RSDT", 5)});
    EXPECT_EQ((Begin(machine), FoundMark()), 5U);

    // Without the record, only systems newer than 6.1 can ask the driver to look near the DSDT.
    machine.Memory.erase(machine.Memory.begin(), machine.Memory.begin() + 2);
    EXPECT_EQ((Begin(machine), FoundMark()), 5U);
    EXPECT_EQ(StandIn::ControlCount(DriverRsdtLocateNear), 1U);
    machine.WindowsMajor = 6;
    machine.WindowsMinor = 1;
    EXPECT_EQ((Begin(machine), FoundMark()), 0U);
    EXPECT_EQ(StandIn::ControlCount(DriverRsdtLocateNear), 0U);
}

TEST(AcpiRootTable, AddressesAndLengthsAreChecked) {
    const std::pair<const char*, std::function<void(Machine&)>> cases[] = {
        {"root pointer into nothing",
         [](Machine& m) {
             m.Memory = {{0xF0000, RootPointer(0x12345678, 0)}};
         }},
        {"root table past the address space",
         [](Machine& m) {
             m.Memory = {{0xF0000, RootPointer(0xFFFFFFFFFFFFFFF0, 0xFFFFFFF0)}};
         }},
        {"no address",
         [](Machine& m) {
             m.Memory = {{0xF0000, RootPointer(0, 0)}};
         }},
        {"length shorter than a header",
         [](Machine& m) {
             m.Memory = {{0xF0000, RootPointer(0x1000, 0)}, {0x1000, Table("XSDT", 36)}};
             Put(m.Memory[1].Data, 4, std::uint32_t{35});
         }},
        {"maker's table too short",
         [](Machine& m) {
             AddMakerTable(m);
             m.AcpiTables["BATB"].resize(69);
         }},
        {"maker's table with a wild pointer",
         [](Machine& m) {
             AddMakerTable(m);
             Put(m.AcpiTables["BATB"], 62, std::uint64_t{0xFFFFFFFFFFFFFFFF});
         }},
        {"FADT too short for a DSDT address",
         [](Machine& m) {
             AddSystemTable(m);
             m.AcpiTables["FACP"].resize(43);
             m.Memory.clear();
         }},
    };
    for (const auto& [name, change] : cases) {
        SCOPED_TRACE(name);
        Machine machine;
        change(machine);
        EXPECT_EQ((Begin(machine), FoundMark()), 0U);
    }
    // An XSDT beyond reach leaves the RSDT; a table that states gigabytes is cut.
    Machine machine;
    machine.Memory = {{0xF0000, RootPointer(0x100000000, 0x1000)}, {0x1000, Marked("RSDT", 7)}};
    EXPECT_EQ((Begin(machine), FoundMark()), 7U);
    Put(machine.Memory[1].Data, 4, std::uint32_t{0xFFFFFFFF});
    EXPECT_EQ((Begin(machine), FoundMark()), 0x10000U - 100);
}

// A machine whose root table names the tables given, which follow one another from 0x100000 on.
template <typename Address = std::uint64_t> Machine MachineOf(const std::vector<Bytes>& tables) {
    Machine machine;
    std::vector<Address> addresses;
    Address at = 0x100000;
    for (const Bytes& table : tables) {
        addresses.push_back(at);
        machine.Memory.push_back({at, table});
        at += 0x20000;
    }
    machine.Memory.push_back({0x80000, RootTable(sizeof(Address) == 8 ? "XSDT" : "RSDT", addresses)});
    machine.Memory.push_back({0xF0000, sizeof(Address) == 8 ? RootPointer(0x80000, 0) : RootPointer(0, 0x80000)});
    return machine;
}

Bytes Fadt() {
    Bytes fadt = Table("FACP", 244);
    fadt[8] = 5;
    Put(fadt, 40, std::uint32_t{0x500000});
    Put(fadt, 48, std::uint32_t{0x123400B2});
    Put(fadt, 64, std::uint32_t{0x404});
    Put(fadt, 112, std::uint32_t{1U << 21U});
    Put(fadt, 120, std::uint64_t{0xCF9});
    fadt[128] = 6;
    return fadt;
}

Bytes Dsdt() {
    Bytes dsdt = Table("DSDT", 400);
    PutText(dsdt, 50, "_S3_....\x07");
    PutText(dsdt, 200, "_S3_....\x05");
    PutText(dsdt, 300, "_S5_....\x09");
    PutText(dsdt, 396, "_S4_");
    return dsdt;
}

Bytes MakerBuffer(std::uint32_t address) {
    Bytes table = GuidTable("BATB", BufferGuid, 70);
    Put(table, 54, address);
    return table;
}

Bytes ValueList(std::uint32_t count) {
    Bytes table = GuidTable("UEFI", ListGuid, 58 + 3 * 20);
    Put(table, 54, count);
    Put(table, 58, std::uint32_t{0x11});
    Put(table, 62, std::uint32_t{0x1EF});
    Put(table, 66, std::uint32_t{0x33});
    std::copy(SmiGuid.begin(), SmiGuid.end(), table.begin() + 70 + 16);
    return table;
}

TEST(AcpiData, TakesEveryValueFromEitherRootTable) {
    Bytes area = GuidTable("UEFI", AreaGuid, 66);
    Put(area, 54, std::uint32_t{0x8000});
    Put(area, 58, std::uint64_t{0x123456789A});
    Bytes spare = GuidTable("UEFI", BufferGuid, 58);
    Put(spare, 54, std::uint32_t{0x77000});
    Bytes code = Table("SSDT", 100);
    PutText(code, 60, "PNVS");
    const std::vector<Bytes> tables{Fadt(), MakerBuffer(0x66000), ValueList(3), area, spare, code};
    for (Machine machine : {MachineOf(tables), MachineOf<std::uint32_t>(tables)}) {
        machine.Memory.push_back({0x500000, Dsdt()});
        Begin(machine);
        ASSERT_EQ(AcpiDataCollect(), RyxOk);
        const AcpiState& state = AcpiStateGet();
        EXPECT_EQ(state.SmiPort, 0xB2);
        EXPECT_EQ(state.Pm1aControl, 0x404U);
        EXPECT_EQ(state.ResetPort, 0xCF9);
        EXPECT_EQ(state.ResetValue, 6);
        EXPECT_TRUE(state.LowPowerIdle);
        EXPECT_EQ(state.SleepS3, 5);
        EXPECT_EQ(state.SleepS4, 0) << "a name at the DSDT's very end has no value";
        EXPECT_EQ(state.SleepS5, 9);
        EXPECT_EQ(state.CommunicationBuffer, 0x66000U);
        EXPECT_EQ(state.SmiValue, 0x1EFU);
        EXPECT_EQ(state.UpdateArea, 0x123456789AU);
        EXPECT_EQ(state.UpdateAreaSize, 0x8000U);
        EXPECT_EQ(state.UpdateDepot, 0x100000 + 5 * 0x20000 + 60U);
        ASSERT_EQ(state.TableCount, tables.size());
        EXPECT_EQ(state.Tables[2].Address, 0x140000U);
        EXPECT_EQ(std::memcmp(&state.Tables[2].Signature, "UEFI", 4), 0);
        EXPECT_EQ(state.Tables[2].Length, tables[2].size());

        // Once collected, the tables are not read again.
        const std::uint64_t reads = StandIn::ControlCount(DriverMemoryRead);
        EXPECT_EQ(AcpiDataCollect(), RyxOk);
        EXPECT_EQ(StandIn::ControlCount(DriverMemoryRead), reads);
        AcpiDataRelease();
        EXPECT_EQ(state.TableCount, 0U);
        EXPECT_EQ(state.Dsdt, nullptr);
        EXPECT_EQ(state.SmiPort, 0xB2) << "values stay";
    }
}

TEST(AcpiData, ResultsAndDefaults) {
    Begin(Machine());
    EXPECT_EQ(AcpiDataCollect(), RyxErrorRootTable);

    Bytes old = Fadt();
    old[8] = 6;
    Begin(MachineOf({old}));
    EXPECT_EQ(AcpiDataCollect(), RyxErrorNoCommunication);
    EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U);
    EXPECT_EQ(AcpiStateGet().SmiPort, 0xB2);
    EXPECT_FALSE(AcpiStateGet().LowPowerIdle) << "only revision 5 tells";

    // Length 52 in an XSDT is two entries, whatever follows.
    Machine machine = MachineOf({Fadt(), MakerBuffer(0x66000), ValueList(3)});
    Put(machine.Memory[3].Data, 4, std::uint32_t{52});
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 2U);
    EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U);

    // The other table gives the buffer only when the first gives none, in whichever order they come.
    Bytes spare = GuidTable("UEFI", BufferGuid, 58);
    Put(spare, 54, std::uint32_t{0x77000});
    Begin(MachineOf({spare, MakerBuffer(0x66000)}));
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().CommunicationBuffer, 0x66000U);
    Begin(MachineOf({MakerBuffer(0), spare}));
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().CommunicationBuffer, 0x77000U);
}

TEST(AcpiData, TablesThatClaimTooMuchAreLeftAlone) {
    // A root table that states more entries than it holds: what is behind it in memory is FFh.
    Machine machine = MachineOf({MakerBuffer(0x66000)});
    Put(machine.Memory[1].Data, 4, std::uint32_t{0xFFFFFFF0});
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 1U);

    Bytes huge = MakerBuffer(0x66000);
    Put(huge, 4, std::uint32_t{0x10001});
    Bytes largest = MakerBuffer(0x66000);
    Put(largest, 4, std::uint32_t{0x10000});
    Bytes tiny = MakerBuffer(0x66000);
    Put(tiny, 4, std::uint32_t{57});
    Bytes list = GuidTable("UEFI", ListGuid, 58);
    const std::pair<Bytes, RyxStatus> cases[] = {
        {huge, RyxErrorNoCommunication},
        {largest, RyxOk},
        {tiny, RyxErrorNoCommunication},
    };
    for (const auto& [table, status] : cases) {
        Begin(MachineOf({table}));
        EXPECT_EQ(AcpiDataCollect(), status);
    }
    // A list of values that states more than the table holds says nothing.
    for (const std::uint32_t count : {4U, 0x0CCCCCCDU, 0xFFFFFFFFU}) {
        Begin(MachineOf({ValueList(count)}));
        AcpiDataCollect();
        EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U) << count;
    }
    // A FADT cut short keeps what it holds; a DSDT that states too much or stands nowhere is not searched.
    Bytes cut = Fadt();
    cut.resize(66);
    Put(cut, 4, std::uint32_t{66});
    for (const std::uint32_t length : {0xFFFFFFFFU, 35U, 400U}) {
        machine = MachineOf({cut});
        machine.Memory.push_back({0x500000, Dsdt()});
        Put(machine.Memory.back().Data, 4, length);
        Begin(machine);
        AcpiDataCollect();
        EXPECT_EQ(AcpiStateGet().SmiPort, 0xB2);
        EXPECT_EQ(AcpiStateGet().Pm1aControl, 0U);
        EXPECT_EQ(AcpiStateGet().SleepS5, length == 400 ? 9 : 0);
    }
    // Entries into nothing, past the address space, of 0, and twice the same.
    machine = Machine();
    machine.Memory = {{0x80000, RootTable<std::uint64_t>("XSDT", {0, 0x9000000, 0xFFFFFFFC, 0x100000100000,
                                                                  0xFFFFFFFFFFFFFFFF, 0x80000, 0x100000, 0x100000})},
                      {0x100000, MakerBuffer(0x66000)},
                      {0xF0000, RootPointer(0x80000, 0)}};
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 4U);
}

TEST(AcpiData, UnreadableTablesAreNotFollowed) {
    Machine machine = MachineOf({Fadt(), MakerBuffer(0x66000)});
    // The reads: the segment; the root table's header, and all of it; head and rest of the FADT, the head of a DSDT
    // that is not there; head and rest of the maker's table.
    for (std::uint64_t read = 1; read <= 8; ++read) {
        machine.Faults = {{*StandIn::OperationFind("DeviceIoControl"), DriverMemoryRead, read}};
        Begin(machine);
        const RyxStatus status = AcpiDataCollect();
        EXPECT_EQ(status, read <= 3 ? RyxErrorRootTable : read <= 6 ? RyxOk : RyxErrorNoCommunication) << read;
    }
}

} // namespace
