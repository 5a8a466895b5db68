// String list, language, group, additional information, on-board device and header-only structures as they are shown.
#include "tests/DecoderCases.h"

// The count alone.
TEST(DecodeGeneral, StringLists) {
    for (const auto& [type, name] : {std::pair{11, "OEM Strings (Type 11)"}, {12, "System Config (Type 12)"}}) {
        const auto number = static_cast<std::uint8_t>(type);
        ExpectShown(number, SmbiosBuilder().Begin(number).Byte(2).SetString("a").SetString("b"),
                    std::string("\nType : ") + name + "\nLength : 0x05 (05)\nHandle : 0x0000 (00)\nCount : 0x02 (02)\n",
                    {{20, ""}});
    }
}

TEST(DecodeGeneral, Languages) {
    Bytes area(18);
    area[0] = 2;
    area[1] = 1;
    area[17] = 2;
    SmbiosBuilder table = SmbiosBuilder().Begin(13).Raw(area).SetString("en|US|iso8859-1").SetString("fr|CA|iso8859-1");
    const std::string current = "Current Languages : fr|CA|iso8859-1\n";
    ExpectShown(13, table,
                "\nType : BIOS Language (Type 13)\nLength : 0x16 (22)\nHandle : 0x0000 (00)\n"
                "Installable Languages : 0x02 (02)\nFlags : 0x01 - Abbreviated format\n" +
                    current,
                {{20, ""}, {21, "Flags"}});
    table.Begin(13).Raw(area).SetString("de|DE").SetString("it|IT");
    ExpectCases(13, {{"the current language", table, "\n" + current, {7}},
                     {"nothing to show, so the walk over the structures goes on", table, "\n\n", {6}}});
    EXPECT_EQ(ViewerFieldCounter, 7);
    ExpectFields(13, area, {{5, 5, {0xFE}, "Flags : 0xFE - Long format\n"}});
}

TEST(DecodeGeneral, Groups) {
    ExpectShown(14, SmbiosBuilder().Begin(14).String("Module").Raw({4, 0x22, 1, 7, 3, 0}), // two items
                "\nType : Group Association (Type 14)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
                "Group Name : Module\nItem Type : 0x04 (04)\nItem Handle : 0x0122 (290)\n",
                {{20, ""}});
}

// A count or an entry length that doesn't fit what is there ends the list.
TEST(DecodeGeneral, AdditionalInformation) {
    const auto additional = [](std::uint8_t count, const Bytes& entries) {
        return SmbiosBuilder().Begin(40).Byte(count).Raw(entries);
    };
    const std::string heading = "Number of Additional Information entries :\n";
    ExpectShown(40, additional(2, {6, 0x22, 0x00, 0x05, 1, 0xAA, 7, 0x04, 0x01, 0x1F, 0, 0xBB, 0xCC}),
                "\nType : Additional Info (Type 40)\nLength : 0x12 (18)\nHandle : 0x0000 (00)\n"
                "Number of Additional Information entries : 0x02 (2)\n" +
                    heading +
                    "Entry Length : 0x06 (06)\nReferenced Handle : 0x0022 (34)\nReferenced Offset : 0x05\n"
                    "String : 0x01\nValue : 0xaa\n"
                    "Entry Length : 0x07 (07)\nReferenced Handle : 0x0104 (260)\nReferenced Offset : 0x1F\n"
                    "String : 0x00\nValue : 0xbb\n",
                {{26, ""}});
    const std::string none = "\n" + heading;
    const std::string fixed = "Referenced Handle : 0x0201 (513)\nReferenced Offset : 0x03\nString : 0x04\n";
    const std::string five = "Entry Length : 0x05 (05)\n" + fixed;
    const std::string six = "Entry Length : 0x06 (06)\n" + fixed + "Value : 0x05\n";
    const Selection list{5};
    ExpectCases(
        40, {{"count 0", additional(0, {6, 1, 2, 3, 4, 5}), none, list},
             {"count 0 and nothing behind it", additional(0, {}), "\n", list},
             {"fewer counted than present", additional(1, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), none + six, list},
             {"more counted than present", additional(255, {6, 1, 2, 3, 4, 5, 5, 1, 2, 3, 4}), none + six + five, list},
             {"no value", additional(2, {5, 1, 2, 3, 4, 6, 1, 2, 3, 4, 5}), none + five + six, list},
             {"too short for an entry", additional(2, {4, 1, 2, 3, 6, 1, 2, 3, 4, 5}), none, list},
             {"length 0", additional(2, {0, 1, 2, 3, 4, 5}), none, list},
             {"past the area, within the table", additional(1, {7, 1, 2, 3, 4, 5}).Begin(127), none, list},
             {"the area past the table", additional(3, {6, 1, 2, 3, 4, 5}).StatedLength(0xFF), none + six, list},
             {"an entry past the table", additional(1, {9, 1, 2, 3, 4, 5}).StatedLength(0xFF), none, list}});
}

TEST(DecodeGeneral, OnboardDevice) {
    ExpectShown(41, SmbiosBuilder().Begin(41).String("LAN").Raw({0x89, 1}).Word(0x0102).Raw({0x3A, 0xFB}),
                "\nType : Onboard Devices Extended Info (Type 41)\nLength : 0x0B (11)\nHandle : 0x0000 (00)\n"
                "Reference Designation : LAN\nDevice Type : 0x89\n Status : Enabled\n Type : SATA Controller\n"
                "Device Type Instance : 0x01 (1)\nSegment Group Number : 0x0102\nBus Number : 0x3A (58)\n"
                "Device/Function Number : 0xFB\n Device Number : 0x1F\n Function Number : 0x3\n",
                {{26, ""}});
    ExpectFields(41, Bytes(2),
                 {{5, 5, {0x0A}, "Device Type : 0x0A\n Status : Disabled\n Type : SAS Controller\n"},
                  {5, 5, {0x90}, "Device Type : 0x90\n Status : Enabled\n Type : UFS Controller\n"}});
}

TEST(DecodeGeneral, HeadersAlone) {
    ExpectShown(126, SmbiosBuilder().Begin(126).Raw({1, 2}),
                "\nType : Inactive (Type 126)\nLength : 0x06 (06)\nHandle : 0x0000 (00)\n", {{22, ""}});
    ExpectShown(127, SmbiosBuilder().Begin(127, 0xFEFF),
                "\nType : End-Of-Table (Type 127)\nLength : 0x04 (04)\nHandle : 0xFEFF (65279)\n", {{22, ""}});
}
