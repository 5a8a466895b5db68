// Decoders of types 30 to 36 on made-up structures.
#include "tests/Support.h"

#include <gtest/gtest.h>

using StandIn::SmbiosBuilder;

TEST(DecodeManagement, Structures) {
    const struct {
        const char* Name;
        std::uint8_t Type;
        SmbiosBuilder Table;
        std::string Expected;
        Selection Selected = {};
    } cases[] = {
        {"remote access", 30, SmbiosBuilder().Begin(30).String("Remote Ltd").Byte(0xFE),
         "\nType : OOB Remote Access (Type 30)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n"
         "Manufacturer Name : Remote Ltd\nConnections : 0xFE\n"
         "  Bit0 Outbound Connection Enabled - 0 (No)\n  Bit1 Inbound Connection Enabled - 1 (Yes)\n"},
        {"boot integrity services", 31,
         SmbiosBuilder()
             .Begin(31, 0xAB)
             .Raw({0x80, 0x11, 0x33, 0x22})
             .Dword(0x1234ABCD)
             .Dword(0x0FEDCBA9)
             .Qword(0x0123456789ABCDEF)
             .Dword(0x44556677),
         "\nType : BIS Entry Point (Type 31)\nLength : 0x1C (28)\nHandle : 0x00AB (171)\n"
         "Checksum : 0x80 (128)\nReserved1 : 0x11\nReserved2 : 0x2233\nBisEntry16 : 0xABCD\n"
         "BisEntry32 : 0x0FEDCBA9\nReserved3 : 0x123456789ABCDEF\nReserved4 : 0x44556677\n"},
        {"boot status bytes at the borders of their ranges", 32,
         SmbiosBuilder().Begin(32).Raw({1, 2, 3, 4, 5, 6}).Raw({0x00, 0x08, 0x09, 0x7F, 0x80, 0xBF, 0xC0, 0xFF}),
         "\nType : System Boot Info (Type 32)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
         "Reserved : 0x01 0x02 0x03 0x04 0x05 0x06 \nBoot Status : 0x00 - No errors detected\n"
         "0x08 - System to reboot\n0x09 - Reserved\n0x7f - Reserved\n"
         "0x80 - Vendor/OEM-specific implementations\n0xbf - Vendor/OEM-specific implementations\n"
         "0xc0 - Product-specific implementations\n0xff - Product-specific implementations\n"},
        {"no boot status; the first structure whatever the range",
         32,
         SmbiosBuilder().Begin(32).Raw({0, 0, 0, 0, 0, 0xFF}).Begin(32).Raw({9, 9, 9, 9, 9, 9, 1}),
         "\nType : System Boot Info (Type 32)\nLength : 0x0A (10)\nHandle : 0x0000 (00)\n"
         "Reserved : 0x00 0x00 0x00 0x00 0x00 0xFF \n",
         {.InstanceFirst = 2, .InstanceEnd = 3}},
        {"one boot status, selected",
         32,
         SmbiosBuilder().Begin(32).Raw({0, 0, 0, 0, 0, 0, 3}),
         "\nBoot Status : 0x03 - Firmware-detected hardware failure\n",
         {.Field = 5}},
        {"memory errors at the last known codes and behind them", 33,
         SmbiosBuilder()
             .Begin(33)
             .Raw({14, 4, 5})
             .Dword(0)
             .Qword(1ULL << 63)
             .Qword(0x123456789AB)
             .Dword(1U << 31)
             .Begin(33)
             .Raw({15, 5, 6})
             .Dword(1U << 31)
             .Qword(1ULL << 31)
             .Qword(1ULL << 63)
             .Dword(0),
         "\nType : 64-bit Memory Error Info (Type 33)\nLength : 0x1F (31)\nHandle : 0x0000 (00)\n"
         "Error Type : 0x0E - Uncorrectable error\nError Granularity : 0x04 - Memory partition level\n"
         "Error Operation : 0x05 - Partial write \nVendor Syndrome : 0x00000000 - Unknown\n"
         "Memory Array Error Address : 0x8000000000000000 - Unknown\nDevice Error Address : 0x123456789AB \n"
         "Error Resolution : 0x80000000 - Unknown\n"
         "\nType : 64-bit Memory Error Info (Type 33)\nLength : 0x1F (31)\nHandle : 0x0001 (01)\n"
         "Error Type : 0x0F - Unrecognized\nError Granularity : 0x05 - Unrecognized\n"
         "Error Operation : 0x06 - Unrecognized \nVendor Syndrome : 0x80000000 \n"
         "Memory Array Error Address : 0x80000000 \nDevice Error Address : 0x8000000000000000 - Unknown\n"
         "Error Resolution : 0x00000000 \n"},
        {"management devices at the last known codes and behind them", 34,
         SmbiosBuilder().Begin(34).Raw({0, 13}).Dword(0x295).Byte(5).Begin(34).String("X").Byte(14).Dword(~0U).Byte(6),
         "\nType : Manage Device (Type 34)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\nDescription : NULL\n"
         "Type : 0x0D - Holtek HT82H791\nAddress : 0x00000295\nAddress Type : 0x05 - SM Bus\n"
         "\nType : Manage Device (Type 34)\nLength : 0x0B (11)\nHandle : 0x0001 (01)\nDescription : X\n"
         "Type : 0x0E - Unrecognized\nAddress : 0xFFFFFFFF\nAddress Type : 0x06 - Unrecognized\n"},
        {"component", 35, SmbiosBuilder().Begin(35).String("Fans").Word(0x22).Word(0x0101).Word(0xFFFF),
         "\nType : Manage Device Component (Type 35)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\nDescription : Fans\n"
         "Management Device Handle : 0x0022 (34)\nComponent Handle : 0x0101 (257)\n"
         "Threshold Handle : 0xFFFF (65535)\n"},
        {"thresholds", 36, SmbiosBuilder().Begin(36).Word(0x8000).Word(1).Word(2).Word(3).Word(4).Word(0xFFFF),
         "\nType : Manage Device Threshold Data (Type 36)\nLength : 0x10 (16)\nHandle : 0x0000 (00)\n"
         "Lower Threshold-on-critical : 0x8000 (32768)\nUpper Threshold-Non-critical : 0x0001 (1)\n"
         "Lower Threshold-Critical : 0x0002 (2)\nUpper Threshold-Critical : 0x0003 (3)\n"
         "Lower Threshold-Non-recoverable : 0x0004 (4)\nUpper Threshold-Non-recoverable : 0xFFFF (65535)\n"},
        {"a selected field that the first structure is too short for and the second one shows",
         36,
         SmbiosBuilder().Begin(36).Word(9).Begin(36).Word(1).Word(2).Word(3).Begin(36).Word(4).Word(5).Word(6),
         "\n\nLower Threshold-Critical : 0x0003 (3)\n",
         {.Field = 6}},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(Decoded(one.Type, one.Table, 28, one.Selected), one.Expected) << one.Name;
    }
}

// Type 30 is older than the others of its group.
TEST(DecodeManagement, TableVersions) {
    for (std::uint8_t type = 30; type <= 36; ++type) {
        const SmbiosBuilder table = SmbiosBuilder().Begin(type).Raw(StandIn::Bytes(28));
        const std::uint8_t first = type == 30 ? 22 : 23;
        EXPECT_EQ(Decoded(type, table, first - 1), "") << int(type);
        EXPECT_EQ(Decoded(type, table, first, {.Field = 2}), "\nLength : 0x20 (32)\n") << int(type);
    }
}
