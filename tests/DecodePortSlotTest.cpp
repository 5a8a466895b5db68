// Tests of the port, slot, on-board device, string list, language and group decoders.
#include "tests/DecoderCases.h"

namespace {

constexpr std::uint8_t Port = 8;
constexpr std::uint8_t Slot = 9;
constexpr std::uint8_t Device = 10;
constexpr std::uint8_t OemStrings = 11;
constexpr std::uint8_t Options = 12;
constexpr std::uint8_t Language = 13;
constexpr std::uint8_t Group = 14;

// Structures from offset 4 on.
const StandIn::Bytes PortArea = {1, 0xFF, 2, 0x0B, 0x1F};
const StandIn::Bytes SlotArea = {1, 0xA5, 0x0B, 0x04, 0x03, 0x2A, 0x00, 0x0C, 0x05, 0x01, 0x00, 0x03, 0xF9};
const StandIn::Bytes DeviceArea = {0x83, 1, 0x05, 2}; // two devices
const StandIn::Bytes LanguageArea = {2, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2};
const StandIn::Bytes GroupArea = {1, 0x04, 0x22, 0x01, 0x07, 0x03, 0x00}; // two items

} // namespace

TEST(DecodePortSlot, Ports) {
    StandIn::SmbiosBuilder table = Alone(Port, PortArea, {"J1", "LAN"});
    table.Begin(Port).Raw({0, 0xA4, 0, 0x22});
    EXPECT_EQ(Decoded(Port, table, 20), "\nType : Port Connector (Type 08)\nLength : 0x09 (09)\nHandle : 0x0000 (00)\n"
                                        "Internal Reference Designator : J1\n"
                                        "Internal Type : 0xFF - Other\n"
                                        "External Reference Designator : LAN\n"
                                        "External Type : 0x0B - RJ-45\n"
                                        "Port Type : 0x1F - Network Port\n"
                                        "\nType : Port Connector (Type 08)\nLength : 0x08 (08)\nHandle : 0x0001 (01)\n"
                                        "Internal Reference Designator : NULL\n"
                                        "Internal Type : 0xA4 - PC-98Full\n"
                                        "External Reference Designator : NULL\n"
                                        "External Type : 0x22 - SAS/SATA Plug Receptacle\n");
    const FieldCase cases[] = {
        {5, 5, {0x00}, "Internal Type : 0x00 - None\n"},
        {5, 5, {0x23}, "Internal Type : 0x23 - Unrecognized\n"},
        {5, 5, {0x9F}, "Internal Type : 0x9F - Unrecognized\n"},
        {5, 5, {0xA0}, "Internal Type : 0xA0 - PC-98\n"},
        {5, 5, {0xA5}, "Internal Type : 0xA5 - Unrecognized\n"},
        {7, 7, {0x18}, "External Type : 0x18 - 9 Pin Dual Inline (pin 10 cut)\n"},
        {7, 7, {0xFE}, "External Type : 0xFE - Unrecognized\n"},
        {7, 7, {0xFF}, "External Type : 0xFF - Other\n"},
        {8, 8, {0x10}, "Port Type : 0x10 - USB\n"},
        {8, 8, {0x21}, "Port Type : 0x21 - SAS\n"},
        {8, 8, {0x22}, "Port Type : 0x22 - Unrecognized\n"},
        {8, 8, {0xA0}, "Port Type : 0xA0 - 8251 Compatible\n"},
        {8, 8, {0xA1}, "Port Type : 0xA1 - 8251 FIFO Compatible\n"},
        {8, 8, {0xA2}, "Port Type : 0xA2 - Unrecognized\n"},
        {8, 8, {0xFF}, "Port Type : 0xFF - Other\n"},
    };
    ExpectFields(Port, PortArea, cases);
    ExpectFieldCount(Port, PortArea, 8);
}

TEST(DecodePortSlot, Slots) {
    const std::string whole = "\nType : System Slots (Type 09)\nLength : 0x11 (17)\nHandle : 0x0000 (00)\n"
                              "Slot Designation : PCIE1\n"
                              "Slot Type : 0xA5 - PCI Express\n"
                              "Slot Data Bus Width : 0x0B - 8x or x8\n"
                              "Current Usage : 0x04 - In use\n"
                              "Slot Length : 0x03 - Short Length\n"
                              "Slot ID : 0x002A (42)\n"
                              "Slot Characteristics1 : 0x0C\n"
                              "  Bit0 Characteristics Unknown - 0 (No)\n  Bit1 Provides 5.0 Vlots - 0 (No)\n"
                              "  Bit2 Provides 3.3 Vlots - 1 (Yes)\n  Bit3 Slot opening is shared another - 1 (Yes)\n"
                              "  Bit4 Supports PC Card-16 - 0 (No)\n  Bit5 Supports CardBus - 0 (No)\n"
                              "  Bit6 Supports Zoom Video - 0 (No)\n  Bit7 Supports Modem Ring Resume - 0 (No)\n"
                              "Slot Characteristics2 : 0x05\n"
                              "  Bit0 PCI Power Management Enable - 1 (Yes)\n"
                              "  Bit1 Slot Support hot-plug devices - 0 (No)\n"
                              "  Bit2 PCI slot supports SMBus signal - 1 (Yes)\n"
                              "Segment Group Number : 0x0001\n"
                              "Bus Number : 0x03\n"
                              "Device/Function Number : 0xF9\n"
                              "  Bit0 Function number bit 0 - 1 (Yes)\n  Bit1 Function number bit 1 - 0 (No)\n"
                              "  Bit2 Function number bit 2 - 0 (No)\n  Bit3 Device number bit 0 - 1 (Yes)\n"
                              "  Bit4 Device number bit 1 - 1 (Yes)\n  Bit5 Device number bit 2 - 1 (Yes)\n"
                              "  Bit6 Device number bit 3 - 1 (Yes)\n  Bit7 Device number bit 4 - 1 (Yes)\n";
    const StandIn::SmbiosBuilder table = Alone(Slot, SlotArea, {"PCIE1"});
    EXPECT_EQ(Decoded(Slot, table, 26), whole);
    EXPECT_EQ(Decoded(Slot, table, 25), Before(whole, "Segment Group"));
    EXPECT_EQ(Decoded(Slot, table, 20), Before(whole, "Slot Characteristics2"));
    const FieldCase cases[] = {
        {5, 5, {0x00}, "Slot Type : 0x00 - \n"},
        {5, 5, {0x13}, "Slot Type : 0x13 - AGP 8X\n"},
        {5, 5, {0x14}, "Slot Type : 0x14 - Unrecognized\n"},
        {5, 5, {0xA0}, "Slot Type : 0xA0 - PC-98/C20\n"},
        {5, 5, {0xB6}, "Slot Type : 0xB6 - PCI Express Gen 3 x16\n"},
        {5, 5, {0xB7}, "Slot Type : 0xB7 - Unrecognized\n"},
        {5, 5, {0xFF}, "Slot Type : 0xFF - Unrecognized\n"}, // unlike ports
        {6, 6, {0x0E}, "Slot Data Bus Width : 0x0E - 32x or x32\n"},
        {6, 6, {0x0F}, "Slot Data Bus Width : 0x0F - Unrecognized\n"},
        {7, 7, {0x05}, "Current Usage : 0x05 - Unrecognized\n"},
        {8, 8, {0x04}, "Slot Length : 0x04 - Long Length\n"},
        {8, 8, {0x05}, "Slot Length : 0x05 - Unrecognized\n"},
        {9, 9, {0xFE, 0xFF}, "Slot ID : 0xFFFE (65534)\n"},
    };
    ExpectFields(Slot, SlotArea, cases);
    ExpectFieldCount(Slot, SlotArea, 14);
}

TEST(DecodePortSlot, OnBoardDevices) {
    EXPECT_EQ(Decoded(Device, Alone(Device, DeviceArea, {"Graphics", "Network"})),
              "\nType : On Board Devices (Type 10)\nLength : 0x08 (08)\nHandle : 0x0000 (00)\n"
              "Device Type : 0x83\n"
              " Status : Device Enabled\n Type : Video\n"
              "Description String : Graphics\n");
    const FieldCase cases[] = {
        {4, 4, {0x05}, "Device Type : 0x05\n Status : Device Disabled\n Type : Ethernet\n"},
        {4, 4, {0x8A}, "Device Type : 0x8A\n Status : Device Enabled\n Type : SASController\n"},
        {4, 4, {0x0B}, "Device Type : 0x0B\n Status : Device Disabled\n Type : Unrecognized\n"},
        {4, 4, {0xFF}, "Device Type : 0xFF\n Status : Device Enabled\n Type : Unrecognized\n"},
    };
    ExpectFields(Device, DeviceArea, cases);
    ExpectFieldCount(Device, DeviceArea, 5);
}

// The first structure whatever the range, and its count alone.
TEST(DecodePortSlot, StringLists) {
    for (const std::uint8_t type : {OemStrings, Options}) {
        StandIn::SmbiosBuilder table = Alone(type, {5}, {"a", "b", "c", "d", "e"});
        table.Begin(type).Byte(1).SetString("f");
        EXPECT_EQ(Decoded(type, table, 28, {.InstanceFirst = 2, .InstanceEnd = 3}),
                  std::string("\nType : ") +
                      (type == OemStrings ? "OEM Strings (Type 11)" : "System Config (Type 12)") +
                      "\nLength : 0x05 (05)\nHandle : 0x0000 (00)\nCount : 0x05 (05)\n");
        ExpectFieldCount(type, {5}, 4);
    }
}

TEST(DecodePortSlot, Languages) {
    StandIn::SmbiosBuilder table = Alone(Language, LanguageArea, {"en|US|iso8859-1", "fr|CA|iso8859-1"});
    table.Begin(Language).Raw(LanguageArea).SetString("de|DE").SetString("it|IT");
    const std::string first = "\nType : BIOS Language (Type 13)\nLength : 0x16 (22)\nHandle : 0x0000 (00)\n"
                              "Installable Languages : 0x02 (02)\n"
                              "Flags : 0x01 - Abbreviated format\n"
                              "Current Languages : fr|CA|iso8859-1\n";
    EXPECT_EQ(Decoded(Language, table, 28, {.InstanceEnd = 2}), first);
    EXPECT_EQ(Decoded(Language, table, 20, {.InstanceEnd = 2}), Before(first, "Flags"));
    // Field 6 has nothing to show, so the walk over the structures goes on.
    EXPECT_EQ(Decoded(Language, table, 28, {.Field = 6}), "\n\n");
    EXPECT_EQ(ViewerFieldCounter, 7);
    EXPECT_EQ(Decoded(Language, table, 28, {.Field = 7}), "\nCurrent Languages : fr|CA|iso8859-1\n");
    const FieldCase cases[] = {
        {5, 5, {0xFE}, "Flags : 0xFE - Long format\n"},
    };
    ExpectFields(Language, LanguageArea, cases);
    ExpectFieldCount(Language, LanguageArea, 7);
}

TEST(DecodePortSlot, Groups) {
    EXPECT_EQ(Decoded(Group, Alone(Group, GroupArea, {"Module"})),
              "\nType : Group Association (Type 14)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
              "Group Name : Module\n"
              "Item Type : 0x04 (04)\n"
              "Item Handle : 0x0122 (290)\n");
    ExpectFieldCount(Group, GroupArea, 6);
}
