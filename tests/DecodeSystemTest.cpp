// The decoders of BIOS, system, base board and chassis structures.
#include "tests/Support.h"
#include "viewer/ViewerState.h"

#include <gtest/gtest.h>

using StandIn::Bytes;
using StandIn::SmbiosBuilder;

namespace {

// The bit lines of a list of names, with the given bits set.
std::string Bits(std::uint64_t value, const std::vector<std::string>& names) {
    std::string lines;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool set = (value >> i & 1) != 0;
        lines += "  Bit" + std::to_string(i) + " " + names[i] + (set ? " - 1 (Yes)\n" : " - 0 (No)\n");
    }
    return lines;
}

SmbiosBuilder Bios() {
    SmbiosBuilder table;
    table.Begin(0, 0x10).String("Example Firmware").String("F1").Word(0xE800).String("01/02/2020").Byte(0x0F);
    table.Qword(0xF00000008001A008).Raw({0x81, 0x0A, 4, 0x10, 0xFF, 0xFE});
    return table;
}

const std::string BiosHead = "\nType : BIOS (Type 00)\nLength : 0x18 (24)\nHandle : 0x0010 (16)\n";

TEST(BiosDecoder, ShowsEveryField) {
    const std::string shown = Decoded(0, Bios());
    const std::string upToBits = BiosHead +
                                 "Vendor : Example Firmware\nBIOS Version : F1\n"
                                 "BIOS Starting Address Segment : 0xE800\nBIOS Release Date : 01/02/2020\n"
                                 "BIOS ROM Size : 0x0F (1024 KB)\nBIOS Characteristics : 0xF00000008001A008\n"
                                 "  Bit0 Reserved - 0 (No)\n  Bit1 Reserved - 0 (No)\n"
                                 "  Bit2 Unknown - 0 (No)\n  Bit3 BIOS Characteristics Not Supported - 1 (Yes)\n";
    EXPECT_EQ(shown.substr(0, upToBits.size()), upToBits);
    const std::string fromLastBits =
        "  Bit30 CGA video Services are supported - 0 (No)\n  Bit31 NEC PC-98 - 1 (Yes)\n"
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
    ASSERT_GT(shown.size(), fromLastBits.size());
    EXPECT_EQ(shown.substr(shown.size() - fromLastBits.size()), fromLastBits);
    for (const char* line :
         {"  Bit13 VL-VESA is supported - 1 (Yes)\n", "  Bit15 Boot from CD is supported - 1 (Yes)\n",
          "  Bit16 Selectable Boot is supported - 1 (Yes)\n",
          "  Bit21 for Toshiba 1.2mb 3.5\" - 0 (No)\n  Bit22 5.25\"/360 KB Floppy supported - 0 (No)\n"}) {
        EXPECT_NE(shown.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(ViewerFieldCounter, 14);
}

TEST(BiosDecoder, SelectionsVersionsAndSizes) {
    EXPECT_EQ(Decoded(0, Bios(), 28, {8}), "\nBIOS ROM Size : 0x0F (1024 KB)\n");
    EXPECT_EQ(Decoded(0, Bios(), 20), "") << "the rows are readable from 2.1 on";
    EXPECT_EQ(ViewerDecoderRan, 0);
    SmbiosBuilder table;
    table.Begin(0).Raw({0, 0, 0, 0, 0, 0xFF});
    EXPECT_EQ(Decoded(0, table, 28, {8}), "\nBIOS ROM Size : 0xFF (16384 KB)\n");
    EXPECT_EQ(Decoded(0, table, 28, {4, 5, 6}), "\nVendor : NULL\n") << "always the first structure";
}

TEST(SystemDecoder, ShowsEveryFieldAndEndsWithTheStructure) {
    SmbiosBuilder table;
    table.Begin(1).String("Example Works").String("Box").String("").String("S-1");
    table.Raw({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xAF}).Byte(6).String("SKU").String("Fam");
    const std::string head = "\nType : System (Type 01)\nLength : 0x1B (27)\nHandle : 0x0000 (00)\n"
                             "Manufacturer : Example Works\nProduct Name : Box\nVersion : NULL\nSerial Number : S-1\n";
    const std::string from21 =
        "UUID : 0x00 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0A 0x0B 0x0C 0x0D 0x0E 0xAF \n"
        "Wake-up Type : 0x06 - Power Switch\n";
    EXPECT_EQ(Decoded(1, table, 28), head + from21 + "SKU Number : SKU\nFamily : Fam\n");
    EXPECT_EQ(Decoded(1, table, 23), head + from21);
    EXPECT_EQ(Decoded(1, table, 20), head);
    const auto wakeUp = [](std::uint8_t code) {
        SmbiosBuilder other;
        other.Begin(1).Raw({0, 0, 0, 0}).Raw(Bytes(16, 0)).Byte(code);
        return Decoded(1, other, 28, {9});
    };
    EXPECT_EQ(wakeUp(0), "\nWake-up Type : 0x00 - \n");
    EXPECT_EQ(wakeUp(7), "\nWake-up Type : 0x07 - PCI PME#\n");
    EXPECT_EQ(wakeUp(8), "\nWake-up Type : 0x08 - AC Power Restored\n");
    EXPECT_EQ(wakeUp(9), "\nWake-up Type : 0x09 - Unrecognized\n");
}

SmbiosBuilder Board(std::uint8_t type, std::uint8_t count, const Bytes& handles) {
    SmbiosBuilder table;
    table.Begin(2, 2).String("Example Works").String("Board").String("A").String("S").String("Tag").Byte(0x29);
    table.String("Slot").Word(3).Byte(type).Byte(count).Raw(handles);
    return table;
}

TEST(BoardDecoder, ShowsEveryField) {
    const std::string head =
        "\nType : Base Board (Type 02)\nLength : 0x15 (21)\nHandle : 0x0002 (02)\nManufacturer : Example Works\n"
        "Product Name : Board\nVersion : A\nSerial Number : S\n";
    const SmbiosBuilder table = Board(10, 3, {5, 0, 5, 1, 0xFF, 0xFF});
    EXPECT_EQ(Decoded(2, table),
              head + "Asset Tag : Tag\nFeature Flags : 0x29\n" +
                  Bits(0x09, {"Hosting Board", "Requires other board", "Removable", "Replaceable", "Hot swappable"}) +
                  "Location in Chassis : Slot\nChassis Handle : 0x0003\nBoard Type : 0x0A - Motherboard\n"
                  "Number of Contained Object Handles : 0x03 (3)\n"
                  "Contained Object Handles : 0x05 (5)\n0x105 (261)\n0xffff (65535)\n");
    EXPECT_EQ(Decoded(2, table, 23), head);
    EXPECT_EQ(Decoded(2, table, 28, {14}), "\nContained Object Handles : 0x05 (5)\n0x105 (261)\n0xffff (65535)\n");
    EXPECT_EQ(Decoded(2, Board(13, 0, {0}), 28, {14}), "\nContained Object Handles : ");
    EXPECT_EQ(Decoded(2, Board(13, 0, {}), 28, {14}), "\n") << "the list lies at the structure's length";
    EXPECT_EQ(Decoded(2, Board(13, 200, {1, 0}), 28, {14}), "\n") << "more handles than the table holds";
    EXPECT_EQ(Decoded(2, Board(13, 0, {}), 28, {12}), "\nBoard Type : 0x0D - Interconnect Board\n");
    EXPECT_EQ(Decoded(2, Board(14, 0, {}), 28, {12}), "\nBoard Type : 0x0E - Unrecognized\n");
}

SmbiosBuilder Chassis(std::uint8_t type, std::uint8_t state, std::uint8_t count, std::uint8_t size,
                      const Bytes& elements) {
    SmbiosBuilder table;
    table.Begin(3, 3).String("Example Works").Byte(type).String("V").String("S").String("Tag");
    table.Raw({state, state, state, state}).Dword(0xDEADBEEF).Raw({2, 1, count, size}).Raw(elements).String("SKU");
    return table;
}

TEST(ChassisDecoder, ShowsEveryField) {
    const SmbiosBuilder table = Chassis(0x83, 5, 2, 3, {1, 2, 3, 0xAA, 0xBB, 0xCC});
    const std::string to22 =
        "\nType : Enclosure/Chassis (Type 03)\nLength : 0x1C (28)\nHandle : 0x0003 (03)\n"
        "Manufacturer : Example Works\nType : 0x83 - Desktop\nVersion : V\nSerial Number : S\nAsset Tag : Tag\n"
        "Boot-up State : 0x05 - Critical\nPower Supply State : 0x05 - Critical\nThermal State : 0x05 - Critical\n"
        "Security State : 0x05 - External interface enabled\n";
    const std::string to26 = to22 + "OEM-defined : 0xDEADBEEF\nHeight : 0x02 (2)\nNumber of Power Cords : 0x01 (1)\n"
                                    "Contained Element Count : 0x02 (2)\nContained Element Record Length : 0x03 (3)\n"
                                    "Contained Elements : 0x01\n0x02\n0x03\n0xaa\n0xbb\n0xcc\n";
    EXPECT_EQ(Decoded(3, table, 27), to26 + "SKU Number : SKU\n");
    EXPECT_EQ(Decoded(3, table, 26), to26);
    EXPECT_EQ(Decoded(3, table, 22), to22);
    EXPECT_EQ(Decoded(3, table, 28, {19}), "\nSKU Number : SKU\n");
    EXPECT_EQ(Decoded(3, table, 28, {20}), "\n");
    EXPECT_EQ(ViewerFieldCounter, 19);
}

TEST(ChassisDecoder, CodesAndElementListsAtTheirBounds) {
    const SmbiosBuilder none = Chassis(0x1D, 6, 0, 3, {});
    EXPECT_EQ(Decoded(3, none, 28, {18}), "\nContained Elements : 0x00 (0)\n");
    EXPECT_EQ(Decoded(3, none, 28, {19}), "\nSKU Number : SKU\n");
    EXPECT_EQ(Decoded(3, none, 28, {5}), "\nType : 0x1D - Blade Enclosure\n");
    EXPECT_EQ(Decoded(3, none, 28, {11}), "\nThermal State : 0x06 - Non-recoverable\n");
    EXPECT_EQ(Decoded(3, none, 28, {12}), "\nSecurity State : 0x06 - Unrecognized\n");
    const SmbiosBuilder beyond = Chassis(0x9E, 7, 255, 255, {});
    EXPECT_EQ(Decoded(3, beyond, 28, {5}), "\nType : 0x9E - Unrecognized\n");
    EXPECT_EQ(Decoded(3, beyond, 28, {9}), "\nBoot-up State : 0x07 - Unrecognized\n");
    EXPECT_EQ(Decoded(3, beyond, 28, {18}), "\n");
    EXPECT_EQ(Decoded(3, none, 26, {19}), "\n") << "the SKU number came with 2.7";
}

} // namespace
