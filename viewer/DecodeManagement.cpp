// Decoders of remote access, boot, 64-bit memory error and management device structures (types 30 to 36).
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"
#include "viewer/MemoryErrorTexts.h"

namespace {

// Type 30, out-of-band remote access.

constexpr const char* RemoteAccessConnectionNames[] = {
    "Outbound Connection Enabled",
    "Inbound Connection Enabled",
    nullptr,
};

constexpr DecoderField Type30Fields[] = {
    StringField(3, "Manufacturer Name : %s\n"),
    BitsField(4, "Connections : 0x%02X\n", RemoteAccessConnectionNames),
};

// Type 31, boot integrity services entry point.

// The row is a dword; the line shows the word at its start.
FieldOutcome BisEntry16Show(const DecoderField& field, const StructPlace& place) {
    std::uint64_t entry = 0;
    if (!FieldNumber(place, field.Row, &entry)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(field.Format, static_cast<unsigned>(entry & 0xFFFF));
    return FieldOutcome::Printed;
}

constexpr DecoderField Type31Fields[] = {
    NumberField(3, "Checksum : 0x%02X (%02d)\n"), NumberField(4, "Reserved1 : 0x%02X\n"),
    NumberField(5, "Reserved2 : 0x%04X\n"),       OwnField(6, BisEntry16Show, "BisEntry16 : 0x%04X\n"),
    NumberField(7, "BisEntry32 : 0x%08X\n"),      NumberField(8, "Reserved3 : 0x%llX\n"),
    NumberField(9, "Reserved4 : 0x%08X\n"),
};

// Type 32, system boot information.

constexpr const char* BootStatusCodes[] = {
    "No errors detected",
    "No bootable media",
    "Failed to load",
    "Firmware-detected hardware failure",
    "OS-detected hardware failure",
    "User-requested boot",
    "System security violation",
    "Previously-requested image",
    "System to reboot",
};

constexpr TextRange BootStatusRanges[] = {
    {9, 127, "Reserved"},
    {128, 191, "Vendor/OEM-specific implementations"},
    {192, 255, "Product-specific implementations"},
};

constexpr TextTable BootStatusTexts{BootStatusCodes, BootStatusRanges};

FieldOutcome BootReservedShow(const DecoderField& field, const StructPlace& place) {
    std::span<const std::uint8_t> bytes;
    if (!FieldBytes(place, field.Row, &bytes)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Reserved : ");
    for (const std::uint8_t byte : bytes) {
        RyxPrintf("0x%02X ", byte);
    }
    RyxPrintf("\n");
    return FieldOutcome::Printed;
}

// The status code, and whatever bytes the firmware put behind it, each read as a status of its own.
FieldOutcome BootStatusShow(const DecoderField& field, const StructPlace& place) {
    std::span<const std::uint8_t> bytes;
    if (!FieldBytes(place, field.Row, &bytes)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Boot Status : ");
    for (const std::uint8_t status : bytes) {
        RyxPrintf("0x%02x - ", status);
        RyxPrintf("%s\n", TextFind(BootStatusTexts, status));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type32Fields[] = {
    OwnField(3, BootReservedShow),
    OwnField(4, BootStatusShow),
};

// Type 33, 64-bit memory error information.

constexpr std::uint64_t ErrorAddressUnknown = 0x8000000000000000;
constexpr std::uint64_t ErrorResolutionUnknown = 0x80000000;

constexpr DecoderField Type33Fields[] = {
    TextField(3, "Error Type : 0x%02X - %s\n", MemoryErrorTypeTexts),
    TextField(4, "Error Granularity : 0x%02X - %s\n", MemoryErrorGranularityTexts),
    TextField(5, "Error Operation : 0x%02X - %s \n", MemoryErrorOperationTexts),
    MarkField(6, "Vendor Syndrome : 0x%08X ", 0, "- Unknown\n"),
    MarkField(7, "Memory Array Error Address : 0x%llX ", ErrorAddressUnknown, "- Unknown\n"),
    MarkField(8, "Device Error Address : 0x%llX ", ErrorAddressUnknown, "- Unknown\n"),
    MarkField(9, "Error Resolution : 0x%08X ", ErrorResolutionUnknown, "- Unknown\n"),
};

// Type 34, management device.

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

// Type 35, management device component.

constexpr DecoderField Type35Fields[] = {
    StringField(3, "Description : %s\n"),
    NumberField(4, "Management Device Handle : 0x%04X (%d)\n"),
    NumberField(5, "Component Handle : 0x%04X (%d)\n"),
    NumberField(6, "Threshold Handle : 0x%04X (%d)\n"),
};

// Type 36, management device threshold data.

constexpr DecoderField Type36Fields[] = {
    NumberField(3, "Lower Threshold-on-critical : 0x%04X (%d)\n"),
    NumberField(4, "Upper Threshold-Non-critical : 0x%04X (%d)\n"),
    NumberField(5, "Lower Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(6, "Upper Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(7, "Lower Threshold-Non-recoverable : 0x%04X (%d)\n"),
    NumberField(8, "Upper Threshold-Non-recoverable : 0x%04X (%d)\n"),
};

} // namespace

RyxStatus StructDecodeType30() {
    return InstanceLoopDecode(30, Type30Fields);
}

RyxStatus StructDecodeType31() {
    return InstanceLoopDecode(31, Type31Fields);
}

RyxStatus StructDecodeType32() {
    return SingleInstanceDecode(32, Type32Fields);
}

RyxStatus StructDecodeType33() {
    return InstanceLoopDecode(33, Type33Fields);
}

RyxStatus StructDecodeType34() {
    return InstanceLoopDecode(34, Type34Fields);
}

RyxStatus StructDecodeType35() {
    return InstanceLoopDecode(35, Type35Fields);
}

RyxStatus StructDecodeType36() {
    return InstanceLoopDecode(36, Type36Fields);
}
