// Decoders of memory channel, IPMI, power supply, additional information, onboard device, host interface, inactive and
// end-of-table structures (types 37 to 42, 126 and 127).
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"
#include "viewer/StructRead.h"

namespace {

// Type 37, memory channel. The first and the last of the channel's devices are shown; the library finds the last one.

constexpr const char* MemoryChannelTypeTexts[] = {"", "Other", "Unknown", "Rambus", "SyncLink"};

constexpr DecoderField Type37Fields[] = {
    TextField(3, "Channel Type : 0x%02X - %s\n", MemoryChannelTypeTexts),
    NumberField(4, "Maximum Channel Load : 0x%02X (%d)\n"),
    NumberField(5, "Memory Device Count : 0x%02X (%d)\n"),
    NumberField(6, "Memory1 Device Load : 0x%02X (%d)\n"),
    NumberField(7, "Memory Device1 Handle : 0x%04X (%02d)\n"),
    NumberField(8, "Memory Device Load : 0x%02X (%d)\n"),
    NumberField(9, "Memory Device Handle : 0x%04X (%02d)\n"),
};

// Type 38, IPMI device information.

constexpr const char* IpmiInterfaceTypeTexts[] = {
    "Unknown",
    "KCS:Keyboard Controller Style",
    "SMIC:Server Management Interface Chip",
    "BT:Block Transfer",
};

constexpr const char* IpmiRegisterSpacingTexts[] = {
    "On successive byte boundaries",
    "On 32-bit boundaries",
    "On 16-byte boundaries",
    "Reserved",
};

constexpr const char* IpmiLsBitTexts[] = {"Bit 0", "Bit 1"};

constexpr const char* IpmiInterruptInfoTexts[] = {"Not specified", "Specified"};

constexpr const char* IpmiInterruptPolarityTexts[] = {"Active low", "Active high"};

constexpr const char* IpmiInterruptTriggerTexts[] = {"edge", "level"};

constexpr BitGroup IpmiModifierGroups[] = {
    {" Register spacing : %s\n", 6, 0x3, IpmiRegisterSpacingTexts},
    {" LS-bit for addresses : %s\n", 4, 0x1, IpmiLsBitTexts},
    {" Interrupt Info : %s\n", 3, 0x1, IpmiInterruptInfoTexts},
    {" Interrupt Polarity : %s\n", 1, 0x1, IpmiInterruptPolarityTexts},
    {" Interrupt Trigger Mode : %s\n", 0, 0x1, IpmiInterruptTriggerTexts},
};

// The NV storage mark stands on a line of its own: the value's line is ended before it.
constexpr DecoderField Type38Fields[] = {
    TextField(3, "Interface Type : 0x%02X - %s\n", IpmiInterfaceTypeTexts),
    NumberField(4, "IPMI Specification Revision : 0x%02X\n"),
    NumberField(5, "I2C Slave Address : 0x%02X\n"),
    MarkField(6, "NV Storage Device Address : 0x%02X\n", 0xFF, "- No storage device exists\n"),
    NumberField(7, "Base Address : 0x%llX\n"),
    GroupsField(8, "Base Address Modifier / Interrupt Info : 0x%02X\n", IpmiModifierGroups),
    MarkField(9, "Interrupt Number : 0x%02X ", 0, "- Unspecified/Unsupported\n"),
};

// Type 39, system power supply. The location string (row 4) has no line.

constexpr const char* PowerSupplyTypeTexts[] = {
    "", "Other", "Unknown", "Linear", "Switching", "Battery", "UPS", "Converter", "Regulator",
};

constexpr const char* PowerSupplyStatusTexts[] = {
    "", "Other", "Unknown", "OK", "Non-critical", "Critical,power supply failed,taken off-line",
};

constexpr const char* PowerSupplyRangeSwitchingTexts[] = {
    "", "Other", "Unknown", "Manual", "Auto-switch", "Wide range", "Not applicable",
};

constexpr const char* PowerSupplyFlagTexts[] = {"hot Replaceable", "present", "unplugged from the wall"};

// One line for three flags: the highest one that is set speaks.
constexpr const char* PowerSupplyFlagChoices[] = {
    "",
    PowerSupplyFlagTexts[0],
    PowerSupplyFlagTexts[1],
    PowerSupplyFlagTexts[1],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
};

constexpr BitGroup PowerSupplyGroups[] = {
    {" Type : %s\n", 10, 0xF, PowerSupplyTypeTexts},
    {" Status : %s\n", 7, 0x7, PowerSupplyStatusTexts},
    {" Range Switching : %s\n", 3, 0xF, PowerSupplyRangeSwitchingTexts},
    {" Power supply : %s\n", 0, 0x7, PowerSupplyFlagChoices},
};

constexpr DecoderField Type39Fields[] = {
    NumberField(3, "Power Unit Group : 0x%02X (%02d)\n"),
    StringField(5, "Device Name : %s\n"),
    StringField(6, "Manufacturer : %s\n"),
    StringField(7, "Serial Number : %s\n"),
    StringField(8, "Asset Tag Number : %s\n"),
    StringField(9, "Model Part Number : %s\n"),
    StringField(10, "Revision Level : %s\n"),
    MarkField(11, "Max Power Capacity : 0x%04X ", 0x8000, "- Unknown\n"),
    GroupsField(12, "Power Supply Characteristics : 0x%04X\n", PowerSupplyGroups),
    MarkField(13, "Input Voltage Probe Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
    MarkField(14, "Cooling Device Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
    MarkField(15, "Input Current Probe Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
};

// Type 40, additional information.

constexpr std::uint8_t EntryCountRow = 3;
constexpr std::uint8_t EntryListOffset = 0x05;
constexpr std::size_t EntryValueOffset = 5; // within an entry: what stands before its value

// Entries follow each other by their own lengths, so one that can't be right hides all that come after it.
FieldOutcome AdditionalEntriesShow(const DecoderField&, const StructPlace& place) {
    std::uint64_t count = 0;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    if (!FieldNumber(place, EntryCountRow, &count) ||
        StructAreaRead(place.Type, place.Instance, EntryListOffset, &data, &size) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Number of Additional Information entries :\n");
    std::span<const std::uint8_t> list(data, size);
    for (; count != 0 && !list.empty(); --count) {
        const std::size_t length = list[0];
        if (length < EntryValueOffset || length > list.size()) {
            break;
        }
        const unsigned handle = list[1] | list[2] << 8;
        RyxPrintf("Entry Length : 0x%02X (%02d)\n", list[0], list[0]);
        RyxPrintf("Referenced Handle : 0x%04X (%02d)\n", handle, handle);
        RyxPrintf("Referenced Offset : 0x%02X\n", list[3]);
        RyxPrintf("String : 0x%02X\n", list[4]);
        if (length > EntryValueOffset) {
            RyxPrintf("Value : 0x%02x\n", list[EntryValueOffset]);
        }
        list = list.subspan(length);
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type40Fields[] = {
    NumberField(EntryCountRow, "Number of Additional Information entries : 0x%02X (%d)\n"),
    OwnField(4, AdditionalEntriesShow),
};

// Type 41, onboard devices extended information.

constexpr const char* OnboardDeviceStatusTexts[] = {"Disabled", "Enabled"};

constexpr const char* OnboardDeviceTypeTexts[] = {
    "",           "Other", "Unknown",         "Video",           "SCSI Controller", "Ethernet",
    "Token Ring", "Sound", "PATA Controller", "SATA Controller", "SAS Controller",
};

constexpr BitGroup OnboardDeviceGroups[] = {
    {" Status : %s\n", 7, 0x1, OnboardDeviceStatusTexts},
    {" Type : %s\n", 0, 0x7F, OnboardDeviceTypeTexts},
};

constexpr BitGroup DeviceFunctionGroups[] = {
    {" Device Number : 0x%X\n", 3, 0x1F, {}},
    {" Function Number : 0x%X\n", 0, 0x7, {}},
};

constexpr DecoderField Type41Fields[] = {
    StringField(3, "Reference Designation : %s\n"),
    GroupsField(4, "Device Type : 0x%02X\n", OnboardDeviceGroups),
    NumberField(5, "Device Type Instance : 0x%02X (%d)\n"),
    NumberField(6, "Segment Group Number : 0x%04X\n"),
    NumberField(7, "Bus Number : 0x%02X (%d)\n"),
    GroupsField(8, "Device/Function Number : 0x%02X\n", DeviceFunctionGroups),
};

// Type 42, management controller host interface.

constexpr std::uint8_t InterfaceTypeRow = 3;
constexpr std::uint8_t InterfaceTypeOem = 0xF0;

constexpr const char* HostInterfaceTypeTexts[] = {
    "Reserved",
    "Reserved",
    "KCS: Keyboard Controller Style",
    "8250 UART Register Compatible",
    "16450 UART Register Compatible",
    "16550/16550A UART Register Compatible",
    "16650/16650A UART Register Compatible",
    "16750/16750A UART Register Compatible",
    "16850/16850A UART Register Compatible",
};

constexpr TextRange HostInterfaceTypeRanges[] = {
    {0x09, InterfaceTypeOem - 1, "Reserved"},
    {InterfaceTypeOem, InterfaceTypeOem, "OEM"},
    {InterfaceTypeOem + 1, 0xFF, "Reserved"},
};

FieldOutcome HostInterfaceTypeShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t type = 0;
    if (!FieldNumber(place, field.Row, &type)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Interface Type : 0x%02X ", static_cast<unsigned>(type));
    RyxPrintf("- %s\n", TextFind({HostInterfaceTypeTexts, HostInterfaceTypeRanges}, type));
    return FieldOutcome::Printed;
}

// Only an OEM interface's data has a known beginning: the vendor's number.
FieldOutcome HostInterfaceDataShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t type = 0;
    if (!FieldNumber(place, InterfaceTypeRow, &type)) {
        return FieldOutcome::Unreadable;
    }
    if (type != InterfaceTypeOem) {
        return FieldOutcome::Skipped;
    }
    std::span<const std::uint8_t> vendor;
    if (!FieldBytes(place, field.Row, &vendor)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(" Vendor ID : 0x");
    for (const std::uint8_t byte : vendor) {
        RyxPrintf("%02x", byte);
    }
    RyxPrintf("\n");
    return FieldOutcome::Printed;
}

constexpr DecoderField Type42Fields[] = {
    OwnField(InterfaceTypeRow, HostInterfaceTypeShow),
    OwnField(4, HostInterfaceDataShow),
};

} // namespace

RyxStatus StructDecodeType37() {
    return InstanceLoopDecode(37, Type37Fields);
}

RyxStatus StructDecodeType38() {
    return SingleInstanceDecode(38, Type38Fields);
}

RyxStatus StructDecodeType39() {
    return InstanceLoopDecode(39, Type39Fields);
}

RyxStatus StructDecodeType40() {
    return InstanceLoopDecode(40, Type40Fields);
}

RyxStatus StructDecodeType41() {
    return InstanceLoopDecode(41, Type41Fields);
}

RyxStatus StructDecodeType42() {
    return InstanceLoopDecode(42, Type42Fields);
}

RyxStatus StructDecodeType126() {
    return SingleInstanceDecode(126, {});
}

RyxStatus StructDecodeType127() {
    return SingleInstanceDecode(127, {});
}
