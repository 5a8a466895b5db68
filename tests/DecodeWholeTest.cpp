// What only the whole table shows: newer fields and types, lists to their end, and lines that speak differently.
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/LibraryContext.h"
#include "machine/model/SampleMachine.h"
#include "tests/DecoderCases.h"

#include <map>

namespace {

constexpr Selection Whole{.InstanceEnd = 255, .Whole = true};

// How a field ends whose structure is a byte too short: it is not there; the list has one record less; the data have
// one byte less.
enum class Ending { Missing, Shorter, Cut };

// A field on a structure in which every byte is its own offset, but for some, and string N of the set is "sN": so no
// neighbour has its value. End is where it ends.
struct WholeCase {
    std::uint8_t Type;
    std::int64_t Field;
    std::size_t End;
    std::string Lines;
    std::map<std::size_t, std::uint8_t> Changes = {};
    Ending Short = Ending::Missing;
};

const WholeCase WholeCases[] = {
    {0, 15, 0x1A, "Extended BIOS ROM Size : 0x1918 (6424 MB)\n"},
    {3, 20, 0x1D, "Rack Type : 0x1C - Unrecognized\n", {{0x13, 2}, {0x14, 3}}},
    {3, 21, 0x1E, "Rack Height : 0x1D (29)\n", {{0x13, 2}, {0x14, 3}}},
    {4, 27, 0x2C, "Core Count2 : 0x2B2A (11050)\n"},
    {4, 28, 0x2E, "Core Enabled2 : 0x2D2C (11564)\n"},
    {4, 29, 0x30, "Thread Count2 : 0x2F2E (12078)\n"},
    {4, 30, 0x32, "Thread Enabled : 0x3130 (12592)\n"},
    {4, 31, 0x33, "Socket Type : s32\n"},
    {7, 14, 0x17, "Maximum Cache Size2 : 0x16151413 - 370480147KB, 361797MB, 353GB\n"},
    {7, 15, 0x1B, "Installed Cache Size2 : 0x1A191817 - 437852183KB, 427590MB, 417GB\n"},
    {9, 15, 0x12, "Data Bus Width (Base) : 0x11 - Unrecognized\n", {{0x12, 2}}},
    {9, 16, 0x13, "Peer Grouping Count : 0x02 (2)\n", {{0x12, 2}}},
    {9,
     17,
     0x1D,
     "Peer Groups :\n01.  Segment Group Number : 0x1413\n     Bus Number : 0x15\n     Device/Function Number : 0x16\n     Data Bus Width : 0x17 - Unrecognized\n02.  Segment Group Number : 0x1918\n     Bus Number : 0x1A\n     Device/Function Number : 0x1B\n     Data Bus Width : 0x1C - Unrecognized\n",
     {{0x12, 2}}},
    {9, 18, 0x1E, "Slot Information : 0x1D (29)\n", {{0x12, 2}}},
    {9, 19, 0x1F, "Slot Physical Width : 0x1E - Unrecognized\n", {{0x12, 2}}},
    {9, 20, 0x21, "Slot Pitch : 0x201F (82.23 mm)\n", {{0x12, 2}}},
    {9, 21, 0x22, "Slot Height : 0x21 - Unrecognized\n", {{0x12, 2}}},
    {10,
     6,
     0x0A,
     "Device Type : 0x06\n Status : Device Disabled\n Type : TokenRing\nDescription String : s07\nDevice Type : 0x08\n Status : Device Disabled\n Type : PATAController\nDescription String : s09\n",
     {},
     Ending::Shorter},
    {11, 5, 0x05, "String 1 : s01\nString 2 : s02\nString 3 : s03\nString 4 : s04\n"},
    {12, 5, 0x05, "String 1 : s01\nString 2 : s02\nString 3 : s03\nString 4 : s04\n"},
    {13, 8, 0x05, "Language 1 : s01\nLanguage 2 : s02\nLanguage 3 : s03\nLanguage 4 : s04\n"},
    {14,
     7,
     0x0E,
     "Item Type : 0x08 (08)\nItem Handle : 0x0A09 (2569)\nItem Type : 0x0B (11)\nItem Handle : 0x0D0C (3340)\n",
     {},
     Ending::Shorter},
    {17, 26, 0x29, "Memory Technology : 0x28 - Unrecognized\n"},
    {17, 27, 0x2B,
     "Memory Operating Mode Capability : 0x2A29\n" +
         Bits(0x2A29, {"Reserved, set to 0", "Other", "Unknown", "Volatile memory", "Byte-accessible persistent memory",
                       "Block-accessible persistent memory"})},
    {17, 28, 0x2C, "Firmware Version : s2B\n"},
    {17, 29, 0x2E, "Module Manufacturer ID : 0x2D2C (Bank 45, Code 0x2D)\n"},
    {17, 30, 0x30, "Module Product ID : 0x2F2E \n"},
    {17, 31, 0x32, "Memory Subsystem Controller Manufacturer ID : 0x3130 (Bank 49, Code 0x31)\n"},
    {17, 32, 0x34, "Memory Subsystem Controller Product ID : 0x3332 \n"},
    {17, 33, 0x3C, "Non-volatile Size : 0x3B3A393837363534 - 4167760264154509KB, 4070078382963MB, 3974685920GB\n"},
    {17, 34, 0x44, "Volatile Size : 0x434241403F3E3D3C - 4732917864451983KB, 4621990102003MB, 4513662208GB\n"},
    {17, 35, 0x4C, "Cache Size : 0x4B4A494847464544 - 5298075464749457KB, 5173901821044MB, 5052638497GB\n"},
    {17, 36, 0x54, "Logical Size : 0x535251504F4E4D4C - 5863233065046931KB, 5725813540084MB, 5591614785GB\n"},
    {17, 37, 0x58, "Extended Speed : 0x57565554 (1465275732)MT/s\n"},
    {17, 38, 0x5C, "Extended Configured Memory Speed : 0x5B5A5958 (1532647768)MT/s\n"},
    {17, 39, 0x5E, "PMIC0 Manufacturer ID : 0x5D5C (Bank 93, Code 0x5D)\n"},
    {17, 40, 0x60, "PMIC0 Revision Number : 0x5F5E \n"},
    {17, 41, 0x62, "RCD Manufacturer ID : 0x6160 (Bank 97, Code 0x61)\n"},
    {17, 42, 0x64, "RCD Revision Number : 0x6362 \n"},
    {37,
     11,
     0x10,
     "Memory2 Device Load : 0x0A (10)\nMemory Device2 Handle : 0x0C0B (3083)\nMemory3 Device Load : 0x0D (13)\nMemory Device3 Handle : 0x0F0E (3854)\n",
     {{0x06, 4}}},
    {39, 16, 0x06, "Location : s05\n"},
    {42, 6, 0x11, "Interface Type Specific Data Length : 0x06 (6)\n", {{0x05, 6}, {0x0C, 1}, {0x0E, 2}}},
    {42, 7, 0x11, "Interface Type Specific Data :\n  06 07 08 09 0A 0B\n", {{0x05, 6}, {0x0C, 1}, {0x0E, 2}}},
    {42, 8, 0x11, "Number of Protocol Records : 0x01 (1)\n", {{0x05, 6}, {0x0C, 1}, {0x0E, 2}}},
    {42,
     9,
     0x11,
     "Protocol Records :\n01.  Protocol Type : 0x0D - Reserved\n     Protocol Type Specific Data Length : 0x02 (2)\n     Protocol Type Specific Data :\n       0F 10\n",
     {{0x05, 6}, {0x0C, 1}, {0x0E, 2}}},
    {43, 4, 0x08, "Vendor ID : 0x04 0x05 0x06 0x07 - \4\5\6\7\n"},
    {43, 5, 0x09, "Major Spec Version : 0x08 (8)\n"},
    {43, 6, 0x0A, "Minor Spec Version : 0x09 (9)\n"},
    {43, 7, 0x0E, "Firmware Version 1 : 0x0D0C0B0A\n"},
    {43, 8, 0x12, "Firmware Version 2 : 0x11100F0E\n"},
    {43, 9, 0x13, "Description : s12\n"},
    {43, 10, 0x1B,
     "Characteristics : 0x1A19181716151413\n" +
         Bits(0x13, {"Reserved", "Reserved", "TPM Device Characteristics are not supported",
                     "Family configurable via firmware update", "Family configurable via platform software support",
                     "Family configurable via OEM proprietary mechanism"})},
    {43, 11, 0x1F, "OEM-defined : 0x1E1D1C1B\n"},
    {44, 4, 0x06, "Referenced Handle : 0x0504 (1284)\n"},
    {44, 5, 0x07, "Processor-specific Block Length : 0x06 (6)\n"},
    {44, 6, 0x08, "Processor Type : 0x07 - 64-bit RISC-V (RV64)\n"},
    {44, 7, 0x0E, "Processor-specific Data :\n  08 09 0A 0B 0C 0D\n", {}, Ending::Cut},
    {45, 4, 0x05, "Firmware Component Name : s04\n"},
    {45, 5, 0x06, "Firmware Version : s05\n"},
    {45, 6, 0x07, "Firmware Version Format : 0x06 - Available for future assignment by this spec\n"},
    {45, 7, 0x08, "Firmware ID : s07\n"},
    {45, 8, 0x09, "Firmware ID Format : 0x08 - Available for future assignment by this spec\n"},
    {45, 9, 0x0A, "Release Date : s09\n"},
    {45, 10, 0x0B, "Manufacturer : s0A\n"},
    {45, 11, 0x0C, "Lowest Supported Firmware Version : s0B\n"},
    {45, 12, 0x14, "Image Size : 0x131211100F0E0D0C - 1341972262667139KB, 1310519787760MB, 1279804480GB\n"},
    {45, 13, 0x16, "Characteristics : 0x1514\n" + Bits(0x1514, {"Updatable", "Write-Protect"})},
    {45, 14, 0x17, "State : 0x16 - Unrecognized\n"},
    {45, 15, 0x18, "Number of Associated Components : 0x17 (23)\n"},
    {45, 16, 0x1C, "Associated Component Handles : 0x1918 0x1B1A \n", {{0x17, 2}}},
    {46, 4, 0x06, "String Property ID : 0x0504 - Reserved for future DMTF use\n"},
    {46, 5, 0x07, "String Property Value : s06\n"},
    {46, 6, 0x09, "Parent Handle : 0x0807 (2055)\n"},
};

Bytes AreaOf(const WholeCase& each, std::size_t end) {
    Bytes area;
    for (std::size_t at = 4; at < end; ++at) {
        const auto change = each.Changes.find(at);
        area.push_back(change != each.Changes.end() ? change->second : static_cast<std::uint8_t>(at));
    }
    return area;
}

std::string ShownOf(const WholeCase& each, std::size_t end, std::uint8_t version = 39) {
    SmbiosBuilder table;
    table.Begin(each.Type).Raw(AreaOf(each, end));
    for (int number = 1; number < 0x60; ++number) {
        char text[8];
        std::snprintf(text, sizeof text, "s%02X", static_cast<unsigned>(number));
        table.SetString(text);
    }
    Selection selection = Whole;
    selection.Field = each.Field;
    return Decoded(each.Type, table, version, selection);
}

// The same structure at the end of a table that ends with its last byte, or before it.
std::string ShownAtTableEnd(const WholeCase& each, std::size_t cut) {
    Bytes table{each.Type, static_cast<std::uint8_t>(each.End), 0, 0};
    const Bytes area = AreaOf(each, each.End - cut);
    table.insert(table.end(), area.begin(), area.end());
    const auto length = static_cast<std::uint16_t>(table.size());
    StandIn::Machine machine;
    machine.Memory = {{0xF0000, StandIn::EntryPoint21(3, 9, 0xE0000, length, 1, length)}, {0xE0000, table}};
    StartOver(std::move(machine));
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    LibraryContextGet().WholeTable = true;
    ViewerFieldSelected = each.Field;
    std::string shown = Captured([&each] { (*StructDecoderTable[each.Type])(each.Type); });
    ViewerBinsRelease();
    return shown;
}

TEST(DecodeWhole, EveryNewerFieldAloneAndAByteTooShort) {
    constexpr std::size_t otherTypes = 2; // the rows of types without any of their own
    EXPECT_EQ(std::size(WholeCases), std::size(DmiNewerFieldTable) - otherTypes) << "every newer field has a case here";
    for (const WholeCase& each : WholeCases) {
        SCOPED_TRACE("type " + std::to_string(each.Type) + ", field " + std::to_string(each.Field));
        EXPECT_EQ(ShownOf(each, each.End), "\n" + each.Lines);
        EXPECT_EQ(ViewerFieldCounter, each.Field);
        const std::string less = ShownOf(each, each.End - 1);
        if (each.Short == Ending::Missing) {
            EXPECT_EQ(less, "\n");
            EXPECT_EQ(ShownAtTableEnd(each, 1), "\n");
        } else {
            EXPECT_EQ(each.Lines.rfind(less.substr(1, less.size() - (each.Short == Ending::Cut ? 2 : 1)), 0), 0U)
                << less;
            EXPECT_LT(less.size(), each.Lines.size() + 1);
        }
        const bool known = StructDecoderTable[each.Type]->Form < DecoderForm::Newer;
        EXPECT_EQ(Decoded(each.Type, SmbiosBuilder().Begin(each.Type).Raw(AreaOf(each, each.End)), 39, {each.Field}),
                  known ? "\n" : "")
            << "only the whole table has it";
    }
}

// A field that is there only with a value that sends the reader to it, or not.
struct SeeCase {
    std::uint8_t Type;
    std::int64_t Field;
    std::size_t Offset;
    std::size_t Width;
    std::uint64_t Value;
    std::size_t Other;
    std::size_t Length;
    const char* See;
    const char* Otherwise;
};

constexpr SeeCase SeeCases[] = {
    {0, 8, 0x09, 1, 0xFF, 0x18, 0x1A, "BIOS ROM Size : 0xFF - See Extended BIOS ROM Size\n",
     "BIOS ROM Size : 0xFF (16384 KB)\n"},
    {3, 14, 0x11, 1, 0xFF, 0x17, 0x18, "Height : 0xFF - See Rack Height\n", "Height : 0xFF (255)\n"},
    {4, 15, 0x19, 1, 0xFF, 0x32, 0x33, "Processor Upgrade : 0xFF - See Socket Type\n",
     "Processor Upgrade : 0xFF - Unrecognized\n"},
    {4, 22, 0x23, 1, 0xFF, 0x2A, 0x2C, "Core Count : 0xFF - See Core Count2\n", "Core Count : 0xFF (255)\n"},
    {4, 23, 0x24, 1, 0xFF, 0x2C, 0x2E, "Core Enabled : 0xFF - See Core Enabled2\n", "Core Enabled : 0xFF (255)\n"},
    {4, 24, 0x25, 1, 0xFF, 0x2E, 0x30, "Thread Count : 0xFF - See Thread Count2\n", "Thread Count : 0xFF (255)\n"},
    {7, 6, 0x07, 2, 0xFFFF, 0x13, 0x17, "Maximum Cache Size : 0xFFFF - See Maximum Cache Size2\n",
     "Maximum Cache Size : 0xFFFF\n Maximum Granularity : 64 KB\n Maximum Size : 2097088 KB\n"},
    {7, 7, 0x09, 2, 0xFFFF, 0x17, 0x1B, "Installed Size : 0xFFFF - See Installed Cache Size2\n",
     "Installed Size : 0xFFFF\n Installed Granularity : 64 KB\n Installed Size : 2097088 KB\n"},
    {16, 7, 0x07, 4, 0x80000000, 0x0F, 0x17, "Maximum Capacity : 0x80000000 - See Extended Maximum Capacity\n",
     "Maximum Capacity : 0x80000000 - Unknown\n"},
    {17, 8, 0x0C, 2, 0x7FFF, 0x1C, 0x20, "Size : 0x7FFF - See Extended Size\n",
     "Size : 0x7FFF - 33553408KB, 32767MB, 31GB\n"},
    {17, 15, 0x15, 2, 0xFFFF, 0x54, 0x58, "Speed : 0xFFFF - See Extended Speed\n", "Speed : 0xFFFF (65535)MT/s\n"},
    {17, 22, 0x20, 2, 0xFFFF, 0x58, 0x5C,
     "Configured Memory Clock Speed : 0xFFFF - See Extended Configured Memory Speed\n",
     "Configured Memory Clock Speed : 0xFFFF (65535)MT/s\n"},
    {19, 4, 0x04, 4, 0xFFFFFFFF, 0x0F, 0x1F, "Starting Address : 0xFFFFFFFF - See Extended Starting Address\n",
     "Starting Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\n"},
    {19, 5, 0x08, 4, 0xFFFFFFFF, 0x17, 0x1F, "Ending Address : 0xFFFFFFFF - See Extended Ending Address\n",
     "Ending Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\n"},
    {20, 4, 0x04, 4, 0xFFFFFFFF, 0x13, 0x23, "Starting Address : 0xFFFFFFFF - See Extended Starting Address\n",
     "Starting Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\n"},
    {20, 5, 0x08, 4, 0xFFFFFFFF, 0x1B, 0x23, "Ending Address : 0xFFFFFFFF - See Extended Ending Address\n",
     "Ending Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\n"},
};

TEST(DecodeWhole, LinesThatReferToAnotherField) {
    for (const SeeCase& each : SeeCases) {
        SCOPED_TRACE("type " + std::to_string(each.Type) + ", field " + std::to_string(each.Field));
        Bytes area(each.Length - 4);
        for (std::size_t i = 0; i < each.Width; ++i) {
            area[each.Offset - 4 + i] = static_cast<std::uint8_t>(each.Value >> 8 * i);
        }
        const auto shown = [&each](const Bytes& bytes) {
            Selection selection = Whole;
            selection.Field = each.Field;
            return Decoded(each.Type, SmbiosBuilder().Begin(each.Type).Raw(bytes), 39, selection);
        };
        EXPECT_EQ(shown(area), std::string("\n") + each.Otherwise) << "the other is 0";
        area[each.Other - 4] = 1;
        EXPECT_EQ(shown(area), std::string("\n") + each.See);
        area.pop_back();
        EXPECT_EQ(shown(area), std::string("\n") + each.Otherwise) << "the other is not there";
    }
}

// Fields of the whole table on structures that are zero but for one value.
void ExpectWhole(std::uint8_t type, std::size_t length, std::initializer_list<FieldCase> cases) {
    for (const FieldCase& each : cases) {
        Bytes area(length - 4);
        std::copy(each.Value.begin(), each.Value.end(), area.begin() + static_cast<std::ptrdiff_t>(each.Offset - 4));
        Selection selection = Whole;
        selection.Field = each.Field;
        EXPECT_EQ(Decoded(type, SmbiosBuilder().Begin(type).Raw(area), 39, selection), "\n" + each.Lines)
            << "type " << int(type) << ", field " << each.Field;
    }
}

TEST(DecodeWhole, SpecialValuesAndTexts) {
    const std::string ones(16, 'F');
    const Bytes eightOnes(8, 0xFF);
    ExpectWhole(0, 0x1A,
                {{10,
                  0x12,
                  {0x00, 0x60},
                  "BIOS Characteristics Extension1 : 0x00\n" +
                      Bits(0, {"ACPI supported", "USB Legacy is supported", "AGP is supported", "I2O boot is supported",
                               "LS-120 boot is supported", "ATAPI ZIP Drive boot is supported",
                               "1394 boot is supported", "Smart Battery supported"}) +
                      "BIOS Characteristics Extension2 : 0x60\n" +
                      Bits(0x60, {"BIOS Boot Specification Supported", "Function Key Initiated NSB Supported",
                                  "Enable Targeted Content Distribution", "UEFI Specification is supported",
                                  "Describes a virtual machine", "Manufacturing mode is supported",
                                  "Manufacturing mode is enabled"})},
                 {15, 0x18, {0x00, 0x00}, "Extended BIOS ROM Size : 0x0000 - Unknown\n"},
                 {15, 0x18, {0x10, 0x40}, "Extended BIOS ROM Size : 0x4010 (16 GB)\n"},
                 {15, 0x18, {0x10, 0x80}, "Extended BIOS ROM Size : 0x8010 - Unrecognized\n"},
                 {15, 0x18, {0x10, 0xC0}, "Extended BIOS ROM Size : 0xC010 - Unrecognized\n"}});
    ExpectWhole(3, 0x18,
                {{20, 0x16, {0}, "Rack Type : 0x00 - Unspecified\n"}, {20, 0x16, {1}, "Rack Type : 0x01 - OU\n"}});
    ExpectWhole(
        4, 0x33,
        {{6, 0x06, {0x6B}, "Processor Family : 0x6B - AMD Zen Processor Family\n"},
         {6, 0x06, {0x2C}, "Processor Family : 0x2C - Intel(R) Core(TM) M processor\n"},
         {6, 0x06, {0x6C}, "Processor Family : 0x6C - Reserved [6C]\n"},
         {26, 0x28, {0x66, 0x00}, "Processor Family2 : 0x0066 - AMD Athlon(TM) X4 Quad-Core Processor Family\n"},
         {26, 0x28, {0x07, 0x03}, "Processor Family2 : 0x0307 - Intel(R) Core(TM) Ultra 9\n"},
         {14, 0x18, {0x41}, "Status : 0x41 - CPU Enabled\n Socket : Populated\n"},
         {14, 0x18, {0x87}, "Status : 0x87 - Other\n Socket : Unpopulated\n"},
         {25,
          0x26,
          {0x00, 0x03},
          "Processor Characteristics : 0x0300\n" +
              Bits(0x300,
                   {"Reserved", "Unknown", "64-bit Capable", "Multi-Core", "Hardware Thread", "Execute Protection",
                    "Enhanced Virtualization", "Power/Performance Control", "128-bit Capable", "Arm64 SoC ID"})},
         {27, 0x2A, {0, 0}, "Core Count2 : 0x0000 - Unknown\n"},
         {28, 0x2C, {0, 0}, "Core Enabled2 : 0x0000 - Unknown\n"},
         {29, 0x2E, {0, 0}, "Thread Count2 : 0x0000 - Unknown\n"},
         {30, 0x30, {0, 0}, "Thread Enabled : 0x0000 - Unknown\n"},
         {30, 0x30, {0xFF, 0xFF}, "Thread Enabled : 0xFFFF (65535)\n"},
         {31, 0x32, {0}, "Socket Type : NULL\n"}});
    ExpectWhole(7, 0x1B,
                {{6,
                  0x07,
                  {0x00, 0x84},
                  "Maximum Cache Size : 0x8400\n Maximum Granularity : 64 KB\n Maximum Size : 65536 KB\n"},
                 {7,
                  0x09,
                  {0x00, 0x04},
                  "Installed Size : 0x0400\n Installed Granularity : 01 KB\n Installed Size : 1024 KB\n"},
                 {14, 0x13, {0, 0, 0, 0}, "Maximum Cache Size2 : 0x00000000 - Unknown\n"},
                 {14, 0x13, {0x00, 0x04, 0, 0x80}, "Maximum Cache Size2 : 0x80000400 - 65536KB, 64MB, 0GB\n"},
                 {14,
                  0x13,
                  {0xFF, 0xFF, 0xFF, 0xFF},
                  "Maximum Cache Size2 : 0xFFFFFFFF - 137438953408KB, 134217727MB, 131071GB\n"},
                 {15, 0x17, {0, 0, 0, 0}, "Installed Cache Size2 : 0x00000000 - Unknown\n"}});
    ExpectWhole(9, 0x18,
                {{11,
                  0x0C,
                  {0xF8},
                  "Slot Characteristics2 : 0xF8\n" +
                      Bits(0xF8, {"PCI Power Management Enable", "Slot Support hot-plug devices",
                                  "PCI slot supports SMBus signal", "PCIe slot supports bifurcation",
                                  "Slot supports async/surprise removal", "Flexbus slot, CXL 1.0 capable",
                                  "Flexbus slot, CXL 2.0 capable", "Flexbus slot, CXL 3.0 capable"})},
                 {15, 0x11, {0x0D}, "Data Bus Width (Base) : 0x0D - 16x or x16\n"},
                 {17, 0x12, {0}, ""},
                 {20, 0x15, {0, 0}, "Slot Pitch : 0x0000 - Unknown\n"},
                 {20, 0x15, {0xF0, 0x07}, "Slot Pitch : 0x07F0 (20.32 mm)\n"},
                 {21, 0x17, {4}, "Slot Height : 0x04 - Low-profile\n"}});
    ExpectWhole(16, 0x17,
                {{10,
                  0x0F,
                  {0, 0, 0, 0, 0, 6, 0, 0},
                  "Extended Maximum Capacity : 0x60000000000 - 6442450944KB, 6291456MB, 6144GB\n"}});
    ExpectWhole(
        17, 0x64,
        {{6, 0x08, {0xFF, 0xFF}, "Total Width : 0xFFFF - Unknown\n"},
         {7, 0x0A, {0xFF, 0xFF}, "Data Width : 0xFFFF - Unknown\n"},
         {8, 0x0C, {0, 0}, "Size : 0x0000 - No Module Installed\n"},
         {8, 0x0C, {0xFF, 0xFF}, "Size : 0xFFFF - Unknown\n"},
         {8, 0x0C, {0x00, 0x88}, "Size : 0x8800 - 2048KB, 2MB, 0GB\n"},
         {8, 0x0C, {0x00, 0x20}, "Size : 0x2000 - 8388608KB, 8192MB, 8GB\n"},
         {14,
          0x13,
          {0x00, 0x80},
          "Type Detail : 0x8000\n" +
              Bits(0x8000, {"Reserved, set to 0", "Other", "Unknown", "Fast-paged", "Static column", "Pseudo-static",
                            "RAMBUS", "Synchronous", "CMOS", "EDO", "Window DRAM", "Cache DRAM", "Non-volatile",
                            "Registered (Buffered)", "Unbuffered (Unregistered)", "LRDIMM"})},
         {21, 0x1C, {0, 0, 0, 0}, "Extended Size : 0x00000000\n"},
         {21, 0x1C, {0, 0, 1, 0x80}, "Extended Size : 0x80010000 - 65536MB, 64GB\n"},
         {26, 0x28, {0}, "Memory Technology : 0x00 - \n"},
         {26, 0x28, {7}, "Memory Technology : 0x07 - Intel(R) Optane(TM) persistent memory\n"},
         {26, 0x28, {8}, "Memory Technology : 0x08 - MRDIMM\n"},
         {29, 0x2C, {0, 0}, "Module Manufacturer ID : 0x0000 - Unknown\n"},
         {29, 0x2C, {0x01, 0x98}, "Module Manufacturer ID : 0x9801 (Bank 2, Code 0x98)\n"},
         {29, 0x2C, {0x80, 0xCE}, "Module Manufacturer ID : 0xCE80 (Bank 1, Code 0xCE)\n"},
         {30, 0x2E, {0, 0}, "Module Product ID : 0x0000 - Unknown\n"},
         {31, 0x30, {0, 0}, "Memory Subsystem Controller Manufacturer ID : 0x0000 - Unknown\n"},
         {32, 0x32, {0, 0}, "Memory Subsystem Controller Product ID : 0x0000 - Unknown\n"},
         {33, 0x34, {0}, "Non-volatile Size : 0x0 - None\n"},
         {34, 0x3C, eightOnes, "Volatile Size : 0x" + ones + " - Unknown\n"},
         {35, 0x44, {0}, "Cache Size : 0x0 - None\n"},
         {36, 0x4C, eightOnes, "Logical Size : 0x" + ones + " - Unknown\n"},
         {37, 0x54, {0}, "Extended Speed : 0x00000000\n"},
         {37, 0x54, {1, 0, 0, 0x80}, "Extended Speed : 0x80000001 (1)MT/s\n"},
         {38, 0x58, {0}, "Extended Configured Memory Speed : 0x00000000\n"},
         {39, 0x5C, {0, 0}, "PMIC0 Manufacturer ID : 0x0000 - Unknown\n"},
         {40, 0x5E, {0x00, 0xFF}, "PMIC0 Revision Number : 0xFF00 - Unknown\n"},
         {41, 0x60, {0, 0}, "RCD Manufacturer ID : 0x0000 - Unknown\n"},
         {42, 0x62, {0x00, 0xFF}, "RCD Revision Number : 0xFF00 - Unknown\n"}});
    ExpectWhole(42, 8,
                {{4, 0x04, {0x0A}, "Interface Type : 0x0A - I3C\n"},
                 {4, 0x04, {0x3F}, "Interface Type : 0x3F - Reserved\n"},
                 {4, 0x04, {0x40}, "Interface Type : 0x40 - Network Host Interface\n"},
                 {4, 0x04, {0xF0}, "Interface Type : 0xF0 - OEM\n"},
                 {7, 0x05, {0}, ""},
                 {9, 0x05, {0}, ""}});
    ExpectWhole(43, 0x1F,
                {{4, 0x04, {'I', 'F', 'X', 0}, "Vendor ID : 0x49 0x46 0x58 0x00 - IFX\n"},
                 {4, 0x04, {0, 'F'}, "Vendor ID : 0x00 0x46 0x00 0x00 - NULL\n"},
                 {7, 0x08, {2, 0, 0x12, 0x00, 0x58, 0x02}, "Firmware Version 1 : 0x02580012 (600.18)\n"},
                 {7, 0x08, {1, 2, 0x01, 0x02, 0x25, 0x0B}, "Firmware Version 1 : 0x0B250201 (37.11)\n"}});
    ExpectWhole(44, 8, {{6, 0x07, {0x0B}, "Processor Type : 0x0B - Unrecognized\n"}, {7, 0x06, {4}, ""}});
    ExpectWhole(45, 0x18,
                {{6, 0x06, {0x80}, "Firmware Version Format : 0x80 - BIOS Vendor/OEM-specific\n"},
                 {8, 0x08, {1}, "Firmware ID Format : 0x01 - UEFI GUID string\n"},
                 {12, 0x0C, {0}, "Image Size : 0x0 - 0KB, 0MB, 0GB\n"},
                 {12, 0x0C, eightOnes, "Image Size : 0x" + ones + " - Unknown\n"},
                 {14, 0x16, {8}, "State : 0x08 - Unavailable Offline\n"},
                 {16, 0x17, {0}, ""}});
    ExpectWhole(46, 9,
                {{4, 0x04, {0, 0}, "String Property ID : 0x0000 - Reserved\n"},
                 {4, 0x04, {0x01, 0x80}, "String Property ID : 0x8001 - BIOS vendor use\n"},
                 {4, 0x04, {0x00, 0xC0}, "String Property ID : 0xC000 - OEM use\n"}});
}

// The length decides which fields there are, and not the version, but for what stray bytes would be read as.
TEST(DecodeWhole, VersionsCountWhereStrayBytesWould) {
    for (const WholeCase& each : WholeCases) {
        const bool asked = each.Type == 3 || each.Type == 42;
        EXPECT_EQ(ShownOf(each, each.End, each.Type == 3 ? 38 : 31), asked ? "\n" : "\n" + each.Lines)
            << int(each.Type) << " " << each.Field;
    }
    const auto area = Bytes(19);
    Selection sku = Whole;
    sku.Field = 19;
    EXPECT_EQ(Decoded(3, SmbiosBuilder().Begin(3).Raw(area), 27, sku), "\nSKU Number : NULL\n");
    EXPECT_EQ(Decoded(3, SmbiosBuilder().Begin(3).Raw(area), 26, sku), "\n");
    sku.Field = 9; // of version 2.1
    EXPECT_EQ(Decoded(3, SmbiosBuilder().Begin(3).Raw(area), 20, sku), "\nBoot-up State : 0x00 - None\n");
}

TEST(DecodeWhole, ChannelsOfTwoHaveNoDeviceBetween) {
    ExpectWhole(37, 13, {{11, 6, {2}, ""}});
}

// A host interface without a length in front of its data, or whose records don't fit, is one of the older layout.
TEST(DecodeWhole, HostInterfacesOfEitherLayout) {
    const auto shown = [](const Bytes& area, std::int64_t field) {
        Selection selection = Whole;
        selection.Field = field;
        return Decoded(42, SmbiosBuilder().Begin(42).Raw(area), 39, selection);
    };
    const Bytes oem{0xF0, 4, 0x00, 0x00, 0x01, 0x57, 1, 2, 1, 0xAA};
    EXPECT_EQ(shown(oem, 5), "\n Vendor ID : 0x00000157\n");
    EXPECT_EQ(shown(oem, 8), "\nNumber of Protocol Records : 0x01 (1)\n");
    Bytes beyond = oem;
    beyond[8] = 2; // one byte more than there is
    EXPECT_EQ(shown(beyond, 5), "\n Vendor ID : 0x04000001\n");
    EXPECT_EQ(shown(beyond, 6), "\n");
    EXPECT_EQ(shown({0xF0, 3, 0, 0, 1, 0}, 5), "\n") << "too few data for a vendor";
    EXPECT_EQ(shown({0x40, 1, 0x00, 0}, 7),
              "\nInterface Type Specific Data :\n  00\n Device Type : 0x00 - Unrecognized\n");
    EXPECT_EQ(
        shown({0x40, 5, 0x80, 0x00, 0x00, 0x01, 0x57, 0}, 7),
        "\nInterface Type Specific Data :\n  80 00 00 01 57\n Device Type : 0x80 - OEM\n Vendor ID : 0x00000157\n");
    EXPECT_EQ(shown({0x40, 4, 0x02, 0x2B, 0x1A, 0x03, 0}, 7),
              "\nInterface Type Specific Data :\n  02 2B 1A 03\n Device Type : 0x02 - USB Network Interface\n");
    // A host name that says more than its record has.
    Bytes redfish{0x02, 0, 1, 4, 94};
    redfish.resize(5 + 90);
    redfish.insert(redfish.end(), {200, 'b', 'm', 'c'});
    redfish[5 + 17] = 2; // of IPv6
    redfish[5 + 18] = 0xFE;
    redfish[5 + 19] = 0x80;
    redfish[5 + 33] = 0x0A;
    const std::string records = shown(redfish, 9);
    const std::string end = "Redfish Service Hostname Length : 0xC8 (200)\n     Redfish Service Hostname : bmc\n";
    EXPECT_TRUE(records.ends_with(end)) << records;
    EXPECT_NE(records.find("     Host IP Address : fe80:0000:0000:0000:0000:0000:0000:000a\n"), std::string::npos);
    EXPECT_NE(records.find("     Redfish Service IP Mask : 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"),
              std::string::npos);
    for (const Bytes& cut : {Bytes{0xF0, 4, 1, 2, 3}, {0xF0, 4, 1, 2, 3, 4}, {0xF0, 4, 1, 2, 3, 4, 1, 2}}) {
        EXPECT_EQ(shown(cut, 6), "\n") << "data, count or record end behind the structure, at " << cut.size();
    }
}

// Every byte of a network device's data is its own offset there, but for its type.
TEST(DecodeWhole, NetworkDevicesShowWhatTheirDataReachTo) {
    const std::string pci = "PCI/PCIe Network Interface";
    const std::string pci2 = pci +
                             " v2\n Vendor ID : 0x0302\n Device ID : 0x0504\n Subsystem Vendor ID : 0x0706\n"
                             " Subsystem ID : 0x0908\n MAC Address : 0A:0B:0C:0D:0E:0F\n"
                             " Segment Group Number : 0x1110\n Bus Number : 0x12\n Device/Function Number : 0x13\n";
    struct {
        std::uint8_t Device;
        std::uint8_t Length;
        std::string Lines;
    } const cases[] = {
        {2, 4, "USB Network Interface\n"},
        {2, 5, "USB Network Interface\n Vendor ID : 0x0201\n Product ID : 0x0403\n"},
        {3, 8, pci + "\n"},
        {3, 9,
         pci + "\n Vendor ID : 0x0201\n Device ID : 0x0403\n Subsystem Vendor ID : 0x0605\n Subsystem ID : 0x0807\n"},
        {5, 19, pci + " v2\n"},
        {5, 23, pci2},
        {5, 24,
         pci2 + " Device Characteristics : 0x1514\n" + Bits(0x1514, {"Credential bootstrapping via IPMI commands"}) +
             " Credential Bootstrapping Handle : 0x1716\n"},
        {6, 24, "Unrecognized\n"},
    };
    for (const auto& [device, length, lines] : cases) {
        Bytes area{0x40, length, device};
        for (std::uint8_t at = 1; at <= length; ++at) {
            area.push_back(at < length ? at : 0); // and no record
        }
        Selection selection = Whole;
        selection.Field = 7;
        const std::string shown = Decoded(42, SmbiosBuilder().Begin(42).Raw(area), 39, selection);
        const std::size_t at = std::min(shown.find(" Device Type"), shown.size());
        EXPECT_EQ(shown.substr(at), " Device Type : 0x0" + std::to_string(device) + " - " + lines) << int(length);
    }
}

TEST(DecodeWhole, OtherTypesHaveTheirBytesAndStrings) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(221, 0x1DD)
                                    .Raw({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0xFF})
                                    .SetString("one")
                                    .SetString("two")
                                    .Begin(221, 0x1DE)
                                    .SetString("strings only")
                                    .Begin(221, 0x1DF)
                                    .Byte(0);
    EXPECT_EQ(Decoded(221, table, 28, Whole),
              "\nType : OEM-specific (Type 221)\nLength : 0x15 (21)\nHandle : 0x01DD (477)\nData :\n"
              "  01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10\n  FF\nString 1 : one\nString 2 : two\n"
              "\nType : OEM-specific (Type 221)\nLength : 0x04 (04)\nHandle : 0x01DE (478)\n"
              "String 1 : strings only\n"
              "\nType : OEM-specific (Type 221)\nLength : 0x05 (05)\nHandle : 0x01DF (479)\nData :\n  00\n");
    EXPECT_EQ(Decoded(47, SmbiosBuilder().Begin(47), 39, Whole),
              "\nType : Unknown (Type 47)\nLength : 0x04 (04)\nHandle : 0x0000 (00)\n");
    // More strings than a byte counts, one of them longer than a print.
    SmbiosBuilder many;
    many.Begin(255);
    std::string expected = "\n";
    for (int number = 1; number <= 300; ++number) {
        const std::string text = number == 299 ? std::string(1500, 'x') : "text " + std::to_string(number);
        many.SetString(text);
        expected += "String " + std::to_string(number) + " : " + text + "\n";
    }
    Selection strings = Whole;
    strings.Field = 5;
    EXPECT_EQ(Decoded(255, many, 39, strings), expected);
}

// Every number up to the last one of its type shows something of the sample server, and the next one nothing.
TEST(DecodeWhole, EveryFieldOfTheSampleServerAlone) {
    constexpr std::uint8_t types[] = {0,  1,  3,  4,  7,  9,  10, 11, 12, 13,  14,  16,  17,  19,
                                      20, 37, 39, 42, 43, 44, 45, 46, 47, 126, 127, 128, 221, 255};
    StartOver(StandIn::SampleServer());
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    LibraryContextGet().WholeTable = true;
    ViewerInstanceEnd = 255;
    for (const std::uint8_t type : types) {
        int last = type == 39 ? -1 : 0; // whose location has a row among the older ones too, which is not shown
        for (std::uint32_t row = 0; DmiWholeRowPlace(type, row) < DmiAllFieldCount; ++row) {
            ++last;
        }
        for (int field = 1; field <= last + 1; ++field) {
            ViewerFieldSelected = field;
            ViewerFieldCounter = 0;
            const std::string shown = Captured([type] { (*StructDecoderTable[type])(type); });
            ViewerBinsRelease();
            const bool silent = field > last || (type == 13 && field == 6) || (type == 128 && field == 4) ||
                                (type == 255 && field == 5);
            EXPECT_EQ(shown.find_first_not_of('\n') == std::string::npos, silent) << int(type) << " " << field;
            EXPECT_EQ(ViewerFieldCounter >= field, field <= last) << int(type) << " " << field;
        }
    }
    std::uint32_t structures = 0;
    for (int type = 0; type < 256; ++type) {
        const auto kind = static_cast<std::uint8_t>(type);
        EXPECT_EQ(SelectionCheck(kind, 254, 128), RyxOk) << type;
        ViewerFieldSelected = 3;
        ViewerDecoderRan = 0;
        std::uint8_t instance = 1;
        for (; ViewerInstanceFirst = instance, ViewerInstanceEnd = static_cast<std::uint8_t>(instance + 1),
               !Captured([kind] { (*StructDecoderTable[kind])(kind); }).empty();
             ++instance) {
            ++structures;
        }
        ViewerBinsRelease();
        EXPECT_TRUE(instance > 1 || type > 47) << type << " is in the sample";
    }
    EXPECT_GT(structures, 128U);
    LibraryContextGet().WholeTable = false;
    const StructCounts counts = StructuresCount();
    EXPECT_EQ(counts.All, structures);
    EXPECT_GT(counts.Hidden, 16U);
    EXPECT_EQ(SelectionCheck(17, 129, 0), RyxErrorUnsupported);
    EXPECT_EQ(StructDecoderFind(43), nullptr);
    EXPECT_EQ(StructDecoderFind(221), nullptr);
}

} // namespace
