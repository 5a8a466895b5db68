// Port, slot, on-board device and pointing device structures as they are shown.
#include "Lib/Common/LibraryContext.h"
#include "tests/DecoderCases.h"

TEST(DecodePortSlot, Ports) {
    const Bytes area{1, 0xFF, 2, 0x0B, 0x1F};
    ExpectShown(8, SmbiosBuilder().Begin(8).Raw(area).SetString("J1").SetString("LAN"),
                "\nType : Port Connector (Type 08)\nLength : 0x09 (09)\nHandle : 0x0000 (00)\n"
                "Internal Reference Designator : J1\nInternal Type : 0xFF - Other\n"
                "External Reference Designator : LAN\nExternal Type : 0x0B - RJ-45\nPort Type : 0x1F - Network Port\n",
                {{20, ""}});
    ExpectFields(8, area,
                 {{5, 5, {0x00}, "Internal Type : 0x00 - None\n"},
                  {5, 5, {0x22}, "Internal Type : 0x22 - SAS/SATA Plug Receptacle\n"},
                  {5, 5, {0x23}, "Internal Type : 0x23 - USB Type-C Receptacle\n"},
                  {5, 5, {0xA0}, "Internal Type : 0xA0 - PC-98\n"},
                  {7, 7, {0xA4}, "External Type : 0xA4 - PC-98Full\n"},
                  {7, 7, {0xFF}, "External Type : 0xFF - Other\n"},
                  {8, 8, {0x21}, "Port Type : 0x21 - SAS\n"},
                  {8, 8, {0x23}, "Port Type : 0x23 - Thunderbolt\n"},
                  {8, 8, {0xA0}, "Port Type : 0xA0 - 8251 Compatible\n"},
                  {8, 8, {0xA1}, "Port Type : 0xA1 - 8251 FIFO Compatible\n"},
                  {8, 8, {0xFF}, "Port Type : 0xFF - Other\n"}});
}

// On a console of five columns "Other" and its line end are one line more; the print of another text has three
// characters.
TEST(DecodePortSlot, OtherIsCountedAsItStands) {
    for (const auto& [code, lines] : {std::pair<std::uint8_t, unsigned>{0xFF, 3}, {0x0B, 2}}) {
        for (const char* field : {"5", "7", "8"}) {
            StandIn::Machine machine =
                StandIn::MachineWithTable(SmbiosBuilder().Begin(8).Raw({1, code, 1, code, code}), 2, 8);
            machine.Console = StandIn::ConsoleKind::Fixed;
            machine.ConsoleColumns = 5;
            machine.ConsoleRows = 50;
            View({"/b", "/nologo", "/type", "8", "1", field}, machine);
            EXPECT_EQ(LibraryContextGet().Pager.LineCount, lines) << field;
        }
    }
}

TEST(DecodePortSlot, Slots) {
    const Bytes area{1, 0xA5, 0x0B, 0x04, 0x03, 0x2A, 0x00, 0x0C, 0x05, 0x01, 0x00, 0x03, 0xF9};
    ExpectShown(9, SmbiosBuilder().Begin(9).Raw(area).SetString("PCIE1"),
                "\nType : System Slots (Type 09)\nLength : 0x11 (17)\nHandle : 0x0000 (00)\n"
                "Slot Designation : PCIE1\nSlot Type : 0xA5 - PCI Express\nSlot Data Bus Width : 0x0B - 8x or x8\n"
                "Current Usage : 0x04 - In use\nSlot Length : 0x03 - Short Length\nSlot ID : 0x002A (42)\n"
                "Slot Characteristics1 : 0x0C\n" +
                    Bits(0x0C, {"Characteristics Unknown", "Provides 5.0 Vlots", "Provides 3.3 Vlots",
                                "Slot opening is shared another", "Supports PC Card-16", "Supports CardBus",
                                "Supports Zoom Video", "Supports Modem Ring Resume"}) +
                    "Slot Characteristics2 : 0x05\n" +
                    Bits(5, {"PCI Power Management Enable", "Slot Support hot-plug devices",
                             "PCI slot supports SMBus signal"}) +
                    "Segment Group Number : 0x0001\nBus Number : 0x03\nDevice/Function Number : 0xF9\n" +
                    Bits(0xF9, {"Function number bit 0", "Function number bit 1", "Function number bit 2",
                                "Device number bit 0", "Device number bit 1", "Device number bit 2",
                                "Device number bit 3", "Device number bit 4"}),
                {{20, ""}, {21, "Slot Characteristics2"}, {26, "Segment Group"}});
    ExpectFields(9, area,
                 {{5, 5, {0x00}, "Slot Type : 0x00 - \n"},
                  {5, 5, {0x13}, "Slot Type : 0x13 - AGP 8X\n"},
                  {5, 5, {0x1F}, "Slot Type : 0x1F - PCI Express Gen 2 SFF-8639 (U.2)\n"},
                  {5, 5, {0x30}, "Slot Type : 0x30 - CXL Flexbus 1.0\n"},
                  {5, 5, {0xA0}, "Slot Type : 0xA0 - PC-98/C20\n"},
                  {5, 5, {0xB6}, "Slot Type : 0xB6 - PCI Express Gen 3 x16\n"},
                  {5, 5, {0xB8}, "Slot Type : 0xB8 - PCI Express Gen 4\n"},
                  {5, 5, {0xC6}, "Slot Type : 0xC6 - EDSFF E3\n"},
                  {5, 5, {0xFF}, "Slot Type : 0xFF - Unrecognized\n"}, // unlike ports
                  {6, 6, {0x0E}, "Slot Data Bus Width : 0x0E - 32x or x32\n"},
                  {7, 7, {0x05}, "Current Usage : 0x05 - Unavailable\n"},
                  {8, 8, {0x04}, "Slot Length : 0x04 - Long Length\n"},
                  {8, 8, {0x06}, "Slot Length : 0x06 - 3.5\" drive form factor\n"},
                  {9, 9, {0xFE, 0xFF}, "Slot ID : 0xFFFE (65534)\n"}});
}

TEST(DecodePortSlot, OnBoardDevices) {
    const Bytes area{0x83, 1, 0x05, 2}; // two devices
    ExpectShown(10, SmbiosBuilder().Begin(10).Raw(area).SetString("Graphics").SetString("Network"),
                "\nType : On Board Devices (Type 10)\nLength : 0x08 (08)\nHandle : 0x0000 (00)\n"
                "Device Type : 0x83\n Status : Device Enabled\n Type : Video\nDescription String : Graphics\n",
                {{20, ""}});
    ExpectFields(10, area,
                 {{4, 4, {0x05}, "Device Type : 0x05\n Status : Device Disabled\n Type : Ethernet\n"},
                  {4, 4, {0x8A}, "Device Type : 0x8A\n Status : Device Enabled\n Type : SASController\n"}});
}

TEST(DecodePortSlot, PointingDevice) {
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
