// Remote access, boot, memory error and management device structures as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodeManagement, RemoteAccess) {
    ExpectShown(30, SmbiosBuilder().Begin(30).String("Remote Ltd").Byte(0xFE),
                "\nType : OOB Remote Access (Type 30)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n"
                "Manufacturer Name : Remote Ltd\nConnections : 0xFE\n" +
                    Bits(2, {"Outbound Connection Enabled", "Inbound Connection Enabled"}),
                {{22, ""}});
}

TEST(DecodeManagement, BootIntegrityServices) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(31, 0xAB)
                                    .Raw({0x80, 0x11, 0x33, 0x22})
                                    .Dword(0x1234ABCD)
                                    .Dword(0x0FEDCBA9)
                                    .Qword(0x0123456789ABCDEF)
                                    .Dword(0x44556677);
    ExpectShown(31, table,
                "\nType : BIS Entry Point (Type 31)\nLength : 0x1C (28)\nHandle : 0x00AB (171)\n"
                "Checksum : 0x80 (128)\nReserved1 : 0x11\nReserved2 : 0x2233\nBisEntry16 : 0xABCD\n"
                "BisEntry32 : 0x0FEDCBA9\nReserved3 : 0x123456789ABCDEF\nReserved4 : 0x44556677\n",
                {{23, ""}});
}

TEST(DecodeManagement, BootStatus) {
    ExpectShown(32,
                SmbiosBuilder().Begin(32).Raw({1, 2, 3, 4, 5, 6}).Raw({0x00, 0x08, 0x09, 0x7F, 0x80, 0xBF, 0xC0, 0xFF}),
                "\nType : System Boot Info (Type 32)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
                "Reserved : 0x01 0x02 0x03 0x04 0x05 0x06 \nBoot Status : 0x00 - No errors detected\n"
                "0x08 - System to reboot\n0x09 - Reserved\n0x7f - Reserved\n"
                "0x80 - Vendor/OEM-specific implementations\n0xbf - Vendor/OEM-specific implementations\n"
                "0xc0 - Product-specific implementations\n0xff - Product-specific implementations\n",
                {{23, ""}});
    ExpectCases(32, {{"no boot status", SmbiosBuilder().Begin(32).Raw({0, 0, 0, 0, 0, 0xFF}),
                      "\nType : System Boot Info (Type 32)\nLength : 0x0A (10)\nHandle : 0x0000 (00)\n"
                      "Reserved : 0x00 0x00 0x00 0x00 0x00 0xFF \n"}});
    ExpectFields(32, Bytes(7), {{5, 0x0A, {3}, "Boot Status : 0x03 - Firmware-detected hardware failure\n"}});
}

TEST(DecodeManagement, MemoryError) {
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

TEST(DecodeManagement, ManagementDevice) {
    ExpectShown(34, SmbiosBuilder().Begin(34).String("X").Byte(13).Dword(0x295).Byte(5),
                "\nType : Manage Device (Type 34)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\nDescription : X\n"
                "Type : 0x0D - Holtek HT82H791\nAddress : 0x00000295\nAddress Type : 0x05 - SM Bus\n",
                {{23, ""}});
    ExpectFields(34, Bytes(7),
                 {{4, 4, {0}, "Description : NULL\n"}, {6, 6, {0xFF, 0xFF, 0xFF, 0xFF}, "Address : 0xFFFFFFFF\n"}});
}

TEST(DecodeManagement, Component) {
    ExpectShown(35, SmbiosBuilder().Begin(35).String("Fans").Word(0x22).Word(0x0101).Word(0xFFFF),
                "\nType : Manage Device Component (Type 35)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
                "Description : Fans\nManagement Device Handle : 0x0022 (34)\nComponent Handle : 0x0101 (257)\n"
                "Threshold Handle : 0xFFFF (65535)\n",
                {{23, ""}});
}

TEST(DecodeManagement, Thresholds) {
    ExpectShown(36, SmbiosBuilder().Begin(36).Word(0x8000).Word(1).Word(2).Word(3).Word(4).Word(0xFFFF),
                "\nType : Manage Device Threshold Data (Type 36)\nLength : 0x10 (16)\nHandle : 0x0000 (00)\n"
                "Lower Threshold-on-critical : 0x8000 (32768)\nUpper Threshold-Non-critical : 0x0001 (1)\n"
                "Lower Threshold-Critical : 0x0002 (2)\nUpper Threshold-Critical : 0x0003 (3)\n"
                "Lower Threshold-Non-recoverable : 0x0004 (4)\nUpper Threshold-Non-recoverable : 0xFFFF (65535)\n",
                {{23, ""}});
}
