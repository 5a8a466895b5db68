// System reset, security, power control, probe and cooling device structures as they are shown.
#include "tests/DecoderCases.h"

using StandIn::SmbiosBuilder;

namespace {

// A probe of a type with its nominal value unknown.
SmbiosBuilder& Probe(SmbiosBuilder& table, std::uint8_t type, const std::string& description, std::uint8_t place) {
    table.Begin(type, type).String(description).Byte(place);
    return table.Word(0x8000).Word(0x7FFF).Word(0x8000).Word(5).Word(0x8000).Dword(0xCAFE).Word(0x8000);
}

} // namespace

TEST(DecodeProbe, SystemResetStructuresAndSelectedField) {
    SmbiosBuilder table;
    table.Begin(23, 0x0017).Byte(0x31).Word(0xFFFF).Word(0xFFFE).Word(0).Word(0xFFFF);
    const std::string first = "\nType : System Reset (Type 23)\nLength : 0x0D (13)\nHandle : 0x0017 (23)\n"
                              "Capabilities : 0x31\n Watchdog Timer : True\n Boot Option on Limit : System utilities\n"
                              " Boot Option : \n Status : Enabled\nReset Count : 0xFFFF - Unknown\n"
                              "Reset Limit : 0xFFFE \nTimer Interval : 0x0000 \nTimeout : 0xFFFF - Unknown\n";
    EXPECT_EQ(Decoded(23, table, 22), first);
    EXPECT_EQ(Decoded(23, table, 21), "");

    table.Begin(23).Byte(0).Word(9);
    table.Begin(23).Byte(0).Word(8);
    EXPECT_EQ(Decoded(23, table, 28, {.InstanceEnd = 3}),
              first + "\nType : System Reset (Type 23)\nLength : 0x07 (07)\nHandle : 0x0000 (00)\n"
                      "Capabilities : 0x00\n Watchdog Timer : False\n Boot Option on Limit : \n"
                      " Boot Option : \n Status : Disabled\nReset Count : 0x0009 \n");
    EXPECT_EQ(Decoded(23, table, 28, {.Field = 5}), "\nReset Count : 0xFFFF - Unknown\n");
}

TEST(DecodeProbe, HardwareSecurityOnlyTheFirstStructure) {
    SmbiosBuilder table;
    table.Begin(24, 0x0018).Byte(0x6E);
    table.Begin(24).Byte(0);
    const std::string block = "\nType : Hardware Security (Type 24)\nLength : 0x05 (05)\nHandle : 0x0018 (24)\n"
                              "Hardware Security Settings : 0x6E\n Power-on Password Status : Enabled\n"
                              " Keyboard Password Status : Not Implemented\n Administrator Password Status : Unknown\n"
                              " Front Panel Reset Status : Not Implemented\n";
    EXPECT_EQ(Decoded(24, table, 22), block);
    EXPECT_EQ(Decoded(24, table, 22, {.InstanceFirst = 2, .InstanceEnd = 3}), block);
    EXPECT_EQ(Decoded(24, table, 21), "");
}

TEST(DecodeProbe, PowerControlValuesAsStored) {
    SmbiosBuilder table;
    table.Begin(25, 0x0019).Byte(0x12).Byte(0x31).Byte(0x23).Byte(0x05).Byte(0xFF);
    EXPECT_EQ(Decoded(25, table, 22),
              "\nType : SYS Power Control (Type 25)\nLength : 0x09 (09)\nHandle : 0x0019 (25)\n"
              "Next Scheduled Power-on Month : 0x12 (18)\n"
              "Next Scheduled Power-on Day-of month : 0x31 (49)\n"
              "Next Scheduled Power-on Hour : 0x23 (35)\nNext Scheduled Power-on Minute : 0x05 (05)\n"
              "Next Scheduled Power-on Second : 0xFF (255)\n");
    EXPECT_EQ(Decoded(25, table, 21), "");
}

TEST(DecodeProbe, EachProbeShowsItsOwnStructures) {
    SmbiosBuilder table;
    Probe(table, 26, "Core", 0x67);
    Probe(table, 28, "Drives", 0x6F);
    Probe(table, 29, "Rail", 0x2A);
    const std::string values = "Maximum Value : 0x8000 - Unknown\nMinimum Value : 0x7FFF \n"
                               "Resolution : 0x8000 - Unknown\nTolerance : 0x0005 \nAccuracy : 0x8000 - Unknown\n"
                               "OEM-defined : 0x0000CAFE\n";
    EXPECT_EQ(Decoded(26, table, 22),
              "\nType : Voltage Probe (Type 26)\nLength : 0x16 (22)\nHandle : 0x001A (26)\n"
              "Description : Core\nLocation and Status : 0x67\n Status : OK\n Location : Motherboard\n" +
                  values + "Nominal Value : 0x8000 - Unknown\n");
    EXPECT_EQ(Decoded(28, table, 22), "\nType : Temperature Probe (Type 28)\nLength : 0x16 (22)\nHandle : 0x001C (28)\n"
                                      "Description : Drives\nLocation and Status : 0x6F\n Status : OK\n"
                                      " Location : Drive Back Plane\n" +
                                          values + "Nominal Value : 0x8000\n");
    EXPECT_EQ(Decoded(29, table, 22),
              "\nType : Electric Current Probe(Type 29)\nLength : 0x16 (22)\nHandle : 0x001D (29)\n"
              "Description : Rail\nLocation and Status : 0x2A\n Status : Other\n"
              " Location : Power Unit\n" +
                  values + "Nominal Value : 0x8000\n");
    for (const std::uint8_t type : {26, 28, 29}) {
        EXPECT_EQ(Decoded(type, table, 21), "");
    }
}

TEST(DecodeProbe, CoolingDevice) {
    SmbiosBuilder table;
    table.Begin(27, 0x001B).Word(0x001C).Byte(0x71).Byte(1).Dword(0x00C0FFEE).Word(0x8000).String("Front fan");
    const std::string block = "\nType : Cooling Device (Type 27)\nLength : 0x0F (15)\nHandle : 0x001B (27)\n"
                              "Temperature Probe Handle : 0x001C\nDevice Type and Status : 0x71\n Status : OK\n"
                              " Device Type : Passive Cooling\nCooling Unit Group : 0x01\nOEM-defined : 0x00C0FFEE\n"
                              "Nominal Speed : 0x8000\nDescription : Front fan\n";
    EXPECT_EQ(Decoded(27, table, 27), block);
    EXPECT_EQ(Decoded(27, table, 26), Before(block, "Description"));
    EXPECT_EQ(Decoded(27, table, 21), "");
}

TEST(DecodeProbe, FieldValues) {
    const StandIn::Bytes zeros(60);
    const FieldCase systemReset[] = {
        {4,
         0x04,
         {0xDA},
         "Capabilities : 0xDA\n Watchdog Timer : False\n"
         " Boot Option on Limit : Do not reboot\n"
         " Boot Option : Operating system\n Status : Disabled\n"},
    };
    ExpectFields(23, zeros, systemReset);
    const FieldCase voltageProbe[] = {
        {5, 0x05, {0x00}, "Location and Status : 0x00\n Status : \n Location : \n"},
        {5, 0x05, {0xCB}, "Location and Status : 0xCB\n Status : Non-recoverable\n Location : Add-in Card\n"},
        {5, 0x05, {0xEC}, "Location and Status : 0xEC\n Status : Unrecognized\n Location : Unrecognized\n"},
        {5, 0x05, {0xBF}, "Location and Status : 0xBF\n Status : Critical\n Location : Unrecognized\n"},
    };
    ExpectFields(26, zeros, voltageProbe);
    const FieldCase temperatureProbe[] = {
        {5, 0x05, {0x8C}, "Location and Status : 0x8C\n Status : Non-critical\n Location : Front Panel Board\n"},
        {5, 0x05, {0x4B}, "Location and Status : 0x4B\n Status : Unknown\n Location : Add-in Card\n"},
        {5, 0x05, {0x70}, "Location and Status : 0x70\n Status : OK\n Location : Unrecognized\n"},
    };
    ExpectFields(28, zeros, temperatureProbe);
    const FieldCase currentProbe[] = {
        {5, 0x05, {0x6C}, "Location and Status : 0x6C\n Status : OK\n Location : Unrecognized\n"},
    };
    ExpectFields(29, zeros, currentProbe);
    const FieldCase coolingDevice[] = {
        {5, 0x06, {0x69}, "Device Type and Status : 0x69\n Status : OK\n Device Type : Integrated Refrigeration\n"},
        {5, 0x06, {0x6A}, "Device Type and Status : 0x6A\n Status : OK\n Device Type : Unrecognized\n"},
        {5, 0x06, {0x2F}, "Device Type and Status : 0x2F\n Status : Other\n Device Type : Unrecognized\n"},
        {5, 0x06, {0x70}, "Device Type and Status : 0x70\n Status : OK\n Device Type : Active Cooling\n"},
        {5, 0x06, {0xF2}, "Device Type and Status : 0xF2\n Status : Unrecognized\n Device Type : Unrecognized\n"},
    };
    ExpectFields(27, zeros, coolingDevice);
    ExpectFieldCount(23, zeros, 8);
    ExpectFieldCount(24, zeros, 4);
    ExpectFieldCount(25, zeros, 8);
    ExpectFieldCount(26, zeros, 12);
    ExpectFieldCount(27, zeros, 9);
    ExpectFieldCount(28, zeros, 12);
    ExpectFieldCount(29, zeros, 12);
}
