// What requests may touch: no more than the firmware channel and the SMBIOS table need.
#include "driver/Permission.h"

#include "driver/FirmwareTable.h"
#include "driver/ManagedMemory.h"

namespace RyxDriver {

namespace {

constexpr ULONG LargestWrite = 0x1000;
// From here on stand the interrupt controllers, the memory protection of devices and the firmware's flash memory.
constexpr ULONG WritesEnd = 0xFEC00000;

// The fixed table: the port of the system management interrupt.
constexpr ULONG PortOffset = 48;

// The table of the windows to the PCI configuration, 1 MiB for each bus: address, segment, first bus, last bus.
constexpr ULONG WindowsOffset = 44;
constexpr ULONG WindowSize = 16;
constexpr ULONG FirstBusOffset = 10;
constexpr ULONG LastBusOffset = 11;
constexpr ULONGLONG BusSize = 1ULL << 20;

struct PciWindow {
    ULONGLONG Begin;
    ULONGLONG End;
};

// What the firmware's tables say, which stays the same as long as the machine runs.
struct FirmwareSays {
    bool Known;
    bool WindowsFit; // false: there are some, but not all of them can be told
    USHORT Port;     // 0: none
    ULONG Windows;
    PciWindow Window[32]; // below 4 GiB
};

constinit FirmwareSays Firmware{};

USHORT PortOf(const UCHAR* table, ULONG length) {
    if (table == nullptr || length < PortOffset + sizeof(ULONG)) {
        return 0;
    }
    const ULONG port = Number(table + PortOffset);
    return port <= 0xFFFF ? static_cast<USHORT>(port) : 0;
}

bool WindowsTake(const UCHAR* table, ULONG length) {
    Firmware.Windows = 0;
    for (ULONG place = WindowsOffset; place + WindowSize <= length; place += WindowSize) {
        const UCHAR* const entry = table + place;
        const ULONGLONG base = Number(entry) | static_cast<ULONGLONG>(Number(entry + 4)) << 32;
        if (base >= WritesEnd) {
            continue;
        }
        if (entry[LastBusOffset] < entry[FirstBusOffset] ||
            Firmware.Windows == sizeof Firmware.Window / sizeof Firmware.Window[0]) {
            return false;
        }
        Firmware.Window[Firmware.Windows++] = {base + entry[FirstBusOffset] * BusSize,
                                               base + (entry[LastBusOffset] + 1) * BusSize};
    }
    return true;
}

void FirmwareAsk() {
    if (Firmware.Known) {
        return;
    }
    ULONG length = 0;
    bool portUnfit = false;
    bool windowsUnfit = false;
    const UCHAR* table = FirmwareTableGet("FACP", &length, &portUnfit);
    const USHORT port = PortOf(table, length);
    table = FirmwareTableGet("MCFG", &length, &windowsUnfit);
    // Others may have come in between and know everything.
    if (!Firmware.Known) {
        Firmware.Port = port;
        Firmware.WindowsFit = !windowsUnfit && (table == nullptr || WindowsTake(table, length));
        Firmware.Known = !portUnfit && !windowsUnfit; // else the next request asks again
    }
}

} // namespace

void PermissionStart() {
    Firmware = FirmwareSays{};
}

bool PermissionRead(ULONG address, ULONG length) {
    return ManagedMemory().Allows(address, length);
}

bool PermissionWrite(ULONG address, ULONG length) {
    if (length > LargestWrite || address >= WritesEnd || length > WritesEnd - address) {
        return false;
    }
    FirmwareAsk();
    for (ULONG index = 0; index < Firmware.Windows; ++index) {
        if (Firmware.Window[index].Begin < ULONGLONG{address} + length && address < Firmware.Window[index].End) {
            return false;
        }
    }
    return Firmware.WindowsFit && ManagedMemory().Allows(address, length);
}

bool PermissionPort(USHORT port) {
    FirmwareAsk();
    return port != 0 && port == Firmware.Port;
}

} // namespace RyxDriver
