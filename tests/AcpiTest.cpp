// Tests of the ways to the ACPI root table and of what is taken from the tables.
#include "Lib/API/RyxBin.h"
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/AcpiXsdtTableGet.h"
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/Guid.h"
#include "machine/model/AcpiBuilder.h"
#include "machine/model/Faults.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using StandIn::AcpiBuilder;
using StandIn::AcpiRootPointer;
using StandIn::AcpiRootTable;
using StandIn::Bytes;
using StandIn::BytesPut;
using StandIn::Machine;

constexpr Guid BufferGuid = GuidFromText("d29563e8-cfe1-4d41-8e54-da4322fede5c");
constexpr Guid ListGuid = GuidFromText("0d9fb197-cefc-4e91-acb1-2535d9e5a844");
constexpr Guid SmiGuid = GuidFromText("d8afdc58-6e22-42f8-9966-36ff788c9caf");
constexpr Guid AreaGuid = GuidFromText("15e896be-0cdf-47e2-9b97-a28a398bc765");

// A root table that can be told from others by its length.
Bytes Marked(const std::string& signature, std::uint32_t mark) {
    return AcpiBuilder(signature, 100 + mark).Table();
}

void Begin(Machine machine) {
    StartOver(std::move(machine));
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
}

Machine WithMemory(std::vector<StandIn::MemoryRegion> memory) {
    Machine machine;
    machine.Memory = std::move(memory);
    return machine;
}

// A table with another length in its header.
Bytes Stating(Bytes table, std::uint32_t length) {
    BytesPut(table, 4, length);
    return table;
}

// The mark of the root table that is found; 0 for none.
std::uint32_t FoundMark(const Machine& machine) {
    Begin(machine);
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
    machine.AcpiTables["BATB"] = AcpiBuilder("BATB", 70).Put(62, std::uint64_t{0x7E000}).Table();
    machine.Memory.push_back({0x7E000, AcpiRootPointer(0, 0x200000)});
    machine.Memory.push_back({0x200000, Marked("RSDT", 2)});
}

void AddSegment(Machine& machine, std::uint64_t offset = 61408) {
    machine.Memory.push_back({0xF0000 + offset, AcpiRootPointer(0x300000, 0x200000)});
    machine.Memory.push_back({0x300000, Marked("XSDT", 3)});
}

constexpr std::uint32_t DsdtAddress = 0x4000000;

// The system serves a FADT, and the driver finds a table by the record of the maker's firmware.
void AddSystemTable(Machine& machine) {
    machine.AcpiTables["FACP"] = AcpiBuilder("FACP", 244).Put(40, DsdtAddress).Table();
    machine.WindowsMemory = {{0x2000000, 0x1000000}}; // the driver looks at what firmware keeps right above
    Bytes record(32);
    BytesPut(record, 0, "IFE$");
    BytesPut(record, 20, std::uint32_t{0x6000000});
    machine.Memory.push_back({0xE0100, record});
    machine.Memory.push_back({0x6000000, Marked("RSDT", 4)});
}

TEST(AcpiRootTable, WaysAreTakenInOrder) {
    Machine machine;
    EXPECT_EQ(FoundMark(machine), 0U);
    AddSystemTable(machine);
    EXPECT_EQ(FoundMark(machine), 4U);
    AddSegment(machine);
    EXPECT_EQ(FoundMark(machine), 3U);
    AddMakerTable(machine);
    EXPECT_EQ(FoundMark(machine), 2U);
    AddRegistry(machine);
    EXPECT_EQ(FoundMark(machine), 1U);
    // A registry copy that is no root table is passed by.
    machine.RegistryBinary.begin()->second = Marked("DSDT", 1);
    EXPECT_EQ(FoundMark(machine), 2U);
    EXPECT_EQ(AcpiXsdtTableGet(nullptr), RyxErrorArgument);
    // One of a header alone is a table, and one byte less is none.
    for (const std::uint32_t size : {36U, 35U}) {
        machine.RegistryBinary.begin()->second = AcpiBuilder("RSDT", size).Table();
        EXPECT_EQ(FoundMark(machine), size == 36 ? 36U - 100 : 2U);
    }
}

// The copy is the first binary value of the first key of each level, down to 31 levels; it is cut to what a table can
// be long, and a value of a name that is too long to ask for is passed by.
TEST(AcpiRootTable, RegistryIsDescended) {
    const std::string top = "HARDWARE\\ACPI\\RSDT";
    const auto below = [&top](int levels) {
        std::string path = top;
        for (int level = 0; level < levels; ++level) {
            path += "\\B";
        }
        return path;
    };
    Machine machine;
    machine.RegistryBinary = {{below(31) + "\\00000000", Marked("RSDT", 1)}};
    EXPECT_EQ(FoundMark(machine), 1U);
    machine.RegistryBinary = {{below(32) + "\\00000000", Marked("RSDT", 1)}};
    EXPECT_EQ(FoundMark(machine), 0U);
    machine.RegistryBinary = {{top + "\\A\\" + std::string(255, '0'), Marked("RSDT", 1)},
                              {top + "\\A\\1", Marked("RSDT", 2)},
                              {top + "\\B\\C\\0", Marked("RSDT", 3)}};
    EXPECT_EQ(FoundMark(machine), 1U);
    machine.RegistryBinary = {{top + "\\A\\" + std::string(256, '0'), Marked("RSDT", 1)},
                              {top + "\\A\\1", AcpiBuilder("XSDT", 0x10001).Table()}};
    EXPECT_EQ(FoundMark(machine), 0x10000U - 100);
    machine.RegistryBinary = {{top + "\\A\\1", AcpiBuilder("RSDT", 16U << 20U).Table()}};
    EXPECT_EQ(FoundMark(machine), 0x10000U - 100);
    machine.RegistryBinary.begin()->second.push_back(0);
    EXPECT_EQ(FoundMark(machine), 0U) << "a value larger than any table";
    for (const std::string& left : StandIn::Leftovers()) {
        EXPECT_EQ(left.find("handle of registry"), std::string::npos) << left;
    }
}

TEST(AcpiRootTable, SegmentIsSearchedToItsBound) {
    Machine machine;
    AddSegment(machine, 61424);
    EXPECT_EQ(FoundMark(machine), 0U);
    machine = Machine();
    AddSegment(machine, 24); // not at a 16-byte boundary
    EXPECT_EQ(FoundMark(machine), 0U);
    AddSegment(machine, 32);
    EXPECT_EQ(FoundMark(machine), 3U);
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
        EXPECT_EQ(FoundMark(machine), within ? 5U : 4U) << distance;
    }
    // A mere text of four letters is no table.
    Machine machine;
    AddSystemTable(machine);
    machine.Memory.push_back({DsdtAddress + 0x800, Bytes{'R', 'S', 'D', 'T', ' ', 'h', 'e', 'r', 'e'}});
    machine.Memory.push_back({DsdtAddress + 0x2000, Marked("RSDT", 5)});
    EXPECT_EQ(FoundMark(machine), 5U);

    // A table's length is that of a header at least, and of the work buffer at most; whatever else is passed by.
    const std::pair<std::uint32_t, bool> lengths[] = {{35, false}, {36, true}, {0x10000, true}, {0x10001, false}};
    for (const auto& [length, taken] : lengths) {
        Machine sized = machine;
        sized.Memory.push_back({DsdtAddress + 0x1800, Stating(Marked("RSDT", 6), length)});
        EXPECT_EQ(FoundMark(sized), taken ? length - 100 : 5U) << length;
    }
    // Below a low DSDT and above a high one the search ends with the address space.
    for (const std::uint32_t dsdt : {0x200000U, 0xFFC00000U}) {
        Machine edge;
        AddSystemTable(edge);
        BytesPut(edge.AcpiTables["FACP"], 40, dsdt);
        edge.Memory.push_back({dsdt == 0x200000 ? 0x1000U : 0xFFFFFFDCU, AcpiBuilder("RSDT", 36).Table()});
        EXPECT_EQ(FoundMark(edge), 36U - 100) << dsdt;
    }

    // Without the record, only systems newer than 6.1 can ask the driver to look near the DSDT.
    machine.Memory.erase(machine.Memory.begin(), machine.Memory.begin() + 2);
    EXPECT_EQ(FoundMark(machine), 5U);
    EXPECT_EQ(StandIn::ControlCount(DriverRsdtLocateNear), 1U);
    for (const auto& [major, minor] : {std::pair{5U, 9U}, {6U, 1U}, {6U, 2U}, {7U, 0U}}) {
        machine.WindowsMajor = major;
        machine.WindowsMinor = minor;
        const bool newer = major * 10 + minor > 61;
        EXPECT_EQ(FoundMark(machine), newer ? 5U : 0U);
        EXPECT_EQ(StandIn::ControlCount(DriverRsdtLocateNear), newer ? 1U : 0U);
    }
    // A FADT that the system serves has a DSDT's address, and no more than the buffer holds.
    for (const auto& [size, read] : {std::pair{0x8001U, false}, {0x8000U, true}, {44U, true}, {43U, false}}) {
        machine.AcpiTables["FACP"].resize(size);
        EXPECT_EQ(FoundMark(machine), read ? 5U : 0U) << size;
    }
}

TEST(AcpiRootTable, AddressesAndLengthsAreChecked) {
    const auto makerTable = [](std::size_t size, std::uint64_t pointer) {
        Machine machine;
        AddMakerTable(machine);
        machine.AcpiTables["BATB"].resize(size);
        if (pointer != 0) {
            BytesPut(machine.AcpiTables["BATB"], 62, pointer);
            machine.Memory.push_back({pointer, AcpiRootPointer(0, 0x200000)});
        }
        return machine;
    };
    const auto pointedTo = [](std::uint64_t xsdt, std::uint32_t rsdt, const Bytes& table) {
        return WithMemory({{0xF0000, AcpiRootPointer(xsdt, rsdt)}, {0x1000, table}});
    };
    const Bytes rsdt = Marked("RSDT", 7);
    const struct {
        const char* Name;
        Machine Made;
        std::uint32_t Found;
    } cases[] = {
        {"root pointer into nothing", pointedTo(0x12345678, 0, rsdt), 0},
        {"root table past the address space", pointedTo(0xFFFFFFFFFFFFFFF0, 0xFFFFFFF0, rsdt), 0},
        {"no address", pointedTo(0, 0, rsdt), 0},
        {"length shorter than a header", pointedTo(0x1000, 0, Stating(AcpiBuilder("XSDT").Table(), 35)), 0},
        {"an XSDT beyond reach leaves the RSDT", pointedTo(0x100000000, 0x1000, rsdt), 7},
        {"gigabytes are cut", pointedTo(0, 0x1000, Stating(rsdt, 0xFFFFFFFF)), 0x10000 - 100},
        {"maker's table too short", makerTable(69, 0), 0},
        {"maker's table with a wild pointer", makerTable(70, 0xFFFFFFDD), 0},
        {"the last place that holds a pointer", makerTable(70, 0xFFFFFFDC), 2},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(FoundMark(test.Made), test.Found) << test.Name;
    }
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
    machine.Memory.push_back({0x80000, AcpiRootTable(addresses)});
    machine.Memory.push_back(
        {0xF0000, sizeof(Address) == 8 ? AcpiRootPointer(0x80000, 0) : AcpiRootPointer(0, 0x80000)});
    return machine;
}

AcpiBuilder Fadt() {
    AcpiBuilder fadt("FACP", 244, 5);
    fadt.Put(40, std::uint32_t{0x500000}).Put(48, std::uint32_t{0x123400B2}).Put(64, std::uint32_t{0x404});
    return fadt.Put(112, std::uint32_t{1U << 21U}).Put(120, std::uint64_t{0xCF9}).Put(128, std::uint8_t{6});
}

Bytes Dsdt() {
    AcpiBuilder dsdt("DSDT", 400);
    dsdt.Put(50, "_S3_....\x07").Put(200, "_S3_....\x05").Put(300, "_S5_....\x09").Put(396, "_S4_");
    return dsdt.Table();
}

// The communication buffer, as the maker's table gives it and as the other one does.
Bytes MakerBuffer(std::uint32_t address) {
    return AcpiBuilder("BATB", 70).Put(36, BufferGuid).Put(54, address).Table();
}

Bytes SpareBuffer(std::uint32_t address) {
    return AcpiBuilder("UEFI").Put(36, BufferGuid).Put(54, address).Table();
}

Bytes ValueList(std::uint32_t count) {
    AcpiBuilder table("UEFI", 58 + 3 * 20);
    table.Put(36, ListGuid).Put(54, count).Put(58, std::uint32_t{0x11}).Put(62, std::uint32_t{0x1EF});
    return table.Put(66, std::uint32_t{0x33}).Put(70 + 16, SmiGuid).Table();
}

TEST(AcpiData, TakesEveryValueFromEitherRootTable) {
    AcpiBuilder area("UEFI");
    area.Put(36, AreaGuid).Put(54, std::uint32_t{0x8000}).Put(58, std::uint64_t{0x123456789A});
    const Bytes code = AcpiBuilder("SSDT", 100).Put(60, "PNVS").Table();
    const std::vector<Bytes> tables{Fadt().Table(), MakerBuffer(0x66000), ValueList(3),
                                    area.Table(),   SpareBuffer(0x77000), code};
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
    EXPECT_EQ(AcpiStateGet().TableCount, 0U);

    Begin(MachineOf({Fadt().Put(8, std::uint8_t{6}).Table()}));
    EXPECT_EQ(AcpiDataCollect(), RyxErrorNoCommunication);
    EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U);
    EXPECT_EQ(AcpiStateGet().SmiPort, 0xB2);
    EXPECT_FALSE(AcpiStateGet().LowPowerIdle) << "only revision 5 tells";

    // Length 52 in an XSDT is two entries, whatever follows.
    Machine machine = MachineOf({Fadt().Table(), MakerBuffer(0x66000), ValueList(3)});
    BytesPut(machine.Memory[3].Data, 4, std::uint32_t{52});
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 2U);
    EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U);

    // The other table gives the buffer only when the first gives none, in whichever order they come.
    Begin(MachineOf({SpareBuffer(0x77000), MakerBuffer(0x66000)}));
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().CommunicationBuffer, 0x66000U);
    Machine registry = MachineOf({MakerBuffer(0x66000)});
    registry.RegistryBinary["HARDWARE\\ACPI\\RSDT\\Example\\Board\\00000001"] = registry.Memory[1].Data;
    registry.Memory.erase(registry.Memory.begin() + 1);
    Begin(registry);
    EXPECT_EQ(AcpiDataCollect(), RyxOk) << "the registry's copy names the tables as the one in memory does";
    BytesPut(registry.RegistryBinary.begin()->second, 4, std::uint32_t{35});
    Begin(registry);
    EXPECT_EQ(AcpiDataCollect(), RyxErrorNoCommunication) << "one that states less than its header names none";
    Begin(MachineOf({MakerBuffer(0), SpareBuffer(0x77000), Fadt().Put(112, ~(1U << 21U)).Table()}));
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().CommunicationBuffer, 0x77000U);
    EXPECT_FALSE(AcpiStateGet().LowPowerIdle) << "one bit alone tells";
}

TEST(AcpiData, TablesThatClaimTooMuchAreLeftAlone) {
    // A root table that states more entries than it holds: what is behind it in memory is FFh.
    Machine machine = MachineOf({MakerBuffer(0x66000)});
    BytesPut(machine.Memory[1].Data, 4, std::uint32_t{0xFFFFFFF0});
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 1U);

    for (const std::uint32_t length : {0x10001U, 0x10000U, 57U}) {
        Begin(MachineOf({Stating(MakerBuffer(0x66000), length)}));
        EXPECT_EQ(AcpiDataCollect(), length == 0x10000 ? RyxOk : RyxErrorNoCommunication) << length;
    }
    // A list of values that states more than the table holds says nothing.
    for (const std::uint32_t count : {4U, 0x0CCCCCCDU, 0xFFFFFFFFU}) {
        Begin(MachineOf({ValueList(count)}));
        AcpiDataCollect();
        EXPECT_EQ(AcpiStateGet().SmiValue, 0xE9U) << count;
    }
    // A FADT cut short keeps what it holds; a DSDT that states too much or stands nowhere is not searched.
    Bytes cut = Fadt().Table();
    cut.resize(66);
    for (const std::uint32_t length : {0xFFFFFFFFU, 35U, 400U, 0x400000U, 0x400001U}) {
        machine = MachineOf({Stating(cut, 66)});
        machine.Memory.push_back({0x500000, Stating(Dsdt(), length)});
        Begin(machine);
        AcpiDataCollect();
        EXPECT_EQ(AcpiStateGet().SmiPort, 0xB2);
        EXPECT_EQ(AcpiStateGet().Pm1aControl, 0U);
        EXPECT_EQ(AcpiStateGet().SleepS5, length == 400 || length == 0x400000 ? 9 : 0) << length;
    }
    // Entries into nothing, past the address space, of 0, and twice the same.
    machine = Machine();
    machine.Memory = {{0x80000, AcpiRootTable<std::uint64_t>({0, 0x9000000, 0xFFFFFFF8, 0xFFFFFFF9, 0x100000100000,
                                                              0xFFFFFFFFFFFFFFFF, 0x80000, 0x100000, 0x100000})},
                      {0x100000, MakerBuffer(0x66000)},
                      {0xF0000, AcpiRootPointer(0x80000, 0)}};
    Begin(machine);
    EXPECT_EQ(AcpiDataCollect(), RyxOk);
    EXPECT_EQ(AcpiStateGet().TableCount, 5U);
}

TEST(AcpiData, UnreadableTablesAreNotFollowed) {
    Machine machine = MachineOf({Fadt().Table(), MakerBuffer(0x66000)});
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
