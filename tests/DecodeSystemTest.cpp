// BIOS, system, base board and chassis structures as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodeSystem, Bios) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(0, 0x10)
                                    .String("Example Firmware")
                                    .String("F1")
                                    .Word(0xE800)
                                    .String("01/02/2020")
                                    .Byte(0x0F)
                                    .Qword(0xF00000008001A008)
                                    .Raw({0x81, 0x0A, 4, 0x10, 0xFF, 0xFE});
    const std::string whole =
        "\nType : BIOS (Type 00)\nLength : 0x18 (24)\nHandle : 0x0010 (16)\nVendor : Example Firmware\n"
        "BIOS Version : F1\nBIOS Starting Address Segment : 0xE800\nBIOS Release Date : 01/02/2020\n"
        "BIOS ROM Size : 0x0F (1024 KB)\nBIOS Characteristics : 0xF00000008001A008\n" +
        Bits(0x8001A008, {"Reserved",
                          "Reserved",
                          "Unknown",
                          "BIOS Characteristics Not Supported",
                          "ISA is supported",
                          "MCA is supported",
                          "EISA is supported",
                          "PCI is supported",
                          "PC Card (PCMCIA) is supported",
                          "Plug and Play is supported",
                          "APM is supported",
                          "BIOS is Upgradeable (Flash)",
                          "BIOS shadowing is allowed",
                          "VL-VESA is supported",
                          "ESCD supported is available",
                          "Boot from CD is supported",
                          "Selectable Boot is supported",
                          "BIOS ROM is socketed",
                          "Boot From PCMCIA is supported",
                          "EDD specification is supported",
                          "for NEC 9800 1.2MB 3.5\"",
                          "for Toshiba 1.2mb 3.5\"",
                          "5.25\"/360 KB Floppy supported",
                          "5.25\"/1.2 MB Floppy supported",
                          "3.5\"/720 KB Floppy supported",
                          "3.5\"/2.88 MB Floppy supported",
                          "Print Screen is supported",
                          "8042 Keyboard are supported",
                          "Serial Services are supported",
                          "Printer Services are supported",
                          "CGA video Services are supported",
                          "NEC PC-98"}) +
        "BIOS Characteristics Extension1 : 0x81\n" +
        Bits(0x81, {"ACPI supported", "USB Legacy is supported", "AGP is supported", "I2O boot is supported",
                    "LS-120 boot is supported", "ATAPI ZIP Drive boot is supported", "1394 boot is supported",
                    "Smart Battery supported"}) +
        "BIOS Characteristics Extension2 : 0x0A\n" +
        Bits(0x0A, {"BIOS Boot Specification Supported", "Function Key Initiated NSB Supported",
                    "Enable Targeted Content Distribution", "UEFI Specification is supported",
                    "Describes a virtual machine"}) +
        "System BIOS Major Release : 04\nSystem BIOS Minor Release : 10\n"
        "EC Major Release : FF\nEC Minor Release : FE\n";
    ExpectShown(0, table, whole, {{21, ""}});
    ExpectFields(0, Bytes(6), {{8, 9, {0xFF}, "BIOS ROM Size : 0xFF (16384 KB)\n"}});
}

TEST(DecodeSystem, System) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(1)
                                    .String("Example Works")
                                    .String("Box")
                                    .String("")
                                    .String("S-1")
                                    .Raw({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xAF})
                                    .Byte(6)
                                    .String("SKU")
                                    .String("Fam");
    ExpectShown(1, table,
                "\nType : System (Type 01)\nLength : 0x1B (27)\nHandle : 0x0000 (00)\nManufacturer : Example Works\n"
                "Product Name : Box\nVersion : NULL\nSerial Number : S-1\n"
                "UUID : 0x00 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0A 0x0B 0x0C 0x0D 0x0E 0xAF \n"
                "Wake-up Type : 0x06 - Power Switch\nSKU Number : SKU\nFamily : Fam\n",
                {{20, ""}, {21, "UUID"}, {24, "SKU"}});
    ExpectFields(1, Bytes(21),
                 {{9, 0x18, {0}, "Wake-up Type : 0x00 - \n"},
                  {9, 0x18, {7}, "Wake-up Type : 0x07 - PCI PME#\n"},
                  {9, 0x18, {8}, "Wake-up Type : 0x08 - AC Power Restored\n"}});
}

TEST(DecodeSystem, BaseBoard) {
    const auto board = [](std::uint8_t count, const Bytes& handles) {
        return SmbiosBuilder()
            .Begin(2, 2)
            .String("Example Works")
            .String("Board")
            .String("A")
            .String("S")
            .String("Tag")
            .Byte(0x29)
            .String("Slot")
            .Word(3)
            .Raw({10, count})
            .Raw(handles);
    };
    const std::string list = "Contained Object Handles : 0x05 (5)\n0x105 (261)\n0xffff (65535)\n";
    ExpectShown(
        2, board(3, {5, 0, 5, 1, 0xFF, 0xFF}),
        "\nType : Base Board (Type 02)\nLength : 0x15 (21)\nHandle : 0x0002 (02)\nManufacturer : Example Works\n"
        "Product Name : Board\nVersion : A\nSerial Number : S\nAsset Tag : Tag\nFeature Flags : 0x29\n" +
            Bits(9, {"Hosting Board", "Requires other board", "Removable", "Replaceable", "Hot swappable"}) +
            "Location in Chassis : Slot\nChassis Handle : 0x0003\nBoard Type : 0x0A - Motherboard\n"
            "Number of Contained Object Handles : 0x03 (3)\n" +
            list,
        {{20, ""}, {24, "Asset Tag"}});
    ExpectCases(2, {{"handles", board(3, {5, 0, 5, 1, 0xFF, 0xFF}), "\n" + list, {14}},
                    {"no handle, and room for one", board(0, {0}), "\nContained Object Handles : ", {14}},
                    {"the list lies at the structure's length", board(0, {}), "\n", {14}},
                    {"more handles than the table holds", board(200, {1, 0}), "\n", {14}}});
    ExpectFields(2, Bytes(11), {{12, 0x0D, {13}, "Board Type : 0x0D - Interconnect Board\n"}});
}

TEST(DecodeSystem, Chassis) {
    const auto chassis = [](std::uint8_t count, std::uint8_t size, const Bytes& elements) {
        return SmbiosBuilder()
            .Begin(3, 3)
            .String("Example Works")
            .Byte(0x83)
            .String("V")
            .String("S")
            .String("Tag")
            .Raw({5, 5, 5, 5})
            .Dword(0xDEADBEEF)
            .Raw({2, 1, count, size})
            .Raw(elements)
            .String("SKU");
    };
    ExpectShown(3, chassis(2, 3, {1, 2, 3, 0xAA, 0xBB, 0xCC}),
                "\nType : Enclosure/Chassis (Type 03)\nLength : 0x1C (28)\nHandle : 0x0003 (03)\n"
                "Manufacturer : Example Works\nType : 0x83 - Desktop\nVersion : V\nSerial Number : S\n"
                "Asset Tag : Tag\nBoot-up State : 0x05 - Critical\nPower Supply State : 0x05 - Critical\n"
                "Thermal State : 0x05 - Critical\nSecurity State : 0x05 - External interface enabled\n"
                "OEM-defined : 0xDEADBEEF\nHeight : 0x02 (2)\nNumber of Power Cords : 0x01 (1)\n"
                "Contained Element Count : 0x02 (2)\nContained Element Record Length : 0x03 (3)\n"
                "Contained Elements : 0x01\n0x02\n0x03\n0xaa\n0xbb\n0xcc\nSKU Number : SKU\n",
                {{20, ""}, {21, "Boot-up State"}, {23, "OEM-defined"}, {27, "SKU Number"}});
    ExpectCases(3, {{"no elements", chassis(0, 3, {}), "\nContained Elements : 0x00 (0)\n", {18}},
                    {"the string behind no elements", chassis(0, 3, {}), "\nSKU Number : SKU\n", {19}},
                    {"more elements than the table holds", chassis(255, 255, {}), "\n", {18}}});
    ExpectFields(3, Bytes(17),
                 {{5, 5, {0x1D}, "Type : 0x1D - Blade Enclosure\n"},
                  {5, 5, {0xA4}, "Type : 0xA4 - Stick PC\n"},
                  {11, 0x0B, {6}, "Thermal State : 0x06 - Non-recoverable\n"}});
}
