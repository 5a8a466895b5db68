// The built-in sample server: a made-up machine of today with whatever the standard has added since 2.8.
#include "machine/model/SampleMachine.h"
#include "machine/model/SampleParts.h"

#include <algorithm>

namespace StandIn {

namespace {

constexpr std::uint16_t FirstHandle = 0x00A0; // so that some handles lie below 0100h and some above
constexpr std::uint16_t NoHandle = 0xFFFF;
constexpr std::uint16_t NoErrorHandle = 0xFFFE;
constexpr std::uint16_t SeeOtherWord = 0xFFFF; // the value is in a wider field
constexpr std::uint16_t SeeExtendedSize = 0x7FFF;
constexpr std::uint32_t SeeExtendedAddress = 0xFFFFFFFF;
constexpr std::uint32_t SeeExtendedCapacity = 0x80000000;
constexpr std::uint64_t UnknownSize = 0xFFFFFFFFFFFFFFFF;
constexpr std::uint64_t Gigabyte = 0x40000000;
constexpr int SocketCount = 2;

struct ServerHandles {
    std::uint16_t Firmware = 0;
    std::uint16_t Processors[SocketCount] = {};
    std::uint16_t Slots[2] = {};
};

void Firmware(SmbiosBuilder& table, ServerHandles& server) {
    table.Begin(0).String("Example Firmware Works").String("EFW 9.03").Word(0xE800).String("01/15/2026");
    table.Byte(0xFF).Qword(0x000000004BDA9880).Byte(0x03).Byte(0x6D).Byte(9).Byte(3).Byte(4).Byte(17);
    table.Word(0x0040); // 64 MB
    server.Firmware = table.Handle();
    table.Begin(0).String("Example Firmware Works").String("Recovery 2.00").Word(0xE000).String("06/30/2025");
    table.Byte(0x7F).Qword(0x0000000000000008).Byte(0x01).Byte(0x08).Byte(2).Byte(0).Byte(0xFF).Byte(0xFF);
    table.Word(0x4001); // 1 GB
    table.Begin(1).String("Example Works").String("Sample Server 900").String("Rev A").String("SRV-0090001");
    table.Raw({0x9F, 0x8E, 0x7D, 0x6C, 0x5B, 0x4A, 0x39, 0x28, 0x17, 0x06, 0xF5, 0xE4, 0xD3, 0xC2, 0xB1, 0xA0});
    table.Byte(6).String("SKU-900-A").String("Sample Servers");
}

void BoardAndChassis(SmbiosBuilder& table, SampleHandles& handles) {
    // Two contained elements of three bytes; then the height is one in Open Rack units.
    table.Begin(3).String("Example Enclosures").Byte(0x17).String("2.0").String("CHS-9000001").String("Asset-0900");
    table.Byte(3).Byte(3).Byte(3).Byte(3).Dword(0).Byte(0xFF).Byte(2).Byte(2).Byte(3);
    table.Raw({0x8A, 0x01, 0x01, 0x91, 0x04, 0x18}).String("SKU-CH-OU").Byte(1).Byte(4);
    handles.Chassis = table.Handle();
    table.Begin(2).String("Example Works").String("Sample Board 900").String("B01").String("BRD-90210").String("");
    table.Byte(0x09).String("Main tray").Word(handles.Chassis).Byte(10).Byte(0);
    handles.Board = table.Handle();
}

void Caches(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(7).String("L1 Cache").Word(0x0180).Word(0x2400).Word(0x2400).Word(0x0020).Word(0x0020);
    table.Byte(0).Byte(4).Byte(5).Byte(9).Dword(0x00002400).Dword(0x00002400); // in KB
    handles.Caches[0] = table.Handle();
    table.Begin(7).String("L2 Cache").Word(0x0181).Word(0x9200).Word(0x9200).Word(0x0020).Word(0x0020);
    table.Byte(0).Byte(6).Byte(5).Byte(8).Dword(0x80001200).Dword(0x80001200); // in units of 64 KB
    handles.Caches[1] = table.Handle();
    table.Begin(7).String("L3 Cache").Word(0x0182).Word(SeeOtherWord).Word(SeeOtherWord).Word(0x0020).Word(0x0020);
    table.Byte(0).Byte(6).Byte(5).Byte(14).Dword(0x80009000).Dword(0x80008000);
    handles.Caches[2] = table.Handle();
    table.Begin(7).String("Memory-side cache").Word(0x0103).Word(0).Word(0).Word(0x0002).Word(0x0002);
    table.Byte(0).Byte(2).Byte(2).Byte(2).Dword(0).Dword(0);
}

void Processors(SmbiosBuilder& table, SampleHandles& handles, ServerHandles& server) {
    for (int socket = 0; socket < SocketCount; ++socket) {
        table.Begin(4).String("P" + std::to_string(socket)).Byte(3).Byte(0x6B).String("Example Silicon");
        table.Qword(0x178BFBFF00A20F12).String("Sample Processor 288-core").Byte(0x8B).Word(100).Word(4100).Word(2250);
        table.Byte(0x41).Byte(0xFF).Word(handles.Caches[0]).Word(handles.Caches[1]).Word(handles.Caches[2]);
        table.String("CPU-90000" + std::to_string(socket)).String("").String("EX-9288");
        table.Byte(0xFF).Byte(0xFF).Byte(0xFF).Word(0x01FC).Word(0x006B);
        table.Word(288).Word(static_cast<std::uint16_t>(288 - 32 * socket)).Word(576);
        table.Word(static_cast<std::uint16_t>(576 - 64 * socket)).String("Socket EX9");
        server.Processors[socket] = table.Handle();
    }
    handles.Processor = server.Processors[0];
    // A socket that stands empty, whose firmware counts nothing.
    table.Begin(4).String("P2").Byte(3).Byte(0x02).String("").Qword(0).String("").Byte(0).Word(0).Word(0).Word(0);
    table.Byte(0x00).Byte(0x4B).Word(NoHandle).Word(NoHandle).Word(NoHandle).String("").String("").String("");
    table.Byte(0).Byte(0).Byte(0).Word(0x0204).Word(0x0002).Word(0).Word(0).Word(0).Word(0).String("");
    // What each processor tells beyond that: an x64 one nothing but a revision, a management core its own block.
    table.Begin(44).Word(server.Processors[0]).Byte(2).Byte(2).Raw({0x01, 0x00});
    table.Begin(44).Word(server.Processors[1]).Byte(18).Byte(7);
    table.Raw({0x00, 0x01, 0x12, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x5A, 0xA5});
}

struct PeerGroup {
    std::uint16_t Segment;
    std::uint8_t Bus;
    std::uint8_t DeviceFunction;
    std::uint8_t Width;
};

struct ServerSlot {
    const char* Name;
    std::uint8_t Type;
    std::uint8_t Width;
    std::uint8_t Usage;
    std::uint8_t Length;
    std::uint8_t Characteristics2;
    std::uint8_t Bus;
    std::vector<PeerGroup> Peers;
    std::uint8_t Generation;
    std::uint8_t PhysicalWidth;
    std::uint16_t Pitch; // in hundredths of a millimetre
    std::uint8_t Height;
};

void Slots(SmbiosBuilder& table, ServerHandles& server) {
    const ServerSlot slots[] = {
        {"Slot 1", 0xC4, 0x0D, 4, 4, 0x1D, 0x11, {{0, 0x12, 0x00, 0x0B}, {0, 0x13, 0x08, 0x0A}}, 6, 0x0D, 2032, 3},
        {"Slot 2", 0xC3, 0x0D, 3, 4, 0x0C, 0xFF, {}, 5, 0x0D, 2032, 3},
        {"Slot 3", 0xC2, 0x0B, 4, 3, 0x08, 0x41, {}, 5, 0x0D, 2032, 4},
        {"OCP 1", 0x26, 0x0D, 4, 2, 0x04, 0x61, {}, 5, 0x0D, 0, 0},
        {"CXL 1", 0x30, 0x0D, 4, 2, 0xE8, 0x81, {{1, 0x82, 0x01, 0x0D}}, 0, 0x0D, 0, 2},
        {"Drive 0", 0xC5, 0x0A, 4, 5, 0x12, 0xC1, {}, 5, 0x0A, 0, 1},
        {"Drive 1", 0xC6, 0x0A, 5, 6, 0x12, 0xFF, {}, 5, 0x0A, 0, 1},
        {"M.2 1", 0x17, 0x0A, 3, 1, 0x00, 0xFF, {}, 4, 0x0A, 0, 0},
    };
    std::uint16_t id = 0;
    for (const ServerSlot& slot : slots) {
        table.Begin(9).String(slot.Name).Byte(slot.Type).Byte(slot.Width).Byte(slot.Usage).Byte(slot.Length);
        table.Word(++id).Byte(0x0C).Byte(slot.Characteristics2).Word(0).Byte(slot.Bus);
        table.Byte(slot.Bus == 0xFF ? 0xFF : 0x08).Byte(slot.Width);
        table.Byte(static_cast<std::uint8_t>(slot.Peers.size()));
        for (const PeerGroup& peer : slot.Peers) {
            table.Word(peer.Segment).Byte(peer.Bus).Byte(peer.DeviceFunction).Byte(peer.Width);
        }
        table.Byte(slot.Generation).Byte(slot.PhysicalWidth).Word(slot.Pitch).Byte(slot.Height);
        server.Slots[std::min(id - 1, 1)] = table.Handle();
    }
}

struct ServerDevice {
    const char* Locator;
    std::uint16_t Width; // of the data in bits, a fifth of it more in total; FFFFh: unknown
    std::uint16_t Size;
    std::uint32_t ExtendedSize; // MB
    std::uint8_t FormFactor;
    std::uint8_t Type;
    std::uint16_t Detail;
    std::uint16_t Speed;
    std::uint32_t ExtendedSpeed;
    std::uint8_t Technology;
    std::uint16_t Modes;
    std::uint64_t Sizes[4]; // non-volatile, volatile, as a cache and logical
    bool Ddr5;              // has a power controller and a clock driver
};

constexpr std::uint32_t ModuleMegabytes = 65536;
constexpr std::uint64_t ModuleBytes = 64 * Gigabyte;

void MemoryDeviceAdd(SmbiosBuilder& table, std::uint16_t array, const ServerDevice& device,
                     const std::string& locator) {
    const bool there = device.Size != 0;
    table.Begin(17).Word(array).Word(there ? NoErrorHandle : NoHandle);
    table.Word(device.Width == 64 ? 80 : device.Width).Word(device.Width).Word(device.Size).Byte(device.FormFactor);
    table.Byte(0).String(locator).String("BANK 0").Byte(device.Type).Word(device.Detail).Word(device.Speed);
    table.String(there ? "Example Memory" : "").String(there ? "M-" + locator : "").String("");
    table.String(there ? "EM-64G-R" : "").Byte(there ? 2 : 0).Dword(device.ExtendedSize).Word(device.Speed);
    table.Word(1100).Word(1100).Word(1100).Byte(device.Technology).Word(device.Modes);
    table.String(there ? "1.07" : "").Word(there ? 0x0198 : 0).Word(there ? 0x0042 : 0);
    table.Word(device.Modes == 0x0010 ? 0x2C80 : 0).Word(device.Modes == 0x0010 ? 0x5103 : 0);
    for (const std::uint64_t size : device.Sizes) {
        table.Qword(size);
    }
    table.Dword(device.ExtendedSpeed).Dword(device.ExtendedSpeed);
    table.Word(device.Ddr5 ? 0x9D86 : 0).Word(device.Ddr5 ? 0x0121 : 0xFF00);
    table.Word(device.Ddr5 ? 0x3286 : 0).Word(device.Ddr5 ? 0x0211 : 0xFF00);
}

void Memory(SmbiosBuilder& table, SampleHandles& handles) {
    table.Begin(16).Byte(3).Byte(3).Byte(6).Dword(SeeExtendedCapacity).Word(NoErrorHandle).Word(24);
    table.Qword(6144 * Gigabyte);
    handles.SystemArray = table.Handle();
    table.Begin(16).Byte(0xA4).Byte(3).Byte(6).Dword(SeeExtendedCapacity).Word(NoErrorHandle).Word(1).Qword(0);
    handles.FlashArray = table.Handle();
    table.Begin(16).Byte(3).Byte(5).Byte(3).Dword(0x00010000).Word(NoErrorHandle).Word(1).Qword(0); // 64 MB
    const std::uint16_t firmwareArray = table.Handle();

    constexpr ServerDevice module = {"", 64, SeeExtendedSize, ModuleMegabytes,        9,   0x22, 0x2080, 6400,
                                     0,  3,  0x0008,          {0, ModuleBytes, 0, 0}, true};
    constexpr ServerDevice empty = {"", 0xFFFF, 0, 0, 9, 0x22, 0x0004, 0, 0, 2, 0x0004, {0, 0, 0, 0}, false};
    int place = 0;
    for (int socket = 0; socket < SocketCount; ++socket) {
        for (char channel = 'A'; channel <= 'L'; ++channel) {
            const std::string locator = "P" + std::to_string(socket) + " DIMM " + channel;
            MemoryDeviceAdd(table, handles.SystemArray, channel == 'L' ? empty : module, locator);
            handles.Devices[std::min(place++, 3)] = table.Handle();
        }
    }
    constexpr ServerDevice others[] = {
        // Load-reduced, of a size that the word holds; one that nobody can size; and 32 MB of flash memory, in KB.
        {"P0 DIMM M", 64, 16384, 0, 9, 0x1A, 0x8080, 3200, 0, 3, 0x0008, {0, 16 * Gigabyte, 0, 0}, false},
        {"P1 DIMM M",
         64,
         0xFFFF,
         0,
         9,
         0x02,
         0x0004,
         0,
         0,
         2,
         0x0004,
         {UnknownSize, UnknownSize, UnknownSize, 0},
         false},
        {"Flash", 8, 0xFC00, 0, 5, 9, 0x1100, 66, 0, 1, 0x0002, {0, 0, 0, 0}, false},
        // Persistent memory, half of it behind a cache; and memory that is faster than a word can say.
        {"CXL 1",
         64,
         SeeExtendedSize,
         262144,
         1,
         0x1F,
         0x1000,
         5600,
         0,
         7,
         0x0010,
         {128 * Gigabyte, 128 * Gigabyte, 2 * Gigabyte, 256 * Gigabyte},
         false},
        {"P0 HBM",
         1024,
         SeeExtendedSize,
         ModuleMegabytes,
         0x10,
         0x24,
         0x0080,
         SeeOtherWord,
         70400,
         3,
         0x0008,
         {0, ModuleBytes, 0, 0},
         false},
    };
    for (const ServerDevice& device : others) {
        const std::string locator = device.Locator;
        const std::uint16_t array = locator == "Flash"   ? firmwareArray
                                    : locator == "CXL 1" ? handles.FlashArray
                                                         : handles.SystemArray;
        MemoryDeviceAdd(table, array, device, locator);
    }

    table.Begin(19).Dword(0).Dword(0x007FFFFF).Word(handles.SystemArray).Byte(24).Qword(0).Qword(0);
    handles.ArrayRange = table.Handle();
    table.Begin(19).Dword(SeeExtendedAddress).Dword(SeeExtendedAddress).Word(handles.SystemArray).Byte(24);
    table.Qword(0x0000040000000000).Qword(0x0000055FFFFFFFFF);
    table.Begin(20).Dword(0).Dword(0x007FFFFF).Word(handles.Devices[0]).Word(handles.ArrayRange);
    table.Byte(0xFF).Byte(1).Byte(1).Qword(0).Qword(0);
    table.Begin(20)
        .Dword(SeeExtendedAddress)
        .Dword(SeeExtendedAddress)
        .Word(handles.Devices[1])
        .Word(handles.ArrayRange);
    table.Byte(0xFF).Byte(2).Byte(1).Qword(0x0000040000000000).Qword(0x0000040FFFFFFFFF);
}

// A record of the Redfish protocol for addresses of IPv4 or IPv6, whose last bytes tell the host from the service.
void RedfishRecord(SmbiosBuilder& table, bool version6, const std::string& hostName) {
    const auto address = [&](std::uint8_t last) {
        Bytes bytes =
            version6 ? Bytes{0xFE, 0x80, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0xFF, 0xFE, 0, 0, last} : Bytes{169, 254, 0, last};
        bytes.resize(16);
        Bytes mask = version6 ? Bytes(8, 0xFF) : Bytes{255, 255, 0, 0};
        mask.resize(16);
        table.Raw(bytes).Raw(mask);
    };
    table.Byte(4).Byte(static_cast<std::uint8_t>(91 + hostName.size()));
    table.Raw({0x46, 0x52, 0x65, 0x64, 0x66, 0x69, 0x73, 0x68, 0x90, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06});
    table.Byte(version6 ? 3 : 1).Byte(version6 ? 2 : 1);
    address(0x0A);
    table.Byte(version6 ? 4 : 1).Byte(version6 ? 2 : 1);
    address(0x01);
    table.Word(443).Dword(version6 ? 0 : 100).Byte(static_cast<std::uint8_t>(hostName.size()));
    table.Raw(Bytes(hostName.begin(), hostName.end()));
}

void HostInterfaces(SmbiosBuilder& table) {
    // The length of the data, and their device type, come first; at the end the number of records and these.
    table.Begin(42).Byte(0x40).Byte(17).Byte(4).Byte(17).Word(0x1A2B).Word(0x0001).String("BMC-USB-01");
    table.Raw({0x02, 0x00, 0x5E, 0x10, 0x20, 0x30}).Word(0x0001).Word(0x0020).Byte(2);
    RedfishRecord(table, false, "bmc.example");
    table.Byte(2).Byte(4).Dword(0x04030201); // IPMI
    table.Begin(42).Byte(0x40).Byte(24).Byte(5).Byte(24).Word(0x1A2B).Word(0x1533).Word(0x1A2C).Word(0x0002);
    table.Raw({0x02, 0x00, 0x5E, 0x10, 0x20, 0x31}).Word(0).Byte(0x05).Byte(0x08).Word(0x0000).Word(NoHandle).Byte(1);
    RedfishRecord(table, true, "");
    table.Begin(42).Byte(0x40).Byte(5).Byte(2).Word(0x1A2B).Word(0x0003).Byte(0);
    table.Begin(42).Byte(0x40).Byte(9).Byte(3).Word(0x1A2B).Word(0x1534).Word(0x1A2C).Word(0x0004).Byte(0);
    table.Begin(42).Byte(0x40).Byte(5).Byte(0x80).Raw({0x00, 0x00, 0x01, 0x57}).Byte(0);
    table.Begin(42).Byte(0xF0).Byte(6).Raw({0x00, 0x00, 0x01, 0x57, 0xAA, 0xBB}).Byte(1);
    table.Raw({0xF0, 5, 0x00, 0x00, 0x01, 0x57, 0x99});
    table.Begin(42).Byte(0x0A).Byte(0).Byte(1).Raw({3, 0}); // MCTP over I3C
    table.Begin(42).Byte(0x02).Byte(0xFF).Raw({1, 2});      // the older layout, without such a length
}

void Modules(SmbiosBuilder& table, const ServerHandles& server) {
    table.Begin(43).Raw({'E', 'X', 'S', 'I'}).Byte(2).Byte(0).Dword(0x00070055).Dword(0x000B1200);
    table.String("TPM 2.0").Qword(0x18).Dword(0xC0FFEE02);
    table.Begin(43).Raw({'E', 'X', 0, 0}).Byte(1).Byte(2).Dword(0x0B250201).Dword(0).String("TPM 1.2").Qword(0x04);
    table.Dword(0);

    table.Begin(45).String("System firmware").String("9.3").Byte(1).String("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
    table.Byte(1).String("2026-01-15T00:00:00Z").String("Example Firmware Works").String("9.0");
    table.Qword(64 * Gigabyte / 1024).Word(0x0003).Byte(4).Byte(2).Word(server.Firmware).Word(server.Processors[0]);
    table.Begin(45).String("Management controller").String("00010A07").Byte(2).String("BMC-EX9").Byte(0x80).String("");
    table.String("Example Remote").String("").Qword(UnknownSize).Word(0x0001).Byte(6).Byte(0);
    // As some firmware has it: one byte short of the count.
    table.Begin(45).String("Power controller").String("").Byte(0).String("").Byte(0).String("").String("").String("");
    table.Qword(0x8000).Word(0).Byte(2);

    table.Begin(46).Word(0x0001).String("PciRoot(0x0)/Pci(0x1,0x0)").Word(server.Slots[0]);
    table.Begin(46).Word(0x8001).String("Rear").Word(server.Slots[1]);

    table.Begin(47).Raw({0x2F, 0x01}).SetString("A type to come");
    table.Begin(128).SetString("Strings without data");
    table.Begin(221).String("Loader").Byte(9).Byte(3).Word(0x0120).String("Microcode").Dword(0x0A20F012);
    Bytes counting(20);
    std::generate(counting.begin(), counting.end(), [next = std::uint8_t{0}]() mutable { return next++; });
    table.Begin(221).Raw(counting).SetString("One more row");
    table.Begin(255).Raw({0xFE, 0xED});
}

} // namespace

Machine SampleServer() {
    SmbiosBuilder table(FirstHandle);
    SampleHandles handles;
    ServerHandles server;
    Firmware(table, server);
    BoardAndChassis(table, handles);
    Caches(table, handles);
    Processors(table, handles, server);
    Slots(table, server);
    Memory(table, handles);
    SamplePartsAdd(table, handles);
    HostInterfaces(table);
    Modules(table, server);
    table.Begin(126);
    table.Begin(127);
    return MachineWithTable(table, 3, 9);
}

} // namespace StandIn
