// Structures of types 37 to 42, 126 and 127 as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodePowerSupply, MemoryChannel) {
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

TEST(DecodePowerSupply, Ipmi) {
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

TEST(DecodePowerSupply, PowerSupply) {
    SmbiosBuilder table;
    table.Begin(39).Byte(1).String("Bay").String("PSU").String("Maker").String("Serial").Byte(0).String("Model");
    table.String("Revision").Word(0x8000).Word(0x11A2).Word(0xFFFF).Word(0x12).Word(0xFFFF);
    ExpectShown(39, table,
                "\nType : SYS Power Supply (Type 39)\nLength : 0x16 (22)\nHandle : 0x0000 (00)\n"
                "Power Unit Group : 0x01 (01)\nDevice Name : PSU\nManufacturer : Maker\nSerial Number : Serial\n"
                "Asset Tag Number : NULL\nModel Part Number : Model\nRevision Level : Revision\n"
                "Max Power Capacity : 0x8000 - Unknown\nPower Supply Characteristics : 0x11A2\n Type : Switching\n"
                " Status : OK\n Range Switching : Auto-switch\n Power supply : present\n"
                "Input Voltage Probe Handle : 0xFFFF - No provided\nCooling Device Handle : 0x0012 \n"
                "Input Current Probe Handle : 0xFFFF - No provided\n",
                {{23, ""}});
    const std::string label = "Power Supply Characteristics : ";
    ExpectFields(39, Bytes(18),
                 {{11, 0x0C, {0xFF, 0x7F}, "Max Power Capacity : 0x7FFF \n"},
                  {12,
                   0x0E,
                   {0xB0, 0xE2},
                   label + "0xE2B0\n Type : Regulator\n Status : Critical,power supply failed,taken off-line\n"
                           " Range Switching : Not applicable\n Power supply : \n"},
                  {12,
                   0x0E,
                   {0x3F, 0x27},
                   label + "0x273F\n Type : Unrecognized\n Status : Unrecognized\n"
                           " Range Switching : Unrecognized\n Power supply : unplugged from the wall\n"},
                  {12,
                   0x0E,
                   {0x01, 0x00},
                   label + "0x0001\n Type : \n Status : \n Range Switching : \n Power supply : hot Replaceable\n"}});
}

// A count or an entry length that doesn't fit what is there ends the list.
TEST(DecodePowerSupply, AdditionalInformation) {
    const auto additional = [](std::uint8_t count, const Bytes& entries) {
        return SmbiosBuilder().Begin(40).Byte(count).Raw(entries);
    };
    const std::string heading = "Number of Additional Information entries :\n";
    ExpectShown(40, additional(2, {6, 0x22, 0x00, 0x05, 1, 0xAA, 7, 0x04, 0x01, 0x1F, 0, 0xBB, 0xCC}),
                "\nType : Additional Info (Type 40)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
                "Number of Additional Information entries : 0x02 (2)\n" +
                    heading +
                    "Entry Length : 0x06 (06)\nReferenced Handle : 0x0022 (34)\nReferenced Offset : 0x05\n"
                    "String : 0x01\nValue : 0xaa\n"
                    "Entry Length : 0x07 (07)\nReferenced Handle : 0x0104 (260)\nReferenced Offset : 0x1F\n"
                    "String : 0x00\nValue : 0xbb\n",
                {{26, ""}});
    const std::string none = "\n" + heading;
    const std::string fixed = "Referenced Handle : 0x0201 (513)\nReferenced Offset : 0x03\nString : 0x04\n";
    const std::string five = "Entry Length : 0x05 (05)\n" + fixed;
    const std::string six = "Entry Length : 0x06 (06)\n" + fixed + "Value : 0x05\n";
    const Selection list{5};
    ExpectCases(
        40, {{"count 0", additional(0, {6, 1, 2, 3, 4, 5}), none, list},
             {"count 0 and nothing behind it", additional(0, {}), "\n", list},
             {"fewer counted than present", additional(1, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), none + six, list},
             {"more counted than present", additional(255, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), none + six + five, list},
             {"no value", additional(2, {5, 1, 2, 3, 4, 6, 1, 2, 3, 4, 5}), none + five + six, list},
             {"too short for an entry", additional(2, {4, 1, 2, 3, 6, 1, 2, 3, 4, 5}), none, list},
             {"length 0", additional(2, {0, 1, 2, 3, 4, 5}), none, list},
             {"past the area, within the table", additional(1, {7, 1, 2, 3, 4, 5}).Begin(127), none, list},
             {"the area past the table", additional(3, {6, 1, 2, 3, 4, 5}).StatedLength(0xFF), none + six, list},
             {"an entry past the table", additional(1, {9, 1, 2, 3, 4, 5}).StatedLength(0xFF), none, list}});
}

TEST(DecodePowerSupply, OnboardDevice) {
    ExpectShown(41, SmbiosBuilder().Begin(41).String("LAN").Raw({0x89, 1}).Word(0x0102).Raw({0x3A, 0xFB}),
                "\nType : Onboard Devices Extended Info (Type 41)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
                "Reference Designation : LAN\nDevice Type : 0x89\n Status : Enabled\n Type : SATA Controller\n"
                "Device Type Instance : 0x01 (1)\nSegment Group Number : 0x0102\nBus Number : 0x3A (58)\n"
                "Device/Function Number : 0xFB\n Device Number : 0x1F\n Function Number : 0x3\n",
                {{26, ""}});
    ExpectFields(41, Bytes(2),
                 {{5, 5, {0x0A}, "Device Type : 0x0A\n Status : Disabled\n Type : SAS Controller\n"},
                  {5, 5, {0x90}, "Device Type : 0x90\n Status : Enabled\n Type : UFS Controller\n"}});
}

TEST(DecodePowerSupply, HostInterface) {
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

TEST(DecodePowerSupply, HeadersAlone) {
    ExpectShown(126, SmbiosBuilder().Begin(126).Raw({1, 2}),
                "\nType : Inactive (Type 126)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n", {{22, ""}});
    ExpectShown(127, SmbiosBuilder().Begin(127, 0xFEFF),
                "\nType : End-Of-Table (Type 127)\nLength : 0x04 (04)\nHandle : 0xFEFF (65279)\n", {{22, ""}});
}
