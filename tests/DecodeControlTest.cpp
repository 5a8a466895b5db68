// Event log, system reset, security, remote access and boot structures as they are shown.
#include "tests/DecoderCases.h"

namespace {

// An event log that counts descriptors of a stated length, and the bytes of its list.
SmbiosBuilder EventLog(std::uint8_t count, std::uint8_t length, const Bytes& list) {
    return SmbiosBuilder()
        .Begin(15)
        .Raw({0x00, 0x01, 0x00, 0x00, 0x10, 0x00, 4, 1, 0x01, 0x00, 0x00, 0x80}) // to the change token
        .Raw({0x00, 0x00, 0xFF, 0xFF, 1, count, length})
        .Raw(list);
}

} // namespace

TEST(DecodeControl, EventLog) {
    ExpectShown(15, EventLog(3, 2, {0x01, 0x00, 0x10, 0x00, 0x17, 0x00}),
                "\nType : System Event Log (Type 15)\nLength : 0x1D (29)\nHandle : 0x0000 (00)\n"
                "Log Area Length : 0x0100 (256 Byte)\nLog Header Start Offset : 0x0000 (00)\n"
                "Log Data Start Offset : 0x0010 (16)\n"
                "Access Method : 0x04 - General-Purpose NonVolatile Data\nLog Status : 0x01\n" +
                    Bits(1, {"Log area Valid", "Log area full"}) +
                    "Log Change Token : 0x80000001 (-2147483647)\nAccess Method Address : 0xFFFF0000 (-65536)\n"
                    "Log Header Format : 0x01 - Type 1 log header\n"
                    "Number of Supported Log Type Descriptors : 0x03 (03)\n"
                    "Length of each Log Type Descriptor : 0x02 (02)\nEvent Log Type Descriptors :\n"
                    "01.  Log Type : 0x01 - Single-bit ECC memory error\n"
                    "     Variable Data Format Type : 0x00 - None\n"
                    "02.  Log Type : 0x10 - System Limit Exceeded\n"
                    "     Variable Data Format Type : 0x00 - None\n03.  Log Type : 0x17 - System boot\n"
                    "     Variable Data Format Type : 0x00 - None\n",
                {{20, ""}, {21, "Log Header Format"}});
    const std::string label = "Log Header Format : ";
    ExpectFields(15, Bytes(19),
                 {{7, 0x0A, {0x7F}, "Access Method : 0x7F - Unrecognized\n"},
                  {7, 0x0A, {0x80}, "Access Method : 0x80 - BIOS Vendor or OEM-specific\n"},
                  {7, 0x0A, {0xFF}, "Access Method : 0xFF - BIOS Vendor or OEM-specific\n"},
                  {11, 0x14, {0x00}, label + "0x00 - No header\n"},
                  {11, 0x14, {0x02}, label + "0x02 - Available for future assignment by this spec\n"},
                  {11, 0x14, {0x7F}, label + "0x7F - Available for future assignment by this spec\n"},
                  {11, 0x14, {0x80}, label + "0x80 - BIOS Vendor or OEM-specific format\n"},
                  {11, 0x14, {0xFF}, label + "0xFF - BIOS Vendor or OEM-specific format\n"}});
}

// Whatever length a descriptor states, the list's bytes are read in pairs, at most as many as are counted. A list that
// runs past the formatted area goes on in the string set; past the table's end it can't be read.
TEST(DecodeControl, EventLogDescriptors) {
    const std::string none = "\nEvent Log Type Descriptors :\n";
    const std::string one = none + "01.  Log Type : 0x02 - Multi-bit ECC memory error\n"
                                   "     Variable Data Format Type : 0x03 - Multiple-Event Handle\n";
    const std::string two = one + "02.  Log Type : 0x08 - POST Error\n"
                                  "     Variable Data Format Type : 0x04 - POST Results Bitmap\n";
    const std::string texts =
        none + "01.  Log Type : 0x18 - Unused\n     Variable Data Format Type : 0x05 - System Management Type\n"
               "02.  Log Type : 0x7f - Unused\n"
               "     Variable Data Format Type : 0x06 - Multiple-Event System Management Type\n"
               "03.  Log Type : 0x80 - Available for system\n     Variable Data Format Type : 0x07 - Unused\n"
               "04.  Log Type : 0xfe - Available for system\n     Variable Data Format Type : 0x7f - Unused\n"
               "05.  Log Type : 0xff - End of log\n     Variable Data Format Type : 0x80 - OEM assigned\n"
               "06.  Log Type : 0x0d - Correctable memory log disabled\n"
               "     Variable Data Format Type : 0xff - OEM assigned\n";
    // A list that can be read counts as shown even when it is empty; one behind the formatted area does not.
    const SmbiosBuilder empty = EventLog(0, 2, {0}).Begin(15).Raw(Bytes(17)).Raw({1, 2, 2, 3});
    SmbiosBuilder absent = EventLog(0, 2, {}).Begin(15).Raw(Bytes(17)).Raw({1, 2, 2, 3});
    absent.Begin(15).Raw(Bytes(17)).Raw({1, 2, 8, 4}); // comes too late
    const Selection list{14};
    ExpectCases(15, {{"codes at the borders",
                      EventLog(6, 2, {0x18, 5, 0x7F, 6, 0x80, 7, 0xFE, 0x7F, 0xFF, 0x80, 0xD, 0xFF}), texts, list},
                     {"one", EventLog(1, 2, {2, 3}), one, list},
                     {"longer ones", EventLog(2, 3, {2, 3, 8, 4, 9, 9}), two, list},
                     {"shorter ones", EventLog(4, 1, {2, 3, 8, 4}), two, list},
                     {"an odd length", EventLog(3, 1, {2, 3, 8}), one, list},
                     {"half a pair", EventLog(1, 1, {2}), none, list},
                     {"no length", EventLog(3, 0, {2, 3}), none, list},
                     {"into the string set", EventLog(2, 2, {2, 3}),
                      one + "02.  Log Type : 0x00 - None\n     Variable Data Format Type : 0x00 - None\n", list},
                     {"past the table", EventLog(3, 2, {2, 3}), "\n", list},
                     {"far past the table", EventLog(255, 255, {2, 3}), "\n", list},
                     {"an empty list", empty, "\n", list},
                     {"no list", absent, "\n" + one, list}});
}

TEST(DecodeControl, SystemReset) {
    SmbiosBuilder table = SmbiosBuilder().Begin(23, 0x17).Byte(0x31).Word(0xFFFF).Word(0xFFFE).Word(0).Word(0xFFFF);
    const std::string first = "\nType : System Reset (Type 23)\nLength : 0x0D (13)\nHandle : 0x0017 (23)\n"
                              "Capabilities : 0x31\n Watchdog Timer : True\n Boot Option on Limit : System utilities\n"
                              " Boot Option : \n Status : Enabled\nReset Count : 0xFFFF - Unknown\n"
                              "Reset Limit : 0xFFFE \nTimer Interval : 0x0000 \nTimeout : 0xFFFF - Unknown\n";
    ExpectShown(23, table, first, {{22, ""}});
    table.Begin(23).Byte(0).Word(9).Begin(23).Byte(0).Word(8);
    ExpectCases(23, {{"the second of three ends early",
                      table,
                      first + "\nType : System Reset (Type 23)\nLength : 0x07 (07)\nHandle : 0x0000 (00)\n"
                              "Capabilities : 0x00\n Watchdog Timer : False\n Boot Option on Limit : \n"
                              " Boot Option : \n Status : Disabled\nReset Count : 0x0009 \n",
                      {.InstanceEnd = 3}}});
    ExpectFields(23, Bytes(9),
                 {{4,
                   4,
                   {0xDA},
                   "Capabilities : 0xDA\n Watchdog Timer : False\n Boot Option on Limit : Do not reboot\n"
                   " Boot Option : Operating system\n Status : Disabled\n"}});
}

TEST(DecodeControl, HardwareSecurity) {
    ExpectShown(24, SmbiosBuilder().Begin(24, 0x18).Byte(0x6E).Begin(24).Byte(0),
                "\nType : Hardware Security (Type 24)\nLength : 0x05 (05)\nHandle : 0x0018 (24)\n"
                "Hardware Security Settings : 0x6E\n Power-on Password Status : Enabled\n"
                " Keyboard Password Status : Not Implemented\n Administrator Password Status : Unknown\n"
                " Front Panel Reset Status : Not Implemented\n",
                {{22, ""}});
}

TEST(DecodeControl, RemoteAccess) {
    ExpectShown(30, SmbiosBuilder().Begin(30).String("Remote Ltd").Byte(0xFE),
                "\nType : OOB Remote Access (Type 30)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n"
                "Manufacturer Name : Remote Ltd\nConnections : 0xFE\n" +
                    Bits(2, {"Outbound Connection Enabled", "Inbound Connection Enabled"}),
                {{22, ""}});
}

TEST(DecodeControl, BootIntegrityServices) {
    const SmbiosBuilder table = SmbiosBuilder()
                                    .Begin(31, 0xAB)
                                    .Raw({0x80, 0x11, 0x33, 0x22})
                                    .Dword(0x1234ABCD)
                                    .Dword(0x0FEDCBA9)
                                    .Qword(0x0123456789ABCDEF)
                                    .Dword(0x44556677);
    ExpectShown(31, table,
                "\nType : BIS Entry Point (Type 31)\nLength : 0x1C (28)\nHandle : 0x00AB (171)\n"
                "Checksum : 0x80 (128)\nReserved1 : 0x11\nReserved2 : 0x2233\nBisEntry16 : 0xABCD\n"
                "BisEntry32 : 0x0FEDCBA9\nReserved3 : 0x123456789ABCDEF\nReserved4 : 0x44556677\n",
                {{23, ""}});
}

TEST(DecodeControl, BootStatus) {
    ExpectShown(32,
                SmbiosBuilder().Begin(32).Raw({1, 2, 3, 4, 5, 6}).Raw({0x00, 0x08, 0x09, 0x7F, 0x80, 0xBF, 0xC0, 0xFF}),
                "\nType : System Boot Info (Type 32)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
                "Reserved : 0x01 0x02 0x03 0x04 0x05 0x06 \nBoot Status : 0x00 - No errors detected\n"
                "0x08 - System to reboot\n0x09 - Reserved\n0x7f - Reserved\n"
                "0x80 - Vendor/OEM-specific implementations\n0xbf - Vendor/OEM-specific implementations\n"
                "0xc0 - Product-specific implementations\n0xff - Product-specific implementations\n",
                {{23, ""}});
    ExpectCases(32, {{"no boot status", SmbiosBuilder().Begin(32).Raw({0, 0, 0, 0, 0, 0xFF}),
                      "\nType : System Boot Info (Type 32)\nLength : 0x0A (10)\nHandle : 0x0000 (00)\n"
                      "Reserved : 0x00 0x00 0x00 0x00 0x00 0xFF \n"}});
    ExpectFields(32, Bytes(7), {{5, 0x0A, {3}, "Boot Status : 0x03 - Firmware-detected hardware failure\n"}});
}
