// The console print, its pager, the options and whole-file reads.
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/LibraryContext.h"
#include "tests/Support.h"

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

TEST(Print, CutsAtWhatOnePrintHolds) {
    StartOver({});
    const std::string text(2000, 'x');
    EXPECT_EQ(Captured([&text] { RyxPrintf("%s\n", text.c_str()); }), text.substr(0, 1023));
}

TEST(Print, QuietPrintsAndCountsNothing) {
    StartPaged(80, 5);
    ASSERT_EQ(RyxOptionSet(RyxOptionQuiet, 1, 0), RyxOk);
    EXPECT_EQ(Captured([] { RyxPrintf("\n\n\n\n\n\n"); }), "");
    EXPECT_EQ(StandIn::CallCount("GetConsoleScreenBufferInfo"), 0U);
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
        Captured([&test] { RyxPrintf(test.Format); });
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
    }
    RyxOptionSet(RyxOptionPaging, 0, 0);
    Captured([] { RyxPrintf("\n"); });
    EXPECT_EQ(StandIn::CallCount("GetConsoleScreenBufferInfo"), 1U) << "only the paged print asks";
}

TEST(Options, TakeTheirValuesAndRefuseOthers) {
    StartOver({});
    struct {
        std::uint32_t Option;
        std::uint32_t Low;
        std::uint32_t High;
        RyxStatus Status;
    } const cases[] = {
        {0, 2, 0, RyxErrorArgument},
        {0, 1, 1, RyxErrorArgument},
        {39, 1, 0, RyxErrorArgument},
        {0, 1, 0, RyxOk},
        {21, 1, 0, RyxErrorUnsupported},
        {21, 0, 0, RyxOk},
        {24, 5, 6, RyxOk},
        {30, 0x12345678, 0, RyxOk},
        {38, 1, 0, RyxOk},
        {27, 0, 0, RyxOk},
        {28, 1, 0, RyxErrorGeneral},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(RyxOptionSet(test.Option, test.Low, test.High), test.Status) << test.Option << " " << test.Low;
    }
    const OptionArea& options = LibraryContextGet().Options;
    EXPECT_EQ(options.Byte[0], 1);
    EXPECT_EQ(options.Byte[21], 0);
    EXPECT_EQ(options.Byte[28], 0);
    EXPECT_EQ(options.Long24, 0x600000005U);
    EXPECT_EQ(options.Word30, 0x12345678U);
}

TEST(Files, AreReadWhole) {
    StartOver({});
    const TemporaryFolder folder;
    std::unique_ptr<char[]> block;
    std::uint32_t size = 9;
    ASSERT_EQ(RyxFileRead(folder.Write("text", std::string("a\r\n\0b", 5)).c_str(), &block, &size), RyxOk);
    EXPECT_EQ(std::string(block.get(), size), std::string("a\r\n\0b", 5));
    EXPECT_EQ(RyxFileRead(folder.Write("empty", std::string()).c_str(), &block, &size), RyxOk);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(RyxFileRead((folder.Path + "/missing").c_str(), &block, &size), RyxErrorFileOpen);
    EXPECT_EQ(RyxFileRead(nullptr, &block, &size), RyxErrorArgument);
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

} // namespace
