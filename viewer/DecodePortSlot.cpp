// The decoders of port, slot, on-board device, string list, language and group structures (types 8 to 14) and their
// text tables. Of a list they show what the field rows name: its count or its first item.
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"

#include <cstdint>

namespace {

constexpr const char* const ConnectorTypeLowTexts[] = {
    "None",
    "Centronics",
    "Mini Centronics",
    "Proprietary",
    "DB-25 pin male",
    "DB-25 pin female",
    "DB-15 pin male",
    "DB-15 pin female",
    "DB-9 pin male",
    "DB-9 pin female",
    "RJ-11",
    "RJ-45",
    "50 Pin MiniSCSI",
    "Mini-DIN",
    "Micro-DIN",
    "PS/2",
    "Infrared",
    "HP-HIL",
    "Access Bus",
    "SSA SCSI",
    "Circular DIN-8 male",
    "Circular DIN-8 female",
    "On Board IDE",
    "On Board Floppy",
    "9 Pin Dual Inline (pin 10 cut)",
    "25 Pin Dual Inline (pin 26 cut)",
    "50 Pin Dual Inline",
    "68 Pin Dual Inline",
    "On Board Sound Input from CD_ROM",
    "Mini-Centronics Type-14",
    "Mini-Centronics Type-26",
    "Mini-jack (headphones)",
    "BNC",
    "1394",
    "SAS/SATA Plug Receptacle",
};
constexpr const char* const ConnectorTypeHighTexts[] = {"PC-98", "PC-98Hireso", "PC-H98", "PC-98Note", "PC-98Full"};
constexpr TextTable ConnectorTypeTexts(ConnectorTypeLowTexts, ConnectorTypeHighTexts);

constexpr const char* const PortTypeLowTexts[] = {
    "None",
    "Parallel Port XT/AT Compatible",
    "Parallel Port PS/2",
    "Parallel Port ECP",
    "Parallel Port EPP",
    "Parallel Port ECP/EPP",
    "Serial Port XT/AT Compatible",
    "Serial Port 16450 Compatible",
    "Serial Port 16550 Compatible",
    "Serial Port 16550A Compatible",
    "SCSI Port",
    "MIDI Port",
    "Joy Stick Port",
    "Keyboard Port",
    "Mouse Port",
    "SSA SCSI",
    "USB",
    "FireWire (IEEE P1394)",
    "PCMCIA Type I2",
    "PCMCIA Type II",
    "PCMCIA Type III",
    "Cardbus",
    "Access Bus Port",
    "SCSI II",
    "SCSI Wide",
    "PC-98",
    "PC-98-Hireso",
    "PC-H98",
    "Video Port",
    "Audio port",
    "Modem Port",
    "Network Port",
    "SATA",
    "SAS",
};
constexpr const char* const PortTypeHighTexts[] = {"8251 Compatible", "8251 FIFO Compatible"};
constexpr TextTable PortTypeTexts(PortTypeLowTexts, PortTypeHighTexts);

// The code for a connector or port that the standard does not list.
constexpr std::uint64_t OtherPort = 0xFF;

FieldOutcome PortTextShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t code = 0;
    if (!FieldNumber(place, field.Row, &code)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(field.Format, static_cast<unsigned>(code));
    if (code == OtherPort) {
        RyxPrintf("Other\n");
    } else {
        RyxPrintf("%s\n", TextFind(field.Texts, code));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField PortTextField(std::uint8_t row, const char* format, TextTable texts) {
    return {.Row = row, .Show = PortTextShow, .Format = format, .Texts = texts};
}

constexpr DecoderField Type8Fields[] = {
    StringField(3, "Internal Reference Designator : %s\n"),
    PortTextField(4, "Internal Type : 0x%02X - ", ConnectorTypeTexts),
    StringField(5, "External Reference Designator : %s\n"),
    PortTextField(6, "External Type : 0x%02X - ", ConnectorTypeTexts),
    PortTextField(7, "Port Type : 0x%02X - ", PortTypeTexts),
};

constexpr const char* const SlotTypeLowTexts[] = {
    "",
    "Other",
    "Unknown",
    "ISA",
    "MCA",
    "EISA",
    "PCI",
    "PCMCIA",
    "VL-VESA",
    "Proprietary",
    "Processor Card Slot",
    "Proprietary Memory Card Slot",
    "I/O Riser Card Slot",
    "NuBus",
    "PCI-66MHz Capable",
    "AGP",
    "AGP 2X",
    "AGP 4X",
    "PCI-X",
    "AGP 8X",
};
constexpr const char* const SlotTypeHighTexts[] = {
    "PC-98/C20",
    "PC-98/C24",
    "PC-98/E",
    "PC-98/Local Bus",
    "PC-98/Card",
    "PCI Express",
    "PCI Express x1",
    "PCI Express x2",
    "PCI Express x4",
    "PCI Express x8",
    "PCI Express x16",
    "PCI Express Gen 2",
    "PCI Express Gen 2 x1",
    "PCI Express Gen 2 x2",
    "PCI Express Gen 2 x4",
    "PCI Express Gen 2 x8",
    "PCI Express Gen 2 x16",
    "PCI Express Gen 3",
    "PCI Express Gen 3 x1",
    "PCI Express Gen 3 x2",
    "PCI Express Gen 3 x4",
    "PCI Express Gen 3 x8",
    "PCI Express Gen 3 x16",
};
constexpr TextTable SlotTypeTexts(SlotTypeLowTexts, SlotTypeHighTexts);

constexpr const char* const SlotBusWidthTexts[] = {"",         "Other",    "Unknown",    "8 bit",      "16 bit",
                                                   "32 bit",   "64 bit",   "128 bit",    "1x or x1",   "2x or x2",
                                                   "4x or x4", "8x or x8", "12x or x12", "16x or x16", "32x or x32"};

constexpr const char* const SlotUsageTexts[] = {"", "Other", "Unknown", "Available", "In use"};

constexpr const char* const SlotLengthTexts[] = {"", "Other", "Unknown", "Short Length", "Long Length"};

constexpr const char* const SlotCharacteristic1Names[] = {
    "Characteristics Unknown",
    "Provides 5.0 Vlots",
    "Provides 3.3 Vlots",
    "Slot opening is shared another",
    "Supports PC Card-16",
    "Supports CardBus",
    "Supports Zoom Video",
    "Supports Modem Ring Resume",
    nullptr,
};

constexpr const char* const SlotCharacteristic2Names[] = {
    "PCI Power Management Enable", "Slot Support hot-plug devices", "PCI slot supports SMBus signal", nullptr};

constexpr const char* const DeviceFunctionNames[] = {
    "Function number bit 0", "Function number bit 1", "Function number bit 2",
    "Device number bit 0",   "Device number bit 1",   "Device number bit 2",
    "Device number bit 3",   "Device number bit 4",   nullptr,
};

constexpr DecoderField Type9Fields[] = {
    StringField(3, "Slot Designation : %s\n"),
    TextLineField(4, "Slot Type : 0x%02X - ", SlotTypeTexts),
    TextField(5, "Slot Data Bus Width : 0x%02X - %s\n", SlotBusWidthTexts),
    TextField(6, "Current Usage : 0x%02X - %s\n", SlotUsageTexts),
    TextField(7, "Slot Length : 0x%02X - %s\n", SlotLengthTexts),
    NumberField(8, "Slot ID : 0x%04X (%d)\n"),
    BitsField(9, "Slot Characteristics1 : 0x%02X\n", SlotCharacteristic1Names),
    BitsField(10, "Slot Characteristics2 : 0x%02X\n", SlotCharacteristic2Names),
    NumberField(11, "Segment Group Number : 0x%04X\n"),
    NumberField(12, "Bus Number : 0x%02X\n"),
    BitsField(13, "Device/Function Number : 0x%02X\n", DeviceFunctionNames),
};

constexpr const char* const OnboardDeviceTypeTexts[] = {
    "",          "Other", "Unknown",        "Video",          "SCSI",         "Ethernet",
    "TokenRing", "Sound", "PATAController", "SATAController", "SASController"};

constexpr const char* const OnboardDeviceStatusTexts[] = {"Device Disabled", "Device Enabled"};

constexpr BitGroup OnboardDeviceGroups[] = {
    {" Status : %s\n", 7, 0x01, OnboardDeviceStatusTexts},
    {" Type : %s\n", 0, 0x7F, OnboardDeviceTypeTexts},
};

constexpr DecoderField Type10Fields[] = {
    GroupsField(3, "Device Type : 0x%02X\n", OnboardDeviceGroups),
    StringField(4, "Description String : %s\n"),
};

// OEM strings and configuration options have the same layout.
constexpr DecoderField StringCountFields[] = {
    NumberField(3, "Count : 0x%02X (%02d)\n"),
};

constexpr const char* const LanguageFormatTexts[] = {"Long format", "Abbreviated format"};

constexpr DecoderField Type13Fields[] = {
    NumberField(3, "Installable Languages : 0x%02X (%02d)\n"),
    TextField(4, "Flags : 0x%02X - %s\n", LanguageFormatTexts, 0x01),
    CountedField(5),
    StringField(6, "Current Languages : %s\n"),
};

constexpr DecoderField Type14Fields[] = {
    StringField(3, "Group Name : %s\n"),
    NumberField(4, "Item Type : 0x%02X (%02d)\n"),
    NumberField(5, "Item Handle : 0x%04X (%02d)\n"),
};

} // namespace

RyxStatus StructDecodeType8() {
    return InstanceLoopDecode(8, Type8Fields);
}

RyxStatus StructDecodeType9() {
    return InstanceLoopDecode(9, Type9Fields);
}

RyxStatus StructDecodeType10() {
    return InstanceLoopDecode(10, Type10Fields);
}

RyxStatus StructDecodeType11() {
    return SingleInstanceDecode(11, StringCountFields);
}

RyxStatus StructDecodeType12() {
    return SingleInstanceDecode(12, StringCountFields);
}

RyxStatus StructDecodeType13() {
    return InstanceLoopDecode(13, Type13Fields);
}

RyxStatus StructDecodeType14() {
    return InstanceLoopDecode(14, Type14Fields);
}
