// Tests of the memory controller, memory module and cache decoders.
#include "tests/DecoderCases.h"

namespace {

constexpr std::uint8_t Controller = 5;
constexpr std::uint8_t Module = 6;
constexpr std::uint8_t Cache = 7;

// Structures from offset 4 on. The controller has three slots.
const StandIn::Bytes ControllerArea = {0x06, 0x08, 0x05, 0x03, 0x0A, 0x14, 0x00, 0x02, 0x05, 0x02, // to the voltage
                                       3,    0x10, 0x00, 0x11, 0x00, 0xCD, 0xAB, 0x24};
const StandIn::Bytes ModuleArea = {1, 0x09, 60, 0x80, 0x04, 0x87, 0x7F, 0x05};
const StandIn::Bytes CacheArea = {1,    0x80, 0x01, 0x40, 0x80, 0x00, 0x02, 0x12, 0x00, 0x40, 0x00, // to the SRAM types
                                  0x0F, 0x05, 0x03, 0x0E};

const std::string ControllerStart = "Error Detecting Method : 0x06 - 64-bit ECC\n"
                                    "Error Correcting Capability : 0x08\n"
                                    "  Bit0 Other - 0 (No)\n  Bit1 Unknown - 0 (No)\n  Bit2 None - 0 (No)\n"
                                    "  Bit3 Single Bit Error Correcting - 1 (Yes)\n"
                                    "  Bit4 Double Bit Error Correcting - 0 (No)\n  Bit5 Error Scrubbing - 0 (No)\n"
                                    "Supported Interleave : 0x05 - Four Way Interleave\n"
                                    "Current Interleave : 0x03 - One Way Interleave\n"
                                    "Maximum Memory Module Size : 0x0A (1024)MB\n"
                                    "Supported Speeds : 0x0014\n"
                                    "  Bit0 Other Speed - 0 (No)\n  Bit1 Unknown Speed - 0 (No)\n"
                                    "  Bit2 70ns Speed - 1 (Yes)\n  Bit3 60ns Speed - 0 (No)\n"
                                    "  Bit4 50ns Speed - 1 (Yes)\n"
                                    "Supported Memory Types : 0x0502\n"
                                    "  Bit0 Other - 0 (No)\n  Bit1 Unknown - 1 (Yes)\n  Bit2 Standard - 0 (No)\n"
                                    "  Bit3 Fast Page Mode - 0 (No)\n  Bit4 EDO - 0 (No)\n  Bit5 Parity - 0 (No)\n"
                                    "  Bit6 ECC - 0 (No)\n  Bit7 SIMM - 0 (No)\n  Bit8 DIMM - 1 (Yes)\n"
                                    "  Bit9 Burst EDO - 0 (No)\n  Bit10 SDRAM - 1 (Yes)\n"
                                    "Memory Module Voltage : 0x02\n"
                                    "  Bit0 5V   Supported - 0 (No)\n  Bit1 3.3V Supported - 1 (Yes)\n"
                                    "  Bit2 2.9V Supported - 0 (No)\n";
const std::string ControllerEnabled = "Enable Error Correcting Capabilities : 0x24\n"
                                      "  Bit0 Other - 0 (No)\n  Bit1 Unknown - 0 (No)\n  Bit2 None - 1 (Yes)\n"
                                      "  Bit3 Single Bit Error Correcting - 0 (No)\n"
                                      "  Bit4 Double Bit Error Correcting - 0 (No)\n"
                                      "  Bit5 Error Scrubbing - 1 (Yes)\n";

// Adds a controller whose bytes from the number of slots on are others.
void ControllerAdd(StandIn::SmbiosBuilder& table, const StandIn::Bytes& slots) {
    table.Begin(Controller).Raw(StandIn::Bytes(ControllerArea.begin(), ControllerArea.begin() + 10)).Raw(slots);
}

std::string ControllerHead(const char* length, const char* handle) {
    return std::string("\nType : Memory Controller (Type 05)\nLength : ") + length + "\nHandle : " + handle + "\n";
}

} // namespace

// Three slots; none, with the enabled capabilities right behind the count; none, in the shortest structure; and more
// handles than the table has bytes.
TEST(DecodeMemoryController, SlotsDecideWhatFollowsThem) {
    StandIn::SmbiosBuilder table = Alone(Controller, ControllerArea);
    ControllerAdd(table, {0, 0x24});
    ControllerAdd(table, {0});
    ControllerAdd(table, {200, 0x24});
    const std::string first = ControllerHead("0x16 (22)", "0x0000 (00)") + ControllerStart +
                              "Number of Associated Memory Slots : 0x03 (3)\n"
                              "Memory Module Configuration Handle : 0x0010 0x0011 0xabcd \n";
    EXPECT_EQ(Decoded(Controller, table),
              first + ControllerEnabled + ControllerHead("0x10 (16)", "0x0001 (01)") + ControllerStart +
                  "Number of Associated Memory Slots : 0x00 (0)\nMemory Module Configuration Handle : \n" +
                  ControllerEnabled + ControllerHead("0x0F (15)", "0x0002 (02)") + ControllerStart +
                  "Number of Associated Memory Slots : 0x00 (0)\n" + ControllerHead("0x10 (16)", "0x0003 (03)") +
                  ControllerStart + "Number of Associated Memory Slots : 0xC8 (200)\n");
    EXPECT_EQ(Decoded(Controller, Alone(Controller, ControllerArea), 20), first);
}

TEST(DecodeMemoryController, ControllerCodesAndSizes) {
    const FieldCase cases[] = {
        {4, 4, {0x08}, "Error Detecting Method : 0x08 - CRC\n"},
        {4, 4, {0x09}, "Error Detecting Method : 0x09 - Unrecognized\n"},
        {6, 6, {0x07}, "Supported Interleave : 0x07 - Sixteen Way Interleave\n"},
        {7, 7, {0x00}, "Current Interleave : 0x00 - \n"},
        {7, 7, {0x08}, "Current Interleave : 0x08 - Unrecognized\n"},
        {8, 8, {0}, "Maximum Memory Module Size : 0x00 (1)MB\n"},
        {8, 8, {16}, "Maximum Memory Module Size : 0x10 (65536)MB\n"},
        {8, 8, {30}, "Maximum Memory Module Size : 0x1E (1073741824)MB\n"},
        {8, 8, {31}, "Maximum Memory Module Size : 0x1F (0)MB\n"},
        {8, 8, {64}, "Maximum Memory Module Size : 0x40 (0)MB\n"},
    };
    ExpectFields(Controller, ControllerArea, cases);
    ExpectFieldCount(Controller, ControllerArea, 14);
}

// Each structure that is visited opens with a blank line, also those that don't have the selected field.
TEST(DecodeMemoryController, ASelectedFieldIsShownByTheFirstThatHasIt) {
    StandIn::SmbiosBuilder table;
    ControllerAdd(table, {0});
    table.Begin(Controller).Raw(ControllerArea);
    table.Begin(Controller).Raw(ControllerArea);
    const std::string line = "Memory Module Configuration Handle : 0x0010 0x0011 0xabcd \n";
    EXPECT_EQ(Decoded(Controller, table, 28, {.Field = 13}), "\n\n" + line);
    EXPECT_EQ(Decoded(Controller, table, 28, {.Field = 13, .InstanceFirst = 3, .InstanceEnd = 4}), "\n" + line);
    EXPECT_EQ(Decoded(Controller, table, 28, {.Field = 13, .InstanceFirst = 1, .InstanceEnd = 2}), "\n");
    EXPECT_EQ(Decoded(Controller, table, 28, {.InstanceFirst = 4, .InstanceEnd = 5}), "");
    EXPECT_EQ(ViewerDecoderRan, 0);
}

TEST(DecodeMemoryController, Modules) {
    StandIn::SmbiosBuilder table = Alone(Module, ModuleArea, {"DIMM A"});
    table.Begin(Module).Raw(ModuleArea).SetString("DIMM A");
    const std::string first = "\nType : Memory Module (Type 06)\nLength : 0x0C (12)\nHandle : 0x0000 (00)\n"
                              "Socket Designation : DIMM A\n"
                              "Bank Connections : 0x09 - RAS# 2&3\n"
                              "Current Speed : 0x3C (60 ns)\n"
                              "Current Memory Type : 0x0480\n"
                              "  Bit0 Other - 0 (No)\n  Bit1 Unknown - 0 (No)\n  Bit2 Standard - 0 (No)\n"
                              "  Bit3 Fast Page Mode - 0 (No)\n  Bit4 EDO - 0 (No)\n  Bit5 Parity - 0 (No)\n"
                              "  Bit6 ECC - 0 (No)\n  Bit7 SIMM - 1 (Yes)\n  Bit8 DIMM - 0 (No)\n"
                              "  Bit9 Burst EDO - 0 (No)\n  Bit10 SDRAM - 1 (Yes)\n"
                              "Installed Size : 0x87 - 0128 MB\n"
                              "Enabled Size : 0x7F - Module not installed\n"
                              "Error Status : 0x05\n";
    std::string second = first;
    second.replace(second.find("0x0000 (00)"), 11, "0x0001 (01)");
    EXPECT_EQ(Decoded(Module, table), first + second);
    const FieldCase cases[] = {
        {5, 5, {0x0C}, "Bank Connections : 0x0C - No Connections\n"},
        {5, 5, {0x0D}, "Bank Connections : 0x0D - Unrecognized\n"},
        {8, 9, {0x06}, "Installed Size : 0x06 - 0064 MB\n"},
        {8, 9, {0x0D}, "Installed Size : 0x0D - 8192 MB\n"},
        {8, 9, {0x9E}, "Installed Size : 0x9E - 1073741824 MB\n"},
        {8, 9, {0x1F}, "Installed Size : 0x1F - 0000 MB\n"},
        {8, 9, {0x7C}, "Installed Size : 0x7C - 0000 MB\n"},
        {8, 9, {0x7D}, "Installed Size : 0x7D - Not determinable\n"},
        {9, 10, {0x7E}, "Enabled Size : 0x7E - Module is installed\n"},
        {9, 10, {0x80}, "Enabled Size : 0x80 - 0001 MB\n"},
        {9, 10, {0xFF}, "Enabled Size : 0xFF - Module not installed\n"},
    };
    ExpectFields(Module, ModuleArea, cases);
    ExpectFieldCount(Module, ModuleArea, 10);
}

TEST(DecodeMemoryController, Caches) {
    const std::string whole = "\nType : Cache (Type 07)\nLength : 0x13 (19)\nHandle : 0x0000 (00)\n"
                              "Socket Designation : L1\n"
                              "Cache Configuration : 0x0180\n"
                              " Operational Mode : Write Back\n Cache Memory : Enabled\n"
                              " Location, relative to the CPU module : Internal\n Cache Socketed : Not Socketed\n"
                              " Cache Level : 0x00\n"
                              "Maximum Cache Size : 0x8040\n"
                              " Maximum Granularity : 64 KB\n Maximum Size : 0064 KB\n"
                              "Installed Size : 0x0200\n"
                              " Installed Granularity : 01 KB\n Installed Size : 512 KB\n"
                              "Supported SRAM Type : 0x0012\n"
                              "  Bit0 Other Type - 0 (No)\n  Bit1 Unknown Type - 1 (Yes)\n"
                              "  Bit2 Non-Burst Type - 0 (No)\n  Bit3 Burst Type - 0 (No)\n"
                              "  Bit4 Pipeline Burst Type - 1 (Yes)\n  Bit5 Synchronous Type - 0 (No)\n"
                              "  Bit6 Asynchronous Type - 0 (No)\n"
                              "Current SRAM Type : 0x0040\n"
                              "  Bit0 Other Type - 0 (No)\n  Bit1 Unknown Type - 0 (No)\n"
                              "  Bit2 Non-Burst Type - 0 (No)\n  Bit3 Burst Type - 0 (No)\n"
                              "  Bit4 Pipeline Burst Type - 0 (No)\n  Bit5 Synchronous Type - 0 (No)\n"
                              "  Bit6 Asynchronous Type - 1 (Yes)\n"
                              "Cache Speed : 0x0F ns\n"
                              "Error Correction : 0x05 - Single-bit ECC\n"
                              "System Cache Type : 0x03 - Instruction\n"
                              "Associativity : 0x0E - 20-way\n";
    EXPECT_EQ(Decoded(Cache, Alone(Cache, CacheArea, {"L1"}), 21), whole);
    EXPECT_EQ(Decoded(Cache, Alone(Cache, CacheArea, {"L1"}), 20), Before(whole, "Cache Speed"));
    const char* const socketed = "Cache Configuration : 0xFF6B\n Operational Mode : Unknown\n Cache Memory : Disabled\n"
                                 " Location, relative to the CPU module : Unknown\n Cache Socketed : Socketed\n"
                                 " Cache Level : 0x03\n";
    const char* const noLocation = "Cache Configuration : 0x02C7\n Operational Mode : Varies with Memory Address\n"
                                   " Cache Memory : Enabled\n Location, relative to the CPU module : \n"
                                   " Cache Socketed : Not Socketed\n Cache Level : 0x07\n";
    const FieldCase cases[] = {
        {5, 5, {0x6B, 0xFF}, socketed},
        {5, 5, {0xC7, 0x02}, noLocation},
        {6, 7, {0x00, 0x02}, "Maximum Cache Size : 0x0200\n Maximum Granularity : 01 KB\n Maximum Size : 0512 KB\n"},
        {7, 9, {0xFF, 0xFF}, "Installed Size : 0xFFFF\n Installed Granularity : 64 KB\n Installed Size : 32767 KB\n"},
        {7, 9, {0x07, 0x00}, "Installed Size : 0x0007\n Installed Granularity : 01 KB\n Installed Size : 7 KB\n"},
        {11, 0x10, {0x06}, "Error Correction : 0x06 - Multi-bit ECC\n"},
        {11, 0x10, {0x07}, "Error Correction : 0x07 - Unrecognized\n"},
        {12, 0x11, {0x05}, "System Cache Type : 0x05 - Unified\n"},
        {12, 0x11, {0x06}, "System Cache Type : 0x06 - Unrecognized\n"},
        {13, 0x12, {0x07}, "Associativity : 0x07 - 8-Way\n"},
        {13, 0x12, {0x0F}, "Associativity : 0x0F - Unrecognized\n"},
    };
    ExpectFields(Cache, CacheArea, cases);
    ExpectFieldCount(Cache, CacheArea, 13);
}
