// The viewer's command flow, its selection and frame, and the entry point display.
#include "Lib/Common/DriverLoad.h"
#include "machine/model/Faults.h"
#include "tests/Support.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerMain.h"
#include "viewer/ViewerState.h"

#include <gtest/gtest.h>

using StandIn::Machine;
using StandIn::SmbiosBuilder;

namespace {

constexpr char Logo[] = "Korvath Quarrinet for Windows. Version 1.1.4.0. (core base: 2.3.0.0)\n"
                        "SMBIOS structure viewer of the Korvath firmware tools.\n\n";
constexpr char Version[] = "SMBIOS Version : 2.8\n";
constexpr char List[] = "b                         Enable breakpoint.\n"
                        "eps                       Show SMBIOS entry point structure.\n"
                        "type     Number [Instance Number][Field Number] Specify the type number.\n"
                        "nologo                    Disable logo.\n"
                        "help                      Show command list.\n";
constexpr char System[] = "\nType : System (Type 01)\nLength : 0x08 (08)\nHandle : 0x0001 (01)\n"
                          "Manufacturer : Example Works\nProduct Name : NULL\nVersion : NULL\nSerial Number : NULL\n";
constexpr char Bios[] =
    "\nType : BIOS (Type 00)\nLength : 0x05 (05)\nHandle : 0x0000 (00)\nVendor : Example Firmware\n";

SmbiosBuilder SmallTable() {
    SmbiosBuilder table;
    table.Begin(0).String("Example Firmware");
    table.Begin(1).String("Example Works").Byte(0).Byte(0).Byte(0);
    table.Begin(2).Byte(0).Begin(2).Byte(0);
    return table;
}

Machine SmallMachine() {
    return StandIn::MachineWithTable(SmallTable(), 2, 8);
}

std::string Unsupported(const std::string& what) {
    return "\nError: " + what + " is not supported.\n\n\nERROR 153 - Not supported! Status = 3.\n";
}

std::string Refused(const std::string& message, int status) {
    return Logo + message + "Syntax process error.\n\n" + List +
           "\nERROR 105 - Command line error! Status = " + std::to_string(status) + ".\n";
}

TEST(Viewer, DoesWhatTheCommandLineSays) {
    const std::string shown = std::string(Logo) + Version;
    const std::string all = shown + Bios + System +
                            "\nType : Base Board (Type 02)\nLength : 0x05 (05)\nHandle : 0x0002 (02)\n"
                            "Manufacturer : NULL\n";
    const std::string parameter = "Parameter error!\nSyntax: -type Number [Instance Number][Field Number]\n";
    struct {
        std::vector<std::string> Arguments;
        std::string Output;
        std::uint32_t Error;
    } const cases[] = {
        {{}, Refused("", 14), 105},
        {{"/help"}, Logo + std::string("Usage: Quarrinet [Command]\n\n") + List, 0},
        {{"/help", "/eps", "/type", "1"}, Logo + std::string("Usage: Quarrinet [Command]\n\n") + List, 0},
        {{"/b"}, shown, 0},
        {{"/type"}, all, 0},
        {{"/type", "99"}, all, 0},
        {{"/type", "99", "0", "0"}, all, 0},
        {{"/nologo"}, "", 0},
        {{"/nologo", "/type", "0"}, Bios, 0},
        {{"/NOLOGO", "/type", "0"}, shown + Bios, 0},
        {{"/type", "1"}, shown + System, 0},
        {{"-type", "1", "1", "4"}, shown + "\nManufacturer : Example Works\n", 0},
        {{"/type", "1", "0", "1"}, shown + "\nType : System (Type 01)\n", 0},
        {{"/type", "1", "0", "2"}, shown + "\nLength : 0x08 (08)\n", 0},
        {{"/type", "99", "1"}, shown + Unsupported("Type 99, handle ID [1]"), 153},
        {{"/type", "099"}, shown + Unsupported("Type 99"), 153},
        {{"/type", "1", "2"}, shown + Unsupported("Type 1, handle ID [2]"), 153},
        {{"/type", "2", "0", "200"}, shown + Unsupported("Type 2, field ID [200]"), 153},
        {{"/type", "2", "1", "200"}, shown + Unsupported("Type 2, handle ID [1], field ID [200]"), 153},
        {{"/type", "1", "0", "12"}, shown + "\n" + Unsupported("Type 1, field ID [12]"), 153},
        {{"/type", "1", "0", "11"}, shown + "\n", 0}, // a field of the decoder that this structure is too short for
        {{"/type", "130"}, shown + Unsupported("Type 130"), 153},
        {{"/type", "-1"}, shown + Unsupported("Type -1"), 153},
        {{"/type", "1", "-1"}, shown + Unsupported("Type 1, handle ID [255]"), 153},
        {{"/type", "1", "0", "-1"}, shown + Unsupported("Type 1, field ID [-1]"), 153},
        {{"/type", "43"}, shown + Unsupported("Type 43"), 153},
        {{"/type", "3"}, shown + Unsupported("Type 3"), 153},
        {{"/type", "1", "9223372036854775807"}, shown + Unsupported("Type 1, handle ID [255]"), 153},
        {{"/type", "1", "256"}, shown + Unsupported("Type 1, handle ID [0]"), 153},
        {{"/type", "9223372036854775807"}, shown + Unsupported("Type 9223372036854775807"), 153},
        {{"/type", "+1", "0", "2"}, shown + "\nLength : 0x08 (08)\n", 0},
        {{"/type", " 1"},
         shown + "Please input correct number!\n\n\nERROR 152 - Input error parameter! Status = 1902.\n",
         152},
        {{"/type", "0x10"}, Refused(parameter, 30), 105},
        {{"/type", "1", "2", "3", "4"}, Refused(parameter, 30), 105},
        {{"/type", "4", "/TYPE", "5"}, Refused("", 49), 105},
        {{"/b", "1"}, Refused("Parameter error!\nSyntax: -b \n", 30), 105},
        {{"/bogus"}, Refused("bogus : is not a valid command!\n", 14), 105},
        {{"-_exec_", "x"}, Refused("_exec_ : is not a valid command!\n", 14), 105},
        {{"1", "/type"}, Refused("", 14), 105},
        {{"@missing.rsp"}, Refused("", 14), 105},
    };
    for (const auto& test : cases) {
        const Viewed viewed = View(test.Arguments, SmallMachine());
        EXPECT_EQ(viewed.Output, test.Output);
        EXPECT_EQ(viewed.Error, test.Error);
    }
}

TEST(Viewer, SaysWhatItCannotRead) {
    const std::string zero = std::string(Logo) + "SMBIOS Version : 0.0\n";
    Machine empty; // neither a legacy segment nor a table from the service
    EXPECT_EQ(View({"/type", "1"}, empty).Output,
              zero + "Failed to read DMI struct. Status = 8000000E\n" + Unsupported("Type 1"));
    const Viewed eps = View({"/eps", "/type", "1"}, empty);
    EXPECT_EQ(eps.Output, zero + "\nEntry Point Structure(EPS)\nAnchor String : N/S\n"
                                 "\nERROR 171 - Parser entry point or data failed! Status = 3.\n");
    EXPECT_EQ(eps.Error, 171U);
    Machine unreadable = SmallMachine();
    unreadable.Faults.push_back({*StandIn::OperationFind("DeviceIoControl"), 0x222182});
    EXPECT_EQ(View({"/type", "1"}, unreadable).Output,
              zero + "Failed to read DMI entry information. Status = 800000CC\n" + Unsupported("Type 1"));
}

TEST(Viewer, ReportsAnErrorBelow256) {
    StartOver({});
    EXPECT_EQ(Captured([] { EXPECT_EQ(ViewerErrorReport(256 + 7, 0x8000002A), RyxOk); }),
              "\nERROR 007 - ! Status = 42.\n");
}

TEST(EntryPoint, PrintsEveryField) {
    Machine machine;
    StandIn::Bytes entryPoint = StandIn::EntryPoint21(2, 8, 0xE0000, 0x0203, 258, 0x40);
    entryPoint[4] = 0x00; // a checksum byte that happens to be 0
    entryPoint[0x0A] = 0x00;
    entryPoint[0x0B] = 0xAB;
    entryPoint[0x15] = 0x9C;
    machine.Memory.push_back({0xF0100, entryPoint});
    const Viewed viewed = View({"/nologo", "/eps"}, machine);
    EXPECT_EQ(viewed.Error, 0U);
    EXPECT_EQ(viewed.Output, "\nEntry Point Structure(EPS)\n"
                             "Anchor String : _SM_\n"
                             "Entry Point Structure Checksum : N/S\n"
                             "Entry Point Length : 0x1F\n"
                             "Version : 2.8\n"
                             "Max Structure Size : 0x0040\n"
                             "Entry Point Revision : 0x00 (0)\n"
                             "Formatted Area : 0xab 0x00 0x00 0x00 0x00 \n"
                             "Intermediate Anchor String : _DMI_\n"
                             "Intermediate Checksum : 0x9C\n"
                             "Structure Table Length : 0x0203 \n"
                             "Structure Table Address : 0x000E0000\n"
                             "Number Of SMBIOS Structures : 0x0102 (258)\n"
                             "SMBIOS BCD Revision : 0x28\n");
    machine.Memory[0].Data[4] = 0x5A;
    EXPECT_NE(View({"/eps"}, machine).Output.find("Entry Point Structure Checksum : 0x5A\n"), std::string::npos);
}

TEST(EntryPoint, ShowsWhatTheServiceDoesNotSupply) {
    const SmbiosBuilder table = SmallTable().SetString(std::string(455, 'x')); // the longest string of a whole table
    const Viewed viewed =
        View({"/nologo", "/eps", "/type", "1", "0", "1"}, StandIn::MachineWithTable(table, 3, 0, false));
    EXPECT_EQ(viewed.Error, 0U);
    EXPECT_EQ(viewed.Output, "\nEntry Point Structure(EPS)\nAnchor String : N/S\n"
                             "Entry Point Structure Checksum : N/S\nEntry Point Length : N/S\nVersion : 3.0\n"
                             "Max Structure Size : N/S\nEntry Point Revision : 0x01 (1)\n"
                             "Formatted Area : 0x00 0x00 0x00 0x00 0x00 \nIntermediate Anchor String : N/S\n"
                             "Intermediate Checksum : N/S\nStructure Table Length : 0x0203 \n"
                             "Structure Table Address : N/S\nNumber Of SMBIOS Structures : N/S\n"
                             "SMBIOS BCD Revision : N/S\n"
                             "\nType : System (Type 01)\n");
}

// Of all structures of a type, the first 127 are shown; the 128th has to be asked for.
TEST(Viewer, EveryInstanceEndsAt127) {
    SmbiosBuilder table;
    for (int i = 0; i < 128; ++i) {
        table.Begin(14, static_cast<std::uint16_t>(i)).Byte(0);
    }
    const Machine machine = StandIn::MachineWithTable(table, 2, 8);
    for (const char* instance : {"0", "128"}) {
        const std::string shown = View({"/nologo", "/type", "14", instance}, machine).Output;
        EXPECT_EQ(shown.find("Handle : 0x0000 (00)") != std::string::npos, *instance == '0');
        EXPECT_EQ(shown.find("Handle : 0x007E (126)") != std::string::npos, *instance == '0');
        EXPECT_EQ(shown.find("Handle : 0x007F (127)") != std::string::npos, *instance != '0');
    }
    EXPECT_EQ(View({"/nologo", "/type", "14", "0", "3"}, machine).Output, "\nHandle : 0x0000 (00)\n")
        << "the selected field ends the listing";
}

TEST(Selection, IsChecked) {
    struct {
        std::int64_t Type, Instance, Field;
        RyxStatus Status;
    } const cases[] = {{17, 128, 128, RyxOk},
                       {17, 129, 0, RyxErrorUnsupported},
                       {17, 1, 129, RyxErrorUnsupported},
                       {200, 0, 0, RyxErrorUnsupported}};
    for (const auto& test : cases) {
        EXPECT_EQ(SelectionCheck(static_cast<std::uint64_t>(test.Type), static_cast<std::uint64_t>(test.Instance),
                                 static_cast<std::uint64_t>(test.Field)),
                  test.Status)
            << test.Type << " " << test.Instance << " " << test.Field;
    }
}

TEST(Frame, PrintsStringsWholeWhateverTheirLength) {
    for (const std::size_t length : {1007U, 1008U, 1009U, 5000U}) { // "Manufacturer : " and the line end take 16
        SmbiosBuilder table;
        const std::string text(length, 'm');
        table.Begin(1).String(text);
        EXPECT_EQ(Decoded(1, table, 28, {4, 1, 2}), "\nManufacturer : " + text + "\n");
    }
}

} // namespace
