// Decoders of trusted platform modules, further processor information, firmware inventories and string properties
// (types 43 to 46).
#include "Lib/LittleEndian.h"
#include "viewer/Decoders.h"

#include <algorithm>

namespace {

// Type 43, TPM Device.

// Four characters, as bytes and as the text that they are.
void TpmVendorPrint(const DecoderField& field, const FieldValue& value) {
    ReportLine(value, field.Format, 0);
    for (const std::uint8_t byte : value.Bytes) {
        ReportMore("0x%02X ", byte);
    }
    const std::string_view characters = TextOf(value.Bytes);
    char text[8] = "";
    TextShown(characters).copy(text, sizeof text - 1);
    ReportMore("- %s\n", text);
    ReportMeaning(characters);
}

constexpr std::uint8_t TpmMajorRow = 4;

// What it means depends on the module's version.
FieldOutcome TpmFirmwareShow(const DecoderField& field, const StructPlace& place) {
    FieldValue version;
    FieldValue major;
    if (!FieldRead(place, field.Row, &version) || !FieldRead(place, TpmMajorRow, &major)) {
        return FieldOutcome::Unreadable;
    }
    const auto number = static_cast<unsigned>(version.Number);
    if (major.Number == 1) {
        ReportLine(version, "Firmware Version 1 : 0x%08X (%d.%d)\n", number, number >> 16 & 0xFF, number >> 24);
    } else if (major.Number == 2) {
        ReportLine(version, "Firmware Version 1 : 0x%08X (%d.%d)\n", number, number >> 16, number & 0xFFFF);
    } else {
        ReportLine(version, "Firmware Version 1 : 0x%08X\n", number);
    }
    return FieldOutcome::Printed;
}

constexpr const char* TpmCharacteristicNames[] = {
    "Reserved",
    "Reserved",
    "TPM Device Characteristics are not supported",
    "Family configurable via firmware update",
    "Family configurable via platform software support",
    "Family configurable via OEM proprietary mechanism",
    nullptr,
};

constexpr DecoderField Type43Fields[] = {
    OwnField(3, TpmVendorPrint, "Vendor ID : ", ""),
    NumberField(TpmMajorRow, "Major Spec Version : 0x%02X (%d)\n"),
    NumberField(5, "Minor Spec Version : 0x%02X (%d)\n"),
    OwnField(6, TpmFirmwareShow),
    NumberField(7, "Firmware Version 2 : 0x%08X\n"),
    StringField(8, "Description : %s\n"),
    BitsField(9, "Characteristics : 0x%llX\n", TpmCharacteristicNames),
    NumberField(10, "OEM-defined : 0x%08X\n"),
};

// Type 44, Processor Additional Information. What the data mean is each architecture's own matter.

constexpr const char* ProcessorArchitectureTexts[] = {
    "Reserved",
    "IA32 (x86)",
    "x64 (x86-64, Intel64, AMD64, EM64T)",
    "Intel(R) Itanium(R) architecture",
    "32-bit ARM (Aarch32)",
    "64-bit ARM (Aarch64)",
    "32-bit RISC-V (RV32)",
    "64-bit RISC-V (RV64)",
    "128-bit RISC-V (RV128)",
    "32-bit LoongArch (LoongArch32)",
    "64-bit LoongArch (LoongArch64)",
};

constexpr DecoderField Type44Fields[] = {
    NumberField(3, "Referenced Handle : 0x%04X (%d)\n"),
    NumberField(4, "Processor-specific Block Length : 0x%02X (%d)\n"),
    TextField(5, "Processor Type : 0x%02X - %s\n", ProcessorArchitectureTexts),
    RowsField(6, "Processor-specific Data :\n"),
};

// Type 45, Firmware Inventory Information.

constexpr const char* AssignableText = "Available for future assignment by this spec";
constexpr const char* MakersText = "BIOS Vendor/OEM-specific";

constexpr const char* VersionFormatLow[] = {
    "Free-form string",
    "MAJOR.MINOR",
    "32-bit hexadecimal string",
    "64-bit hexadecimal string",
};
constexpr TextRange VersionFormatRanges[] = {{0x04, 0x7F, AssignableText}, {0x80, 0xFF, MakersText}};
constexpr TextTable VersionFormatTexts{VersionFormatLow, VersionFormatRanges};

constexpr const char* IdFormatLow[] = {"Free-form string", "UEFI GUID string"};
constexpr TextRange IdFormatRanges[] = {{0x02, 0x7F, AssignableText}, {0x80, 0xFF, MakersText}};
constexpr TextTable IdFormatTexts{IdFormatLow, IdFormatRanges};

constexpr NumberCase ImageSizeCases[] = {{0xFFFFFFFFFFFFFFFF, "Image Size : 0x%llX - %s\n", "Unknown"}};

constexpr const char* FirmwareCharacteristicNames[] = {"Updatable", "Write-Protect", nullptr};

constexpr const char* FirmwareStateTexts[] = {
    "", "Other", "Unknown", "Disabled", "Enabled", "Absent", "Standby Offline", "Standby Spare", "Unavailable Offline",
};

void ComponentHandlesPrint(const DecoderField& field, const FieldValue& value) {
    if (value.Bytes.empty()) {
        return;
    }
    ReportItems(field.Format);
    for (std::size_t at = 0; at + 2 <= value.Bytes.size(); at += 2) {
        ReportItemNumber("0x%04X ", LittleEndianRead<std::uint16_t>(&value.Bytes[at]));
    }
    ReportMore("\n");
}

constexpr DecoderField Type45Fields[] = {
    StringField(3, "Firmware Component Name : %s\n"),
    StringField(4, "Firmware Version : %s\n"),
    TextField(5, "Firmware Version Format : 0x%02X - %s\n", VersionFormatTexts),
    StringField(6, "Firmware ID : %s\n"),
    TextField(7, "Firmware ID Format : 0x%02X - %s\n", IdFormatTexts),
    StringField(8, "Release Date : %s\n"),
    StringField(9, "Manufacturer : %s\n"),
    StringField(10, "Lowest Supported Firmware Version : %s\n"),
    SizeField(11, "Image Size : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes).With(ImageSizeCases),
    BitsField(12, "Characteristics : 0x%04X\n", FirmwareCharacteristicNames),
    TextField(13, "State : 0x%02X - %s\n", FirmwareStateTexts),
    NumberField(14, "Number of Associated Components : 0x%02X (%d)\n"),
    OwnField(15, ComponentHandlesPrint, "Associated Component Handles : ", ""),
};

// Type 46, String Property.

constexpr const char* StringPropertyLow[] = {"Reserved", "UEFI device path"};
constexpr TextRange StringPropertyRanges[] = {
    {0x0002, 0x7FFF, "Reserved for future DMTF use"},
    {0x8000, 0xBFFF, "BIOS vendor use"},
    {0xC000, 0xFFFF, "OEM use"},
};
constexpr TextTable StringPropertyTexts{StringPropertyLow, StringPropertyRanges};

constexpr DecoderField Type46Fields[] = {
    TextField(3, "String Property ID : 0x%04X - %s\n", StringPropertyTexts),
    StringField(4, "String Property Value : %s\n"),
    NumberField(5, "Parent Handle : 0x%04X (%d)\n"),
};

} // namespace

constinit const StructDecoder StructDecodeType43(43, "TPM Device", DecoderForm::Newer, {}, Type43Fields);
constinit const StructDecoder StructDecodeType44(44, "Processor Additional Info", DecoderForm::Newer, {}, Type44Fields);
constinit const StructDecoder StructDecodeType45(45, "Firmware Inventory", DecoderForm::Newer, {}, Type45Fields);
constinit const StructDecoder StructDecodeType46(46, "String Property", DecoderForm::Newer, {}, Type46Fields);
