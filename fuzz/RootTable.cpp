// Fuzz target: an ACPI root table, however it is reached, and the tables that it names.
// Input: ways to the root table, as bits; the bytes at TablesBase.
#include "Lib/Common/AcpiData.h"
#include "Lib/Common/FirmwareChannel.h"
#include "fuzz/Harness.h"
#include "fuzz/Places.h"
#include "machine/model/AcpiBuilder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const std::uint8_t ways = input.Byte();
    StandIn::Bytes tables = input.Take(0x10000);
    StandIn::Machine machine;
    if ((ways & WayRegistry) != 0) {
        machine.RegistryBinary["HARDWARE\\ACPI\\RSDT\\Maker\\Table\\1\\0"] = tables;
    }
    if ((ways & WayMakerTable) != 0) {
        machine.AcpiTables["BATB"] = StandIn::Bytes(tables.begin(), tables.begin() + std::min<long>(70, tables.size()));
    }
    if ((ways & WaySegment) != 0) {
        machine.Memory.push_back({RootPointerPlace, StandIn::AcpiRootPointer(TablesBase, 0)});
    }
    if ((ways & WayFadt) != 0) {
        machine.AcpiTables["FACP"] = tables;
    }
    machine.Memory.push_back({TablesBase, std::move(tables)});
    if ((ways & WayAllMemory) != WayAllMemory) {
        machine.WindowsMemory = {{0x100000, TablesBase - 0x100000}, {TablesBase + 0x20000, 0x80000000}};
    }
    StartWithDriver(std::move(machine));
    AcpiDataCollect();
    FlashMethodSelect();
    FirmwareChannelEnd();
    AcpiDataRelease();
    return 0;
}
