// Tests of the processor decoder.
#include "tests/DecoderCases.h"

#include <cstdio>
#include <map>
#include <set>

namespace {

constexpr std::uint8_t Processor = 4;

// A structure of SMBIOS 2.6, from offset 4 on.
const StandIn::Bytes Area = {
    1,    3,    0xB3, 2,    0xE9, 0x06, 0x09, 0x00, 0xFF, 0xFB, 0xEB, 0xBF, 3, // to the version
    0x8C, 0x64, 0x00, 0xA0, 0x0F, 0xB8, 0x0B, 0x41, 0x2C,                      // voltage to upgrade
    0x00, 0x07, 0x01, 0x07, 0xFF, 0xFF,                                        // caches
    0,    4,    5,    4,    2,    8,    0x2C, 0x01, 0x18, 0x01,                // serial number to family 2
};

StandIn::SmbiosBuilder Example(std::size_t size = Area.size()) {
    const auto end = Area.begin() + static_cast<std::ptrdiff_t>(size);
    return Alone(Processor, StandIn::Bytes(Area.begin(), end), {"CPU0", "Maker", "Model 7", "Asset", "Part"});
}

const std::string Whole = "\nType : Processor (Type 04)\nLength : 0x2A (42)\nHandle : 0x0000 (00)\n"
                          "Socket Designation : CPU0\n"
                          "Processor Type : 0x03 - Central Processor\n"
                          "Processor Family : 0xB3 - Intel(R) Xeon(R) processor\n"
                          "Processor Manufacturer : Maker\n"
                          "Processor ID : 0xBFEBFBFF000906E9\n"
                          "Processor Version : Model 7\n"
                          "Voltage : 0x8C - 1.2 V\n"
                          "External Clock : 0x0064 (100)MHz\n"
                          "Max Speed : 0x0FA0 (4000)MHz\n"
                          "Current Speed : 0x0BB8 (3000)MHz\n"
                          "Status : 0x41 - CPU Enabled\n"
                          "Processor Upgrade : 0x2C - Socket LGA1356-3\n"
                          "L1 Cache Handle : 0x0700 (1792)\n"
                          "L2 Cache Handle : 0x0701 (1793)\n"
                          "L3 Cache Handle : 0xFFFF (65535)\n"
                          "Serial Number : NULL\n"
                          "Asset Tag : Asset\n"
                          "Part Number : Part\n"
                          "Core Count : 0x04 (4)\n"
                          "Core Enabled : 0x02 (2)\n"
                          "Thread Count : 0x08 (8)\n"
                          "Processor Characteristics : 0x012C\n"
                          "  Bit0 Reserved - 0 (No)\n  Bit1 Unknown - 0 (No)\n  Bit2 64-bit Capable - 1 (Yes)\n"
                          "  Bit3 Multi-Core - 1 (Yes)\n  Bit4 Hardware Thread - 0 (No)\n"
                          "  Bit5 Execute Protection - 1 (Yes)\n  Bit6 Enhanced Virtualization - 0 (No)\n"
                          "  Bit7 Power/Performance Control - 0 (No)\n"
                          "Processor Family2 : 0x0118 - ARM\n";

} // namespace

TEST(DecodeProcessor, PrintsEachFieldThatVersionAndLengthReach) {
    EXPECT_EQ(Decoded(Processor, Example(), 26), Whole);
    EXPECT_EQ(ViewerFieldCounter, 26);
    EXPECT_EQ(Decoded(Processor, Example(), 25), Before(Whole, "Processor Family2"));
    EXPECT_EQ(Decoded(Processor, Example(), 24), Before(Whole, "Core Count"));
    EXPECT_EQ(Decoded(Processor, Example(), 22), Before(Whole, "Serial Number"));
    EXPECT_EQ(Decoded(Processor, Example(), 20), Before(Whole, "L1 Cache"));

    std::string oldest = Before(Whole, "L1 Cache");
    oldest.replace(oldest.find("0x2A (42)"), 9, "0x1A (26)");
    EXPECT_EQ(Decoded(Processor, Example(0x1A - 4), 28), oldest);
}

TEST(DecodeProcessor, ShowsTheFirstProcessorAlone) {
    StandIn::SmbiosBuilder table = Example();
    table.Begin(Processor).Raw(Area);
    EXPECT_EQ(Decoded(Processor, table, 28, {.InstanceFirst = 2, .InstanceEnd = 3}), Whole);
    ExpectFieldCount(Processor, Area, 26);

    StandIn::SmbiosBuilder none;
    none.Begin(127);
    EXPECT_EQ(Decoded(Processor, none), "");
    EXPECT_EQ(ViewerDecoderRan, 0);
}

TEST(DecodeProcessor, TextsOfCodes) {
    const FieldCase cases[] = {
        {5, 0x05, {6}, "Processor Type : 0x06 - Video Processor\n"},
        {5, 0x05, {7}, "Processor Type : 0x07 - Unrecognized\n"},
        {6, 0x06, {0x40}, "Processor Family : 0x40 - MIPS Family\n"},
        {6, 0x06, {0xFE}, "Processor Family : 0xFE - Obtain from the Processor Family 2 field\n"},
        {10, 0x11, {0x80}, "Voltage : 0x80 - Unknown\n"},
        {10, 0x11, {0x81}, "Voltage : 0x81 - 0.1 V\n"},
        {10, 0x11, {0xB2}, "Voltage : 0xB2 - 5.0 V\n"},
        {10, 0x11, {0xB3}, "Voltage : 0xB3 - Unrecognized\n"},
        {10,
         0x11,
         {0x03},
         "Voltage : 0x03\n  Bit0 5V   Supported - 1 (Yes)\n  Bit1 3.3V Supported - 1 (Yes)\n"
         "  Bit2 2.9V Supported - 0 (No)\n"},
        {14, 0x18, {0x43}, "Status : 0x43 - CPU Disabled by System BIOS\n"},
        {14, 0x18, {0xFF}, "Status : 0xFF - Other\n"},
        {15, 0x19, {0x00}, "Processor Upgrade : 0x00 - \n"},
        {15, 0x19, {0x24}, "Processor Upgrade : 0x24 - Socket BGA1155\n"},
        {15, 0x19, {0x2D}, "Processor Upgrade : 0x2D - Unrecognized\n"},
        {26, 0x28, {0xC6, 0x00}, "Processor Family2 : 0x00C6 - Intel(R) Core(TM) i7 processor\n"},
        {26, 0x28, {0xFF, 0x01}, "Processor Family2 : 0x01FF - Reserved [1FF]\n"},
        {26, 0x28, {0x00, 0x02}, "Processor Family2 : 0x0200 - Unrecognized\n"},
        {26, 0x28, {0xFF, 0xFF}, "Processor Family2 : 0xFFFF - Unrecognized\n"},
    };
    ExpectFields(Processor, Area, cases);
}

// Reserved texts at exactly the codes without a name, no name twice, and names that a slip by one would move.
TEST(DecodeProcessor, FamiliesStandAtTheirCodes) {
    const unsigned runs[][2] = {
        {0x000, 0x015}, {0x018, 0x02B}, {0x030, 0x058}, {0x060, 0x065}, {0x070, 0x070}, {0x078, 0x07A}, {0x080, 0x080},
        {0x082, 0x096}, {0x0A0, 0x0BD}, {0x0BF, 0x0CE}, {0x0D2, 0x0DB}, {0x0DD, 0x0E0}, {0x0E4, 0x0EF}, {0x0FA, 0x0FB},
        {0x0FE, 0x0FE}, {0x104, 0x105}, {0x118, 0x119}, {0x12C, 0x12E}, {0x140, 0x140}, {0x15E, 0x15E}, {0x1F4, 0x1F4}};
    const std::map<unsigned, std::string> samples = {{0x015, "Intel(R) Pentium(R) 4 HT processor"},
                                                     {0x02B, "Intel(R) Atom(TM) processor"},
                                                     {0x058, "UltraSPARC IIIi"},
                                                     {0x065, "68030"},
                                                     {0x096, "PA-RISC 7100"},
                                                     {0x0BD, "Intel(R) Core(TM) Solo Processor"},
                                                     {0x0CE, "Intel(R) Core(TM) i3 processor"},
                                                     {0x0DB, "Quad-Core Intel(R) Xeon(R) processor 5xxx Series"},
                                                     {0x0E0, "Multi-Core Intel(R) Xeon(R) processor 3400 Series"},
                                                     {0x0EF, "AMD Sempron(TM) M Processor Family"},
                                                     {0x1F4, "Video Processor"}};
    std::set<std::string> texts;
    for (unsigned code = 0; code < 0x200; ++code) {
        StandIn::Bytes area = Area;
        area[0x28 - 4] = static_cast<std::uint8_t>(code);
        area[0x29 - 4] = static_cast<std::uint8_t>(code >> 8);
        char label[64];
        char reserved[32];
        std::snprintf(label, sizeof label, "\nProcessor Family2 : 0x%04X - ", code);
        std::snprintf(reserved, sizeof reserved, "Reserved [%X]\n", code);
        const std::string line = Decoded(Processor, Alone(Processor, area), 28, {.Field = 26});
        ASSERT_EQ(line.find(label), 0U) << line;
        const std::string text = line.substr(std::string(label).size());
        const bool named = std::any_of(std::begin(runs), std::end(runs),
                                       [code](const auto& run) { return run[0] <= code && code <= run[1]; });
        EXPECT_EQ(text == reserved, !named) << line;
        EXPECT_TRUE(texts.insert(text).second) << line;
        if (const auto sample = samples.find(code); sample != samples.end()) {
            EXPECT_EQ(text, sample->second + "\n");
        }
    }
    EXPECT_EQ(texts.count("\n"), 0U);
}
