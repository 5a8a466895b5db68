// The decoders of memory controller, memory module and cache structures (types 5 to 7) and their text tables.
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"
#include "viewer/StructRead.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace {

constexpr const char* const MemoryErrorDetectTexts[] = {
    "", "Other", "Unknown", "None", "8-bit Parity", "32-bit ECC", "64-bit ECC", "128-bit ECC", "CRC"};

constexpr const char* const MemoryErrorCorrectNames[] = {
    "Other",           "Unknown", "None", "Single Bit Error Correcting", "Double Bit Error Correcting",
    "Error Scrubbing", nullptr,
};

constexpr const char* const MemoryInterleaveTexts[] = {
    "",
    "Other",
    "Unknown",
    "One Way Interleave",
    "Two Way Interleave",
    "Four Way Interleave",
    "Eight Way Interleave",
    "Sixteen Way Interleave",
};

constexpr const char* const MemorySpeedNames[] = {"Other Speed", "Unknown Speed", "70ns Speed",
                                                  "60ns Speed",  "50ns Speed",    nullptr};

// The memory types of a controller and of a module.
constexpr const char* const MemoryTypeNames[] = {"Other", "Unknown", "Standard", "Fast Page Mode", "EDO",   "Parity",
                                                 "ECC",   "SIMM",    "DIMM",     "Burst EDO",      "SDRAM", nullptr};

constexpr const char* const MemoryVoltageNames[] = {"5V   Supported", "3.3V Supported", "2.9V Supported", nullptr};

// 2 to the power of a size code in MB; 0 for a size that a signed 32-bit number does not hold.
int SizeOfCode(std::uint64_t code) {
    return code <= 30 ? 1 << code : 0;
}

FieldOutcome MaximumModuleSizeShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t code = 0;
    if (!FieldNumber(place, field.Row, &code)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Maximum Memory Module Size : 0x%02X (%d)MB\n", static_cast<unsigned>(code), SizeOfCode(code));
    return FieldOutcome::Printed;
}

// The list is exactly as long as the number of slots says.
FieldOutcome ModuleHandlesShow(const DecoderField& field, const StructPlace& place) {
    std::span<const std::uint8_t> bytes;
    if (!FieldBytes(place, field.Row, &bytes)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Memory Module Configuration Handle : ");
    for (std::size_t at = 0; at + 2 <= bytes.size(); at += 2) {
        RyxPrintf("0x%04x ", static_cast<unsigned>(ValueOf(&bytes[at], 2)));
    }
    RyxPrintf("\n");
    return FieldOutcome::Printed;
}

constexpr DecoderField Type5Fields[] = {
    TextField(3, "Error Detecting Method : 0x%02X - %s\n", MemoryErrorDetectTexts),
    BitsField(4, "Error Correcting Capability : 0x%02X\n", MemoryErrorCorrectNames),
    TextField(5, "Supported Interleave : 0x%02X - %s\n", MemoryInterleaveTexts),
    TextField(6, "Current Interleave : 0x%02X - %s\n", MemoryInterleaveTexts),
    OwnField(7, MaximumModuleSizeShow),
    BitsField(8, "Supported Speeds : 0x%04X\n", MemorySpeedNames),
    BitsField(9, "Supported Memory Types : 0x%04X\n", MemoryTypeNames),
    BitsField(10, "Memory Module Voltage : 0x%02X\n", MemoryVoltageNames),
    NumberField(11, "Number of Associated Memory Slots : 0x%02X (%d)\n"),
    OwnField(12, ModuleHandlesShow),
    BitsField(13, "Enable Error Correcting Capabilities : 0x%02X\n", MemoryErrorCorrectNames),
};

constexpr const char* const BankConnectionTexts[] = {"RAS# 0",   "RAS# 1",   "RAS# 2",        "RAS# 3",   "RAS# 4",
                                                     "RAS# 5",   "RAS# 6",   "RAS# 7",        "RAS# 0&1", "RAS# 2&3",
                                                     "RAS# 4&5", "RAS# 6&7", "No Connections"};

// The size codes that are not a power of two, from FirstTextSize on.
constexpr const char* const ModuleSizeTexts[] = {"Not determinable", "Module is installed", "Module not installed"};
constexpr std::uint64_t FirstTextSize = 0x7D;

// A size code in bits 6 to 0; bit 7 tells a double-bank connection and shows in the raw byte alone.
FieldOutcome ModuleSizeShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t size = 0;
    if (!FieldNumber(place, field.Row, &size)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(field.Format, static_cast<unsigned>(size));
    const std::uint64_t code = size & 0x7F;
    if (code < FirstTextSize) {
        RyxPrintf("%04d MB\n", SizeOfCode(code));
    } else {
        RyxPrintf("%s\n", TextFind(ModuleSizeTexts, code - FirstTextSize));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type6Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    TextField(4, "Bank Connections : 0x%02X - %s\n", BankConnectionTexts),
    NumberField(5, "Current Speed : 0x%02X (%d ns)\n"),
    BitsField(6, "Current Memory Type : 0x%04X\n", MemoryTypeNames),
    OwnField(7, ModuleSizeShow, "Installed Size : 0x%02X - "),
    OwnField(8, ModuleSizeShow, "Enabled Size : 0x%02X - "),
    NumberField(9, "Error Status : 0x%02X\n"),
};

constexpr const char* const CacheOperationalModeTexts[] = {"Write Through", "Write Back", "Varies with Memory Address",
                                                           "Unknown"};

constexpr const char* const CacheEnabledTexts[] = {"Disabled", "Enabled"};

constexpr const char* const CacheLocationTexts[] = {"Internal", "External", "", "Unknown"};

constexpr const char* const CacheSocketedTexts[] = {"Not Socketed", "Socketed"};

constexpr const char* const SramTypeNames[] = {
    "Other Type",          "Unknown Type",     "Non-Burst Type",    "Burst Type",
    "Pipeline Burst Type", "Synchronous Type", "Asynchronous Type", nullptr};

constexpr const char* const CacheErrorCorrectionTexts[] = {"",       "Other",          "Unknown",      "None",
                                                           "Parity", "Single-bit ECC", "Multi-bit ECC"};

constexpr const char* const SystemCacheTypeTexts[] = {"", "Other", "Unknown", "Instruction", "Data", "Unified"};

constexpr const char* const CacheAssociativityTexts[] = {
    "",       "Other",  "Unknown", "Direct Mapped", "2-Way",  "4-Way", "Fully Associative", "8-Way", "16-Way",
    "12-Way", "24-Way", "32-Way",  "48-Way",        "64-Way", "20-way"};

constexpr BitGroup CacheConfigurationGroups[] = {
    {" Operational Mode : %s\n", 8, 0x03, CacheOperationalModeTexts},
    {" Cache Memory : %s\n", 7, 0x01, CacheEnabledTexts},
    {" Location, relative to the CPU module : %s\n", 5, 0x03, CacheLocationTexts},
    {" Cache Socketed : %s\n", 3, 0x01, CacheSocketedTexts},
    {" Cache Level : 0x%02X\n", 0, 0x07, {}},
};

// Bit 15 chooses the granularity. The size is shown as it is stored, in units of that granularity.
FieldOutcome CacheSizeShow(const DecoderField& field, const StructPlace& place, const char* granularityFormat,
                           const char* sizeFormat) {
    std::uint64_t size = 0;
    if (!FieldNumber(place, field.Row, &size)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(field.Format, static_cast<unsigned>(size));
    RyxPrintf(granularityFormat, (size & 0x8000) != 0 ? 64 : 1);
    RyxPrintf(sizeFormat, static_cast<int>(size & 0x7FFF));
    return FieldOutcome::Printed;
}

FieldOutcome MaximumCacheSizeShow(const DecoderField& field, const StructPlace& place) {
    return CacheSizeShow(field, place, " Maximum Granularity : %02d KB\n", " Maximum Size : %04d KB\n");
}

FieldOutcome InstalledCacheSizeShow(const DecoderField& field, const StructPlace& place) {
    return CacheSizeShow(field, place, " Installed Granularity : %02d KB\n", " Installed Size : %0d KB\n");
}

constexpr DecoderField Type7Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    GroupsField(4, "Cache Configuration : 0x%04X\n", CacheConfigurationGroups),
    OwnField(5, MaximumCacheSizeShow, "Maximum Cache Size : 0x%04X\n"),
    OwnField(6, InstalledCacheSizeShow, "Installed Size : 0x%04X\n"),
    BitsField(7, "Supported SRAM Type : 0x%04X\n", SramTypeNames),
    BitsField(8, "Current SRAM Type : 0x%04X\n", SramTypeNames),
    NumberField(9, "Cache Speed : 0x%02X ns\n"),
    TextField(10, "Error Correction : 0x%02X - %s\n", CacheErrorCorrectionTexts),
    TextField(11, "System Cache Type : 0x%02X - %s\n", SystemCacheTypeTexts),
    TextField(12, "Associativity : 0x%02X - %s\n", CacheAssociativityTexts),
};

} // namespace

RyxStatus StructDecodeType5() {
    return InstanceLoopDecode(5, Type5Fields);
}

RyxStatus StructDecodeType6() {
    return InstanceLoopDecode(6, Type6Fields);
}

RyxStatus StructDecodeType7() {
    return InstanceLoopDecode(7, Type7Fields);
}
