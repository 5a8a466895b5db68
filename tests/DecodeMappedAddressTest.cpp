// Memory error, mapped address, pointing device and battery structures as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodeMappedAddress, MemoryError) {
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

TEST(DecodeMappedAddress, OfAnArray) {
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

TEST(DecodeMappedAddress, OfADevice) {
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

TEST(DecodeMappedAddress, PointingDevice) {
    ExpectShown(21, SmbiosBuilder().Begin(21, 0x15).Raw({7, 4, 12}),
                "\nType : Built-in Pointing (Type 21)\nLength : 0x07 (07)\nHandle : 0x0015 (21)\n"
                "Type : 0x07 - Touch Pad\nInterface : 0x04 - PS/2\nNumber of Buttons : 0x0C (12)\n",
                {{21, ""}});
    ExpectFields(21, Bytes(3),
                 {{4, 0x04, {0x09}, "Type : 0x09 - Optical Sensor\n"},
                  {5, 0x05, {0x08}, "Interface : 0x08 - ADB(Apple Destkop Bus)\n"},
                  {5, 0x05, {0xA0}, "Interface : 0xA0 - Bus mouse DB-9\n"},
                  {5, 0x05, {0xA2}, "Interface : 0xA2 - USB\n"},
                  {5, 0x05, {0xA4}, "Interface : 0xA4 - SPI\n"}});
}

TEST(DecodeMappedAddress, Battery) {
    SmbiosBuilder table;
    table.Begin(22, 0x16).String("Rear").String("Cell Works").String("").String("B-77").String("Pack 6");
    table.Byte(6).Word(4400).Word(14800).String("1.0").Byte(0xFF);
    table.Word(0x0102).Word(0x4B2A).String("LION").Byte(10).Dword(0xFFFFFFFE);
    ExpectShown(22, table,
                "\nType : Portable Battery (Type 22)\nLength : 0x1A (26)\nHandle : 0x0016 (22)\n"
                "Location : Rear\nManufacturer : Cell Works\nManufacture Date : NULL\n"
                "Serial Number : B-77\nDevice Name : Pack 6\nDevice Chemistry : 0x06 - Lithium-ion\n"
                "Design Capacity : 0x1130 (4400)\nDesign Voltage : 0x39D0 (14800)\n"
                "SBDS Version Number : 1.0\nMaximum Error in Battery Data : 0xFF (255)\n"
                "SBDS Serial Number : 0x0102 (258)\nSBDS Manufacture Date : 0x4B2A (19242)\n"
                "SBDS Device Chemistry : LION\nDesign Capacity Multiplier : 0x0A (10)\n"
                "OEM-specific : 0xFFFFFFFE (-2)\n",
                {{21, ""}, {22, "SBDS Serial Number"}});
    ExpectFields(22, Bytes(22), {{9, 0x09, {0x08}, "Device Chemistry : 0x08 - Lithium Polymer\n"}});
}
