// The decoder of processor structures (type 4).
#include "viewer/Decoders.h"
#include "viewer/VoltageNames.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>

namespace {

// Type 4, Processor Information.

constexpr const char* ProcessorTypeTexts[] = {"None",           "Other",         "Unknown",        "Central Processor",
                                              "Math Processor", "DSP Processor", "Video Processor"};

// The texts of both forms of the family, the byte and the word. A code below the end that has no name is reserved.
constexpr TextCode ProcessorFamilyTexts[] = {
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

// Codes behind that end, which only the word can hold.
constexpr TextRange ProcessorFamilyNewer[] = {
    {0x200, "RISC-V RV32"},
    {0x201, "RISC-V RV64"},
    {0x202, "RISC-V RV128"},
    {0x258, "LoongArch"},
    {0x259, "Loongson(TM) 1 Processor Family"},
    {0x25A, "Loongson(TM) 2 Processor Family"},
    {0x25B, "Loongson(TM) 3 Processor Family"},
    {0x25C, "Loongson(TM) 2K Processor Family"},
    {0x25D, "Loongson(TM) 3A Processor Family"},
    {0x25E, "Loongson(TM) 3B Processor Family"},
    {0x25F, "Loongson(TM) 3C Processor Family"},
    {0x260, "Loongson(TM) 3D Processor Family"},
    {0x261, "Loongson(TM) 3E Processor Family"},
    {0x262, "Dual-Core Loongson(TM) 2K Processor 2xxx Series"},
    {0x26C, "Quad-Core Loongson(TM) 3A Processor 5xxx Series"},
    {0x26D, "Multi-Core Loongson(TM) 3A Processor 5xxx Series"},
    {0x26E, "Quad-Core Loongson(TM) 3B Processor 5xxx Series"},
    {0x26F, "Multi-Core Loongson(TM) 3B Processor 5xxx Series"},
    {0x270, "Multi-Core Loongson(TM) 3C Processor 5xxx Series"},
    {0x271, "Multi-Core Loongson(TM) 3D Processor 5xxx Series"},
    {0x300, "Intel(R) Core(TM) 3"},
    {0x301, "Intel(R) Core(TM) 5"},
    {0x302, "Intel(R) Core(TM) 7"},
    {0x303, "Intel(R) Core(TM) 9"},
    {0x304, "Intel(R) Core(TM) Ultra 3"},
    {0x305, "Intel(R) Core(TM) Ultra 5"},
    {0x306, "Intel(R) Core(TM) Ultra 7"},
    {0x307, "Intel(R) Core(TM) Ultra 9"},
};

// Codes below that end that have been named since.
constexpr TextCode ProcessorFamilyNamed[] = {
    {0x2C, "Intel(R) Core(TM) M processor"},
    {0x2D, "Intel(R) Core(TM) m3 processor"},
    {0x2E, "Intel(R) Core(TM) m5 processor"},
    {0x2F, "Intel(R) Core(TM) m7 processor"},
    {0x66, "AMD Athlon(TM) X4 Quad-Core Processor Family"},
    {0x67, "AMD Opteron(TM) X1000 Series Processor"},
    {0x68, "AMD Opteron(TM) X2000 Series APU"},
    {0x69, "AMD Opteron(TM) A-Series Processor"},
    {0x6A, "AMD Opteron(TM) X3000 Series APU"},
    {0x6B, "AMD Zen Processor Family"},
};

constexpr std::uint64_t FamilyEnd = 0x200;

static_assert(std::ranges::adjacent_find(ProcessorFamilyTexts, std::ranges::greater_equal(), &TextCode::Code) ==
                  std::end(ProcessorFamilyTexts),
              "a family code stands twice or out of order");
static_assert(std::ranges::adjacent_find(ProcessorFamilyNewer, std::ranges::greater_equal(), &TextRange::First) ==
                      std::end(ProcessorFamilyNewer) &&
                  ProcessorFamilyNewer[0].First >= FamilyEnd,
              "a newer family code stands twice, out of order or among the reserved ones");

void FamilyPrint(const DecoderField& field, const FieldValue& value) {
    const auto code = static_cast<unsigned int>(value.Number);
    char reserved[sizeof "Reserved [1FF]"];
    const char* text = TextFind(ProcessorFamilyTexts, code);
    if (text == nullptr && code < FamilyEnd) {
        std::snprintf(reserved, sizeof reserved, "Reserved [%X]", code);
        text = reserved;
    } else if (text == nullptr) {
        text = TextFind(ProcessorFamilyNewer, code);
    }
    text = text != nullptr ? text : UnrecognizedText;
    ReportLine(value, field.Format, code, text);
    ReportMeaning(text);
}

void FamilyWholePrint(const DecoderField& field, const FieldValue& value) {
    if (const char* const text = TextFind(ProcessorFamilyNamed, value.Number); text != nullptr) {
        ReportLine(value, field.Format, static_cast<unsigned int>(value.Number), text);
        ReportMeaning(text);
    } else {
        FamilyPrint(field, value);
    }
}

// The voltage in tenths of a volt.
constexpr const char* ProcessorVoltageTexts[] = {
    "Unknown", "0.1 V", "0.2 V", "0.3 V", "0.4 V", "0.5 V", "0.6 V", "0.7 V", "0.8 V", "0.9 V", "1.0 V",
    "1.1 V",   "1.2 V", "1.3 V", "1.4 V", "1.5 V", "1.6 V", "1.7 V", "1.8 V", "1.9 V", "2.0 V", "2.1 V",
    "2.2 V",   "2.3 V", "2.4 V", "2.5 V", "2.6 V", "2.7 V", "2.8 V", "2.9 V", "3.0 V", "3.1 V", "3.2 V",
    "3.3 V",   "3.4 V", "3.5 V", "3.6 V", "3.7 V", "3.8 V", "3.9 V", "4.0 V", "4.1 V", "4.2 V", "4.3 V",
    "4.4 V",   "4.5 V", "4.6 V", "4.7 V", "4.8 V", "4.9 V", "5.0 V"};

constexpr const char* ProcessorStatusTexts[] = {
    "Unknown",  "CPU Enabled", "CPU Disabled by User", "CPU Disabled by System BIOS", "CPU is Idle", "Reserved",
    "Reserved", "Other",
};

constexpr const char* ProcessorUpgradeLow[] = {
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

constexpr TextRange ProcessorUpgradeNewer[] = {
    {0x2D, "Socket LGA1150"}, {0x2E, "Socket BGA1168"},   {0x2F, "Socket BGA1234"}, {0x30, "Socket BGA1364"},
    {0x31, "Socket AM4"},     {0x32, "Socket LGA1151"},   {0x33, "Socket BGA1356"}, {0x34, "Socket BGA1440"},
    {0x35, "Socket BGA1515"}, {0x36, "Socket LGA3647-1"}, {0x37, "Socket SP3"},     {0x38, "Socket SP3r2"},
    {0x39, "Socket LGA2066"}, {0x3A, "Socket BGA1392"},   {0x3B, "Socket BGA1510"}, {0x3C, "Socket BGA1528"},
    {0x3D, "Socket LGA4189"}, {0x3E, "Socket LGA1200"},   {0x3F, "Socket LGA4677"}, {0x40, "Socket LGA1700"},
    {0x41, "Socket BGA1744"}, {0x42, "Socket BGA1781"},   {0x43, "Socket BGA1211"}, {0x44, "Socket BGA2422"},
    {0x45, "Socket LGA1211"}, {0x46, "Socket LGA2422"},   {0x47, "Socket LGA5773"}, {0x48, "Socket BGA5773"},
    {0x49, "Socket AM5"},     {0x4A, "Socket SP5"},       {0x4B, "Socket SP6"},     {0x4C, "Socket BGA883"},
    {0x4D, "Socket BGA1190"}, {0x4E, "Socket BGA4129"},   {0x4F, "Socket LGA4710"}, {0x50, "Socket LGA7529"},
    {0x51, "Socket BGA1964"}, {0x52, "Socket BGA1792"},   {0x53, "Socket BGA2049"}, {0x54, "Socket BGA2551"},
    {0x55, "Socket LGA1851"}, {0x56, "Socket BGA2114"},   {0x57, "Socket BGA2833"},
};

constexpr TextTable ProcessorUpgradeTexts = TextTable(ProcessorUpgradeLow).With(ProcessorUpgradeNewer);

constexpr const char* ProcessorCharacteristicNames[] = {
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
void VoltagePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    if ((value.Number & VoltageFormBit) == 0) {
        ReportMore("\n");
        ReportBits(value.Number, ProcessorVoltageNames);
    } else {
        TextReport(" - %s\n", TextFind(ProcessorVoltageTexts, value.Number - VoltageFormBit));
    }
}

constexpr DecoderField Type4Fields[] = {
    StringField(3, "Socket Designation : %s\n"),
    TextField(4, "Processor Type : 0x%02X - %s\n", ProcessorTypeTexts),
    OwnField(5, FamilyPrint, "Processor Family : 0x%02X - %s\n", "ns"),
    StringField(6, "Processor Manufacturer : %s\n"),
    NumberField(7, "Processor ID : 0x%llX\n"),
    StringField(8, "Processor Version : %s\n"),
    OwnField(9, VoltagePrint, "Voltage : 0x%02X"),
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
    OwnField(25, FamilyPrint, "Processor Family2 : 0x%04X - %s\n", "ns"),
};

constexpr const char* ProcessorSocketTexts[] = {"Unpopulated", "Populated"};

void StatusWholePrint(const DecoderField& field, const FieldValue& value) {
    const char* const status = TextFind(ProcessorStatusTexts, value.Number & 0x07);
    ReportLine(value, field.Format, static_cast<unsigned int>(value.Number), status);
    ReportMeaning(status);
    ReportDetail(" Socket : %s\n", ProcessorSocketTexts[value.Number >> 6 & 1]);
}

constexpr const char* ProcessorCharacteristicNewerNames[] = {"128-bit Capable", "Arm64 SoC ID", nullptr};

constexpr auto ProcessorCharacteristicWholeNames =
    NamesLonger(ProcessorCharacteristicNames, ProcessorCharacteristicNewerNames);

constexpr std::uint8_t CoreCount2Row = 26;
constexpr std::uint8_t CoreEnabled2Row = 27;
constexpr std::uint8_t ThreadCount2Row = 28;
constexpr std::uint8_t SocketTypeRow = 30;

constexpr NumberCase UpgradeCases[] = {
    {0xFF, "Processor Upgrade : 0x%02X - See Socket Type\n", nullptr, SocketTypeRow, 0x33},
};
constexpr NumberCase CoreCountCases[] = {
    {0xFF, "Core Count : 0x%02X - See Core Count2\n", nullptr, CoreCount2Row, 0x2C},
};
constexpr NumberCase CoreEnabledCases[] = {
    {0xFF, "Core Enabled : 0x%02X - See Core Enabled2\n", nullptr, CoreEnabled2Row, 0x2E},
};
constexpr NumberCase ThreadCountCases[] = {
    {0xFF, "Thread Count : 0x%02X - See Thread Count2\n", nullptr, ThreadCount2Row, 0x30},
};
constexpr NumberCase CoreCount2Cases[] = {{0, "Core Count2 : 0x%04X - %s\n", "Unknown"}};
constexpr NumberCase CoreEnabled2Cases[] = {{0, "Core Enabled2 : 0x%04X - %s\n", "Unknown"}};
constexpr NumberCase ThreadCount2Cases[] = {{0, "Thread Count2 : 0x%04X - %s\n", "Unknown"}};
constexpr NumberCase ThreadEnabledCases[] = {{0, "Thread Enabled : 0x%04X - %s\n", "Unknown"}};

constexpr DecoderField Type4Whole[] = {
    OwnField(5, FamilyWholePrint, "Processor Family : 0x%02X - %s\n", "ns"),
    OwnField(13, StatusWholePrint, "Status : 0x%02X - %s\n", "ns"),
    TextField(14, "Processor Upgrade : 0x%02X - %s\n", ProcessorUpgradeTexts).With(UpgradeCases),
    NumberField(21, "Core Count : 0x%02X (%d)\n").With(CoreCountCases),
    NumberField(22, "Core Enabled : 0x%02X (%d)\n").With(CoreEnabledCases),
    NumberField(23, "Thread Count : 0x%02X (%d)\n").With(ThreadCountCases),
    BitsField(24, "Processor Characteristics : 0x%04X\n", ProcessorCharacteristicWholeNames.data()),
    OwnField(25, FamilyWholePrint, "Processor Family2 : 0x%04X - %s\n", "ns"),
    NumberField(CoreCount2Row, "Core Count2 : 0x%04X (%d)\n").With(CoreCount2Cases),
    NumberField(CoreEnabled2Row, "Core Enabled2 : 0x%04X (%d)\n").With(CoreEnabled2Cases),
    NumberField(ThreadCount2Row, "Thread Count2 : 0x%04X (%d)\n").With(ThreadCount2Cases),
    NumberField(29, "Thread Enabled : 0x%04X (%d)\n").With(ThreadEnabledCases),
    StringField(SocketTypeRow, "Socket Type : %s\n"),
};

} // namespace

constinit const StructDecoder StructDecodeType4(4, "Processor", DecoderForm::Single, Type4Fields, Type4Whole);
