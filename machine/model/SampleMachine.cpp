// The built-in sample machine: a made-up server with at least one structure of every known type.
#include "machine/model/SampleMachine.h"

#include "machine/model/SampleParts.h"

namespace StandIn {

namespace {

constexpr std::uint16_t NoHandle = 0xFFFF;      // a handle that the firmware does not give
constexpr std::uint16_t NoErrorHandle = 0xFFFE; // no error information structure exists
constexpr std::uint16_t UnknownValue = 0x8000;  // of probes and power supplies
constexpr std::uint32_t UnknownAddress = 0x80000000;
constexpr std::uint64_t UnknownLongAddress = 0x8000000000000000;

void FirmwareAndSystem(SmbiosBuilder& table) {
    table.Begin(0).String("Example Firmware Works").String("EFW 2.14").Word(0xE800).String("03/27/2015");
    table.Byte(0x7F);                       // (127 + 1) x 64 KB: 8 MB
    table.Qword(0x000000054BDA9880);        // the upper half is the maker's own
    table.Byte(0x33).Byte(0x0D);            // ACPI, USB, LS-120, ZIP; BIOS boot menu, targeted content, UEFI
    table.Byte(2).Byte(14).Byte(1).Byte(9); // releases: system firmware 2.14, embedded controller 1.9

    table.Begin(1).String("Example Works").String("Sample Server 200").String("Rev C").String("SRV-0001234");
    table.Raw({0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF});
    table.Byte(6).String("SKU-200-C").String(""); // woken by the power switch
}

void BoardAndChassis(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(3).String("Example Enclosures").Byte(0x97); // rack mount, with a lock
    table.String("1.1").String("CHS-5550100").String("Asset-0816").Byte(3).Byte(4).Byte(3).Byte(4).Dword(0xC0FFEE01);
    table.Byte(2).Byte(2);
    table.Byte(2).Byte(3);         // two contained elements of three bytes: what, least and most of it
    table.Raw({0x0A, 0x01, 0x04}); // motherboards
    table.Raw({0x91, 0x00, 0x20}); // structures of type 17, memory devices
    table.String("SKU-CH-2U");
    handles.Chassis = table.Handle();

    table.Begin(3).String("Example Enclosures").Byte(0x15).String("").String("CHS-5550101").String("");
    table.Byte(2).Byte(3).Byte(5).Byte(3).Dword(0).Byte(1).Byte(1).Byte(0).Byte(0).String("");

    table.Begin(2);
    handles.Board = table.Handle();
    const auto riser = static_cast<std::uint16_t>(handles.Board + 1);
    table.String("Example Works").String("Sample Board").String("A02").String("BRD-77310");
    table.String("Asset-0815").Byte(0x09).String("Main tray").Word(handles.Chassis).Byte(10);
    table.Byte(2).Word(riser).Word(handles.Processor); // what it contains
    table.Begin(2, riser).String("Example Works").String("Sample Riser").String("").String("RSR-00042");
    table.String("").Byte(0x1E).String("Slot 3").Word(handles.Chassis).Byte(9).Byte(1).Word(handles.Caches[2]);
}

void Caches(SmbiosBuilder& table, SampleHandles& handles) {
    // Configuration: level, socketed, location, enabled, mode. Sizes with the top bit set are in units of 64 KB.
    table.Begin(7).String("L1 Cache").Word(0x0180).Word(0x0100).Word(0x0100).Word(0x0038).Word(0x0020);
    table.Byte(1).Byte(4).Byte(4).Byte(7);
    handles.Caches[0] = table.Handle();
    table.Begin(7).String("L2 Cache").Word(0x0281).Word(0x0400).Word(0x0400).Word(0x0060).Word(0x0020);
    table.Byte(4).Byte(5).Byte(5).Byte(8);
    handles.Caches[1] = table.Handle();
    table.Begin(7).String("").Word(0x03AA).Word(0x8140).Word(0x8100).Word(0x0022).Word(0x0002);
    table.Byte(12).Byte(6).Byte(5).Byte(14);
    handles.Caches[2] = table.Handle();
}

void Processors(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(4).String("Socket 1").Byte(3).Byte(0xFE).String("Example Silicon").Qword(0x0F1E2D3C4B5A6978);
    table.String("Sample Processor 8-core").Byte(0x8C); // 1.2 V
    table.Word(200).Word(3400).Word(2600).Byte(0x41).Byte(4);
    table.Word(handles.Caches[0]).Word(handles.Caches[1]).Word(handles.Caches[2]);
    table.String("CPU-000917").String("").String("EX-8200").Byte(8).Byte(6).Byte(12).Word(0x00EC).Word(0x0118);
    handles.Processor = table.Handle();

    table.Begin(4).String("Socket 2").Byte(3).Byte(0x01).String("").Qword(0).String("");
    table.Byte(0x06); // legacy voltages 3.3 V and 2.9 V
    table.Word(200).Word(3400).Word(0).Byte(0x00).Byte(4).Word(NoHandle).Word(NoHandle).Word(NoHandle);
    table.String("").String("").String("").Byte(0).Byte(0).Byte(0).Word(0x0002).Word(0x0002);
}

void MemoryModules(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(6).String("BANK 0").Byte(0x01).Byte(60).Word(0x0580).Byte(0x87).Byte(0x87).Byte(0x00);
    handles.ModuleSlots[0] = table.Handle();
    table.Begin(6).String("BANK 1").Byte(0x09).Byte(70).Word(0x0148).Byte(0x06).Byte(0x7E).Byte(0x05);
    handles.ModuleSlots[1] = table.Handle();
    table.Begin(6).String("").Byte(0x0C).Byte(0).Word(0x0002).Byte(0x7F).Byte(0x7F).Byte(0x00);
    handles.ModuleSlots[2] = table.Handle();

    table.Begin(5).Byte(6).Byte(0x28).Byte(5).Byte(4).Byte(10).Word(0x000D).Word(0x0588).Byte(0x06).Byte(3);
    table.Word(handles.ModuleSlots[0]).Word(handles.ModuleSlots[1]).Word(handles.ModuleSlots[2]).Byte(0x08);
    table.Begin(5).Byte(4).Byte(0x04).Byte(3).Byte(3).Byte(8).Word(0x0012).Word(0x002C).Byte(0x01).Byte(1);
    table.Word(handles.ModuleSlots[2]).Byte(0x04);
}

void Ports(SmbiosBuilder& table) {
    table.Begin(8).String("J1A1").Byte(0x00).String("Keyboard").Byte(0x0F).Byte(0x0D);
    table.Begin(8).String("J2A2").Byte(0x00).String("USB 1").Byte(0x12).Byte(0x10);
    table.Begin(8).String("").Byte(0x00).String("LAN").Byte(0x0B).Byte(0x1F);
    table.Begin(8).String("COM A").Byte(0x18).String("").Byte(0x08).Byte(0x09);
    table.Begin(8).String("SATA 0").Byte(0x22).String("").Byte(0x00).Byte(0x20);
    table.Begin(8).String("AUX").Byte(0xFF).String("Old serial").Byte(0xA1).Byte(0xA0);
}

void Slots(SmbiosBuilder& table) {
    table.Begin(9).String("PCIe Slot 1").Byte(0xB6).Byte(0x0D).Byte(4).Byte(4).Word(1).Byte(0x0C).Byte(0x03);
    table.Word(0).Byte(0x03).Byte(0x08);
    table.Begin(9).String("PCIe Slot 2").Byte(0xA8).Byte(0x0A).Byte(3).Byte(3).Word(2).Byte(0x04).Byte(0x05);
    table.Word(0).Byte(0x04).Byte(0xE1);
    table.Begin(9).String("PCI Slot 3").Byte(0x06).Byte(0x05).Byte(3).Byte(4).Word(0x0103).Byte(0x8E).Byte(0x04);
    table.Word(1).Byte(0xFF).Byte(0xFF); // no device on a bus yet
}

void OnboardDevices(SmbiosBuilder& table) {
    // Two devices in one structure; bit 7 of the type says enabled.
    table.Begin(10).Byte(0x83).String("Sample Video").Byte(0x05).String("Sample LAN");
    table.Begin(10).Byte(0x07).String("");
    table.Begin(10).Byte(0x8A).String("Sample SAS");
    table.Begin(41).String("Onboard LAN 1").Byte(0x85).Byte(1).Word(0).Byte(0x02).Byte(0x00);
    table.Begin(41).String("Onboard LAN 2").Byte(0x85).Byte(2).Word(0).Byte(0x02).Byte(0x01);
    table.Begin(41).String("").Byte(0x03).Byte(1).Word(0x0001).Byte(0x1F).Byte(0xFB);
}

void StringsAndLanguages(SmbiosBuilder& table) {
    table.Begin(11).Byte(3).SetString("Built for demonstration").SetString("Batch 12").SetString("Line 4");
    table.Begin(12).Byte(2).SetString("JP1 1-2: normal start; 2-3: recovery").SetString("JP2 closed: clear settings");
    const Bytes reserved(15, 0);
    table.Begin(13).Byte(3).Byte(0x00).Raw(reserved).Byte(2); // the second of three languages is in use
    table.SetString("en|US|iso8859-1").SetString("fr|FR|iso8859-1").SetString("de|DE|iso8859-1");
    table.Begin(13).Byte(2).Byte(0x01).Raw(reserved).Byte(1).SetString("enUS").SetString("ja");
}

void Groups(SmbiosBuilder& table, const SampleHandles& handles) {
    table.Begin(14).String("Processor module").Byte(7).Word(handles.Caches[0]).Byte(7).Word(handles.Caches[1]);
    table.Begin(14).String("").Byte(2).Word(handles.Board);
}

void EventLogs(SmbiosBuilder& table) {
    table.Begin(15).Word(0x2000).Word(0x0000).Word(0x0010).Byte(3).Byte(0x01).Dword(0x00000017).Dword(0xFFF40000);
    table.Byte(0x01).Byte(7).Byte(2); // seven descriptors of two bytes
    table.Raw({0x01, 0x01, 0x02, 0x03, 0x08, 0x04, 0x10, 0x05, 0x17, 0x00, 0x85, 0x80, 0xFF, 0x06});
    // Reached by an index port at 72h and a data port at 73h.
    table.Begin(15).Word(0x0080).Word(0x0040).Word(0x0040).Byte(0).Byte(0x03).Dword(0x80000001).Dword(0x00730072);
    table.Byte(0x80).Byte(2).Byte(2).Raw({0x00, 0x02, 0x20, 0x10});
}

void MemoryErrors(SmbiosBuilder& table) {
    table.Begin(18).Byte(3).Byte(2).Byte(2).Dword(0).Dword(UnknownAddress).Dword(UnknownAddress).Dword(UnknownAddress);
    table.Begin(18).Byte(12).Byte(3).Byte(3).Dword(0x00000A5C).Dword(0x1F2E3000).Dword(0x0F2E3000).Dword(0x00001000);
    table.Begin(33).Byte(14).Byte(4).Byte(5).Dword(0x000000B7).Qword(0x00000004A0001000).Qword(0x00000000A0001000);
    table.Dword(0x00000040);
    table.Begin(33).Byte(3).Byte(2).Byte(2).Dword(0).Qword(UnknownLongAddress).Qword(UnknownLongAddress);
    table.Dword(UnknownAddress);
}

void MemoryArrays(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(16).Byte(3).Byte(3).Byte(6).Dword(0x04000000).Word(NoErrorHandle).Word(3); // up to 64 GB
    table.Qword(0);
    handles.SystemArray = table.Handle();
    // More than 2 TB, which only the extended capacity can say.
    table.Begin(16).Byte(0xA3).Byte(6).Byte(3).Dword(UnknownAddress).Word(NoErrorHandle).Word(1);
    table.Qword(0x0000040000000000);
    handles.FlashArray = table.Handle();
}

constexpr std::uint8_t Flash = 9; // the memory type

struct MemoryDevice {
    std::uint16_t TotalWidth; // bits; FFFFh: unknown
    std::uint16_t DataWidth;
    std::uint16_t Size; // MB
    std::uint8_t FormFactor;
    std::uint8_t Set;
    const char* Locator;
    const char* Bank;
    std::uint8_t Type;
    std::uint16_t Detail;
    std::uint16_t Speed;
    const char* Serial;
    const char* Part;
    std::uint8_t Ranks;
    std::uint32_t ExtendedSize;
    std::uint16_t Clock;
    std::uint16_t Voltages[3]; // least, most and configured, in millivolts
};

constexpr MemoryDevice MemoryDevices[] = {
    {72, 64, 8192, 9, 1, "DIMM A1", "BANK 0", 0x18, 0x2080, 1866, "M0000A1", "EM-8G", 2, 0, 1600, {1350, 1500, 1500}},
    // The size is in the extended field.
    {72, 64, 0x7FFF, 9, 1, "DIMM A2", "BANK 0", 0x18, 0x2080, 1866, "", "EM-32G", 4, 32768, 1600, {1250, 1350, 1350}},
    // An empty socket.
    {0xFFFF, 0xFFFF, 0, 9, 2, "DIMM B1", "BANK 1", 0x02, 0x0004, 0, "", "", 0, 0, 0, {0, 0, 0}},
    // 512 KB of flash memory: the top bit says that the unit is the KB.
    {8, 8, 0x8200, 5, 0, "Flash", "", Flash, 0x1100, 33, "", "EM-FL", 1, 0, 33, {3000, 3600, 3300}},
};

void MemoryDevicesAdd(SmbiosBuilder& table, SampleHandles& handles) {
    std::size_t place = 0;
    for (const MemoryDevice& device : MemoryDevices) {
        table.Begin(17).Word(device.Type == Flash ? handles.FlashArray : handles.SystemArray);
        table.Word(device.Size != 0 ? NoErrorHandle : NoHandle).Word(device.TotalWidth).Word(device.DataWidth);
        table.Word(device.Size).Byte(device.FormFactor).Byte(device.Set).String(device.Locator).String(device.Bank);
        table.Byte(device.Type)
            .Word(device.Detail)
            .Word(device.Speed)
            .String(device.Size != 0 ? "Example Memory" : "")
            .String(device.Serial);
        table.String("").String(device.Part).Byte(device.Ranks).Dword(device.ExtendedSize).Word(device.Clock);
        for (const std::uint16_t voltage : device.Voltages) {
            table.Word(voltage);
        }
        handles.Devices[place++] = table.Handle();
    }
}

void MappedAddresses(SmbiosBuilder& table, SampleHandles& handles) {
    // Addresses in KB; FFFFFFFFh sends the reader to the extended ones, which are in bytes.
    table.Begin(19).Dword(0).Dword(0x007FFFFF).Word(handles.SystemArray).Byte(1).Qword(0).Qword(0);
    handles.ArrayRange = table.Handle();
    table.Begin(19).Dword(0xFFFFFFFF).Dword(0xFFFFFFFF).Word(handles.SystemArray).Byte(2);
    table.Qword(0x0000100000000000).Qword(0x00001007FFFFFFFF);
    table.Begin(20).Dword(0).Dword(0x007FFFFF).Word(handles.Devices[0]).Word(handles.ArrayRange);
    table.Byte(1).Byte(1).Byte(2).Qword(0).Qword(0);
    table.Begin(20).Dword(0xFFFFFFFF).Dword(0xFFFFFFFF).Word(handles.Devices[1]).Word(handles.ArrayRange);
    table.Byte(0xFF).Byte(2).Byte(4).Qword(0x0000100000000000).Qword(0x00001007FFFFFFFF);
}

void PointersAndBatteries(SmbiosBuilder& table) {
    table.Begin(21).Byte(7).Byte(4).Byte(2);
    table.Begin(21).Byte(3).Byte(0xA2).Byte(5);
    table.Begin(22).String("Rear left").String("Example Cells").String("").String("").String("Sample Pack");
    table.Byte(2).Word(4400).Word(10800).String("1.1").Byte(2);
    table.Word(0x0A17).Word(0x466F).String("LION").Byte(10).Dword(0x0000BEEF); // made on 15 March 2015
    table.Begin(22).String("Rear right").String("Example Cells").String("2014-11-02").String("CELL-9").String("");
    table.Byte(6).Word(0).Word(0).String("").Byte(0xFF).Word(0).Word(0).String("").Byte(1).Dword(0xFFFFFFFE);
}

void ResetAndSecurity(SmbiosBuilder& table) {
    table.Begin(23).Byte(0x2D).Word(3).Word(5).Word(10).Word(
        4); // watchdog; system utilities, and the system past the limit
    table.Begin(23).Byte(0x12).Word(0xFFFF).Word(0xFFFF).Word(0xFFFF).Word(0xFFFF);
    table.Begin(24).Byte(0x4B);
    table.Begin(25).Byte(0x12).Byte(0x31).Byte(0x23).Byte(0x59).Byte(0x30); // binary-coded decimals
    table.Begin(25).Byte(0xFF).Byte(0xFF).Byte(0x06).Byte(0x00).Byte(0x00); // every day at six
}

// One structure of the common layout of voltage, temperature and current probes.
std::uint16_t Probe(SmbiosBuilder& table, std::uint8_t type, const char* description, std::uint8_t locationAndStatus,
                    std::initializer_list<std::uint16_t> ranges, std::uint32_t oem, std::uint16_t nominal) {
    table.Begin(type).String(description).Byte(locationAndStatus);
    for (const std::uint16_t value : ranges) { // most, least, resolution, tolerance, accuracy
        table.Word(value);
    }
    table.Dword(oem).Word(nominal);
    return table.Handle();
}

void ProbesAndFans(SmbiosBuilder& table, SampleHandles& handles) {
    handles.VoltageProbe = Probe(table, 26, "12 V rail", 0x67, {13200, 10800, 100, 60, 150}, 0x00000001, 12000);
    Probe(table, 26, "", 0x8A, {UnknownValue, UnknownValue, UnknownValue, UnknownValue, UnknownValue}, 0, UnknownValue);
    handles.TemperatureProbe = Probe(table, 28, "Processor diode", 0x63, {1050, 0xFF9C, 1, 20, 100}, 0xDEC0DE00, 420);
    Probe(table, 28, "Inlet", 0xAC, {UnknownValue, UnknownValue, 5, UnknownValue, 200}, 0, UnknownValue);
    handles.CurrentProbe = Probe(table, 29, "Input current", 0x6A, {8000, 0, 10, 25, 120}, 0x12345678, 3500);
    Probe(table, 29, "", 0x42, {UnknownValue, UnknownValue, UnknownValue, UnknownValue, 300}, 0, UnknownValue);

    table.Begin(27).Word(handles.TemperatureProbe).Byte(0x65).Byte(1).Dword(0x0000FA01).Word(6000).String("CPU fan");
    handles.Fan = table.Handle();
    table.Begin(27).Word(NoHandle).Byte(0xB1).Byte(0).Dword(0).Word(UnknownValue).String("");
}

void RemoteAndBoot(SmbiosBuilder& table) {
    table.Begin(30).String("Example Remote").Byte(0x02);
    table.Begin(30).String("").Byte(0x01);
    table.Begin(31).Byte(0x5A).Byte(0).Word(0).Dword(0xF0005A20).Dword(0x000FF3C0).Qword(0).Dword(0);
    table.Begin(31).Byte(0xA6).Byte(1).Word(0x0203).Dword(0x00012345).Dword(0).Qword(0x0102030405060708);
    table.Dword(0x0A0B0C0D);
    table.Begin(32).Raw({0, 0, 0, 0, 0, 0});
    table.Raw({0x00, 0x04, 0x85, 0xC1}); // none, found by the system, and codes of the maker and the product
}

void ManagementDevices(SmbiosBuilder& table, const SampleHandles& handles) {
    table.Begin(34).String("Sensor hub").Byte(4).Dword(0x00000295).Byte(3);
    const std::uint16_t hub = table.Handle();
    table.Begin(34).String("").Byte(13).Dword(0x0000002D).Byte(5);
    const std::uint16_t monitor = table.Handle();
    table.Begin(36).Word(11400).Word(12600).Word(11000).Word(13000).Word(10800).Word(13200);
    const std::uint16_t limits = table.Handle();
    table.Begin(36).Word(UnknownValue).Word(850).Word(UnknownValue).Word(950).Word(UnknownValue).Word(1050);
    const std::uint16_t heatLimits = table.Handle();
    table.Begin(35).String("12 V monitor").Word(hub).Word(handles.VoltageProbe).Word(limits);
    table.Begin(35).String("").Word(monitor).Word(handles.TemperatureProbe).Word(heatLimits);
}

void ChannelsAndManagement(SmbiosBuilder& table, const SampleHandles& handles) {
    table.Begin(37).Byte(3).Byte(8).Byte(3).Byte(4).Word(handles.Devices[0]);
    table.Byte(3).Word(handles.Devices[1]).Byte(1).Word(handles.Devices[2]);
    table.Begin(37).Byte(4).Byte(2).Byte(1).Byte(2).Word(handles.Devices[3]);
    // Bit 0 of the base address: in I/O space.
    table.Begin(38).Byte(1).Byte(0x20).Byte(0x20).Byte(0xFF).Qword(0x0000000000000CA3).Byte(0x5A).Byte(0x0B);
}

void PowerSupplies(SmbiosBuilder& table, const SampleHandles& handles) {
    table.Begin(39).Byte(1).String("Bay 1").String("Sample Supply").String("Example Power").String("PSU-0001");
    table.String("Asset-0901").String("EP-750").String("R2").Word(750);
    table.Word(0x11A3); // switching, OK, auto-switch, present, replaceable while running
    table.Word(handles.VoltageProbe).Word(handles.Fan).Word(handles.CurrentProbe);
    table.Begin(39).Byte(1).String("Bay 2").String("Sample Supply").String("").String("").String("").String("EP-750");
    table.String("").Word(UnknownValue).Word(0x1A94).Word(NoHandle).Word(NoHandle).Word(NoHandle); // a UPS, unplugged
}

void AdditionalInformation(SmbiosBuilder& table, const SampleHandles& handles) {
    // Entries: length, referenced handle and offset, string number, value of one or more bytes.
    table.Begin(40).Byte(2);
    table.Byte(6).Word(handles.Board).Byte(0x0D).String("A board type to come").Byte(0x0E);
    table.Byte(7).Word(handles.Devices[0]).Byte(0x12).String("A memory type to come").Word(0x021A);
    table.Begin(40).Byte(1).Byte(6).Word(handles.Chassis).Byte(0x05).String("").Byte(0x1E);
}

void HostInterfaces(SmbiosBuilder& table) {
    table.Begin(42).Byte(0xF0).Raw({0x34, 0x12, 0x00, 0x80}); // the maker's own kind: four bytes of maker identity
    table.Begin(42).Byte(0x02).Byte(0xA2);
}

} // namespace

void SamplePartsAdd(SmbiosBuilder& table, SampleHandles& handles) {
    MemoryModules(table, handles);
    Ports(table);
    OnboardDevices(table);
    StringsAndLanguages(table);
    Groups(table, handles);
    EventLogs(table);
    MemoryErrors(table);
    PointersAndBatteries(table);
    ResetAndSecurity(table);
    ProbesAndFans(table, handles);
    RemoteAndBoot(table);
    ManagementDevices(table, handles);
    ChannelsAndManagement(table, handles);
    PowerSupplies(table, handles);
    AdditionalInformation(table, handles);
}

Machine SampleMachine() {
    SmbiosBuilder table;
    SampleHandles handles;
    FirmwareAndSystem(table);
    Caches(table, handles);
    Processors(table, handles);
    BoardAndChassis(table, handles);
    MemoryModules(table, handles);
    Ports(table);
    Slots(table);
    OnboardDevices(table);
    StringsAndLanguages(table);
    Groups(table, handles);
    EventLogs(table);
    MemoryArrays(table, handles);
    MemoryDevicesAdd(table, handles);
    MemoryErrors(table);
    MappedAddresses(table, handles);
    PointersAndBatteries(table);
    ResetAndSecurity(table);
    ProbesAndFans(table, handles);
    RemoteAndBoot(table);
    ManagementDevices(table, handles);
    ChannelsAndManagement(table, handles);
    PowerSupplies(table, handles);
    AdditionalInformation(table, handles);
    HostInterfaces(table);
    table.Begin(126);
    table.Begin(126);
    // Handles from 0100h on are passed over when structures are counted, so this port is never shown.
    table.Begin(8, 0x0100).String("Service header").Byte(0x09).String("").Byte(0x00).Byte(0x09);
    table.Begin(127);
    return MachineWithTable(table, 2, 8);
}

} // namespace StandIn
