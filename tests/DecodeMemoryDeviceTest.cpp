// Event log, memory array and memory device structures as they are shown.
#include "tests/DecoderCases.h"

namespace {

// An event log that counts descriptors of a stated length, and the bytes of its list.
SmbiosBuilder EventLog(std::uint8_t count, std::uint8_t length, const Bytes& list) {
    return SmbiosBuilder()
        .Begin(15)
        .Raw({0x00, 0x01, 0x00, 0x00, 0x10, 0x00, 4, 1, 0x01, 0x00, 0x00, 0x80}) // to the change token
        .Raw({0x00, 0x00, 0xFF, 0xFF, 1, count, length})
        .Raw(list);
}

} // namespace

TEST(DecodeMemoryDevice, EventLog) {
    ExpectShown(15, EventLog(3, 2, {0x01, 0x00, 0x10, 0x00, 0x17, 0x00}),
                "\nType : System Event Log (Type 15)\nLength : 0x1D (29)\nHandle : 0x0000 (00)\n"
                "Log Area Length : 0x0100 (256 Byte)\nLog Header Start Offset : 0x0000 (00)\n"
                "Log Data Start Offset : 0x0010 (16)\n"
                "Access Method : 0x04 - General-Purpose NonVolatile Data\nLog Status : 0x01\n" +
                    Bits(1, {"Log area Valid", "Log area full"}) +
                    "Log Change Token : 0x80000001 (-2147483647)\nAccess Method Address : 0xFFFF0000 (-65536)\n"
                    "Log Header Format : 0x01 - Type 1 log header\n"
                    "Number of Supported Log Type Descriptors : 0x03 (03)\n"
                    "Length of each Log Type Descriptor : 0x02 (02)\nEvent Log Type Descriptors :\n"
                    "01.  Log Type : 0x01 - Single-bit ECC memory error\n"
                    "     Variable Data Format Type : 0x00 - None\n"
                    "02.  Log Type : 0x10 - System Limit Exceeded\n"
                    "     Variable Data Format Type : 0x00 - None\n03.  Log Type : 0x17 - System boot\n"
                    "     Variable Data Format Type : 0x00 - None\n",
                {{20, ""}, {21, "Log Header Format"}});
    const std::string label = "Log Header Format : ";
    ExpectFields(15, Bytes(19),
                 {{7, 0x0A, {0x7F}, "Access Method : 0x7F - Unrecognized\n"},
                  {7, 0x0A, {0x80}, "Access Method : 0x80 - BIOS Vendor or OEM-specific\n"},
                  {7, 0x0A, {0xFF}, "Access Method : 0xFF - BIOS Vendor or OEM-specific\n"},
                  {11, 0x14, {0x00}, label + "0x00 - No header\n"},
                  {11, 0x14, {0x02}, label + "0x02 - Available for future assignment by this spec\n"},
                  {11, 0x14, {0x7F}, label + "0x7F - Available for future assignment by this spec\n"},
                  {11, 0x14, {0x80}, label + "0x80 - BIOS Vendor or OEM-specific format\n"},
                  {11, 0x14, {0xFF}, label + "0xFF - BIOS Vendor or OEM-specific format\n"}});
}

// Whatever length a descriptor states, the list's bytes are read in pairs, at most as many as are counted. A list that
// runs past the formatted area goes on in the string set; past the table's end it can't be read.
TEST(DecodeMemoryDevice, EventLogDescriptors) {
    const std::string none = "\nEvent Log Type Descriptors :\n";
    const std::string one = none + "01.  Log Type : 0x02 - Multi-bit ECC memory error\n"
                                   "     Variable Data Format Type : 0x03 - Multiple-Event Handle\n";
    const std::string two = one + "02.  Log Type : 0x08 - POST Error\n"
                                  "     Variable Data Format Type : 0x04 - POST Results Bitmap\n";
    const std::string texts =
        none + "01.  Log Type : 0x18 - Unused\n     Variable Data Format Type : 0x05 - System Management Type\n"
               "02.  Log Type : 0x7f - Unused\n"
               "     Variable Data Format Type : 0x06 - Multiple-Event System Management Type\n"
               "03.  Log Type : 0x80 - Available for system\n     Variable Data Format Type : 0x07 - Unused\n"
               "04.  Log Type : 0xfe - Available for system\n     Variable Data Format Type : 0x7f - Unused\n"
               "05.  Log Type : 0xff - End of log\n     Variable Data Format Type : 0x80 - OEM assigned\n"
               "06.  Log Type : 0x0d - Correctable memory log disabled\n"
               "     Variable Data Format Type : 0xff - OEM assigned\n";
    // A list that can be read counts as shown even when it is empty; one behind the formatted area does not.
    const SmbiosBuilder empty = EventLog(0, 2, {0}).Begin(15).Raw(Bytes(17)).Raw({1, 2, 2, 3});
    const SmbiosBuilder absent = EventLog(0, 2, {}).Begin(15).Raw(Bytes(17)).Raw({1, 2, 2, 3});
    const Selection list{14};
    ExpectCases(15, {{"codes at the borders",
                      EventLog(6, 2, {0x18, 5, 0x7F, 6, 0x80, 7, 0xFE, 0x7F, 0xFF, 0x80, 0xD, 0xFF}), texts, list},
                     {"one", EventLog(1, 2, {2, 3}), one, list},
                     {"longer ones", EventLog(2, 3, {2, 3, 8, 4, 9, 9}), two, list},
                     {"shorter ones", EventLog(4, 1, {2, 3, 8, 4}), two, list},
                     {"an odd length", EventLog(3, 1, {2, 3, 8}), one, list},
                     {"half a pair", EventLog(1, 1, {2}), none, list},
                     {"no length", EventLog(3, 0, {2, 3}), none, list},
                     {"into the string set", EventLog(2, 2, {2, 3}),
                      one + "02.  Log Type : 0x00 - None\n     Variable Data Format Type : 0x00 - None\n", list},
                     {"past the table", EventLog(3, 2, {2, 3}), "\n", list},
                     {"far past the table", EventLog(255, 255, {2, 3}), "\n", list},
                     {"an empty list", empty, "\n", list},
                     {"no list", absent, "\n" + one, list}});
}

TEST(DecodeMemoryDevice, MemoryArray) {
    SmbiosBuilder table;
    table.Begin(16, 0x10).Raw({3, 3, 5}).Dword(0x01000000).Word(0xFFFE).Word(4).Qword(0x10000000000);
    ExpectShown(16, table,
                "\nType : Physical Memory (Type 16)\nLength : 0x17 (23)\nHandle : 0x0010 (16)\n"
                "Location : 0x03 - System board or motherboard\nUse : 0x03 - System memory \n"
                "Memory Error Correction : 0x05 - Single-bit ECC \n"
                "Maximum Capacity : 0x01000000 - 16777216KB, 16384MB, 16GB\n"
                "Memory Error Information Handle : 0xFFFE (65534)\nNumber of Memory Devices : 0x0004 (04)\n"
                "Extended Maximum Capacity : 0x10000000000 (1099511627776)\n",
                {{21, ""}, {27, "Extended Maximum Capacity"}});
    ExpectFields(16, Bytes(19),
                 {{4, 0x04, {0x00}, "Location : 0x00 - \n"},
                  {4, 0x04, {0x0A}, "Location : 0x0A - NuBus\n"},
                  {4, 0x04, {0xA0}, "Location : 0xA0 - PC-98/C20 add-on card\n"},
                  {4, 0x04, {0xA3}, "Location : 0xA3 - PC-98/Local bus add-on card\n"},
                  {4, 0x04, {0xA4}, "Location : 0xA4 - CXL add-on card\n"},
                  {5, 0x05, {0x07}, "Use : 0x07 - Cache memory \n"},
                  {6, 0x06, {0x07}, "Memory Error Correction : 0x07 - CRC \n"},
                  {7, 0x07, {0, 0, 0, 0x80}, "Maximum Capacity : 0x80000000 - -2147483648KB, 2097152MB, 2048GB\n"},
                  {10, 0x0F, Bytes(8, 0xFF), "Extended Maximum Capacity : 0xffffffffffffffff (-1)\n"}});
}

TEST(DecodeMemoryDevice, MemoryDevice) {
    SmbiosBuilder table;
    table.Begin(17, 0x11).Word(0x10).Word(0xFFFE).Word(72).Word(64).Word(0x2000).Raw({9, 0});
    table.String("DIMM_A1").String("").Byte(0x18).Word(0x4080).Word(1600);
    table.String("Maker").String("00C0FFEE").String("Tag 1").String("PN-8192").Byte(2);
    table.Dword(0x80000000).Word(1333).Word(1350).Word(1500).Word(65535);
    ExpectShown(
        17, table,
        "\nType : Memory Device (Type 17)\nLength : 0x28 (40)\nHandle : 0x0011 (17)\n"
        "Physical Memory Array Handle : 0x0010 (16)\nMemory Error Information Handle : 0xFFFE\n"
        "Total Width : 0x0048 (72)bits\nData Width : 0x0040 (64)bits\n"
        "Size : 0x2000 - 8388608KB, 8192MB, 8GB\nForm Factor : 0x09 - DIMM \nDevice Set : 0x00 (00)\n"
        "Device Locator : DIMM_A1\nBank Locator : NULL\nMemory Type : 0x18 - DDR3 \nType Detail : 0x4080\n" +
            Bits(0x4080, {"Reserved, set to 0", "Other", "Unknown", "Fast-paged", "Static column", "Pseudo-static",
                          "RAMBUS", "Synchronous", "CMOS", "EDO", "Window DRAM", "Cache DRAM", "Non-volatile",
                          "Registered (Buffered)", "Unbuffered (Unregistered)", "Reserved, set to 0"}) +
            "Speed : 0x0640 (1600)MHz\nManufacturer : Maker\nSerial Number : 00C0FFEE\n"
            "Asset Tag : Tag 1\nPart Number : PN-8192\nAttributes : 0x02 (02)\n"
            "Extended Size : 0x80000000 (-2147483648)\nConfigured Memory Clock Speed : 0x0535 (1333)MHz\n"
            "Minimum Voltage : 1350 millivolts\nMaximum Voltage : 1500 millivolts\n"
            "Configured Voltage : 65535 millivolts\n",
        {{21, ""}, {23, "Speed :"}, {26, "Attributes"}, {27, "Extended Size"}, {28, "Minimum Voltage"}});
    ExpectFields(17, Bytes(36),
                 {{8, 0x0C, {0xFF, 0xFF}, "Size : 0xFFFF - 67107840KB, 65535MB, 63GB\n"},
                  {9, 0x0E, {0x00}, "Form Factor : 0x00 -  \n"},
                  {9, 0x0E, {0x0F}, "Form Factor : 0x0F - FB-DIMM \n"},
                  {9, 0x0E, {0x13}, "Form Factor : 0x13 - CSODIMM \n"},
                  {13, 0x12, {0x19}, "Memory Type : 0x19 - FBD2 \n"},
                  {13, 0x12, {0x1A}, "Memory Type : 0x1A - DDR4 \n"}});
}
