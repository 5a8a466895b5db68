// Processor structures as they are shown.
#include "tests/DecoderCases.h"

#include <set>

namespace {

// A structure of SMBIOS 2.6, from offset 4 on.
const Bytes Area = {
    1,    3,    0xB3, 2,    0xE9, 0x06, 0x09, 0x00, 0xFF, 0xFB, 0xEB, 0xBF, 3, // to the version
    0x8C, 0x64, 0x00, 0xA0, 0x0F, 0xB8, 0x0B, 0x41, 0x2C,                      // voltage to upgrade
    0x00, 0x07, 0x01, 0x07, 0xFF, 0xFF,                                        // caches
    0,    4,    5,    4,    2,    8,    0x2C, 0x01, 0x18, 0x01,                // serial number to family 2
};

} // namespace

TEST(DecodeProcessor, Processor) {
    SmbiosBuilder table = SmbiosBuilder().Begin(4).Raw(Area);
    for (const char* text : {"CPU0", "Maker", "Model 7", "Asset", "Part"}) {
        table.SetString(text);
    }
    ExpectShown(4, table,
                "\nType : Processor (Type 04)\nLength : 0x2A (42)\nHandle : 0x0000 (00)\nSocket Designation : CPU0\n"
                "Processor Type : 0x03 - Central Processor\nProcessor Family : 0xB3 - Intel(R) Xeon(R) processor\n"
                "Processor Manufacturer : Maker\nProcessor ID : 0xBFEBFBFF000906E9\nProcessor Version : Model 7\n"
                "Voltage : 0x8C - 1.2 V\nExternal Clock : 0x0064 (100)MHz\nMax Speed : 0x0FA0 (4000)MHz\n"
                "Current Speed : 0x0BB8 (3000)MHz\nStatus : 0x41 - CPU Enabled\n"
                "Processor Upgrade : 0x2C - Socket LGA1356-3\nL1 Cache Handle : 0x0700 (1792)\n"
                "L2 Cache Handle : 0x0701 (1793)\nL3 Cache Handle : 0xFFFF (65535)\nSerial Number : NULL\n"
                "Asset Tag : Asset\nPart Number : Part\nCore Count : 0x04 (4)\nCore Enabled : 0x02 (2)\n"
                "Thread Count : 0x08 (8)\nProcessor Characteristics : 0x012C\n" +
                    Bits(0x2C, {"Reserved", "Unknown", "64-bit Capable", "Multi-Core", "Hardware Thread",
                                "Execute Protection", "Enhanced Virtualization", "Power/Performance Control"}) +
                    "Processor Family2 : 0x0118 - ARM\n",
                {{20, ""}, {21, "L1 Cache"}, {23, "Serial Number"}, {25, "Core Count"}, {26, "Processor Family2"}});
    ExpectFields(4, Area,
                 {{5, 5, {6}, "Processor Type : 0x06 - Video Processor\n"},
                  {6, 6, {0x40}, "Processor Family : 0x40 - MIPS Family\n"},
                  {6, 6, {0xFE}, "Processor Family : 0xFE - Obtain from the Processor Family 2 field\n"},
                  {10, 0x11, {0x80}, "Voltage : 0x80 - Unknown\n"},
                  {10, 0x11, {0x81}, "Voltage : 0x81 - 0.1 V\n"},
                  {10, 0x11, {0xB2}, "Voltage : 0xB2 - 5.0 V\n"},
                  {10, 0x11, {3}, "Voltage : 0x03\n" + Bits(3, {"5V   Supported", "3.3V Supported", "2.9V Supported"})},
                  {14, 0x18, {0x43}, "Status : 0x43 - CPU Disabled by System BIOS\n"},
                  {14, 0x18, {0xFF}, "Status : 0xFF - Other\n"},
                  {15, 0x19, {0x00}, "Processor Upgrade : 0x00 - \n"},
                  {15, 0x19, {0x24}, "Processor Upgrade : 0x24 - Socket BGA1155\n"},
                  {15, 0x19, {0x40}, "Processor Upgrade : 0x40 - Socket LGA1700\n"},
                  {26, 0x28, {0xC6, 0x00}, "Processor Family2 : 0x00C6 - Intel(R) Core(TM) i7 processor\n"},
                  {26, 0x28, {0xF4, 0x01}, "Processor Family2 : 0x01F4 - Video Processor\n"},
                  {26, 0x28, {0xFF, 0x01}, "Processor Family2 : 0x01FF - Reserved [1FF]\n"},
                  {26, 0x28, {0x00, 0x02}, "Processor Family2 : 0x0200 - RISC-V RV32\n"},
                  {26, 0x28, {0x03, 0x02}, "Processor Family2 : 0x0203 - Unrecognized\n"},
                  {26, 0x28, {0x07, 0x03}, "Processor Family2 : 0x0307 - Intel(R) Core(TM) Ultra 9\n"},
                  {26, 0x28, {0xFF, 0xFF}, "Processor Family2 : 0xFFFF - Unrecognized\n"}});
}

// Reserved texts at exactly the codes without a name, and no name twice.
TEST(DecodeProcessor, FamiliesStandAtTheirCodes) {
    const unsigned runs[][2] = {
        {0x000, 0x015}, {0x018, 0x02B}, {0x030, 0x058}, {0x060, 0x065}, {0x070, 0x070}, {0x078, 0x07A}, {0x080, 0x080},
        {0x082, 0x096}, {0x0A0, 0x0BD}, {0x0BF, 0x0CE}, {0x0D2, 0x0DB}, {0x0DD, 0x0E0}, {0x0E4, 0x0EF}, {0x0FA, 0x0FB},
        {0x0FE, 0x0FE}, {0x104, 0x105}, {0x118, 0x119}, {0x12C, 0x12E}, {0x140, 0x140}, {0x15E, 0x15E}, {0x1F4, 0x1F4}};
    std::set<std::string> texts;
    for (unsigned code = 0; code < 0x200; ++code) {
        Bytes area = Area;
        area[0x28 - 4] = static_cast<std::uint8_t>(code);
        area[0x29 - 4] = static_cast<std::uint8_t>(code >> 8);
        char label[64];
        char reserved[32];
        std::snprintf(label, sizeof label, "\nProcessor Family2 : 0x%04X - ", code);
        std::snprintf(reserved, sizeof reserved, "Reserved [%X]\n", code);
        const std::string line = Decoded(4, SmbiosBuilder().Begin(4).Raw(area), 28, {26});
        ASSERT_EQ(line.find(label), 0U) << line;
        const std::string text = line.substr(std::string(label).size());
        const bool named = std::any_of(std::begin(runs), std::end(runs),
                                       [code](const auto& run) { return run[0] <= code && code <= run[1]; });
        EXPECT_EQ(text == reserved, !named) << line;
        EXPECT_TRUE(texts.insert(text).second && text != "\n") << line;
    }
}
