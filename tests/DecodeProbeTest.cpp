// Probe and cooling device structures as they are shown.
#include "tests/DecoderCases.h"

// The three kinds differ in their names, their locations and the mark of their nominal value.
TEST(DecodeProbe, Probes) {
    const struct {
        std::uint8_t Type;
        std::uint8_t Place;
        const char* Head;
        const char* Location;
        const char* Nominal;
    } probes[] = {
        {26, 0x67, "Voltage Probe (Type 26)\nLength : 0x16 (22)\nHandle : 0x001A (26)\n",
         "0x67\n Status : OK\n Location : Motherboard\n", "0x8000 - Unknown\n"},
        {28, 0x6F, "Temperature Probe (Type 28)\nLength : 0x16 (22)\nHandle : 0x001C (28)\n",
         "0x6F\n Status : OK\n Location : Drive Back Plane\n", "0x8000\n"},
        {29, 0x2A, "Electric Current Probe(Type 29)\nLength : 0x16 (22)\nHandle : 0x001D (29)\n",
         "0x2A\n Status : Other\n Location : Power Unit\n", "0x8000\n"},
    };
    SmbiosBuilder table;
    for (const auto& probe : probes) {
        table.Begin(probe.Type, probe.Type).String("Core").Byte(probe.Place);
        table.Word(0x8000).Word(0x7FFF).Word(0x8000).Word(5).Word(0x8000).Dword(0xCAFE).Word(0x8000);
    }
    for (const auto& probe : probes) {
        ExpectShown(probe.Type, table,
                    std::string("\nType : ") + probe.Head +
                        "Description : Core\nLocation and Status : " + probe.Location +
                        "Maximum Value : 0x8000 - Unknown\nMinimum Value : 0x7FFF \nResolution : 0x8000 - Unknown\n"
                        "Tolerance : 0x0005 \nAccuracy : 0x8000 - Unknown\nOEM-defined : 0x0000CAFE\n"
                        "Nominal Value : " +
                        probe.Nominal,
                    {{22, ""}});
    }
    const std::string label = "Location and Status : ";
    ExpectFields(26, Bytes(2),
                 {{5, 5, {0x00}, label + "0x00\n Status : \n Location : \n"},
                  {5, 5, {0xCB}, label + "0xCB\n Status : Non-recoverable\n Location : Add-in Card\n"},
                  {5, 5, {0xEC}, label + "0xEC\n Status : Unrecognized\n Location : Unrecognized\n"},
                  {5, 5, {0xBF}, label + "0xBF\n Status : Critical\n Location : Unrecognized\n"}});
    ExpectFields(28, Bytes(2),
                 {{5, 5, {0x8C}, label + "0x8C\n Status : Non-critical\n Location : Front Panel Board\n"},
                  {5, 5, {0x4B}, label + "0x4B\n Status : Unknown\n Location : Add-in Card\n"},
                  {5, 5, {0x70}, label + "0x70\n Status : OK\n Location : Unrecognized\n"}});
    ExpectFields(29, Bytes(2), {{5, 5, {0x6C}, label + "0x6C\n Status : OK\n Location : Unrecognized\n"}});
}

TEST(DecodeProbe, CoolingDevice) {
    ExpectShown(27,
                SmbiosBuilder().Begin(27, 0x1B).Word(0x1C).Raw({0x71, 1}).Dword(0xC0FFEE).Word(0x8000).String("Front"),
                "\nType : Cooling Device (Type 27)\nLength : 0x0F (15)\nHandle : 0x001B (27)\n"
                "Temperature Probe Handle : 0x001C\nDevice Type and Status : 0x71\n Status : OK\n"
                " Device Type : Passive Cooling\nCooling Unit Group : 0x01\nOEM-defined : 0x00C0FFEE\n"
                "Nominal Speed : 0x8000\nDescription : Front\n",
                {{22, ""}, {27, "Description"}});
    const std::string label = "Device Type and Status : ";
    ExpectFields(27, Bytes(3),
                 {{5, 6, {0x69}, label + "0x69\n Status : OK\n Device Type : Integrated Refrigeration\n"},
                  {5, 6, {0x6A}, label + "0x6A\n Status : OK\n Device Type : Unrecognized\n"},
                  {5, 6, {0x2F}, label + "0x2F\n Status : Other\n Device Type : Unrecognized\n"},
                  {5, 6, {0x70}, label + "0x70\n Status : OK\n Device Type : Active Cooling\n"},
                  {5, 6, {0xF2}, label + "0xF2\n Status : Unrecognized\n Device Type : Unrecognized\n"}});
}
