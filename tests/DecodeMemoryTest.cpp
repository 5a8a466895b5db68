// Memory array, memory device, mapped address, memory error and memory channel structures as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodeMemory, MemoryArray) {
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

TEST(DecodeMemory, MemoryDevice) {
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

TEST(DecodeMemory, MemoryError32) {
    ExpectShown(18, SmbiosBuilder().Begin(18, 0xFF).Raw({3, 3, 5}).Dword(0).Dword(0x80000000).Dword(0).Dword(0x1000),
                "\nType : 32-bit Memory Error (Type 18)\nLength : 0x17 (23)\nHandle : 0x00FF (255)\n"
                "Error Type : 0x03 - OK\nError Granularity : 0x03 - Device level \n"
                "Error Operation : 0x05 - Partial write \nVendor Syndrome : 0x00000000 - Unknown\n"
                "Memory Array Error Address : 0x80000000 - Unknown\nDevice Error Address : 0x00000000 \n"
                "Error Resolution : 0x00001000 \n",
                {{21, ""}});
    ExpectFields(18, Bytes(19),
                 {{4, 0x04, {0x0E}, "Error Type : 0x0E - Uncorrectable error\n"},
                  {5, 0x05, {0x04}, "Error Granularity : 0x04 - Memory partition level \n"},
                  {6, 0x06, {0x00}, "Error Operation : 0x00 -  \n"},
                  {7, 0x07, {0x00, 0x00, 0x00, 0x80}, "Vendor Syndrome : 0x80000000 \n"},
                  {8, 0x0B, {0x00, 0x00, 0x00, 0x00}, "Memory Array Error Address : 0x00000000 \n"},
                  {9, 0x0F, {0x00, 0x00, 0x00, 0x80}, "Device Error Address : 0x80000000 - Unknown\n"},
                  {10, 0x13, {0x00, 0x00, 0x00, 0x80}, "Error Resolution : 0x80000000 - Unknown\n"}});
}

TEST(DecodeMemory, ArrayMappedAddress) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(19, 0x13)
                                    .Dword(0)
                                    .Dword(0x003FFFFF)
                                    .Word(0x10)
                                    .Byte(2)
                                    .Qword(0)
                                    .Qword(0x123456789ABCDEF0);
    ExpectShown(19, table,
                "\nType : Memory Array Adr (Type 19)\nLength : 0x1F (31)\nHandle : 0x0013 (19)\n"
                "Starting Address : 0x00000000 \nEnding Address : 0x003FFFFF - 4194303KB, 4095MB, 3GB\n"
                "Memory Array Handle : 0x0010 (16)\nPartition Width : 0x02 (2)\n"
                "Extended Starting Address : 0x0\nExtended Ending Address : 0x123456789ABCDEF0\n",
                {{21, ""}, {27, "Extended Starting Address"}});
    SmbiosBuilder older;
    older.Begin(19).Dword(0x400).Dword(0xFFFFFFFF).Word(0xFFFF).Byte(0);
    older.Begin(19).Dword(0).Dword(0x80000000).Word(0).Byte(1);
    ExpectCases(19, {{"a structure that ends early is followed by the next one", older,
                      "\nType : Memory Array Adr (Type 19)\nLength : 0x0F (15)\nHandle : 0x0000 (00)\n"
                      "Starting Address : 0x00000400 - 1024KB, 1MB, 0GB\n"
                      "Ending Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\n"
                      "Memory Array Handle : 0xFFFF (65535)\nPartition Width : 0x00 (0)\n"
                      "\nType : Memory Array Adr (Type 19)\nLength : 0x0F (15)\nHandle : 0x0001 (01)\n"
                      "Starting Address : 0x00000000 \n"
                      "Ending Address : 0x80000000 - -2147483648KB, 2097152MB, 2048GB\n"
                      "Memory Array Handle : 0x0000 (0)\nPartition Width : 0x01 (1)\n"}});
}

TEST(DecodeMemory, DeviceMappedAddress) {
    SmbiosBuilder table;
    table.Begin(20, 0x14).Dword(0xFFFFFFFF).Dword(0).Word(0x11).Word(0x13).Raw({1, 2, 0xFF});
    table.Qword(0x40000000).Qword(0xFFFFFFFFFFFFFFFF);
    ExpectShown(20, table,
                "\nType : Memory Device Adr (Type 20)\nLength : 0x23 (35)\nHandle : 0x0014 (20)\n"
                "Starting Address : 0xFFFFFFFF - -1KB, 4194303MB, 4095GB\nEnding Address : 0x00000000 \n"
                "Memory Device Handle : 0x0011 (17)\nMemory Array Mapped Address Handle : 0x0013 (19)\n"
                "Partition Row Position : 0x01 (1)\nInterleave Position : 0x02 (2)\n"
                "Interleaved Data Depth : 0xFF (255)\nExtended Starting Address : 0x40000000\n"
                "Extended Ending Address : 0xFFFFFFFFFFFFFFFF\n",
                {{21, ""}, {27, "Extended Starting Address"}});
}

TEST(DecodeMemory, MemoryError64) {
    const SmbiosBuilder table =
        SmbiosBuilder().Begin(33).Raw({14, 4, 5}).Dword(0).Qword(1ULL << 63).Qword(0x123456789AB).Dword(1U << 31);
    ExpectShown(33, table,
                "\nType : 64-bit Memory Error Info (Type 33)\nLength : 0x1F (31)\nHandle : 0x0000 (00)\n"
                "Error Type : 0x0E - Uncorrectable error\nError Granularity : 0x04 - Memory partition level\n"
                "Error Operation : 0x05 - Partial write \nVendor Syndrome : 0x00000000 - Unknown\n"
                "Memory Array Error Address : 0x8000000000000000 - Unknown\nDevice Error Address : 0x123456789AB \n"
                "Error Resolution : 0x80000000 - Unknown\n",
                {{23, ""}});
    ExpectFields(33, Bytes(27),
                 {{4, 4, {15}, "Error Type : 0x0F - Unrecognized\n"},
                  {7, 7, {0, 0, 0, 0x80}, "Vendor Syndrome : 0x80000000 \n"},
                  {8, 0x0B, {0, 0, 0, 0x80}, "Memory Array Error Address : 0x80000000 \n"},
                  {9, 0x13, {0, 0, 0, 0, 0, 0, 0, 0x80}, "Device Error Address : 0x8000000000000000 - Unknown\n"},
                  {10, 0x1B, {0}, "Error Resolution : 0x00000000 \n"}});
}

TEST(DecodeMemory, MemoryChannel) {
    ExpectShown(37, SmbiosBuilder().Begin(37).Raw({4, 0x10, 3}).Raw({1, 0x10, 0, 2, 0x20, 0, 3, 0x2C, 1}),
                "\nType : Memory Channel (Type 37)\nLength : 0x10 (16)\nHandle : 0x0000 (00)\n"
                "Channel Type : 0x04 - SyncLink\nMaximum Channel Load : 0x10 (16)\nMemory Device Count : 0x03 (3)\n"
                "Memory1 Device Load : 0x01 (1)\nMemory Device1 Handle : 0x0010 (16)\n"
                "Memory Device Load : 0x03 (3)\nMemory Device Handle : 0x012C (300)\n",
                {{23, ""}});
    ExpectCases(37, {{"one device, and again with room behind it",
                      SmbiosBuilder().Begin(37).Raw({5, 2, 1, 6, 7, 0}).Begin(37).Raw({0, 2, 1, 6, 7, 0, 8, 9, 0}),
                      "\nType : Memory Channel (Type 37)\nLength : 0x0A (10)\nHandle : 0x0000 (00)\n"
                      "Channel Type : 0x05 - Unrecognized\nMaximum Channel Load : 0x02 (2)\n"
                      "Memory Device Count : 0x01 (1)\nMemory1 Device Load : 0x06 (6)\n"
                      "Memory Device1 Handle : 0x0007 (07)\n"
                      "\nType : Memory Channel (Type 37)\nLength : 0x0D (13)\nHandle : 0x0001 (01)\n"
                      "Channel Type : 0x00 - \nMaximum Channel Load : 0x02 (2)\nMemory Device Count : 0x01 (1)\n"
                      "Memory1 Device Load : 0x06 (6)\nMemory Device1 Handle : 0x0007 (07)\n"
                      "Memory Device Load : 0x06 (6)\nMemory Device Handle : 0x0007 (07)\n"}});
}
