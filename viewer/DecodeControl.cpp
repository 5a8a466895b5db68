// Decoders of the event log and of what resets, guards and boots a system (types 15, 23, 24 and 30 to 32).
#include "viewer/Decoders.h"

#include <algorithm>

namespace {

// Type 15, System Event Log.

constexpr const char* EventLogAccessLow[] = {
    "8-bit index port & 8-bit data pr",   "Two 8-bit index pr & 8-bit data pr", "16-bit index pr & 8-bit data pr",
    "Memory-mapped physical 32-bit addr", "General-Purpose NonVolatile Data",
};

constexpr TextRange EventLogAccessNewer[] = {{0x80, 0xFF, "BIOS Vendor or OEM-specific"}};

constexpr TextTable EventLogAccessTexts = TextTable(EventLogAccessLow).With(EventLogAccessNewer);

constexpr const char* EventLogStatusNames[] = {"Log area Valid", "Log area full", nullptr};

constexpr const char* EventLogHeaderFormatLow[] = {"No header", "Type 1 log header"};

constexpr TextRange EventLogHeaderFormatRanges[] = {
    {0x02, 0x7F, "Available for future assignment by this spec"},
    {0x80, 0xFF, "BIOS Vendor or OEM-specific format"},
};

constexpr TextTable EventLogHeaderFormatTexts{EventLogHeaderFormatLow, EventLogHeaderFormatRanges};

constexpr const char* EventLogTypeLow[] = {
    "None",
    "Single-bit ECC memory error",
    "Multi-bit ECC memory error",
    "Parity memory error",
    "Bus time-out",
    "I/O Channel Check",
    "Software NMI",
    "POST Memory Resize",
    "POST Error",
    "PCI Parity Error",
    "PCI System Error",
    "CPU Failure",
    "EISA FailSafe Timer time-out",
    "Correctable memory log disabled",
    "Logging disabled for a specific Event Type",
    "Reserved",
    "System Limit Exceeded",
    "Asynchronous hardware timer expired and issued a system reset",
    "System configuration information",
    "Hard-disk information",
    "System reconfigured",
    "Uncorrectable CPU-complex error",
    "Log Area Reset/Cleared",
    "System boot",
};

constexpr TextRange EventLogTypeRanges[] = {
    {0x18, 0x7F, "Unused"},
    {0x80, 0xFE, "Available for system"},
    {0xFF, 0xFF, "End of log"},
};

constexpr TextTable EventLogTypeTexts{EventLogTypeLow, EventLogTypeRanges};

constexpr const char* EventLogDataFormatLow[] = {
    "None",
    "Handle",
    "Multiple-Event",
    "Multiple-Event Handle",
    "POST Results Bitmap",
    "System Management Type",
    "Multiple-Event System Management Type",
};

constexpr TextRange EventLogDataFormatRanges[] = {{0x07, 0x7F, "Unused"}, {0x80, 0xFF, "OEM assigned"}};

constexpr TextTable EventLogDataFormatTexts{EventLogDataFormatLow, EventLogDataFormatRanges};

constexpr std::uint8_t EventLogDescriptorCountRow = 11;

// The descriptor list. Descriptors are two bytes each whatever length the structure states for them; the list's bytes
// limit how many the count can ask for. A count of 0 leaves nothing to print, not even the heading.
FieldOutcome EventLogDescriptorsShow(const DecoderField& field, const StructPlace& place) {
    FieldValue list;
    FieldValue count;
    if (!FieldRead(place, field.Row, &list) || !FieldRead(place, EventLogDescriptorCountRow, &count)) {
        return FieldOutcome::Unreadable;
    }
    if (count.Number == 0) {
        return FieldOutcome::Printed;
    }
    ReportItems("Event Log Type Descriptors :\n");
    const std::size_t shown = std::min<std::size_t>(count.Number, list.Bytes.size() / 2);
    for (std::size_t i = 0; i < shown; ++i) {
        const FieldValue logType = ValueOf(list.Bytes.subspan(2 * i, 1));
        const FieldValue dataFormat = ValueOf(list.Bytes.subspan(2 * i + 1, 1));
        ReportItem();
        ReportLine(logType, "%02d.  Log Type : 0x%02x - ", static_cast<int>(i + 1), list.Bytes[2 * i]);
        TextReport("%s\n", TextFind(EventLogTypeTexts, logType.Number));
        ReportLine(dataFormat, "     Variable Data Format Type : 0x%02x - ", list.Bytes[2 * i + 1]);
        TextReport("%s\n", TextFind(EventLogDataFormatTexts, dataFormat.Number));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type15Fields[] = {
    NumberField(3, "Log Area Length : 0x%04X (%02d Byte)\n"),
    NumberField(4, "Log Header Start Offset : 0x%04X (%02d)\n"),
    NumberField(5, "Log Data Start Offset : 0x%04X (%02d)\n"),
    TextField(6, "Access Method : 0x%02X - %s\n", EventLogAccessTexts),
    BitsField(7, "Log Status : 0x%02X\n", EventLogStatusNames),
    NumberField(8, "Log Change Token : 0x%08X (%d)\n"),
    NumberField(9, "Access Method Address : 0x%08X (%d)\n"),
    TextLineField(10, "Log Header Format : 0x%02X - ", EventLogHeaderFormatTexts),
    NumberField(EventLogDescriptorCountRow, "Number of Supported Log Type Descriptors : 0x%02X (%02d)\n"),
    NumberField(12, "Length of each Log Type Descriptor : 0x%02X (%02d)\n"),
    OwnField(13, EventLogDescriptorsShow),
};

// Type 23, System Reset.

constexpr const char* ResetWatchdogTexts[] = {"False", "True"};

constexpr const char* ResetBootOptionTexts[] = {"", "Operating system", "System utilities", "Do not reboot"};

constexpr const char* ResetStatusTexts[] = {"Disabled", "Enabled"};

constexpr BitGroup ResetCapabilityGroups[] = {
    {" Watchdog Timer : %s\n", 5, 0x1, ResetWatchdogTexts},
    {" Boot Option on Limit : %s\n", 3, 0x3, ResetBootOptionTexts},
    {" Boot Option : %s\n", 1, 0x3, ResetBootOptionTexts},
    {" Status : %s\n", 0, 0x1, ResetStatusTexts},
};

constexpr std::uint64_t UnknownResetValue = 0xFFFF;

constexpr DecoderField Type23Fields[] = {
    GroupsField(3, "Capabilities : 0x%02X\n", ResetCapabilityGroups),
    MarkField(4, "Reset Count : 0x%04X ", UnknownResetValue),
    MarkField(5, "Reset Limit : 0x%04X ", UnknownResetValue),
    MarkField(6, "Timer Interval : 0x%04X ", UnknownResetValue),
    MarkField(7, "Timeout : 0x%04X ", UnknownResetValue),
};

// Type 24, Hardware Security.

constexpr const char* HardwareSecurityStatusTexts[] = {"Disabled", "Enabled", "Not Implemented", "Unknown"};

constexpr BitGroup HardwareSecurityGroups[] = {
    {" Power-on Password Status : %s\n", 6, 0x3, HardwareSecurityStatusTexts},
    {" Keyboard Password Status : %s\n", 4, 0x3, HardwareSecurityStatusTexts},
    {" Administrator Password Status : %s\n", 2, 0x3, HardwareSecurityStatusTexts},
    {" Front Panel Reset Status : %s\n", 0, 0x3, HardwareSecurityStatusTexts},
};

constexpr DecoderField Type24Fields[] = {
    GroupsField(3, "Hardware Security Settings : 0x%02X\n", HardwareSecurityGroups),
};

// Type 30, Out-of-Band Remote Access.

constexpr const char* RemoteAccessConnectionNames[] = {
    "Outbound Connection Enabled",
    "Inbound Connection Enabled",
    nullptr,
};

constexpr DecoderField Type30Fields[] = {
    StringField(3, "Manufacturer Name : %s\n"),
    BitsField(4, "Connections : 0x%02X\n", RemoteAccessConnectionNames),
};

// Type 31, Boot Integrity Services Entry Point.

// The row is a dword; the line shows the word at its start.
void BisEntry16Print(const DecoderField& field, const FieldValue& value) {
    ReportLine(value, field.Format, static_cast<unsigned>(value.Number & 0xFFFF));
}

constexpr DecoderField Type31Fields[] = {
    NumberField(3, "Checksum : 0x%02X (%02d)\n"), NumberField(4, "Reserved1 : 0x%02X\n"),
    NumberField(5, "Reserved2 : 0x%04X\n"),       OwnField(6, BisEntry16Print, "BisEntry16 : 0x%04X\n", "d"),
    NumberField(7, "BisEntry32 : 0x%08X\n"),      NumberField(8, "Reserved3 : 0x%llX\n"),
    NumberField(9, "Reserved4 : 0x%08X\n"),
};

// Type 32, System Boot Information.

constexpr const char* BootStatusLow[] = {
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

constexpr TextTable BootStatusTexts{BootStatusLow, BootStatusRanges};

// The status code, and whatever bytes the firmware put behind it, each read as a status of its own.
void BootStatusPrint(const DecoderField& field, const FieldValue& value) {
    ReportItems(field.Format);
    for (const std::uint8_t status : value.Bytes) {
        ReportItemCode("0x%02x - ", status, TextFind(BootStatusTexts, status));
    }
}

constexpr DecoderField Type32Fields[] = {
    BytesField(3, "Reserved : "),
    OwnField(4, BootStatusPrint, "Boot Status : ", ""),
};

} // namespace

constinit const StructDecoder StructDecodeType15(15, "System Event Log", DecoderForm::Loop, Type15Fields);
constinit const StructDecoder StructDecodeType23(23, "System Reset", DecoderForm::Loop, Type23Fields);
constinit const StructDecoder StructDecodeType24(24, "Hardware Security", DecoderForm::Single, Type24Fields);
constinit const StructDecoder StructDecodeType30(30, "OOB Remote Access", DecoderForm::Loop, Type30Fields);
constinit const StructDecoder StructDecodeType31(31, "BIS Entry Point", DecoderForm::Loop, Type31Fields);
constinit const StructDecoder StructDecodeType32(32, "System Boot Info", DecoderForm::Single, Type32Fields);
