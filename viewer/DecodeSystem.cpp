// Decoders of BIOS, system, base board and chassis structures (types 0 to 3).
#include "Lib/LittleEndian.h"
#include "viewer/Decoders.h"
#include "viewer/ViewerState.h"

#include <algorithm>

namespace {

// Type 0, BIOS Information.

constexpr const char* BiosCharacteristicNames[] = {"Reserved",
                                                   "Reserved",
                                                   "Unknown",
                                                   "BIOS Characteristics Not Supported",
                                                   "ISA is supported",
                                                   "MCA is supported",
                                                   "EISA is supported",
                                                   "PCI is supported",
                                                   "PC Card (PCMCIA) is supported",
                                                   "Plug and Play is supported",
                                                   "APM is supported",
                                                   "BIOS is Upgradeable (Flash)",
                                                   "BIOS shadowing is allowed",
                                                   "VL-VESA is supported",
                                                   "ESCD supported is available",
                                                   "Boot from CD is supported",
                                                   "Selectable Boot is supported",
                                                   "BIOS ROM is socketed",
                                                   "Boot From PCMCIA is supported",
                                                   "EDD specification is supported",
                                                   "for NEC 9800 1.2MB 3.5\"",
                                                   "for Toshiba 1.2mb 3.5\"",
                                                   "5.25\"/360 KB Floppy supported",
                                                   "5.25\"/1.2 MB Floppy supported",
                                                   "3.5\"/720 KB Floppy supported",
                                                   "3.5\"/2.88 MB Floppy supported",
                                                   "Print Screen is supported",
                                                   "8042 Keyboard are supported",
                                                   "Serial Services are supported",
                                                   "Printer Services are supported",
                                                   "CGA video Services are supported",
                                                   "NEC PC-98",
                                                   nullptr};

constexpr const char* BiosCharacteristicExt1Names[] = {
    "ACPI supported",         "USB Legacy is supported",  "AGP is supported",
    "I2O boot is supported",  "LS-120 boot is supported", "ATAPI ZIP Drive boot is supported",
    "1394 boot is supported", "Smart Battery supported",  nullptr};

constexpr const char* BiosCharacteristicExt2Names[] = {
    "BIOS Boot Specification Supported", "Function Key Initiated NSB Supported", "Enable Targeted Content Distribution",
    "UEFI Specification is supported",   "Describes a virtual machine",          nullptr};

constexpr const char* BiosCharacteristicExt2NewerNames[] = {"Manufacturing mode is supported",
                                                            "Manufacturing mode is enabled", nullptr};

constexpr auto BiosCharacteristicExt2WholeNames =
    NamesLonger(BiosCharacteristicExt2Names, BiosCharacteristicExt2NewerNames);

void RomSizePrint(const DecoderField& field, const FieldValue& value) {
    const auto units = static_cast<unsigned int>(value.Number);
    ReportLine(value, field.Format, units, (units + 1) * 64);
}

void ExtensionBytesPrint(const FieldValue& value, const char* const* secondNames) {
    const FieldValue first = ValueOf(value.Bytes.first(1));
    const FieldValue second = ValueOf(value.Bytes.subspan(1));
    ReportLine(first, "BIOS Characteristics Extension1 : 0x%02X\n", static_cast<unsigned int>(first.Number));
    ReportBits(first.Number, BiosCharacteristicExt1Names);
    ReportLine(second, "BIOS Characteristics Extension2 : 0x%02X\n", static_cast<unsigned int>(second.Number));
    ReportBits(second.Number, secondNames);
}

void ExtensionPrint(const DecoderField&, const FieldValue& value) {
    ExtensionBytesPrint(value, BiosCharacteristicExt2Names);
}

void ExtensionWholePrint(const DecoderField&, const FieldValue& value) {
    ExtensionBytesPrint(value, BiosCharacteristicExt2WholeNames.data());
}

// The upper two bits choose the unit, of which two are reserved.
void ExtendedRomSizePrint(const DecoderField&, const FieldValue& value) {
    constexpr const char* formats[] = {"Extended BIOS ROM Size : 0x%04X (%d MB)\n",
                                       "Extended BIOS ROM Size : 0x%04X (%d GB)\n"};
    const auto number = static_cast<unsigned>(value.Number);
    if (const unsigned unit = number >> 14; unit < std::size(formats)) {
        ReportLine(value, formats[unit], number, number & 0x3FFF);
    } else {
        ReportLine(value, "Extended BIOS ROM Size : 0x%04X - %s\n", number, UnrecognizedText);
        ReportMeaning(UnrecognizedText);
    }
}

constexpr DecoderField Type0Fields[] = {
    StringField(3, "Vendor : %s\n"),
    StringField(4, "BIOS Version : %s\n"),
    NumberField(5, "BIOS Starting Address Segment : 0x%04X\n"),
    StringField(6, "BIOS Release Date : %s\n"),
    OwnField(7, RomSizePrint, "BIOS ROM Size : 0x%02X (%d KB)\n", "nd"),
    BitsField(8, "BIOS Characteristics : 0x%llX\n", BiosCharacteristicNames),
    OwnField(9, ExtensionPrint, "", ""),
    NumberField(10, "System BIOS Major Release : %02X\n"),
    NumberField(11, "System BIOS Minor Release : %02X\n"),
    NumberField(12, "EC Major Release : %02X\n"),
    NumberField(13, "EC Minor Release : %02X\n"),
};

constexpr NumberCase RomSizeCases[] = {
    {0xFF, "BIOS ROM Size : 0x%02X - See Extended BIOS ROM Size\n", nullptr, 14, 0x1A}};

constexpr NumberCase ExtendedRomSizeCases[] = {{0, "Extended BIOS ROM Size : 0x%04X - %s\n", "Unknown"}};

constexpr DecoderField Type0Whole[] = {
    OwnField(7, RomSizePrint, "BIOS ROM Size : 0x%02X (%d KB)\n", "nd").With(RomSizeCases),
    OwnField(9, ExtensionWholePrint, "", ""),
    OwnField(14, ExtendedRomSizePrint, "", "").With(ExtendedRomSizeCases),
};

// Type 1, System Information. The UUID is shown as it is stored, whatever byte order its fields have.

constexpr const char* WakeUpTypeTexts[] = {"",           "Other",        "Unknown",  "APM Timer",        "Modem Ring",
                                           "LAN Remote", "Power Switch", "PCI PME#", "AC Power Restored"};

constexpr DecoderField Type1Fields[] = {
    StringField(3, "Manufacturer : %s\n"),
    StringField(4, "Product Name : %s\n"),
    StringField(5, "Version : %s\n"),
    StringField(6, "Serial Number : %s\n"),
    UuidField(7, "UUID : "),
    TextField(8, "Wake-up Type : 0x%02X - %s\n", WakeUpTypeTexts),
    StringField(9, "SKU Number : %s\n"),
    StringField(10, "Family : %s\n"),
};

// Type 2, Base Board Information.

constexpr const char* BoardFeatureNames[] = {"Hosting Board", "Requires other board", "Removable",
                                             "Replaceable",   "Hot swappable",        nullptr};

constexpr const char* BoardTypeTexts[] = {"",
                                          "Unknown",
                                          "Other",
                                          "Server Blade",
                                          "Connectivity Switch",
                                          "System Management Module",
                                          "Processor Module",
                                          "I/O Module",
                                          "Memory Module",
                                          "Daughter Board",
                                          "Motherboard",
                                          "Processor/Memory Module",
                                          "Processor/IO Module",
                                          "Interconnect Board"};

constexpr std::uint8_t ContainedCountRow = 12;

FieldOutcome ContainedHandlesShow(const DecoderField& field, const StructPlace& place) {
    FieldValue list;
    FieldValue count;
    if (!FieldRead(place, field.Row, &list) || !FieldRead(place, ContainedCountRow, &count)) {
        return FieldOutcome::Unreadable;
    }
    ReportItems("Contained Object Handles : ");
    for (std::size_t i = 0; i < std::min<std::size_t>(count.Number, list.Bytes.size() / 2); ++i) {
        ReportItemNumber("0x%02x (%d)\n", LittleEndianRead<std::uint16_t>(&list.Bytes[2 * i]));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type2Fields[] = {
    StringField(3, "Manufacturer : %s\n"),
    StringField(4, "Product Name : %s\n"),
    StringField(5, "Version : %s\n"),
    StringField(6, "Serial Number : %s\n"),
    StringField(7, "Asset Tag : %s\n"),
    BitsField(8, "Feature Flags : 0x%02X\n", BoardFeatureNames),
    StringField(9, "Location in Chassis : %s\n"),
    NumberField(10, "Chassis Handle : 0x%04X\n"),
    TextField(11, "Board Type : 0x%02X - %s\n", BoardTypeTexts),
    NumberField(ContainedCountRow, "Number of Contained Object Handles : 0x%02X (%d)\n"),
    OwnField(13, ContainedHandlesShow),
};

// Type 3, System Enclosure or Chassis.

constexpr const char* ChassisTypeLow[] = {"None",
                                          "Other",
                                          "Unknown",
                                          "Desktop",
                                          "Low Profile Desktop",
                                          "Pizza Box",
                                          "Mini Tower",
                                          "Tower",
                                          "Portable",
                                          "LapTop",
                                          "Notebook",
                                          "Hand Held",
                                          "Docking Station",
                                          "All in One",
                                          "Sub Noteboot",
                                          "Space-saving",
                                          "Lunch Box",
                                          "Main Server Chassis",
                                          "Expansion Chassis",
                                          "Sub Chassis",
                                          "Bus Expansion Chassis",
                                          "Peripheral Chassis",
                                          "RAID Chassis",
                                          "Rack Mount Chassis",
                                          "Sealed-case PC",
                                          "Multi-system Chassis",
                                          "CompactPCI",
                                          "AdvancedTCA",
                                          "Blade",
                                          "Blade Enclosure"};

constexpr TextRange ChassisTypeNewer[] = {
    {0x1E, "Tablet"},      {0x1F, "Convertible"}, {0x20, "Detachable"}, {0x21, "IoT Gateway"},
    {0x22, "Embedded PC"}, {0x23, "Mini PC"},     {0x24, "Stick PC"},
};

constexpr TextTable ChassisTypeTexts = TextTable(ChassisTypeLow).With(ChassisTypeNewer);

constexpr const char* ChassisStateTexts[] = {"None",    "Other",    "Unknown",        "Safe",
                                             "Warning", "Critical", "Non-recoverable"};

constexpr const char* ChassisSecurityTexts[] = {
    "None", "Other", "Unknown", "None", "External interface locked out", "External interface enabled"};

constexpr std::uint32_t ChassisTypeMask = 0x7F; // bit 7 tells of a lock

constexpr std::uint8_t ElementLengthRow = 16;

// The list is as long as the number and the length of its records say; only programs are told where one ends.
FieldOutcome ContainedElementsShow(const DecoderField& field, const StructPlace& place) {
    FieldValue list;
    FieldValue length;
    if (!FieldRead(place, field.Row, &list)) {
        return FieldOutcome::Unreadable;
    }
    ReportItems("Contained Elements : ");
    if (list.Bytes.empty()) {
        ReportMore("0x00 (0)\n");
        return FieldOutcome::Printed;
    }
    const std::size_t size = ViewerJson && FieldRead(place, ElementLengthRow, &length) ? length.Number : 0;
    for (std::span<const std::uint8_t> rest = list.Bytes; !rest.empty();) {
        const std::size_t record = size == 0 ? rest.size() : std::min(size, rest.size());
        ReportItemBytes("0x%02x\n", rest.first(record));
        rest = rest.subspan(record);
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type3Fields[] = {
    StringField(3, "Manufacturer : %s\n"),
    TextField(4, "Type : 0x%02X - %s\n", ChassisTypeTexts, ChassisTypeMask),
    StringField(5, "Version : %s\n"),
    StringField(6, "Serial Number : %s\n"),
    StringField(7, "Asset Tag : %s\n"),
    TextField(8, "Boot-up State : 0x%02X - %s\n", ChassisStateTexts),
    TextField(9, "Power Supply State : 0x%02X - %s\n", ChassisStateTexts),
    TextField(10, "Thermal State : 0x%02X - %s\n", ChassisStateTexts),
    TextField(11, "Security State : 0x%02X - %s\n", ChassisSecurityTexts),
    NumberField(12, "OEM-defined : 0x%08X\n"),
    NumberField(13, "Height : 0x%02X (%d)\n"),
    NumberField(14, "Number of Power Cords : 0x%02X (%d)\n"),
    NumberField(15, "Contained Element Count : 0x%02X (%d)\n"),
    NumberField(ElementLengthRow, "Contained Element Record Length : 0x%02X (%d)\n"),
    OwnField(17, ContainedElementsShow),
    StringField(18, "SKU Number : %s\n"),
};

constexpr const char* RackTypeTexts[] = {"Unspecified", "OU"};

constexpr NumberCase ChassisHeightCases[] = {{0xFF, "Height : 0x%02X - See Rack Height\n", nullptr, 20}};

constexpr DecoderField Type3Whole[] = {
    NumberField(13, "Height : 0x%02X (%d)\n").With(ChassisHeightCases),
    TextField(19, "Rack Type : 0x%02X - %s\n", RackTypeTexts),
    NumberField(20, "Rack Height : 0x%02X (%d)\n"),
};

} // namespace

constinit const StructDecoder StructDecodeType0(0, "BIOS", DecoderForm::Single, Type0Fields, Type0Whole);
constinit const StructDecoder StructDecodeType1(1, "System", DecoderForm::Single, Type1Fields);
constinit const StructDecoder StructDecodeType2(2, "Base Board", DecoderForm::Single, Type2Fields);
constinit const StructDecoder StructDecodeType3(3, "Enclosure/Chassis", DecoderForm::Single, Type3Fields, Type3Whole);
