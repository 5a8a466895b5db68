// Decoders of management devices, IPMI and management controller host interfaces (types 34 to 36, 38 and 42).
#include "Lib/API/RyxPrint.h"
#include "viewer/Decoders.h"

namespace {

// Type 34, Management Device.

constexpr const char* ManagementDeviceTypeTexts[] = {
    "",
    "Other",
    "Unknown",
    "National Semiconductor LM75",
    "National Semiconductor LM78",
    "National Semiconductor LM79",
    "National Semiconductor LM80",
    "National Semiconductor LM81",
    "Analog Devices ADM9240",
    "Dallas SemiconductorDS1780",
    "Maxim 1617",
    "Geneyss GL518SM",
    "Winbond W83781D",
    "Holtek HT82H791",
};

constexpr const char* ManagementDeviceAddressTypeTexts[] = {"", "Other", "Unknown", "I/O Port", "Memory", "SM Bus"};

constexpr DecoderField Type34Fields[] = {
    StringField(3, "Description : %s\n"),
    TextField(4, "Type : 0x%02X - %s\n", ManagementDeviceTypeTexts),
    NumberField(5, "Address : 0x%08X\n"),
    TextField(6, "Address Type : 0x%02X - %s\n", ManagementDeviceAddressTypeTexts),
};

// Type 35, Management Device Component.

constexpr DecoderField Type35Fields[] = {
    StringField(3, "Description : %s\n"),
    NumberField(4, "Management Device Handle : 0x%04X (%d)\n"),
    NumberField(5, "Component Handle : 0x%04X (%d)\n"),
    NumberField(6, "Threshold Handle : 0x%04X (%d)\n"),
};

// Type 36, Management Device Threshold Data.

constexpr DecoderField Type36Fields[] = {
    NumberField(3, "Lower Threshold-on-critical : 0x%04X (%d)\n"),
    NumberField(4, "Upper Threshold-Non-critical : 0x%04X (%d)\n"),
    NumberField(5, "Lower Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(6, "Upper Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(7, "Lower Threshold-Non-recoverable : 0x%04X (%d)\n"),
    NumberField(8, "Upper Threshold-Non-recoverable : 0x%04X (%d)\n"),
};

// Type 38, IPMI Device Information.

constexpr const char* IpmiInterfaceTypeLow[] = {
    "Unknown",
    "KCS:Keyboard Controller Style",
    "SMIC:Server Management Interface Chip",
    "BT:Block Transfer",
};

constexpr TextRange IpmiInterfaceTypeNewer[] = {{0x04, "SSIF:SMBus System Interface"}};

constexpr TextTable IpmiInterfaceTypeTexts = TextTable(IpmiInterfaceTypeLow).With(IpmiInterfaceTypeNewer);

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

// Type 42, Management Controller Host Interface.

constexpr std::uint8_t InterfaceTypeRow = 3;
constexpr std::uint8_t InterfaceTypeOem = 0xF0;

constexpr const char* HostInterfaceTypeLow[] = {
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

constexpr TextTable HostInterfaceTypeTexts{HostInterfaceTypeLow, HostInterfaceTypeRanges};

// Only an OEM interface's data has a known beginning: the vendor's number.
FieldOutcome HostInterfaceDataShow(const DecoderField& field, const StructPlace& place) {
    FieldValue vendor;
    FieldValue type;
    if (!FieldRead(place, field.Row, &vendor) || !FieldRead(place, InterfaceTypeRow, &type)) {
        return FieldOutcome::Unreadable;
    }
    if (type.Number != InterfaceTypeOem) {
        return FieldOutcome::Skipped;
    }
    RyxPrintf(" Vendor ID : 0x");
    for (const std::uint8_t byte : vendor.Bytes) {
        RyxPrintf("%02x", byte);
    }
    RyxPrintf("\n");
    return FieldOutcome::Printed;
}

constexpr DecoderField Type42Fields[] = {
    TextLineField(InterfaceTypeRow, "Interface Type : 0x%02X ", HostInterfaceTypeTexts, "- %s\n"),
    OwnField(4, HostInterfaceDataShow),
};

} // namespace

constinit const StructDecoder StructDecodeType34(34, "Manage Device", DecoderForm::Loop, Type34Fields);
constinit const StructDecoder StructDecodeType35(35, "Manage Device Component", DecoderForm::Loop, Type35Fields);
constinit const StructDecoder StructDecodeType36(36, "Manage Device Threshold Data", DecoderForm::Loop, Type36Fields);
constinit const StructDecoder StructDecodeType38(38, "IPMI Device Info", DecoderForm::Single, Type38Fields);
constinit const StructDecoder StructDecodeType42(42, "Manage Controller Host Interface", DecoderForm::Loop,
                                                 Type42Fields);
