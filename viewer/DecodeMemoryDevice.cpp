// Decoders of the event log (type 15), of physical memory arrays (type 16) and of memory devices (type 17).
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

// Type 15, System Event Log.

constexpr const char* EventLogAccessTexts[] = {
    "8-bit index port & 8-bit data pr",   "Two 8-bit index pr & 8-bit data pr", "16-bit index pr & 8-bit data pr",
    "Memory-mapped physical 32-bit addr", "General-Purpose NonVolatile Data",
};

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

constexpr TextRange EventLogDataFormatRanges[] = {
    {0x07, 0x7F, "Unused"},
    {0x80, 0xFF, "OEM assigned"},
};

constexpr TextTable EventLogDataFormatTexts{EventLogDataFormatLow, EventLogDataFormatRanges};

constexpr std::uint8_t EventLogDescriptorCountRow = 11;
constexpr std::size_t EventLogDescriptorSize = 2;

// The descriptor list. Descriptors are two bytes each whatever length the structure states for them; the list's bytes
// limit how many the count can ask for. A count of 0 leaves nothing to print, not even the heading.
FieldOutcome EventLogDescriptorsShow(const DecoderField& field, const StructPlace& place) {
    std::span<const std::uint8_t> list;
    std::uint64_t count = 0;
    if (!FieldBytes(place, field.Row, &list) || !FieldNumber(place, EventLogDescriptorCountRow, &count)) {
        return FieldOutcome::Unreadable;
    }
    if (count == 0) {
        return FieldOutcome::Printed;
    }
    RyxPrintf("Event Log Type Descriptors :\n");
    const std::size_t shown = std::min<std::size_t>(count, list.size() / EventLogDescriptorSize);
    for (std::size_t i = 0; i < shown; ++i) {
        const std::uint8_t logType = list[i * EventLogDescriptorSize];
        const std::uint8_t dataFormat = list[i * EventLogDescriptorSize + 1];
        RyxPrintf("%02d.  Log Type : 0x%02x - ", static_cast<int>(i + 1), logType);
        RyxPrintf("%s\n", TextFind(EventLogTypeTexts, logType));
        RyxPrintf("     Variable Data Format Type : 0x%02x - ", dataFormat);
        RyxPrintf("%s\n", TextFind(EventLogDataFormatTexts, dataFormat));
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

// Type 16, Physical Memory Array.

constexpr const char* ArrayLocationLow[] = {
    "",
    "Other",
    "Unknown",
    "System board or motherboard",
    "ISA add-on card",
    "EISA add-on card",
    "PCI add-on card",
    "MCA add-on card",
    "PCMCIA add-on card",
    "Proprietary add-on card",
    "NuBus",
};

constexpr const char* ArrayLocationHigh[] = {
    "PC-98/C20 add-on card",
    "PC-98/C24 add-on card",
    "PC-98/E add-on card",
    "PC-98/Local bus add-on card",
};

constexpr TextTable ArrayLocationTexts{ArrayLocationLow, ArrayLocationHigh};

constexpr const char* ArrayUseTexts[] = {
    "", "Other", "Unknown", "System memory", "Video memory", "Flash memory", "Non-volatile RAM", "Cache memory",
};

constexpr const char* ArrayErrorCorrectionTexts[] = {
    "", "Other", "Unknown", "None", "Parity", "Single-bit ECC", "Multi-bit ECC", "CRC",
};

// A capacity in KB, shown in KB, MB and GB. 80000000h, which refers to the extended capacity, is shown like any other.
FieldOutcome ArrayCapacityShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!FieldNumber(place, field.Row, &number)) {
        return FieldOutcome::Unreadable;
    }
    const auto kilobytes = static_cast<std::uint32_t>(number);
    RyxPrintf("Maximum Capacity : 0x%08X - %dKB, %dMB, %dGB\n", kilobytes, static_cast<std::int32_t>(kilobytes),
              static_cast<std::int32_t>(kilobytes >> 10), static_cast<std::int32_t>(kilobytes >> 20));
    return FieldOutcome::Printed;
}

constexpr DecoderField Type16Fields[] = {
    TextLineField(3, "Location : 0x%02X - ", ArrayLocationTexts),
    TextField(4, "Use : 0x%02X - %s \n", ArrayUseTexts),
    TextField(5, "Memory Error Correction : 0x%02X - %s \n", ArrayErrorCorrectionTexts),
    OwnField(6, ArrayCapacityShow),
    NumberField(7, "Memory Error Information Handle : 0x%04X (%02d)\n"),
    NumberField(8, "Number of Memory Devices : 0x%04X (%02d)\n"),
    NumberField(9, "Extended Maximum Capacity : 0x%llx (%lld)\n"),
};

// Type 17, Memory Device.

constexpr const char* MemoryFormFactorTexts[] = {
    "",     "Other", "Unknown",      "SIMM", "SIP",    "Chip",  "DIP",     "ZIP", "Proprietary Card",
    "DIMM", "TSOP",  "Row of chips", "RIMM", "SODIMM", "SRIMM", "FB-DIMM",
};

constexpr const char* MemoryDeviceTypeTexts[] = {
    "",      "Other",  "Unknown",      "DRAM",     "EDRAM",    "VRAM",     "SRAM",  "RAM",   "ROM",
    "FLASH", "EEPROM", "FEPROM",       "EPROM",    "CDRAM",    "3DRAM",    "SDRAM", "SGRAM", "RDRAM",
    "DDR",   "DDR2",   "DDR2 FB-DIMM", "Reserved", "Reserved", "Reserved", "DDR3",  "FBD2",
};

constexpr const char* MemoryTypeDetailNames[] = {
    "Reserved, set to 0",
    "Other",
    "Unknown",
    "Fast-paged",
    "Static column",
    "Pseudo-static",
    "RAMBUS",
    "Synchronous",
    "CMOS",
    "EDO",
    "Window DRAM",
    "Cache DRAM",
    "Non-volatile",
    "Registered (Buffered)",
    "Unbuffered (Unregistered)",
    "Reserved, set to 0",
    nullptr,
};

// A size in MB, shown in KB, MB and GB. The whole word counts: neither the KB flag nor the special values are read out
// of it.
FieldOutcome MemorySizeShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!FieldNumber(place, field.Row, &number)) {
        return FieldOutcome::Unreadable;
    }
    const auto megabytes = static_cast<std::int32_t>(number);
    RyxPrintf("Size : 0x%04X - %dKB, %dMB, %dGB\n", static_cast<std::uint32_t>(megabytes), megabytes * 1024, megabytes,
              megabytes >> 10);
    return FieldOutcome::Printed;
}

constexpr DecoderField Type17Fields[] = {
    NumberField(3, "Physical Memory Array Handle : 0x%04X (%02d)\n"),
    NumberField(4, "Memory Error Information Handle : 0x%04X\n"),
    NumberField(5, "Total Width : 0x%04X (%02d)bits\n"),
    NumberField(6, "Data Width : 0x%04X (%02d)bits\n"),
    OwnField(7, MemorySizeShow),
    TextField(8, "Form Factor : 0x%02X - %s \n", MemoryFormFactorTexts),
    NumberField(9, "Device Set : 0x%02X (%02d)\n"),
    StringField(10, "Device Locator : %s\n"),
    StringField(11, "Bank Locator : %s\n"),
    TextField(12, "Memory Type : 0x%02X - %s \n", MemoryDeviceTypeTexts),
    BitsField(13, "Type Detail : 0x%04X\n", MemoryTypeDetailNames),
    NumberField(14, "Speed : 0x%04X (%02d)MHz\n"),
    StringField(15, "Manufacturer : %s\n"),
    StringField(16, "Serial Number : %s\n"),
    StringField(17, "Asset Tag : %s\n"),
    StringField(18, "Part Number : %s\n"),
    NumberField(19, "Attributes : 0x%02X (%02d)\n"),
    NumberField(20, "Extended Size : 0x%08X (%d)\n"),
    NumberField(21, "Configured Memory Clock Speed : 0x%04X (%d)MHz\n"),
    NumberField(22, "Minimum Voltage : %d millivolts\n"),
    NumberField(23, "Maximum Voltage : %d millivolts\n"),
    NumberField(24, "Configured Voltage : %d millivolts\n"),
};

} // namespace

RyxStatus StructDecodeType15() {
    return InstanceLoopDecode(15, Type15Fields);
}

RyxStatus StructDecodeType16() {
    return InstanceLoopDecode(16, Type16Fields);
}

RyxStatus StructDecodeType17() {
    return InstanceLoopDecode(17, Type17Fields);
}
