// Memory controller, memory module and cache structures as they are shown.
#include "tests/DecoderCases.h"

#include <iterator>

namespace {

// A controller up to its number of slots, and what stands from there on.
Bytes Controller(const Bytes& slots) {
    Bytes area{0x06, 0x08, 0x05, 0x03, 0x0A, 0x14, 0x00, 0x02, 0x05, 0x02};
    std::copy(slots.begin(), slots.end(), std::back_inserter(area));
    return area;
}

const Bytes ThreeSlots = Controller({3, 0x10, 0x00, 0x11, 0x00, 0xCD, 0xAB, 0x24});

std::string MemoryTypes(std::uint16_t value) {
    return Bits(value, {"Other", "Unknown", "Standard", "Fast Page Mode", "EDO", "Parity", "ECC", "SIMM", "DIMM",
                        "Burst EDO", "SDRAM"});
}

std::string Corrections(std::uint8_t value) {
    return Bits(value, {"Other", "Unknown", "None", "Single Bit Error Correcting", "Double Bit Error Correcting",
                        "Error Scrubbing"});
}

} // namespace

// What follows the slots is three slots' handles; the enabled corrections right behind the count; nothing; and more
// handles than the table has bytes.
TEST(DecodeMemoryController, Controllers) {
    const auto head = [](const char* length, const char* handle) {
        return std::string("\nType : Memory Controller (Type 05)\nLength : ") + length + "\nHandle : " + handle +
               "\nError Detecting Method : 0x06 - 64-bit ECC\nError Correcting Capability : 0x08\n" + Corrections(8) +
               "Supported Interleave : 0x05 - Four Way Interleave\nCurrent Interleave : 0x03 - One Way Interleave\n"
               "Maximum Memory Module Size : 0x0A (1024)MB\nSupported Speeds : 0x0014\n" +
               Bits(0x14, {"Other Speed", "Unknown Speed", "70ns Speed", "60ns Speed", "50ns Speed"}) +
               "Supported Memory Types : 0x0502\n" + MemoryTypes(0x502) + "Memory Module Voltage : 0x02\n" +
               Bits(2, {"5V   Supported", "3.3V Supported", "2.9V Supported"});
    };
    const std::string count = "Number of Associated Memory Slots : ";
    const std::string handles = "Memory Module Configuration Handle : 0x0010 0x0011 0xabcd \n";
    const std::string enabled = "Enable Error Correcting Capabilities : 0x24\n" + Corrections(0x24);
    SmbiosBuilder table = SmbiosBuilder().Begin(5).Raw(ThreeSlots);
    const std::string first = head("0x16 (22)", "0x0000 (00)") + count + "0x03 (3)\n" + handles + enabled;
    ExpectShown(5, table, first, {{20, ""}, {21, "Enable Error"}});
    table.Begin(5).Raw(Controller({0, 0x24})).Begin(5).Raw(Controller({0})).Begin(5).Raw(Controller({200, 0x24}));
    const SmbiosBuilder shortFirst =
        SmbiosBuilder().Begin(5).Raw(Controller({0})).Begin(5).Raw(ThreeSlots).Begin(5).Raw(ThreeSlots);
    ExpectCases(5,
                {{"slots", table,
                  first + head("0x10 (16)", "0x0001 (01)") + count +
                      "0x00 (0)\nMemory Module Configuration Handle : \n" + enabled + head("0x0F (15)", "0x0002 (02)") +
                      count + "0x00 (0)\n" + head("0x10 (16)", "0x0003 (03)") + count + "0xC8 (200)\n"},
                 {"the first that has the field shows it", shortFirst, "\n\n" + handles, {13}},
                 {"a range of one", shortFirst, "\n" + handles, {13, 3, 4}},
                 {"a range without the field", shortFirst, "\n", {13, 1, 2}},
                 {"a range behind the structures", shortFirst, "", {0, 4, 5}}});
    EXPECT_EQ(ViewerDecoderRan, 0);
    ExpectFields(5, ThreeSlots,
                 {{4, 4, {0x08}, "Error Detecting Method : 0x08 - CRC\n"},
                  {6, 6, {0x07}, "Supported Interleave : 0x07 - Sixteen Way Interleave\n"},
                  {7, 7, {0x00}, "Current Interleave : 0x00 - \n"},
                  {8, 8, {0}, "Maximum Memory Module Size : 0x00 (1)MB\n"},
                  {8, 8, {16}, "Maximum Memory Module Size : 0x10 (65536)MB\n"},
                  {8, 8, {30}, "Maximum Memory Module Size : 0x1E (1073741824)MB\n"},
                  {8, 8, {31}, "Maximum Memory Module Size : 0x1F (0)MB\n"},
                  {8, 8, {64}, "Maximum Memory Module Size : 0x40 (0)MB\n"}});
}

TEST(DecodeMemoryController, Modules) {
    const Bytes area{1, 0x09, 60, 0x80, 0x04, 0x87, 0x7F, 0x05};
    ExpectShown(6, SmbiosBuilder().Begin(6).Raw(area).SetString("DIMM A"),
                "\nType : Memory Module (Type 06)\nLength : 0x0C (12)\nHandle : 0x0000 (00)\n"
                "Socket Designation : DIMM A\nBank Connections : 0x09 - RAS# 2&3\nCurrent Speed : 0x3C (60 ns)\n"
                "Current Memory Type : 0x0480\n" +
                    MemoryTypes(0x480) +
                    "Installed Size : 0x87 - 0128 MB\nEnabled Size : 0x7F - Module not installed\n"
                    "Error Status : 0x05\n",
                {{20, ""}});
    ExpectFields(6, area,
                 {{5, 5, {0x0C}, "Bank Connections : 0x0C - No Connections\n"},
                  {5, 5, {0xFF}, "Bank Connections : 0xFF - No Connections\n"},
                  {8, 9, {0x06}, "Installed Size : 0x06 - 0064 MB\n"},
                  {8, 9, {0x0D}, "Installed Size : 0x0D - 8192 MB\n"},
                  {8, 9, {0x9E}, "Installed Size : 0x9E - 1073741824 MB\n"},
                  {8, 9, {0x1F}, "Installed Size : 0x1F - 0000 MB\n"},
                  {8, 9, {0x7C}, "Installed Size : 0x7C - 0000 MB\n"},
                  {8, 9, {0x7D}, "Installed Size : 0x7D - Not determinable\n"},
                  {9, 10, {0x7E}, "Enabled Size : 0x7E - Module is installed\n"},
                  {9, 10, {0x80}, "Enabled Size : 0x80 - 0001 MB\n"},
                  {9, 10, {0xFF}, "Enabled Size : 0xFF - Module not installed\n"}});
}

TEST(DecodeMemoryController, Caches) {
    const Bytes area{1, 0x80, 0x01, 0x40, 0x80, 0x00, 0x02, 0x12, 0x00, 0x40, 0x00, 0x0F, 0x05, 0x03, 0x0E};
    const auto types = [](std::uint16_t value) {
        return Bits(value, {"Other Type", "Unknown Type", "Non-Burst Type", "Burst Type", "Pipeline Burst Type",
                            "Synchronous Type", "Asynchronous Type"});
    };
    ExpectShown(7, SmbiosBuilder().Begin(7).Raw(area).SetString("L1"),
                "\nType : Cache (Type 07)\nLength : 0x13 (19)\nHandle : 0x0000 (00)\nSocket Designation : L1\n"
                "Cache Configuration : 0x0180\n Operational Mode : Write Back\n Cache Memory : Enabled\n"
                " Location, relative to the CPU module : Internal\n Cache Socketed : Not Socketed\n"
                " Cache Level : 0x00\nMaximum Cache Size : 0x8040\n"
                " Maximum Granularity : 64 KB\n Maximum Size : 0064 KB\n"
                "Installed Size : 0x0200\n Installed Granularity : 01 KB\n Installed Size : 512 KB\n"
                "Supported SRAM Type : 0x0012\n" +
                    types(0x12) + "Current SRAM Type : 0x0040\n" + types(0x40) +
                    "Cache Speed : 0x0F ns\nError Correction : 0x05 - Single-bit ECC\n"
                    "System Cache Type : 0x03 - Instruction\nAssociativity : 0x0E - 20-way\n",
                {{20, ""}, {21, "Cache Speed"}});
    ExpectFields(
        7, area,
        {{5,
          5,
          {0x6B, 0xFF},
          "Cache Configuration : 0xFF6B\n Operational Mode : Unknown\n Cache Memory : Disabled\n"
          " Location, relative to the CPU module : Unknown\n Cache Socketed : Socketed\n Cache Level : 0x03\n"},
         {5,
          5,
          {0xC7, 0x02},
          "Cache Configuration : 0x02C7\n Operational Mode : Varies with Memory Address\n Cache Memory : Enabled\n"
          " Location, relative to the CPU module : \n Cache Socketed : Not Socketed\n Cache Level : 0x07\n"},
         {6, 7, {0x00, 0x02}, "Maximum Cache Size : 0x0200\n Maximum Granularity : 01 KB\n Maximum Size : 0512 KB\n"},
         {7, 9, {0xFF, 0xFF}, "Installed Size : 0xFFFF\n Installed Granularity : 64 KB\n Installed Size : 32767 KB\n"},
         {7, 9, {0x07, 0x00}, "Installed Size : 0x0007\n Installed Granularity : 01 KB\n Installed Size : 7 KB\n"},
         {11, 0x10, {0x06}, "Error Correction : 0x06 - Multi-bit ECC\n"},
         {11, 0x10, {0x07}, "Error Correction : 0x07 - Unrecognized\n"},
         {12, 0x11, {0x05}, "System Cache Type : 0x05 - Unified\n"},
         {12, 0x11, {0x06}, "System Cache Type : 0x06 - Unrecognized\n"},
         {13, 0x12, {0x07}, "Associativity : 0x07 - 8-Way\n"},
         {13, 0x12, {0x0F}, "Associativity : 0x0F - Unrecognized\n"}});
}
