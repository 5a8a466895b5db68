// Battery, power control and power supply structures as they are shown.
#include "tests/DecoderCases.h"

TEST(DecodePower, Battery) {
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

TEST(DecodePower, PowerControl) {
    ExpectShown(25, SmbiosBuilder().Begin(25, 0x19).Raw({0x12, 0x31, 0x23, 0x05, 0xFF}),
                "\nType : SYS Power Control (Type 25)\nLength : 0x09 (09)\nHandle : 0x0019 (25)\n"
                "Next Scheduled Power-on Month : 0x12 (18)\n"
                "Next Scheduled Power-on Day-of month : 0x31 (49)\n"
                "Next Scheduled Power-on Hour : 0x23 (35)\nNext Scheduled Power-on Minute : 0x05 (05)\n"
                "Next Scheduled Power-on Second : 0xFF (255)\n",
                {{22, ""}});
}

TEST(DecodePower, PowerSupply) {
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
