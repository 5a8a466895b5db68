// The decoder of processor structures (type 4) and its text tables.
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"
#include "viewer/StructRead.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace {

constexpr const char* const ProcessorTypeTexts[] = {
    "None", "Other", "Unknown", "Central Processor", "Math Processor", "DSP Processor", "Video Processor"};

// The family enumeration is sparse: only the codes that have a name are written down, in ascending order.
struct FamilyName {
    std::uint16_t Code;
    const char* Name;
};

constexpr FamilyName FamilyNames[] = {
    {0x000, "None"},
    {0x001, "Other"},
    {0x002, "Unknown"},
    {0x003, "8086"},
    {0x004, "80286"},
    {0x005, "Intel386(TM) processor"},
    {0x006, "Intel486(TM) processor"},
    {0x007, "8087"},
    {0x008, "80287"},
    {0x009, "80387"},
    {0x00A, "80487"},
    {0x00B, "Intel(R) Pentium(R) processor"},
    {0x00C, "Pentium(R) Pro processor"},
    {0x00D, "Pentium(R) II processor"},
    {0x00E, "Pentium(R) processor with MMX(TM) Technology"},
    {0x00F, "Intel(R) Celeron(R) processor"},
    {0x010, "Pentium(R) II Xeon(TM) processor"},
    {0x011, "Pentium(R) III processor"},
    {0x012, "M1 Family"},
    {0x013, "M2 Family"},
    {0x014, "Intel(R) Celeron(R) M processor"},
    {0x015, "Intel(R) Pentium(R) 4 HT processor"},
    {0x018, "AMD Duron(TM) processor Family"},
    {0x019, "K5 Family"},
    {0x01A, "K6 Family"},
    {0x01B, "K6-2"},
    {0x01C, "K6-3"},
    {0x01D, "AMD Athlon(TM) processor Family"},
    {0x01E, "AMD2900 Family"},
    {0x01F, "K6-2+"},
    {0x020, "Power PC Family"},
    {0x021, "Power PC 601"},
    {0x022, "Power PC 603"},
    {0x023, "Power PC 603+"},
    {0x024, "Power PC 604"},
    {0x025, "Power PC 620"},
    {0x026, "Power PC X704"},
    {0x027, "Power PC 750"},
    {0x028, "Intel(R) Core(TM) Duo processor"},
    {0x029, "Intel(R) Core(TM) Duo mobile processor"},
    {0x02A, "Intel(R) Core(TM) Solo mobile processor"},
    {0x02B, "Intel(R) Atom(TM) processor"},
    {0x030, "Alpha Family"},
    {0x031, "Alpha 21064"},
    {0x032, "Alpha 21066"},
    {0x033, "Alpha 21164"},
    {0x034, "Alpha 21164PC"},
    {0x035, "Alpha 21164a"},
    {0x036, "Alpha 21264"},
    {0x037, "Alpha 21364"},
    {0x038, "AMD Turion(TM) II Ultra Dual-Core Mobile M Processor Family"},
    {0x039, "AMD Turion(TM) II Dual-Core Mobile M Processor Family"},
    {0x03A, "AMD Athlon(TM) II Dual-Core M Processor Family"},
    {0x03B, "AMD Opteron(TM) 6100 Series Processor"},
    {0x03C, "AMD Opteron(TM) 4100 Series Processor"},
    {0x03D, "AMD Opteron(TM) 6200 Series Processor"},
    {0x03E, "AMD Opteron(TM) 4200 Series Processor"},
    {0x03F, "AMD FX(TM) Series Processor"},
    {0x040, "MIPS Family"},
    {0x041, "MIPS R4000"},
    {0x042, "MIPS R4200"},
    {0x043, "MIPS R4400"},
    {0x044, "MIPS R4600"},
    {0x045, "MIPS R10000"},
    {0x046, "AMD C-Series Processor"},
    {0x047, "AMD E-Series Processor"},
    {0x048, "AMD S-Series Processor"},
    {0x049, "AMD G-Series Processor"},
    {0x04A, "AMD Z-Series Processor"},
    {0x04B, "AMD R-Series Processor"},
    {0x04C, "AMD Opteron(TM) 4300 Series Processor"},
    {0x04D, "AMD Opteron(TM) 6300 Series Processor"},
    {0x04E, "AMD Opteron(TM) 3300 Series Processor"},
    {0x04F, "AMD FirePro(TM) Series Processor"},
    {0x050, "SPARC Family"},
    {0x051, "SuperSPARC"},
    {0x052, "microSPARC II"},
    {0x053, "microSPARC IIep"},
    {0x054, "UltraSPARC"},
    {0x055, "UltraSPARC II"},
    {0x056, "UltraSPARC IIi"},
    {0x057, "UltraSPARC III"},
    {0x058, "UltraSPARC IIIi"},
    {0x060, "68040 Family"},
    {0x061, "68xxx"},
    {0x062, "68000"},
    {0x063, "68010"},
    {0x064, "68020"},
    {0x065, "68030"},
    {0x070, "Hobbit Family"},
    {0x078, "Crusoe(TM) TM5000 Family"},
    {0x079, "Crusoe(TM) TM3000 Family"},
    {0x07A, "Efficeon(TM) TM8000 Family"},
    {0x080, "Weitek"},
    {0x082, "Itanium(TM) Processor"},
    {0x083, "AMD Athlon(TM) 64 Processor Family"},
    {0x084, "AMD Opteron(TM) Processor Family"},
    {0x085, "AMD Sempron(TM) Processor Family"},
    {0x086, "AMD Turion(TM) 64 Mobile Technology"},
    {0x087, "Dual-Core AMD Opteron(TM) Processor Family"},
    {0x088, "AMD Athlon(TM) 64 X2 Dual-Core Processor Family"},
    {0x089, "AMD Turion(TM) 64 X2 Mobile Processor Family"},
    {0x08A, "Quad-Core AMD Opteron(TM) Processor Family"},
    {0x08B, "Third-Generation AMD Opteron(TM) Processor Family"},
    {0x08C, "AMD phenom(TM) FX Quad-Core Processor Family"},
    {0x08D, "AMD phenom(TM) X4 Quad-Core Processor Family"},
    {0x08E, "AMD phenom(TM) X2 Dual-Core Processor Family"},
    {0x08F, "AMD Athlon(TM) X2 Dual-Core Processor Family"},
    {0x090, "PA-RISC Family"},
    {0x091, "PA-RISC 8500"},
    {0x092, "PA-RISC 8000"},
    {0x093, "PA-RISC 7300LC"},
    {0x094, "PA-RISC 7200"},
    {0x095, "PA-RISC 7100LC"},
    {0x096, "PA-RISC 7100"},
    {0x0A0, "V30 Family"},
    {0x0A1, "Quad-Core Intel(R) Xeon(R) processor 3200 Series"},
    {0x0A2, "Dual-Core Intel(R) Xeon(R) processor 3000 Series"},
    {0x0A3, "Quad-Core Intel(R) Xeon(R) processor 5300 Series"},
    {0x0A4, "Dual-Core Intel(R) Xeon(R) processor 5100 Series"},
    {0x0A5, "Dual-Core Intel(R) Xeon(R) processor 5000 Series"},
    {0x0A6, "Dual-Core Intel(R) Xeon(R) processor LV"},
    {0x0A7, "Dual-Core Intel(R) Xeon(R) processor ULV"},
    {0x0A8, "Dual-Core Intel(R) Xeon(R) processor 7100 Series"},
    {0x0A9, "Quad-Core Intel(R) Xeon(R) processor 5400 Series"},
    {0x0AA, "Quad-Core Intel(R) Xeon(R) processor"},
    {0x0AB, "Dual-Core Intel(R) Xeon(R) processor 5200 Series"},
    {0x0AC, "Dual-Core Intel(R) Xeon(R) processor 7200 Series"},
    {0x0AD, "Quad-Core Intel(R) Xeon(R) processor 7300 Series"},
    {0x0AE, "Quad-Core Intel(R) Xeon(R) processor 7400 Series"},
    {0x0AF, "Multi-Core Intel(R) Xeon(R) processor 7400 Series"},
    {0x0B0, "Pentium(R) III Xeon(TM) processor"},
    {0x0B1, "Pentium(R) III With Intel(R) SpeedStep(TM) Technology"},
    {0x0B2, "Pentium(R) 4"},
    {0x0B3, "Intel(R) Xeon(R) processor"},
    {0x0B4, "AS400 Family"},
    {0x0B5, "Intel(R) Xeon(TM) processor MP"},
    {0x0B6, "AMD Athlon(TM) XP processor Family"},
    {0x0B7, "AMD Athlon(TM) MP processor Family"},
    {0x0B8, "Intel(R) Itanium(R) 2"},
    {0x0B9, "Intel(R) Pentium(R) M processor"},
    {0x0BA, "Intel(R) Celeron(R) D processor"},
    {0x0BB, "Intel(R) Pentium(R) D processor"},
    {0x0BC, "Intel(R) Pentium(R) Processor Extreme Edition"},
    {0x0BD, "Intel(R) Core(TM) Solo Processor"},
    {0x0BF, "Intel(R) Core(TM) 2 processor"},
    {0x0C0, "Intel(R) Core(TM) 2 Solo processor"},
    {0x0C1, "Intel(R) Core(TM) 2 Extreme processor"},
    {0x0C2, "Intel(R) Core(TM) 2 Quad processor"},
    {0x0C3, "Intel(R) Core(TM) 2 Extreme mobile processor"},
    {0x0C4, "Intel(R) Core(TM) 2 Duo mobile processor"},
    {0x0C5, "Intel(R) Core(TM) 2 Solo mobile processor"},
    {0x0C6, "Intel(R) Core(TM) i7 processor"},
    {0x0C7, "Dual-Core Intel(R) Celeron(R) processor"},
    {0x0C8, "IBM390 Family"},
    {0x0C9, "G4"},
    {0x0CA, "G5"},
    {0x0CB, "ESA/390 G6"},
    {0x0CC, "z/Architectur base"},
    {0x0CD, "Intel(R) Core(TM) i5 processor"},
    {0x0CE, "Intel(R) Core(TM) i3 processor"},
    {0x0D2, "VIA C7(TM)-M Processor Family"},
    {0x0D3, "VIA C7(TM)-D Processor Family"},
    {0x0D4, "VIA C7(TM) Processor Family"},
    {0x0D5, "VIA Eden(TM) Processor Family"},
    {0x0D6, "Multi-Core Intel(R) Xeon(R) processor"},
    {0x0D7, "Dual-Core Intel(R) Xeon(R) processor 3xxx Series"},
    {0x0D8, "Quad-Core Intel(R) Xeon(R) processor 3xxx Series"},
    {0x0D9, "VIA Nano(TM) Processor Family"},
    {0x0DA, "Dual-Core Intel(R) Xeon(R) processor 5xxx Series"},
    {0x0DB, "Quad-Core Intel(R) Xeon(R) processor 5xxx Series"},
    {0x0DD, "Dual-Core Intel(R) Xeon(R) processor 7xxx Series"},
    {0x0DE, "Quad-Core Intel(R) Xeon(R) processor 7xxx Series"},
    {0x0DF, "Multi-Core Intel(R) Xeon(R) processor 7xxx Series"},
    {0x0E0, "Multi-Core Intel(R) Xeon(R) processor 3400 Series"},
    {0x0E4, "AMD Opteron(TM) 3000 Series Processor"},
    {0x0E5, "AMD Sempron(TM) II Processor"},
    {0x0E6, "Embedded AMD Opteron(TM) Quad-Core Processor Family"},
    {0x0E7, "AMD phenom(TM) Triple-Core Processor Family"},
    {0x0E8, "AMD Turion(TM) Ultra Dual-Core Mobile Processor Family"},
    {0x0E9, "AMD Turion(TM) Dual-Core Mobile Processor Family"},
    {0x0EA, "AMD Athlon(TM) Dual-Core Processor Family"},
    {0x0EB, "AMD Sempron(TM) SI Processor Family"},
    {0x0EC, "AMD Phenom(TM) II Processor Family"},
    {0x0ED, "AMD Athlon(TM) II Processor Family"},
    {0x0EE, "Six-Core AMD Opteron(TM) Processor Family"},
    {0x0EF, "AMD Sempron(TM) M Processor Family"},
    {0x0FA, "i860"},
    {0x0FB, "i960"},
    {0x0FE, "Obtain from the Processor Family 2 field"},
    {0x104, "SH-3"},
    {0x105, "SH-4"},
    {0x118, "ARM"},
    {0x119, "StrongARM"},
    {0x12C, "6x86"},
    {0x12D, "MediaGX"},
    {0x12E, "MII"},
    {0x140, "WinChip"},
    {0x15E, "DSP"},
    {0x1F4, "Video Processor"},
};

constexpr std::size_t FamilyCount = 0x200;
using ReservedText = std::array<char, sizeof("Reserved [1FF]")>;

// "Reserved [n]", n being the code in hexadecimal without leading zeros.
constexpr ReservedText ReservedTextMake(std::size_t code) {
    ReservedText text{};
    std::size_t at = 0;
    for (const char letter : std::string_view("Reserved [")) {
        text[at++] = letter;
    }
    for (unsigned shift = code > 0xFF ? 8 : code > 0xF ? 4 : 0;; shift -= 4) {
        text[at++] = "0123456789ABCDEF"[(code >> shift) & 0xF];
        if (shift == 0) {
            break;
        }
    }
    text[at] = ']';
    return text;
}

constexpr std::array<ReservedText, FamilyCount> ReservedTextsMake() {
    std::array<ReservedText, FamilyCount> texts{};
    for (std::size_t code = 0; code < FamilyCount; ++code) {
        texts[code] = ReservedTextMake(code);
    }
    return texts;
}

constexpr std::array<ReservedText, FamilyCount> ReservedTexts = ReservedTextsMake();

constexpr std::array<const char*, FamilyCount> FamilyTextsMake() {
    std::array<const char*, FamilyCount> texts{};
    for (std::size_t code = 0; code < FamilyCount; ++code) {
        texts[code] = ReservedTexts[code].data();
    }
    for (const FamilyName& family : FamilyNames) {
        texts[family.Code] = family.Name;
    }
    return texts;
}

// The texts of both forms of the family, the byte and the word.
constexpr std::array<const char*, FamilyCount> ProcessorFamilyTexts = FamilyTextsMake();

constexpr bool FamilyTextsComplete() {
    for (const char* text : ProcessorFamilyTexts) {
        if (text == nullptr || *text == '\0') {
            return false;
        }
    }
    return true;
}

constexpr bool FamilyNamesAscend() {
    for (std::size_t i = 1; i < std::size(FamilyNames); ++i) {
        if (FamilyNames[i].Code <= FamilyNames[i - 1].Code) {
            return false;
        }
    }
    return true;
}

static_assert(FamilyTextsComplete(), "every family code needs a text");
static_assert(FamilyNamesAscend(), "a family code stands twice or out of order");

constexpr TextTable FamilyTable() {
    TextTable table;
    table.Low = ProcessorFamilyTexts;
    return table;
}

constexpr const char* const ProcessorVoltageNames[] = {"5V   Supported", "3.3V Supported", "2.9V Supported", nullptr};

// The voltage in tenths of a volt.
constexpr const char* const ProcessorVoltageTexts[] = {
    "Unknown", "0.1 V", "0.2 V", "0.3 V", "0.4 V", "0.5 V", "0.6 V", "0.7 V", "0.8 V", "0.9 V", "1.0 V",
    "1.1 V",   "1.2 V", "1.3 V", "1.4 V", "1.5 V", "1.6 V", "1.7 V", "1.8 V", "1.9 V", "2.0 V", "2.1 V",
    "2.2 V",   "2.3 V", "2.4 V", "2.5 V", "2.6 V", "2.7 V", "2.8 V", "2.9 V", "3.0 V", "3.1 V", "3.2 V",
    "3.3 V",   "3.4 V", "3.5 V", "3.6 V", "3.7 V", "3.8 V", "3.9 V", "4.0 V", "4.1 V", "4.2 V", "4.3 V",
    "4.4 V",   "4.5 V", "4.6 V", "4.7 V", "4.8 V", "4.9 V", "5.0 V"};

constexpr const char* const ProcessorStatusTexts[] = {
    "Unknown",  "CPU Enabled", "CPU Disabled by User", "CPU Disabled by System BIOS", "CPU is Idle", "Reserved",
    "Reserved", "Other",
};

constexpr const char* const ProcessorUpgradeTexts[] = {
    "",
    "Other",
    "Unknown",
    "Daughter Board",
    "ZIF Socket",
    "Replaceable Piggy Back",
    "None",
    "LIF Socket",
    "Slot 1",
    "Slot 2",
    "370-pin socket",
    "Slot A",
    "Slot M",
    "Socket 423",
    "Socket A(Socket 462)",
    "Socket 478",
    "Socket 754",
    "Socket 940",
    "Socket 939",
    "Socket mPGA604",
    "Socket LGA771",
    "Socket LGA775",
    "Socket S1",
    "Socket AM2",
    "Socket F(1207)",
    "Socket LGA1366",
    "Socket G34",
    "Socket AM3",
    "Socket C32",
    "Socket LGA1156",
    "Socket LGA1567",
    "Socket PGA988A",
    "Socket BGA1288",
    "Socket rPGA988B",
    "Socket BGA1023",
    "Socket BGA1224",
    "Socket BGA1155",
    "Socket LGA1356",
    "Socket LGA2011",
    "Socket FS1",
    "Socket FS2",
    "Socket FM1",
    "Socket FM2",
    "Socket LGA2011-3",
    "Socket LGA1356-3",
};

constexpr const char* const ProcessorCharacteristicNames[] = {
    "Reserved",
    "Unknown",
    "64-bit Capable",
    "Multi-Core",
    "Hardware Thread",
    "Execute Protection",
    "Enhanced Virtualization",
    "Power/Performance Control",
    nullptr,
};

constexpr std::uint64_t VoltageFormBit = 0x80;

// With the voltage form bit set the byte is the voltage itself, else a set of supported voltages.
FieldOutcome VoltageShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t voltage = 0;
    if (!FieldNumber(place, field.Row, &voltage)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("Voltage : 0x%02X", static_cast<unsigned>(voltage));
    if ((voltage & VoltageFormBit) == 0) {
        RyxPrintf("\n");
        BitListPrint(voltage, ProcessorVoltageNames);
    } else {
        RyxPrintf(" - %s\n", TextFind(ProcessorVoltageTexts, voltage - VoltageFormBit));
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type4Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    TextField(4, "Processor Type : 0x%02X - %s\n", ProcessorTypeTexts),
    TextField(5, "Processor Family : 0x%02X - %s\n", FamilyTable()),
    StringField(6, "Processor Manufacturer : %s\n"),
    NumberField(7, "Processor ID : 0x%llX\n"),
    StringField(8, "Processor Version : %s\n"),
    OwnField(9, VoltageShow),
    NumberField(10, "External Clock : 0x%04X (%d)MHz\n"),
    NumberField(11, "Max Speed : 0x%04X (%d)MHz\n"),
    NumberField(12, "Current Speed : 0x%04X (%d)MHz\n"),
    TextField(13, "Status : 0x%02X - %s\n", ProcessorStatusTexts, 0x07),
    TextField(14, "Processor Upgrade : 0x%02X - %s\n", ProcessorUpgradeTexts),
    NumberField(15, "L1 Cache Handle : 0x%04X (%d)\n"),
    NumberField(16, "L2 Cache Handle : 0x%04X (%d)\n"),
    NumberField(17, "L3 Cache Handle : 0x%04X (%d)\n"),
    StringField(18, "Serial Number : %s\n"),
    StringField(19, "Asset Tag : %s\n"),
    StringField(20, "Part Number : %s\n"),
    NumberField(21, "Core Count : 0x%02X (%d)\n"),
    NumberField(22, "Core Enabled : 0x%02X (%d)\n"),
    NumberField(23, "Thread Count : 0x%02X (%d)\n"),
    BitsField(24, "Processor Characteristics : 0x%04X\n", ProcessorCharacteristicNames),
    TextField(25, "Processor Family2 : 0x%04X - %s\n", FamilyTable()),
};

} // namespace

RyxStatus StructDecodeType4() {
    return SingleInstanceDecode(4, Type4Fields);
}
