// The options, whole-file reads and the bound of one print.
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/LibraryReset.h"
#include "tests/library/Support.h"

#include <gtest/gtest.h>

namespace {

TEST(Print, CutsAtWhatOnePrintHolds) {
    LibraryReset();
    const std::string text(2000, 'x');
    RyxStatus status = RyxErrorGeneral;
    EXPECT_EQ(Captured([&] { status = RyxPrintf("%s\n", text.c_str()); }), text.substr(0, 1023));
    EXPECT_EQ(status, RyxOk);
}

TEST(Options, TakeTheirValuesAndRefuseOthers) {
    LibraryReset();
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
        {21, 2, 0, RyxErrorArgument},
        {21, 0, 0, RyxOk},
        {24, 5, 6, RyxOk},
        {30, 0x12345678, 0, RyxOk},
        {38, 1, 0, RyxOk},
        {27, 0, 0, RyxOk},
        {27, 2, 0, RyxErrorArgument},
        {28, 2, 0, RyxErrorArgument},
        {29, 2, 0, RyxErrorArgument},
        {28, 1, 0, RyxErrorGeneral},
        {9, 0x76543210, 0, RyxOk},
        {25, 7, 8, RyxOk},
        {26, 0x89ABCDEF, 0, RyxOk},
        {10, 0x1FF, 0, RyxOk},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(RyxOptionSet(test.Option, test.Low, test.High), test.Status) << test.Option << " " << test.Low;
    }
    const OptionArea& options = LibraryContextGet().Options;
    EXPECT_EQ(options.Byte[0], 1);
    EXPECT_EQ(options.Byte[21], 0);
    EXPECT_EQ(options.Byte[28], 0);
    EXPECT_EQ(options.Long24, 0x600000005U);
    EXPECT_EQ(options.Long25, 0x800000007U);
    EXPECT_EQ(options.Word9, 0x76543210U);
    EXPECT_EQ(options.Word26, 0x89ABCDEFU);
    EXPECT_EQ(options.Word30, 0x12345678U);
    EXPECT_EQ(options.Byte[10], 0xFF);
}

TEST(Files, AreReadWhole) {
    LibraryReset();
    const TemporaryFolder folder;
    std::unique_ptr<char[]> block;
    std::uint32_t size = 9;
    ASSERT_EQ(RyxFileRead(folder.Write("text", std::string("a\r\n\0b", 5)).c_str(), &block, &size), RyxOk);
    EXPECT_EQ(std::string(block.get(), size), std::string("a\r\n\0b", 5));
    EXPECT_EQ(RyxFileRead(folder.Write("empty", std::string()).c_str(), &block, &size), RyxOk);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0U);
    size = 9;
    EXPECT_EQ(RyxFileRead((folder.Path + "/missing").c_str(), &block, &size), RyxErrorFileOpen);
    EXPECT_EQ(size, 0U);
}

} // namespace
