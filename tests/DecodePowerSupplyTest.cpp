// Decoders of types 37 to 42, 126 and 127 on made-up structures.
#include "tests/Support.h"

#include <gtest/gtest.h>

using StandIn::SmbiosBuilder;

namespace {

SmbiosBuilder Supply(std::uint16_t characteristics) {
    return SmbiosBuilder().Begin(39).Raw({1, 0, 0, 0, 0, 0, 0, 0}).Word(0x7FFF).Word(characteristics);
}

SmbiosBuilder Additional(std::uint8_t count, const StandIn::Bytes& entries) {
    return SmbiosBuilder().Begin(40).Byte(count).Raw(entries);
}

SmbiosBuilder HostInterface(std::uint8_t type) {
    return SmbiosBuilder().Begin(42).Byte(type).Raw({0, 0, 1, 0x57});
}

} // namespace

TEST(DecodePowerSupply, Structures) {
    const struct {
        const char* Name;
        std::uint8_t Type;
        SmbiosBuilder Table;
        std::string Expected;
        Selection Selected = {};
    } cases[] = {
        {"channel of three devices: the first and the third", 37,
         SmbiosBuilder().Begin(37).Raw({4, 0x10, 3}).Raw({1, 0x10, 0, 2, 0x20, 0, 3, 0x2C, 1}),
         "\nType : Memory Channel (Type 37)\nLength : 0x10 (16)\nHandle : 0x0000 (00)\n"
         "Channel Type : 0x04 - SyncLink\nMaximum Channel Load : 0x10 (16)\nMemory Device Count : 0x03 (3)\n"
         "Memory1 Device Load : 0x01 (1)\nMemory Device1 Handle : 0x0010 (16)\n"
         "Memory Device Load : 0x03 (3)\nMemory Device Handle : 0x012C (300)\n"},
        {"channels of one device, the second with room behind it", 37,
         SmbiosBuilder().Begin(37).Raw({5, 2, 1, 6, 7, 0}).Begin(37).Raw({0, 2, 1, 6, 7, 0, 8, 9, 0}),
         "\nType : Memory Channel (Type 37)\nLength : 0x0A (10)\nHandle : 0x0000 (00)\n"
         "Channel Type : 0x05 - Unrecognized\nMaximum Channel Load : 0x02 (2)\nMemory Device Count : 0x01 (1)\n"
         "Memory1 Device Load : 0x06 (6)\nMemory Device1 Handle : 0x0007 (07)\n"
         "\nType : Memory Channel (Type 37)\nLength : 0x0D (13)\nHandle : 0x0001 (01)\n"
         "Channel Type : 0x00 - \nMaximum Channel Load : 0x02 (2)\nMemory Device Count : 0x01 (1)\n"
         "Memory1 Device Load : 0x06 (6)\nMemory Device1 Handle : 0x0007 (07)\n"
         "Memory Device Load : 0x06 (6)\nMemory Device Handle : 0x0007 (07)\n"},
        {"IPMI with marks, asked for a second one",
         38,
         SmbiosBuilder().Begin(38).Raw({3, 0x20, 0x40, 0xFF}).Qword(0x0123456789ABCDEE).Raw({0x0B, 0}),
         "\nType : IPMI Device Info (Type 38)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
         "Interface Type : 0x03 - BT:Block Transfer\nIPMI Specification Revision : 0x20\n"
         "I2C Slave Address : 0x40\nNV Storage Device Address : 0xFF\n- No storage device exists\n"
         "Base Address : 0x123456789ABCDEE\nBase Address Modifier / Interrupt Info : 0x0B\n"
         " Register spacing : On successive byte boundaries\n LS-bit for addresses : Bit 0\n"
         " Interrupt Info : Specified\n Interrupt Polarity : Active high\n Interrupt Trigger Mode : level\n"
         "Interrupt Number : 0x00 - Unspecified/Unsupported\n",
         {.InstanceFirst = 2, .InstanceEnd = 3}},
        {"IPMI without marks", 38, SmbiosBuilder().Begin(38).Raw({4, 0x15, 0x42, 0x20}).Qword(0xCA3).Raw({0x52, 0x0A}),
         "\nType : IPMI Device Info (Type 38)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
         "Interface Type : 0x04 - Unrecognized\nIPMI Specification Revision : 0x15\n"
         "I2C Slave Address : 0x42\nNV Storage Device Address : 0x20\n\n"
         "Base Address : 0xCA3\nBase Address Modifier / Interrupt Info : 0x52\n"
         " Register spacing : On 32-bit boundaries\n LS-bit for addresses : Bit 1\n"
         " Interrupt Info : Not specified\n Interrupt Polarity : Active high\n Interrupt Trigger Mode : edge\n"
         "Interrupt Number : 0x0A \n"},
        {"power supply", 39,
         SmbiosBuilder()
             .Begin(39)
             .Byte(1)
             .String("Bay")
             .String("PSU")
             .String("Maker")
             .String("Serial")
             .Byte(0)
             .String("Model")
             .String("Revision")
             .Word(0x8000)
             .Word(0x11A2)
             .Word(0xFFFF)
             .Word(0x12)
             .Word(0xFFFF),
         "\nType : SYS Power Supply (Type 39)\nLength : 0x16 (22)\nHandle : 0x0000 (00)\n"
         "Power Unit Group : 0x01 (01)\nDevice Name : PSU\nManufacturer : Maker\nSerial Number : Serial\n"
         "Asset Tag Number : NULL\nModel Part Number : Model\nRevision Level : Revision\n"
         "Max Power Capacity : 0x8000 - Unknown\nPower Supply Characteristics : 0x11A2\n Type : Switching\n"
         " Status : OK\n Range Switching : Auto-switch\n Power supply : present\n"
         "Input Voltage Probe Handle : 0xFFFF - No provided\nCooling Device Handle : 0x0012 \n"
         "Input Current Probe Handle : 0xFFFF - No provided\n"},
        {"known capacity", 39, Supply(0), "\nMax Power Capacity : 0x7FFF \n", {.Field = 11}},
        {"last known characteristics, no flag",
         39,
         Supply(0xE2B0),
         "\nPower Supply Characteristics : 0xE2B0\n Type : Regulator\n"
         " Status : Critical,power supply failed,taken off-line\n Range Switching : Not applicable\n Power supply : \n",
         {.Field = 12}},
        {"characteristics behind the known ones, every flag",
         39,
         Supply(0x273F),
         "\nPower Supply Characteristics : 0x273F\n Type : Unrecognized\n Status : Unrecognized\n"
         " Range Switching : Unrecognized\n Power supply : unplugged from the wall\n",
         {.Field = 12}},
        {"the lowest flag alone",
         39,
         Supply(1),
         "\nPower Supply Characteristics : 0x0001\n Type : \n Status : \n Range Switching : \n"
         " Power supply : hot Replaceable\n",
         {.Field = 12}},
        {"additional information", 40,
         Additional(2, {6, 0x22, 0x00, 0x05, 1, 0xAA, 7, 0x04, 0x01, 0x1F, 0, 0xBB, 0xCC}),
         "\nType : Additional Info (Type 40)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
         "Number of Additional Information entries : 0x02 (2)\nNumber of Additional Information entries :\n"
         "Entry Length : 0x06 (06)\nReferenced Handle : 0x0022 (34)\nReferenced Offset : 0x05\n"
         "String : 0x01\nValue : 0xaa\n"
         "Entry Length : 0x07 (07)\nReferenced Handle : 0x0104 (260)\nReferenced Offset : 0x1F\n"
         "String : 0x00\nValue : 0xbb\n"},
        {"onboard device", 41, SmbiosBuilder().Begin(41).String("LAN").Raw({0x89, 1}).Word(0x0102).Raw({0x3A, 0xFB}),
         "\nType : Onboard Devices Extended Info (Type 41)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
         "Reference Designation : LAN\nDevice Type : 0x89\n Status : Enabled\n Type : SATA Controller\n"
         "Device Type Instance : 0x01 (1)\nSegment Group Number : 0x0102\nBus Number : 0x3A (58)\n"
         "Device/Function Number : 0xFB\n Device Number : 0x1F\n Function Number : 0x3\n"},
        {"last known onboard device, disabled",
         41,
         SmbiosBuilder().Begin(41).Raw({0, 0x0A}),
         "\nDevice Type : 0x0A\n Status : Disabled\n Type : SAS Controller\n",
         {.Field = 5}},
        {"onboard device behind the known ones",
         41,
         SmbiosBuilder().Begin(41).Raw({0, 0x8B}),
         "\nDevice Type : 0x8B\n Status : Enabled\n Type : Unrecognized\n",
         {.Field = 5}},
        {"maker's host interface", 42, HostInterface(0xF0),
         "\nType : Manage Controller Host Interface (Type 42)\nLength : 0x09 (09)\nHandle : 0x0000 (00)\n"
         "Interface Type : 0xF0 - OEM\n Vendor ID : 0x00000157\n"},
        {"the last kind of host interface with a name", 42, HostInterface(8),
         "\nType : Manage Controller Host Interface (Type 42)\nLength : 0x09 (09)\nHandle : 0x0000 (00)\n"
         "Interface Type : 0x08 - 16850/16850A UART Register Compatible\n"},
        {"a kind without a name", 42, HostInterface(9), "\nInterface Type : 0x09 - Reserved\n", {.Field = 4}},
        {"the kind before the maker's", 42, HostInterface(0xEF), "\nInterface Type : 0xEF - Reserved\n", {.Field = 4}},
        {"the last kind", 42, HostInterface(0xFF), "\nInterface Type : 0xFF - Reserved\n", {.Field = 4}},
        {"the vendor number selected: the first maker's interface shows it",
         42,
         HostInterface(2).Begin(42).Raw({0xF0, 0xAB, 0, 0, 0xC}).Begin(42).Raw({0xF0, 1, 2, 3, 4}),
         "\n\n Vendor ID : 0xab00000c\n",
         {.Field = 5}},
        {"a vendor number cut by the table's end", 42, SmbiosBuilder().Begin(42).Raw({0xF0, 0x12}),
         "\nType : Manage Controller Host Interface (Type 42)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n"
         "Interface Type : 0xF0 - OEM\n"},
        {"inactive", 126, SmbiosBuilder().Begin(126).Raw({1, 2}),
         "\nType : Inactive (Type 126)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n"},
        {"end of table", 127, SmbiosBuilder().Begin(127, 0xFEFF),
         "\nType : End-Of-Table (Type 127)\nLength : 0x04 (04)\nHandle : 0xFEFF (65279)\n"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(Decoded(one.Type, one.Table, 28, one.Selected), one.Expected) << one.Name;
    }
}

// A count or an entry length that doesn't fit what is there ends the list.
TEST(DecodePowerSupply, AdditionalInformationLists) {
    const std::string heading = "\nNumber of Additional Information entries :\n";
    const std::string fixed = "Referenced Handle : 0x0201 (513)\nReferenced Offset : 0x03\nString : 0x04\n";
    const std::string five = "Entry Length : 0x05 (05)\n" + fixed;
    const std::string six = "Entry Length : 0x06 (06)\n" + fixed + "Value : 0x05\n";
    const struct {
        const char* Name;
        SmbiosBuilder Table;
        std::string Expected;
    } cases[] = {
        {"count 0", Additional(0, {6, 1, 2, 3, 4, 5}), heading},
        {"count 0 and nothing behind it", Additional(0, {}), "\n"},
        {"fewer counted than present", Additional(1, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), heading + six},
        {"more counted than present", Additional(255, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), heading + six + five},
        {"no value", Additional(2, {5, 1, 2, 3, 4, 6, 1, 2, 3, 4, 5}), heading + five + six},
        {"too short for an entry", Additional(2, {4, 1, 2, 3, 6, 1, 2, 3, 4, 5}), heading},
        {"length 0", Additional(2, {0, 1, 2, 3, 4, 5}), heading},
        {"past the area, within the table", Additional(1, {7, 1, 2, 3, 4, 5}).Begin(127), heading},
        {"the area past the table", Additional(3, {6, 1, 2, 3, 4, 5}).StatedLength(0xFF), heading + six},
        {"an entry past the table", Additional(1, {9, 1, 2, 3, 4, 5}).StatedLength(0xFF), heading},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(Decoded(40, one.Table, 28, {.Field = 5}), one.Expected) << one.Name;
    }
}

TEST(DecodePowerSupply, TableVersions) {
    const std::pair<std::uint8_t, std::uint8_t> firstVersions[] = {{37, 23}, {38, 23}, {39, 23},  {40, 26},
                                                                   {41, 26}, {42, 27}, {126, 22}, {127, 22}};
    for (const auto& [type, version] : firstVersions) {
        const SmbiosBuilder table = SmbiosBuilder().Begin(type).Raw(StandIn::Bytes(28));
        EXPECT_EQ(Decoded(type, table, version - 1), "") << int(type);
        EXPECT_EQ(Decoded(type, table, version, {.Field = 2}), "\nLength : 0x20 (32)\n") << int(type);
    }
}
