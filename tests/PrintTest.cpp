// The console print, its pager and the pause of the command list.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Console.h"
#include "machine/model/Faults.h"
#include "tests/Support.h"

#include <windows.h>

#include <cerrno>
#include <gtest/gtest.h>

namespace {

constexpr char Pause[] = "Press any key to continue...\n";

void StartPaged(std::uint16_t columns, std::uint16_t rows) {
    StandIn::Machine machine;
    machine.Console = StandIn::ConsoleKind::Fixed;
    machine.ConsoleColumns = columns;
    machine.ConsoleRows = rows;
    StartOver(machine);
    ASSERT_EQ(RyxOptionSet(RyxOptionPaging, 1, 0), RyxOk);
}

TEST(Print, QuietPrintsAndCountsNothing) {
    StartPaged(80, 5);
    ASSERT_EQ(RyxOptionSet(RyxOptionQuiet, 1, 0), RyxOk);
    EXPECT_EQ(Captured([] { RyxPrintf("\n\n\n\n\n\n"); }), "");
    EXPECT_EQ(StandIn::CallCount("GetConsoleScreenBufferInfo"), 0U);
}

TEST(Print, KnowsThatItsReaderLeft) {
    errno = EBADF;
    for (const auto& [error, gone] : {std::pair{ERROR_ACCESS_DENIED, false},
                                      {ERROR_BROKEN_PIPE, true},
                                      {ERROR_NO_DATA, true},
                                      {ERROR_PIPE_NOT_CONNECTED, true}}) {
        SetLastError(error);
        EXPECT_EQ(OutputReaderGone(), gone) << error;
    }
}

TEST(Print, PausesWhenTheCountReachesTheLimit) {
    StartPaged(80, 25);
    const std::string output = Captured([] {
        for (int i = 0; i < 24; ++i) {
            RyxPrintf("%s\n", "a\nb"); // line ends in an argument don't count
        }
    });
    const std::size_t at = output.find(Pause);
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(output.substr(0, at).size(), 23U * 4);
    EXPECT_EQ(output.substr(at), Pause + std::string("a\nb\n"));
    EXPECT_EQ(StandIn::CallCount("_getch"), 1U);
    EXPECT_EQ(StandIn::CallCount("FillConsoleOutputCharacterA"), 1U);
    EXPECT_EQ(StandIn::CallCount("SetConsoleCursorPosition"), 1U);
}

TEST(Print, CountsByTheFormatAndTheWidth) {
    struct {
        const char* Format;
        std::uint32_t Lines;
    } const cases[] = {
        {"no end", 0},
        {"\n\nx\n", 3},
        {"1234567890\n", 2},          // eleven characters on a console of ten
        {"123456789\n", 1},           // ten fit
        {"12345\n12345\n12345\n", 4}, // the second end is past the width and restarts the count
    };
    for (const auto& test : cases) {
        StartPaged(10, 50);
        Captured([&test] { RyxPrintf(test.Format, 0); });
        EXPECT_EQ(LibraryContextGet().Pager.LineCount, test.Lines) << test.Format;
    }
}

TEST(Print, OnePauseHoweverFarACallGoesPastTheLimit) {
    StartPaged(80, 7);
    EXPECT_EQ(Captured([] {
                  RyxPrintf("1\n2\n3\n4\n");
                  RyxPrintf("5\n6\n7\n8\n9\n10\n11\n12\n");
                  RyxPrintf("13\n");
              }),
              "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n" + std::string(Pause) + "13\n");
}

TEST(Print, WithoutAConsoleOrAPageNothingPauses) {
    StandIn::Machine machine;
    machine.Console = StandIn::ConsoleKind::None;
    for (const std::uint16_t rows : {0, 1}) {
        if (rows == 1) {
            machine.Console = StandIn::ConsoleKind::Fixed;
            machine.ConsoleRows = rows;
        }
        StartOver(machine);
        RyxOptionSet(RyxOptionPaging, 1, 0);
        EXPECT_EQ(Captured([] { RyxPrintf("1\n2\n3\n"); }), "1\n2\n3\n");
        EXPECT_EQ(StandIn::CallCount("_getch"), 0U);
        std::uint32_t width = 7;
        std::uint32_t height = 7;
        EXPECT_EQ(RyxConsoleSizeGet(&width, &height), rows == 1 ? RyxOk : RyxErrorUnsupported);
        EXPECT_EQ(std::pair(width, height), rows == 1 ? std::pair(80U, 1U) : std::pair(0U, 0U));
    }
    RyxOptionSet(RyxOptionPaging, 0, 0);
    const std::uint64_t asked = StandIn::CallCount("GetConsoleScreenBufferInfo");
    Captured([] { RyxPrintf("\n"); });
    EXPECT_EQ(StandIn::CallCount("GetConsoleScreenBufferInfo"), asked) << "only the paged print asks";
}

TEST(Print, NoStringOfATableDrivesATerminal) {
    const std::string name = "a\x1B[2Jb\tc\x7F\x1F\u00E9 d";
    StandIn::SmbiosBuilder table;
    table.Begin(1).String(name).Raw({0, 0, 0});
    StandIn::Machine machine = StandIn::MachineWithTable(table, 2, 8);
    const std::vector<std::string> request{"/nologo", "/type", "1", "1", "4"};
    EXPECT_EQ(View(request, machine).Output, "\nManufacturer : " + name + "\n") << "to a file as it is";
    machine.Console = StandIn::ConsoleKind::Fixed;
    EXPECT_EQ(View(request, machine).Output, "\nManufacturer : a.[2Jb.c..\u00E9 d\n");

    // Control characters of one byte more, and bytes that older terminals take for them: a dot each. The rest stays.
    const std::pair<std::string, std::string> texts[] = {
        {"\xC2\x9B"
         "31mx\xC2\x80\xC2\x9F\xC2\xA0",
         ".31mx..\xC2\xA0"},
        {"\x9B"
         "1m \x80\x9F\xA0\xFF",
         ".1m ..\xA0\xFF"},
        {"\xE2\x82\x9B \xF0\x9F\x98\x80 \xC3\x9B", "\xE2\x82\x9B \xF0\x9F\x98\x80 \xC3\x9B"},
        {"\xE0\x80\x9B \xED\xA0\x80 \xF4\x90\x80\x80 \xC1\x9B", "\xE0.. \xED\xA0. \xF4... \xC1."},
        {"\xE2\x82", "\xE2."},
    };
    for (const auto& [text, shown] : texts) {
        machine = StandIn::MachineWithTable(StandIn::SmbiosBuilder().Begin(1).String(text).Raw({0, 0, 0}), 2, 8);
        EXPECT_EQ(View(request, machine).Output, "\nManufacturer : " + text + "\n");
        machine.Console = StandIn::ConsoleKind::Fixed;
        EXPECT_EQ(View(request, machine).Output, "\nManufacturer : " + shown + "\n");
    }
}

TEST(Platform, NameIsTheSameOnEveryVersion) {
    for (const std::uint32_t major : {4U, 5U, 10U}) {
        StandIn::Machine machine;
        machine.WindowsMajor = major;
        StartOver(machine);
        const char* name = nullptr;
        ASSERT_EQ(RyxPlatformNameGet(&name), RyxOk);
        EXPECT_STREQ(name, "MS Windows 32-bit");
    }
    EXPECT_EQ(RyxPlatformIdGet(), 3U);
}

TEST(CommandList, PausesByTheConsolesHeight) {
    StandIn::Machine machine;
    machine.Console = StandIn::ConsoleKind::Fixed;
    machine.ConsoleRows = 10; // eight lines a page, and on the first one six lines above the list
    StartOver(machine);
    std::string expected;
    for (const char name : std::string("abcdefghijk")) {
        RyxArgCommandRegister(std::string(1, name).c_str(), "Text.", "", "Params");
        expected +=
            std::string(1, name) + "        Params           Text.\n" + (name == 'b' || name == 'j' ? Pause : "");
    }
    EXPECT_EQ(Captured([] { RyxArgHelpPrint(1); }), expected);
    EXPECT_EQ(StandIn::CallCount("_getch"), 2U);
}

} // namespace
