// Management device, IPMI and host interface structures as they are shown.
#include "tests/DecoderCases.h"

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

TEST(DecodeManagement, Ipmi) {
    ExpectShown(38, SmbiosBuilder().Begin(38).Raw({3, 0x20, 0x40, 0xFF}).Qword(0x0123456789ABCDEE).Raw({0x0B, 0}),
                "\nType : IPMI Device Info (Type 38)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
                "Interface Type : 0x03 - BT:Block Transfer\nIPMI Specification Revision : 0x20\n"
                "I2C Slave Address : 0x40\nNV Storage Device Address : 0xFF\n- No storage device exists\n"
                "Base Address : 0x123456789ABCDEE\nBase Address Modifier / Interrupt Info : 0x0B\n"
                " Register spacing : On successive byte boundaries\n LS-bit for addresses : Bit 0\n"
                " Interrupt Info : Specified\n Interrupt Polarity : Active high\n Interrupt Trigger Mode : level\n"
                "Interrupt Number : 0x00 - Unspecified/Unsupported\n",
                {{23, ""}});
    ExpectFields(38, Bytes(14),
                 {{4, 4, {4}, "Interface Type : 0x04 - SSIF:SMBus System Interface\n"},
                  {7, 7, {0x20}, "NV Storage Device Address : 0x20\n\n"},
                  {9,
                   0x10,
                   {0x52},
                   "Base Address Modifier / Interrupt Info : 0x52\n"
                   " Register spacing : On 32-bit boundaries\n LS-bit for addresses : Bit 1\n"
                   " Interrupt Info : Not specified\n Interrupt Polarity : Active high\n"
                   " Interrupt Trigger Mode : edge\n"},
                  {10, 0x11, {0x0A}, "Interrupt Number : 0x0A \n"}});
}

TEST(DecodeManagement, HostInterface) {
    const std::string head = "\nType : Manage Controller Host Interface (Type 42)\nLength : 0x09 (09)\n"
                             "Handle : 0x0000 (00)\nInterface Type : ";
    ExpectShown(42, SmbiosBuilder().Begin(42).Raw({0xF0, 0, 0, 1, 0x57}),
                head + "0xF0 - OEM\n Vendor ID : 0x00000157\n", {{27, ""}});
    ExpectCases(42,
                {{"no vendor number behind another interface", SmbiosBuilder().Begin(42).Raw({8, 0, 0, 1, 0x57}),
                  head + "0x08 - 16850/16850A UART Register Compatible\n"},
                 {"the vendor number selected: the first maker's interface shows it",
                  SmbiosBuilder()
                      .Begin(42)
                      .Raw({2, 0})
                      .Begin(42)
                      .Raw({0xF0, 0xAB, 0, 0, 0xC})
                      .Begin(42)
                      .Raw({0xF0, 1, 2, 3, 4}),
                  "\n\n Vendor ID : 0xab00000c\n",
                  {5}},
                 {"a vendor number cut by the table's end", SmbiosBuilder().Begin(42).Raw({0xF0, 0x12}), "\n", {5}}});
    ExpectFields(42, Bytes(5),
                 {{4, 4, {9}, "Interface Type : 0x09 - Reserved\n"},
                  {4, 4, {0xEF}, "Interface Type : 0xEF - Reserved\n"},
                  {4, 4, {0xFF}, "Interface Type : 0xFF - Reserved\n"}});
}
