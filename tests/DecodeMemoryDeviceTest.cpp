// Event log, memory array and memory device structures as they are shown.
#include "tests/DecoderCases.h"

using StandIn::SmbiosBuilder;

namespace {

// An event log structure up to its list, with that number of descriptors of that stated length.
SmbiosBuilder& EventLog(SmbiosBuilder& table, std::uint8_t count, std::uint8_t length) {
    return table.Begin(15).Raw({0x00, 0x01, 0x00, 0x00, 0x10, 0x00, 4, 1, 0x01, 0x00, 0x00, 0x80, // to the change token
                                0x00, 0x00, 0xFF, 0xFF, 1, count, length});
}

std::string DescriptorsOf(std::uint8_t count, std::uint8_t length, const StandIn::Bytes& list) {
    SmbiosBuilder table;
    EventLog(table, count, length).Raw(list);
    return Decoded(15, table, 28, {.Field = 14});
}

} // namespace

TEST(DecodeMemoryDevice, EventLog) {
    SmbiosBuilder table;
    EventLog(table, 3, 2).Raw({0x01, 0x00, 0x10, 0x00, 0x17, 0x00});
    const std::string block = "\nType : System Event Log (Type 15)\nLength : 0x1D (29)\nHandle : 0x0000 (00)\n"
                              "Log Area Length : 0x0100 (256 Byte)\nLog Header Start Offset : 0x0000 (00)\n"
                              "Log Data Start Offset : 0x0010 (16)\n"
                              "Access Method : 0x04 - General-Purpose NonVolatile Data\nLog Status : 0x01\n"
                              "  Bit0 Log area Valid - 1 (Yes)\n  Bit1 Log area full - 0 (No)\n"
                              "Log Change Token : 0x80000001 (-2147483647)\n"
                              "Access Method Address : 0xFFFF0000 (-65536)\n"
                              "Log Header Format : 0x01 - Type 1 log header\n"
                              "Number of Supported Log Type Descriptors : 0x03 (03)\n"
                              "Length of each Log Type Descriptor : 0x02 (02)\nEvent Log Type Descriptors :\n"
                              "01.  Log Type : 0x01 - Single-bit ECC memory error\n"
                              "     Variable Data Format Type : 0x00 - None\n"
                              "02.  Log Type : 0x10 - System Limit Exceeded\n"
                              "     Variable Data Format Type : 0x00 - None\n03.  Log Type : 0x17 - System boot\n"
                              "     Variable Data Format Type : 0x00 - None\n";
    EXPECT_EQ(Decoded(15, table), block);
    EXPECT_EQ(Decoded(15, table, 21), block);
    EXPECT_EQ(Decoded(15, table, 20), Before(block, "Log Header Format"));
}

TEST(DecodeMemoryDevice, EventLogDescriptorTexts) {
    EXPECT_EQ(DescriptorsOf(6, 2, {0x18, 0x05, 0x7F, 0x06, 0x80, 0x07, 0xFE, 0x7F, 0xFF, 0x80, 0x0D, 0xFF}),
              "\nEvent Log Type Descriptors :\n01.  Log Type : 0x18 - Unused\n"
              "     Variable Data Format Type : 0x05 - System Management Type\n"
              "02.  Log Type : 0x7f - Unused\n"
              "     Variable Data Format Type : 0x06 - Multiple-Event System Management Type\n"
              "03.  Log Type : 0x80 - Available for system\n"
              "     Variable Data Format Type : 0x07 - Unused\n"
              "04.  Log Type : 0xfe - Available for system\n"
              "     Variable Data Format Type : 0x7f - Unused\n05.  Log Type : 0xff - End of log\n"
              "     Variable Data Format Type : 0x80 - OEM assigned\n"
              "06.  Log Type : 0x0d - Correctable memory log disabled\n"
              "     Variable Data Format Type : 0xff - OEM assigned\n");
}

TEST(DecodeMemoryDevice, EventLogDescriptorCountsAndLengths) {
    const std::string one = "\nEvent Log Type Descriptors :\n01.  Log Type : 0x02 - Multi-bit ECC memory error\n"
                            "     Variable Data Format Type : 0x03 - Multiple-Event Handle\n";
    const std::string two = one + "02.  Log Type : 0x08 - POST Error\n"
                                  "     Variable Data Format Type : 0x04 - POST Results Bitmap\n";
    EXPECT_EQ(DescriptorsOf(1, 2, {2, 3}), one);
    // Other stated lengths: the list's bytes are read in pairs all the same, and at most as many as are counted.
    EXPECT_EQ(DescriptorsOf(2, 3, {2, 3, 8, 4, 9, 9}), two);
    EXPECT_EQ(DescriptorsOf(4, 1, {2, 3, 8, 4}), two);
    EXPECT_EQ(DescriptorsOf(3, 1, {2, 3, 8}), one);
    EXPECT_EQ(DescriptorsOf(1, 1, {2}), "\nEvent Log Type Descriptors :\n");
    EXPECT_EQ(DescriptorsOf(3, 0, {2, 3}), "\nEvent Log Type Descriptors :\n");
    // A list that runs past the formatted area goes on in the string set; past the table's end it can't be read.
    EXPECT_EQ(DescriptorsOf(2, 2, {2, 3}),
              one + "02.  Log Type : 0x00 - None\n     Variable Data Format Type : 0x00 - None\n");
    EXPECT_EQ(DescriptorsOf(3, 2, {2, 3}), "\n");
    EXPECT_EQ(DescriptorsOf(255, 255, {2, 3}), "\n");
}

TEST(DecodeMemoryDevice, EventLogNoDescriptors) {
    // A list that can be read counts as shown even when it is empty; one behind the formatted area does not.
    SmbiosBuilder readable;
    EventLog(readable, 0, 2).Byte(0);
    EventLog(readable, 1, 2).Raw({2, 3});
    EXPECT_EQ(Decoded(15, readable, 28, {.Field = 14}), "\n");

    SmbiosBuilder absent;
    EventLog(absent, 0, 2);
    EventLog(absent, 1, 2).Raw({0x0A, 0x01});
    EXPECT_EQ(Decoded(15, absent, 28, {.Field = 14}),
              "\n\nEvent Log Type Descriptors :\n01.  Log Type : 0x0a - PCI System Error\n"
              "     Variable Data Format Type : 0x01 - Handle\n");
}

TEST(DecodeMemoryDevice, MemoryArray) {
    SmbiosBuilder table;
    table.Begin(16, 0x0010).Byte(3).Byte(3).Byte(5).Dword(0x01000000).Word(0xFFFE).Word(4).Qword(0x10000000000);
    const std::string block = "\nType : Physical Memory (Type 16)\nLength : 0x17 (23)\nHandle : 0x0010 (16)\n"
                              "Location : 0x03 - System board or motherboard\nUse : 0x03 - System memory \n"
                              "Memory Error Correction : 0x05 - Single-bit ECC \n"
                              "Maximum Capacity : 0x01000000 - 16777216KB, 16384MB, 16GB\n"
                              "Memory Error Information Handle : 0xFFFE (65534)\n"
                              "Number of Memory Devices : 0x0004 (04)\n"
                              "Extended Maximum Capacity : 0x10000000000 (1099511627776)\n";
    EXPECT_EQ(Decoded(16, table, 27), block);
    EXPECT_EQ(Decoded(16, table, 26), Before(block, "Extended Maximum Capacity"));
    EXPECT_EQ(Decoded(16, table, 20), "");
}

TEST(DecodeMemoryDevice, MemoryDevice) {
    SmbiosBuilder table;
    table.Begin(17, 0x0011).Word(0x0010).Word(0xFFFE).Word(72).Word(64).Word(0x2000).Byte(9).Byte(0);
    table.String("DIMM_A1").String("").Byte(0x18).Word(0x4080).Word(1600);
    table.String("Maker").String("00C0FFEE").String("Tag 1").String("PN-8192").Byte(2);
    table.Dword(0x80000000).Word(1333).Word(1350).Word(1500).Word(65535);
    const std::string block = "\nType : Memory Device (Type 17)\nLength : 0x28 (40)\nHandle : 0x0011 (17)\n"
                              "Physical Memory Array Handle : 0x0010 (16)\nMemory Error Information Handle : 0xFFFE\n"
                              "Total Width : 0x0048 (72)bits\nData Width : 0x0040 (64)bits\n"
                              "Size : 0x2000 - 8388608KB, 8192MB, 8GB\nForm Factor : 0x09 - DIMM \n"
                              "Device Set : 0x00 (00)\nDevice Locator : DIMM_A1\nBank Locator : NULL\n"
                              "Memory Type : 0x18 - DDR3 \nType Detail : 0x4080\n  Bit0 Reserved, set to 0 - 0 (No)\n"
                              "  Bit1 Other - 0 (No)\n  Bit2 Unknown - 0 (No)\n  Bit3 Fast-paged - 0 (No)\n"
                              "  Bit4 Static column - 0 (No)\n  Bit5 Pseudo-static - 0 (No)\n  Bit6 RAMBUS - 0 (No)\n"
                              "  Bit7 Synchronous - 1 (Yes)\n  Bit8 CMOS - 0 (No)\n  Bit9 EDO - 0 (No)\n"
                              "  Bit10 Window DRAM - 0 (No)\n  Bit11 Cache DRAM - 0 (No)\n"
                              "  Bit12 Non-volatile - 0 (No)\n  Bit13 Registered (Buffered) - 0 (No)\n"
                              "  Bit14 Unbuffered (Unregistered) - 1 (Yes)\n  Bit15 Reserved, set to 0 - 0 (No)\n"
                              "Speed : 0x0640 (1600)MHz\nManufacturer : Maker\nSerial Number : 00C0FFEE\n"
                              "Asset Tag : Tag 1\nPart Number : PN-8192\nAttributes : 0x02 (02)\n"
                              "Extended Size : 0x80000000 (-2147483648)\n"
                              "Configured Memory Clock Speed : 0x0535 (1333)MHz\nMinimum Voltage : 1350 millivolts\n"
                              "Maximum Voltage : 1500 millivolts\nConfigured Voltage : 65535 millivolts\n";
    EXPECT_EQ(Decoded(17, table, 28), block);
    EXPECT_EQ(Decoded(17, table, 27), Before(block, "Minimum Voltage"));
    EXPECT_EQ(Decoded(17, table, 26), Before(block, "Extended Size"));
    EXPECT_EQ(Decoded(17, table, 25), Before(block, "Attributes"));
    EXPECT_EQ(Decoded(17, table, 22), Before(block, "Speed :"));
    EXPECT_EQ(Decoded(17, table, 20), "");
}

TEST(DecodeMemoryDevice, MemoryDeviceSelectedFieldOfTheFirstThatHasIt) {
    SmbiosBuilder table;
    table.Begin(17).Raw(StandIn::Bytes(0x11)); // ends in front of the speed
    table.Begin(17).Raw(StandIn::Bytes(0x13)).String("First");
    table.Begin(17).Raw(StandIn::Bytes(0x13)).String("Second");
    EXPECT_EQ(Decoded(17, table, 28, {.Field = 16}), "\n\nManufacturer : First\n");
    EXPECT_EQ(Decoded(17, table, 28, {.Field = 16, .InstanceFirst = 3, .InstanceEnd = 4}), "\nManufacturer : Second\n");
}

TEST(DecodeMemoryDevice, FieldValues) {
    const StandIn::Bytes zeros(60);
    const FieldCase eventLog[] = {
        {7, 0x0A, {0x05}, "Access Method : 0x05 - Unrecognized\n"},
        {11, 0x14, {0x00}, "Log Header Format : 0x00 - No header\n"},
        {11, 0x14, {0x02}, "Log Header Format : 0x02 - Available for future assignment by this spec\n"},
        {11, 0x14, {0x7F}, "Log Header Format : 0x7F - Available for future assignment by this spec\n"},
        {11, 0x14, {0x80}, "Log Header Format : 0x80 - BIOS Vendor or OEM-specific format\n"},
        {11, 0x14, {0xFF}, "Log Header Format : 0xFF - BIOS Vendor or OEM-specific format\n"},
    };
    ExpectFields(15, zeros, eventLog);
    const FieldCase memoryArray[] = {
        {4, 0x04, {0x00}, "Location : 0x00 - \n"},
        {4, 0x04, {0x0A}, "Location : 0x0A - NuBus\n"},
        {4, 0x04, {0x0B}, "Location : 0x0B - Unrecognized\n"},
        {4, 0x04, {0x9F}, "Location : 0x9F - Unrecognized\n"},
        {4, 0x04, {0xA0}, "Location : 0xA0 - PC-98/C20 add-on card\n"},
        {4, 0x04, {0xA3}, "Location : 0xA3 - PC-98/Local bus add-on card\n"},
        {4, 0x04, {0xA4}, "Location : 0xA4 - Unrecognized\n"},
        {5, 0x05, {0x07}, "Use : 0x07 - Cache memory \n"},
        {5, 0x05, {0x08}, "Use : 0x08 - Unrecognized \n"},
        {6, 0x06, {0x07}, "Memory Error Correction : 0x07 - CRC \n"},
        {6, 0x06, {0x08}, "Memory Error Correction : 0x08 - Unrecognized \n"},
        {7, 0x07, {0x00, 0x00, 0x00, 0x80}, "Maximum Capacity : 0x80000000 - -2147483648KB, 2097152MB, 2048GB\n"},
        {10,
         0x0F,
         {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
         "Extended Maximum Capacity : 0xffffffffffffffff (-1)\n"},
    };
    ExpectFields(16, zeros, memoryArray);
    const FieldCase memoryDevice[] = {
        {8, 0x0C, {0xFF, 0xFF}, "Size : 0xFFFF - 67107840KB, 65535MB, 63GB\n"},
        {9, 0x0E, {0x00}, "Form Factor : 0x00 -  \n"},
        {9, 0x0E, {0x0F}, "Form Factor : 0x0F - FB-DIMM \n"},
        {9, 0x0E, {0x10}, "Form Factor : 0x10 - Unrecognized \n"},
        {13, 0x12, {0x19}, "Memory Type : 0x19 - FBD2 \n"},
        {13, 0x12, {0x1A}, "Memory Type : 0x1A - Unrecognized \n"},
    };
    ExpectFields(17, zeros, memoryDevice);
    ExpectFieldCount(15, zeros, 14);
    ExpectFieldCount(16, zeros, 10);
    ExpectFieldCount(17, zeros, 25);
}
