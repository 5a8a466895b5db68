// Decoders of memory controller, memory module and cache structures (types 5 to 7).
#include "Lib/LittleEndian.h"
#include "viewer/Decoders.h"
#include "viewer/VoltageNames.h"

namespace {

// Type 5, Memory Controller Information.

constexpr const char* MemoryErrorDetectTexts[] = {"",           "Other",      "Unknown",     "None", "8-bit Parity",
                                                  "32-bit ECC", "64-bit ECC", "128-bit ECC", "CRC"};

constexpr const char* MemoryErrorCorrectNames[] = {
    "Other",           "Unknown", "None", "Single Bit Error Correcting", "Double Bit Error Correcting",
    "Error Scrubbing", nullptr,
};

constexpr const char* MemoryInterleaveTexts[] = {
    "",
    "Other",
    "Unknown",
    "One Way Interleave",
    "Two Way Interleave",
    "Four Way Interleave",
    "Eight Way Interleave",
    "Sixteen Way Interleave",
};

constexpr const char* MemorySpeedNames[] = {"Other Speed", "Unknown Speed", "70ns Speed",
                                            "60ns Speed",  "50ns Speed",    nullptr};

// The memory types of a controller and of a module.
constexpr const char* MemoryTypeNames[] = {"Other", "Unknown", "Standard", "Fast Page Mode", "EDO",   "Parity",
                                           "ECC",   "SIMM",    "DIMM",     "Burst EDO",      "SDRAM", nullptr};

// 2 to the power of a size code in MB; 0 for a size that a signed 32-bit number does not hold.
int SizeOfCode(std::uint64_t code) {
    return code <= 30 ? 1 << code : 0;
}

void MaximumModuleSizePrint(const DecoderField& field, const FieldValue& value) {
    ReportLine(value, field.Format, static_cast<unsigned>(value.Number), SizeOfCode(value.Number));
}

// The list is exactly as long as the number of slots says.
void ModuleHandlesPrint(const DecoderField& field, const FieldValue& value) {
    ReportItems(field.Format);
    for (std::size_t at = 0; at + 2 <= value.Bytes.size(); at += 2) {
        ReportItemNumber("0x%04x ", LittleEndianRead<std::uint16_t>(&value.Bytes[at]));
    }
    ReportMore("\n");
}

constexpr DecoderField Type5Fields[] = {
    TextField(3, "Error Detecting Method : 0x%02X - %s\n", MemoryErrorDetectTexts),
    BitsField(4, "Error Correcting Capability : 0x%02X\n", MemoryErrorCorrectNames),
    TextField(5, "Supported Interleave : 0x%02X - %s\n", MemoryInterleaveTexts),
    TextField(6, "Current Interleave : 0x%02X - %s\n", MemoryInterleaveTexts),
    OwnField(7, MaximumModuleSizePrint, "Maximum Memory Module Size : 0x%02X (%d)MB\n", "nd"),
    BitsField(8, "Supported Speeds : 0x%04X\n", MemorySpeedNames),
    BitsField(9, "Supported Memory Types : 0x%04X\n", MemoryTypeNames),
    BitsField(10, "Memory Module Voltage : 0x%02X\n", MemoryVoltageNames),
    NumberField(11, "Number of Associated Memory Slots : 0x%02X (%d)\n"),
    OwnField(12, ModuleHandlesPrint, "Memory Module Configuration Handle : ", ""),
    BitsField(13, "Enable Error Correcting Capabilities : 0x%02X\n", MemoryErrorCorrectNames),
};

// Type 6, Memory Module Information.

constexpr const char* BankConnectionLow[] = {"RAS# 0",   "RAS# 1",   "RAS# 2",        "RAS# 3",   "RAS# 4",
                                             "RAS# 5",   "RAS# 6",   "RAS# 7",        "RAS# 0&1", "RAS# 2&3",
                                             "RAS# 4&5", "RAS# 6&7", "No Connections"};

constexpr TextRange BankConnectionNewer[] = {{0xFF, "No Connections"}};

constexpr TextTable BankConnectionTexts = TextTable(BankConnectionLow).With(BankConnectionNewer);

// The size codes that are not a power of two, from FirstTextSize on.
constexpr const char* ModuleSizeTexts[] = {"Not determinable", "Module is installed", "Module not installed"};

constexpr std::uint64_t FirstTextSize = 0x7D;

// A size code in bits 6 to 0; bit 7 tells a double-bank connection and shows in the raw byte alone.
void ModuleSizePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    const std::uint64_t code = value.Number & 0x7F;
    if (code < FirstTextSize) {
        ReportMore("%04d MB\n", SizeOfCode(code));
    } else {
        TextReport("%s\n", TextFind(ModuleSizeTexts, code - FirstTextSize));
    }
}

constexpr DecoderField Type6Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    TextField(4, "Bank Connections : 0x%02X - %s\n", BankConnectionTexts),
    NumberField(5, "Current Speed : 0x%02X (%d ns)\n"),
    BitsField(6, "Current Memory Type : 0x%04X\n", MemoryTypeNames),
    OwnField(7, ModuleSizePrint, "Installed Size : 0x%02X - "),
    OwnField(8, ModuleSizePrint, "Enabled Size : 0x%02X - "),
    NumberField(9, "Error Status : 0x%02X\n"),
};

// Type 7, Cache Information.

constexpr const char* CacheOperationalModeTexts[] = {"Write Through", "Write Back", "Varies with Memory Address",
                                                     "Unknown"};

constexpr const char* CacheEnabledTexts[] = {"Disabled", "Enabled"};

constexpr const char* CacheLocationTexts[] = {"Internal", "External", "", "Unknown"};

constexpr const char* CacheSocketedTexts[] = {"Not Socketed", "Socketed"};

constexpr const char* SramTypeNames[] = {"Other Type",          "Unknown Type",     "Non-Burst Type",    "Burst Type",
                                         "Pipeline Burst Type", "Synchronous Type", "Asynchronous Type", nullptr};

constexpr const char* CacheErrorCorrectionTexts[] = {"",       "Other",          "Unknown",      "None",
                                                     "Parity", "Single-bit ECC", "Multi-bit ECC"};

constexpr const char* SystemCacheTypeTexts[] = {"", "Other", "Unknown", "Instruction", "Data", "Unified"};

constexpr const char* CacheAssociativityTexts[] = {
    "",       "Other",  "Unknown", "Direct Mapped", "2-Way",  "4-Way", "Fully Associative", "8-Way", "16-Way",
    "12-Way", "24-Way", "32-Way",  "48-Way",        "64-Way", "20-way"};

constexpr BitGroup CacheConfigurationGroups[] = {
    {" Operational Mode : %s\n", 8, 0x03, CacheOperationalModeTexts},
    {" Cache Memory : %s\n", 7, 0x01, CacheEnabledTexts},
    {" Location, relative to the CPU module : %s\n", 5, 0x03, CacheLocationTexts},
    {" Cache Socketed : %s\n", 3, 0x01, CacheSocketedTexts},
    {" Cache Level : 0x%02X\n", 0, 0x07, {}},
};

// Bit 15 chooses the granularity. The size is shown as it is stored, in units of that granularity; of the whole table,
// in KB.
void CacheSizePrint(const FieldValue& value, const char* granularityFormat, const char* sizeFormat,
                    bool scaled = false) {
    const int granularity = (value.Number & 0x8000) != 0 ? 64 : 1;
    ReportDetail(granularityFormat, granularity);
    ReportDetail(sizeFormat, static_cast<int>(value.Number & 0x7FFF) * (scaled ? granularity : 1));
}

template <bool Scaled> void MaximumCacheSizePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    CacheSizePrint(value, " Maximum Granularity : %02d KB\n", " Maximum Size : %04d KB\n", Scaled);
}

template <bool Scaled> void InstalledCacheSizePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    CacheSizePrint(value, " Installed Granularity : %02d KB\n", " Installed Size : %0d KB\n", Scaled);
}

constexpr DecoderField Type7Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    GroupsField(4, "Cache Configuration : 0x%04X\n", CacheConfigurationGroups),
    OwnField(5, MaximumCacheSizePrint<false>, "Maximum Cache Size : 0x%04X\n"),
    OwnField(6, InstalledCacheSizePrint<false>, "Installed Size : 0x%04X\n"),
    BitsField(7, "Supported SRAM Type : 0x%04X\n", SramTypeNames),
    BitsField(8, "Current SRAM Type : 0x%04X\n", SramTypeNames),
    NumberField(9, "Cache Speed : 0x%02X ns\n"),
    TextField(10, "Error Correction : 0x%02X - %s\n", CacheErrorCorrectionTexts),
    TextField(11, "System Cache Type : 0x%02X - %s\n", SystemCacheTypeTexts),
    TextField(12, "Associativity : 0x%02X - %s\n", CacheAssociativityTexts),
};

// Bit 31 chooses the granularity.
constexpr std::uint64_t KilobytesOfCacheSize(std::uint64_t size) {
    return (size & 0x7FFFFFFF) << ((size & 0x80000000) != 0 ? 6 : 0);
}

constexpr std::uint8_t MaximumCacheSize2Row = 13;
constexpr std::uint8_t InstalledCacheSize2Row = 14;

constexpr NumberCase MaximumCacheSizeCases[] = {
    {0xFFFF, "Maximum Cache Size : 0x%04X - See Maximum Cache Size2\n", nullptr, MaximumCacheSize2Row, 0x17},
};
constexpr NumberCase InstalledCacheSizeCases[] = {
    {0xFFFF, "Installed Size : 0x%04X - See Installed Cache Size2\n", nullptr, InstalledCacheSize2Row, 0x1B},
};
constexpr NumberCase MaximumCacheSize2Cases[] = {{0, "Maximum Cache Size2 : 0x%08X - %s\n", "Unknown"}};
constexpr NumberCase InstalledCacheSize2Cases[] = {{0, "Installed Cache Size2 : 0x%08X - %s\n", "Unknown"}};

constexpr DecoderField Type7Whole[] = {
    OwnField(5, MaximumCacheSizePrint<true>, "Maximum Cache Size : 0x%04X\n").With(MaximumCacheSizeCases),
    OwnField(6, InstalledCacheSizePrint<true>, "Installed Size : 0x%04X\n").With(InstalledCacheSizeCases),
    SizeField(MaximumCacheSize2Row, "Maximum Cache Size2 : 0x%08X - %lluKB, %lluMB, %lluGB\n", KilobytesOfCacheSize)
        .With(MaximumCacheSize2Cases),
    SizeField(InstalledCacheSize2Row, "Installed Cache Size2 : 0x%08X - %lluKB, %lluMB, %lluGB\n", KilobytesOfCacheSize)
        .With(InstalledCacheSize2Cases),
};

} // namespace

constinit const StructDecoder StructDecodeType5(5, "Memory Controller", DecoderForm::Loop, Type5Fields);
constinit const StructDecoder StructDecodeType6(6, "Memory Module", DecoderForm::Loop, Type6Fields);
constinit const StructDecoder StructDecodeType7(7, "Cache", DecoderForm::Loop, Type7Fields, Type7Whole);
