// Decoders of memory arrays, memory devices, the addresses that they are mapped to, memory errors and memory channels
// (types 16 to 20, 33 and 37).
#include "viewer/Decoders.h"

namespace {

// A value as it is stored, and the size that it states in KB, MB and GB.
void CapacityPrint(const DecoderField& field, const FieldValue& value, std::uint32_t kilobytes) {
    ReportLine(value, field.Format, static_cast<std::uint32_t>(value.Number), static_cast<std::int32_t>(kilobytes),
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

constexpr NumberCase ArrayCapacityCases[] = {
    {0x80000000, "Maximum Capacity : 0x%08X - See Extended Maximum Capacity\n", nullptr, 9, 0x17},
    {0x80000000, "Maximum Capacity : 0x%08X - Unknown\n"},
};

constexpr DecoderField Type16Whole[] = {
    OwnField(6, ArrayCapacityPrint, "Maximum Capacity : 0x%08X - %dKB, %dMB, %dGB\n", "nddd").With(ArrayCapacityCases),
    SizeField(9, "Extended Maximum Capacity : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes),
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

// A size in MB, or in KB with the top bit set.
void MemorySizeWholePrint(const DecoderField& field, const FieldValue& value) {
    const auto size = static_cast<std::uint32_t>(value.Number);
    CapacityPrint(field, value, (size & 0x8000) != 0 ? size & 0x7FFF : size << 10);
}

void ExtendedSizePrint(const DecoderField& field, const FieldValue& value) {
    const auto megabytes = static_cast<std::uint32_t>(value.Number & 0x7FFFFFFF);
    ReportLine(value, field.Format, static_cast<std::uint32_t>(value.Number), megabytes, megabytes >> 10);
}

void ExtendedSpeedPrint(const DecoderField& field, const FieldValue& value) {
    ReportLine(value, field.Format, static_cast<std::uint32_t>(value.Number),
               static_cast<std::uint32_t>(value.Number & 0x7FFFFFFF));
}

// A maker's number: its bank, whose top bit is parity, and its code there.
void MakerPrint(const DecoderField& field, const FieldValue& value) {
    const auto number = static_cast<std::uint32_t>(value.Number);
    ReportLine(value, field.Format, number, (number & 0x7F) + 1, number >> 8);
}

constexpr auto MemoryTypeDetailWholeNames = [] {
    auto names = std::to_array(MemoryTypeDetailNames);
    names[15] = "LRDIMM";
    return names;
}();

constexpr const char* MemoryTechnologyTexts[] = {
    "",       "Other", "Unknown", "DRAM", "NVDIMM-N", "NVDIMM-F", "NVDIMM-P", "Intel(R) Optane(TM) persistent memory",
    "MRDIMM",
};

constexpr const char* MemoryOperatingModeNames[] = {
    "Reserved, set to 0",
    "Other",
    "Unknown",
    "Volatile memory",
    "Byte-accessible persistent memory",
    "Block-accessible persistent memory",
    nullptr,
};

constexpr std::uint8_t ExtendedSizeRow = 20;
constexpr std::uint8_t ExtendedSpeedRow = 36;
constexpr std::uint8_t ExtendedConfiguredSpeedRow = 37;
constexpr std::uint64_t UnknownRevision = 0xFF00;
constexpr std::uint64_t UnknownSize = 0xFFFFFFFFFFFFFFFF;

constexpr NumberCase TotalWidthCases[] = {{0xFFFF, "Total Width : 0x%04X - Unknown\n"}};
constexpr NumberCase DataWidthCases[] = {{0xFFFF, "Data Width : 0x%04X - Unknown\n"}};
constexpr NumberCase MemorySizeCases[] = {
    {0, "Size : 0x%04X - No Module Installed\n"},
    {0xFFFF, "Size : 0x%04X - Unknown\n"},
    {0x7FFF, "Size : 0x%04X - See Extended Size\n", nullptr, ExtendedSizeRow, 0x20},
};
constexpr NumberCase SpeedCases[] = {
    {0xFFFF, "Speed : 0x%04X - See Extended Speed\n", nullptr, ExtendedSpeedRow, 0x58},
};
constexpr NumberCase ExtendedSizeCases[] = {{0, "Extended Size : 0x%08X\n"}};
constexpr NumberCase ConfiguredSpeedCases[] = {
    {0xFFFF, "Configured Memory Clock Speed : 0x%04X - See Extended Configured Memory Speed\n", nullptr,
     ExtendedConfiguredSpeedRow, 0x5C},
};
constexpr NumberCase ModuleMakerCases[] = {{0, "Module Manufacturer ID : 0x%04X - %s\n", "Unknown"}};
constexpr NumberCase ControllerMakerCases[] = {
    {0, "Memory Subsystem Controller Manufacturer ID : 0x%04X - %s\n", "Unknown"},
};
constexpr NumberCase NonVolatileSizeCases[] = {
    {0, "Non-volatile Size : 0x%llX - %s\n", "None"},
    {UnknownSize, "Non-volatile Size : 0x%llX - %s\n", "Unknown"},
};
constexpr NumberCase VolatileSizeCases[] = {
    {0, "Volatile Size : 0x%llX - %s\n", "None"},
    {UnknownSize, "Volatile Size : 0x%llX - %s\n", "Unknown"},
};
constexpr NumberCase CacheSizeCases[] = {
    {0, "Cache Size : 0x%llX - %s\n", "None"},
    {UnknownSize, "Cache Size : 0x%llX - %s\n", "Unknown"},
};
constexpr NumberCase LogicalSizeCases[] = {
    {0, "Logical Size : 0x%llX - %s\n", "None"},
    {UnknownSize, "Logical Size : 0x%llX - %s\n", "Unknown"},
};
constexpr NumberCase ExtendedSpeedCases[] = {{0, "Extended Speed : 0x%08X\n"}};
constexpr NumberCase ExtendedConfiguredSpeedCases[] = {{0, "Extended Configured Memory Speed : 0x%08X\n"}};
constexpr NumberCase PmicMakerCases[] = {{0, "PMIC0 Manufacturer ID : 0x%04X - %s\n", "Unknown"}};
constexpr NumberCase RcdMakerCases[] = {{0, "RCD Manufacturer ID : 0x%04X - %s\n", "Unknown"}};

constexpr DecoderField Type17Whole[] = {
    NumberField(5, "Total Width : 0x%04X (%02d)bits\n").With(TotalWidthCases),
    NumberField(6, "Data Width : 0x%04X (%02d)bits\n").With(DataWidthCases),
    OwnField(7, MemorySizeWholePrint, "Size : 0x%04X - %dKB, %dMB, %dGB\n", "nddd").With(MemorySizeCases),
    BitsField(13, "Type Detail : 0x%04X\n", MemoryTypeDetailWholeNames.data()),
    NumberField(14, "Speed : 0x%04X (%02d)MT/s\n").With(SpeedCases),
    OwnField(ExtendedSizeRow, ExtendedSizePrint, "Extended Size : 0x%08X - %dMB, %dGB\n", "ndd")
        .With(ExtendedSizeCases),
    NumberField(21, "Configured Memory Clock Speed : 0x%04X (%d)MT/s\n").With(ConfiguredSpeedCases),
    TextField(25, "Memory Technology : 0x%02X - %s\n", MemoryTechnologyTexts),
    BitsField(26, "Memory Operating Mode Capability : 0x%04X\n", MemoryOperatingModeNames),
    StringField(27, "Firmware Version : %s\n"),
    OwnField(28, MakerPrint, "Module Manufacturer ID : 0x%04X (Bank %d, Code 0x%02X)\n", "ndd").With(ModuleMakerCases),
    MarkField(29, "Module Product ID : 0x%04X ", 0),
    OwnField(30, MakerPrint, "Memory Subsystem Controller Manufacturer ID : 0x%04X (Bank %d, Code 0x%02X)\n", "ndd")
        .With(ControllerMakerCases),
    MarkField(31, "Memory Subsystem Controller Product ID : 0x%04X ", 0),
    SizeField(32, "Non-volatile Size : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes).With(NonVolatileSizeCases),
    SizeField(33, "Volatile Size : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes).With(VolatileSizeCases),
    SizeField(34, "Cache Size : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes).With(CacheSizeCases),
    SizeField(35, "Logical Size : 0x%llX - %lluKB, %lluMB, %lluGB\n", KilobytesOfBytes).With(LogicalSizeCases),
    OwnField(ExtendedSpeedRow, ExtendedSpeedPrint, "Extended Speed : 0x%08X (%d)MT/s\n", "nd").With(ExtendedSpeedCases),
    OwnField(ExtendedConfiguredSpeedRow, ExtendedSpeedPrint, "Extended Configured Memory Speed : 0x%08X (%d)MT/s\n",
             "nd")
        .With(ExtendedConfiguredSpeedCases),
    OwnField(38, MakerPrint, "PMIC0 Manufacturer ID : 0x%04X (Bank %d, Code 0x%02X)\n", "ndd").With(PmicMakerCases),
    MarkField(39, "PMIC0 Revision Number : 0x%04X ", UnknownRevision),
    OwnField(40, MakerPrint, "RCD Manufacturer ID : 0x%04X (Bank %d, Code 0x%02X)\n", "ndd").With(RcdMakerCases),
    MarkField(41, "RCD Revision Number : 0x%04X ", UnknownRevision),
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
        ReportMore("- %dKB, %dMB, %dGB\n", static_cast<std::int32_t>(kilobytes),
                   static_cast<std::int32_t>(kilobytes >> 10), static_cast<std::int32_t>(kilobytes >> 20));
    } else {
        ReportMore("\n");
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

constexpr std::uint64_t ExtendedAddressUsed = 0xFFFFFFFF;
constexpr const char* SeeExtendedStart = "Starting Address : 0x%08X - See Extended Starting Address\n";
constexpr const char* SeeExtendedEnd = "Ending Address : 0x%08X - See Extended Ending Address\n";

constexpr NumberCase ArrayStartCases[] = {{ExtendedAddressUsed, SeeExtendedStart, nullptr, 7, 0x1F}};
constexpr NumberCase ArrayEndCases[] = {{ExtendedAddressUsed, SeeExtendedEnd, nullptr, 8, 0x1F}};
constexpr NumberCase DeviceStartCases[] = {{ExtendedAddressUsed, SeeExtendedStart, nullptr, 10, 0x23}};
constexpr NumberCase DeviceEndCases[] = {{ExtendedAddressUsed, SeeExtendedEnd, nullptr, 11, 0x23}};

constexpr DecoderField Type19Whole[] = {
    OwnField(3, MappedAddressPrint, "Starting Address : 0x%08X ").With(ArrayStartCases),
    OwnField(4, MappedAddressPrint, "Ending Address : 0x%08X ").With(ArrayEndCases),
};

constexpr DecoderField Type20Whole[] = {
    OwnField(3, MappedAddressPrint, "Starting Address : 0x%08X ").With(DeviceStartCases),
    OwnField(4, MappedAddressPrint, "Ending Address : 0x%08X ").With(DeviceEndCases),
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

constexpr RecordLine MemoryChannelLines[] = {
    {0, 1, "Memory%d Device Load : 0x%02X (%d)\n", "dnn"},
    {1, 2, "Memory Device%d Handle : 0x%04X (%d)\n", "dnn"},
};
constexpr RecordLayout MemoryChannelDevices = {.Size = 3, .First = 2, .Lines = MemoryChannelLines};

constexpr DecoderField Type37Whole[] = {RecordsField(10, &MemoryChannelDevices, "", "Devices Between")};

} // namespace

constinit const StructDecoder StructDecodeType16(16, "Physical Memory", DecoderForm::Loop, Type16Fields, Type16Whole);
constinit const StructDecoder StructDecodeType17(17, "Memory Device", DecoderForm::Loop, Type17Fields, Type17Whole);
constinit const StructDecoder StructDecodeType18(18, "32-bit Memory Error", DecoderForm::Loop, Type18Fields);
constinit const StructDecoder StructDecodeType19(19, "Memory Array Adr", DecoderForm::Loop, Type19Fields, Type19Whole);
constinit const StructDecoder StructDecodeType20(20, "Memory Device Adr", DecoderForm::Loop, Type20Fields, Type20Whole);
constinit const StructDecoder StructDecodeType33(33, "64-bit Memory Error Info", DecoderForm::Loop, Type33Fields);
constinit const StructDecoder StructDecodeType37(37, "Memory Channel", DecoderForm::Loop, Type37Fields, Type37Whole);
