// Decoders of memory arrays, memory devices, the addresses that they are mapped to, memory errors and memory channels
// (types 16 to 20, 33 and 37).
#include "Lib/API/RyxPrint.h"
#include "viewer/Decoders.h"

namespace {

// A value as it is stored, and the size that it states in KB, MB and GB.
void CapacityPrint(const DecoderField& field, const FieldValue& value, std::uint32_t kilobytes) {
    RyxPrintf(field.Format, static_cast<std::uint32_t>(value.Number), static_cast<std::int32_t>(kilobytes),
              static_cast<std::int32_t>(kilobytes >> 10), static_cast<std::int32_t>(kilobytes >> 20));
}

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

constexpr TextRange ArrayLocationNewer[] = {{0xA4, "CXL add-on card"}};

constexpr TextTable ArrayLocationTexts = TextTable(ArrayLocationLow, ArrayLocationHigh).With(ArrayLocationNewer);

constexpr const char* ArrayUseTexts[] = {
    "", "Other", "Unknown", "System memory", "Video memory", "Flash memory", "Non-volatile RAM", "Cache memory",
};

constexpr const char* ArrayErrorCorrectionTexts[] = {
    "", "Other", "Unknown", "None", "Parity", "Single-bit ECC", "Multi-bit ECC", "CRC",
};

// A capacity in KB. 80000000h, which refers to the extended capacity, is shown like any other.
void ArrayCapacityPrint(const DecoderField& field, const FieldValue& value) {
    CapacityPrint(field, value, static_cast<std::uint32_t>(value.Number));
}

constexpr DecoderField Type16Fields[] = {
    TextLineField(3, "Location : 0x%02X - ", ArrayLocationTexts),
    TextField(4, "Use : 0x%02X - %s \n", ArrayUseTexts),
    TextField(5, "Memory Error Correction : 0x%02X - %s \n", ArrayErrorCorrectionTexts),
    OwnField(6, ArrayCapacityPrint, "Maximum Capacity : 0x%08X - %dKB, %dMB, %dGB\n", "nddd"),
    NumberField(7, "Memory Error Information Handle : 0x%04X (%02d)\n"),
    NumberField(8, "Number of Memory Devices : 0x%04X (%02d)\n"),
    NumberField(9, "Extended Maximum Capacity : 0x%llx (%lld)\n"),
};

// Type 17, Memory Device.

constexpr const char* MemoryFormFactorLow[] = {
    "",     "Other", "Unknown",      "SIMM", "SIP",    "Chip",  "DIP",     "ZIP", "Proprietary Card",
    "DIMM", "TSOP",  "Row of chips", "RIMM", "SODIMM", "SRIMM", "FB-DIMM",
};

constexpr TextRange MemoryFormFactorNewer[] = {
    {0x10, "Die"},
    {0x11, "CAMM"},
    {0x12, "CUDIMM"},
    {0x13, "CSODIMM"},
};

constexpr TextTable MemoryFormFactorTexts = TextTable(MemoryFormFactorLow).With(MemoryFormFactorNewer);

constexpr const char* MemoryDeviceTypeLow[] = {
    "",      "Other",  "Unknown",      "DRAM",     "EDRAM",    "VRAM",     "SRAM",  "RAM",   "ROM",
    "FLASH", "EEPROM", "FEPROM",       "EPROM",    "CDRAM",    "3DRAM",    "SDRAM", "SGRAM", "RDRAM",
    "DDR",   "DDR2",   "DDR2 FB-DIMM", "Reserved", "Reserved", "Reserved", "DDR3",  "FBD2",
};

constexpr TextRange MemoryDeviceTypeNewer[] = {
    {0x1A, "DDR4"},   {0x1B, "LPDDR"},  {0x1C, "LPDDR2"},
    {0x1D, "LPDDR3"}, {0x1E, "LPDDR4"}, {0x1F, "Logical non-volatile device"},
    {0x20, "HBM"},    {0x21, "HBM2"},   {0x22, "DDR5"},
    {0x23, "LPDDR5"}, {0x24, "HBM3"},   {0x25, "MRDIMM"},
};

constexpr TextTable MemoryDeviceTypeTexts = TextTable(MemoryDeviceTypeLow).With(MemoryDeviceTypeNewer);

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

// A size in MB. The whole word counts: neither the KB flag nor the special values are read out of it.
void MemorySizePrint(const DecoderField& field, const FieldValue& value) {
    CapacityPrint(field, value, static_cast<std::uint32_t>(value.Number) << 10);
}

constexpr DecoderField Type17Fields[] = {
    NumberField(3, "Physical Memory Array Handle : 0x%04X (%02d)\n"),
    NumberField(4, "Memory Error Information Handle : 0x%04X\n"),
    NumberField(5, "Total Width : 0x%04X (%02d)bits\n"),
    NumberField(6, "Data Width : 0x%04X (%02d)bits\n"),
    OwnField(7, MemorySizePrint, "Size : 0x%04X - %dKB, %dMB, %dGB\n", "nddd"),
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

// Type 18, 32-Bit Memory Error Information.

constexpr const char* MemoryErrorTypeTexts[] = {
    "",
    "Other",
    "Unknown",
    "OK",
    "Bad read",
    "Parity error",
    "Single-bit error",
    "Double-bit error",
    "Multi-bit error",
    "Nibble error",
    "Checksum error",
    "CRC error",
    "Corrected single-bit error",
    "Corrected error",
    "Uncorrectable error",
};

constexpr const char* MemoryErrorGranularityTexts[] = {
    "", "Other", "Unknown", "Device level", "Memory partition level",
};

constexpr const char* MemoryErrorOperationTexts[] = {"", "Other", "Unknown", "Read", "Write", "Partial write"};

constexpr std::uint64_t UnknownSyndrome = 0;
constexpr std::uint64_t UnknownAddress = 0x80000000;
constexpr std::uint64_t UnknownResolution = 0x80000000;

constexpr DecoderField Type18Fields[] = {
    TextField(3, "Error Type : 0x%02X - %s\n", MemoryErrorTypeTexts),
    TextField(4, "Error Granularity : 0x%02X - %s \n", MemoryErrorGranularityTexts),
    TextField(5, "Error Operation : 0x%02X - %s \n", MemoryErrorOperationTexts),
    MarkField(6, "Vendor Syndrome : 0x%08X ", UnknownSyndrome),
    MarkField(7, "Memory Array Error Address : 0x%08X ", UnknownAddress),
    MarkField(8, "Device Error Address : 0x%08X ", UnknownAddress),
    MarkField(9, "Error Resolution : 0x%08X ", UnknownResolution),
};

// Types 19 and 20, Memory Array Mapped Address and Memory Device Mapped Address.

// An address in KB, followed on its line by that size unless it is 0.
void MappedAddressPrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    if (value.Number != 0) {
        const auto kilobytes = static_cast<std::uint32_t>(value.Number);
        RyxPrintf("- %dKB, %dMB, %dGB\n", static_cast<std::int32_t>(kilobytes),
                  static_cast<std::int32_t>(kilobytes >> 10), static_cast<std::int32_t>(kilobytes >> 20));
    } else {
        RyxPrintf("\n");
    }
}

constexpr DecoderField Type19Fields[] = {
    OwnField(3, MappedAddressPrint, "Starting Address : 0x%08X "),
    OwnField(4, MappedAddressPrint, "Ending Address : 0x%08X "),
    NumberField(5, "Memory Array Handle : 0x%04X (%d)\n"),
    NumberField(6, "Partition Width : 0x%02X (%d)\n"),
    NumberField(7, "Extended Starting Address : 0x%llX\n"),
    NumberField(8, "Extended Ending Address : 0x%llX\n"),
};

constexpr DecoderField Type20Fields[] = {
    OwnField(3, MappedAddressPrint, "Starting Address : 0x%08X "),
    OwnField(4, MappedAddressPrint, "Ending Address : 0x%08X "),
    NumberField(5, "Memory Device Handle : 0x%04X (%d)\n"),
    NumberField(6, "Memory Array Mapped Address Handle : 0x%04X (%d)\n"),
    NumberField(7, "Partition Row Position : 0x%02X (%d)\n"),
    NumberField(8, "Interleave Position : 0x%02X (%d)\n"),
    NumberField(9, "Interleaved Data Depth : 0x%02X (%d)\n"),
    NumberField(10, "Extended Starting Address : 0x%llX\n"),
    NumberField(11, "Extended Ending Address : 0x%llX\n"),
};

// Type 33, 64-Bit Memory Error Information.

constexpr std::uint64_t UnknownAddress64 = 0x8000000000000000;

constexpr DecoderField Type33Fields[] = {
    TextField(3, "Error Type : 0x%02X - %s\n", MemoryErrorTypeTexts),
    TextField(4, "Error Granularity : 0x%02X - %s\n", MemoryErrorGranularityTexts),
    TextField(5, "Error Operation : 0x%02X - %s \n", MemoryErrorOperationTexts),
    MarkField(6, "Vendor Syndrome : 0x%08X ", UnknownSyndrome),
    MarkField(7, "Memory Array Error Address : 0x%llX ", UnknownAddress64),
    MarkField(8, "Device Error Address : 0x%llX ", UnknownAddress64),
    MarkField(9, "Error Resolution : 0x%08X ", UnknownResolution),
};

// Type 37, Memory Channel. The first and the last of the channel's devices are shown; the library finds the last one.

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

} // namespace

constinit const StructDecoder StructDecodeType16(16, "Physical Memory", DecoderForm::Loop, Type16Fields);
constinit const StructDecoder StructDecodeType17(17, "Memory Device", DecoderForm::Loop, Type17Fields);
constinit const StructDecoder StructDecodeType18(18, "32-bit Memory Error", DecoderForm::Loop, Type18Fields);
constinit const StructDecoder StructDecodeType19(19, "Memory Array Adr", DecoderForm::Loop, Type19Fields);
constinit const StructDecoder StructDecodeType20(20, "Memory Device Adr", DecoderForm::Loop, Type20Fields);
constinit const StructDecoder StructDecodeType33(33, "64-bit Memory Error Info", DecoderForm::Loop, Type33Fields);
constinit const StructDecoder StructDecodeType37(37, "Memory Channel", DecoderForm::Loop, Type37Fields);
