// Missing pointers: every operation that takes one says so, and touches nothing.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryReset.h"
#include "tests/library/Support.h"

#include <gtest/gtest.h>

namespace {

TEST(Pointers, MissingOnesAreRefused) {
    LibraryReset();
    constexpr std::uint8_t bytes[] = {1, 4, 0, 0, 0, 0};
    const DmiStruct structure({bytes}, 28);
    std::uint32_t number = 0;
    struct {
        const char* Operation;
        RyxStatus Status;
    } const cases[] = {
        {"RyxPrintf", RyxPrintf(nullptr)},
        {"RyxConsoleSizeGet", RyxConsoleSizeGet(&number, nullptr)},
        {"RyxBinCreate", RyxBinCreate(1, nullptr)},
        {"RyxFileRead", RyxFileRead("name", nullptr, &number)},
        {"RyxFirmwareRequest", RyxFirmwareRequest(0, nullptr, nullptr)},
        {"RyxSmbiosDataGet", RyxSmbiosDataGet(0, 1, nullptr)},
        {"RyxSmbiosEpsDataGet", RyxSmbiosEpsDataGet(0, nullptr)},
        {"RyxArgCommandRegister", RyxArgCommandRegister("c", "", nullptr, "")},
        {"ArgumentCommandQuery", ArgumentCommandQuery(nullptr)},
        {"ArgumentResponseFileRead", ArgumentResponseFileRead(nullptr)},
        {"ArgumentTokensAdd", ArgumentTokensAdd(nullptr, 1)},
        {"ArgumentStringAdd", ArgumentStringAdd(nullptr, 1)},
        {"DmiStructFieldGet", DmiStructFieldGet(structure, 14, nullptr)},
        {"DmiStructAreaGet", DmiStructAreaGet(structure, 0, nullptr)},
        {"DmiFirmwareTableRead", DmiFirmwareTableRead(nullptr)},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.Status, RyxErrorArgument) << test.Operation;
    }
    EXPECT_FALSE(DmiNextStructGet(nullptr));
    EXPECT_EQ(ArgumentParamNodeAdd(nullptr), nullptr);
}

TEST(Pointers, AnAbsentArgumentEndsTheCollection) {
    LibraryReset();
    char program[] = "Quarrinet";
    char command[] = "/type";
    char* arguments[] = {program, command, nullptr, command};
    ASSERT_EQ(RyxArgsSet(4, arguments), RyxOk);
    EXPECT_EQ(ArgumentCollect(), RyxErrorArgument);
    EXPECT_EQ(RyxArgCommandFind("type", nullptr), RyxErrorNotFound);
    LibraryReset();
}

TEST(CommandList, HasOneMode) {
    LibraryReset();
    RyxArgCommandRegister("one", "", "", "");
    RyxStatus status = RyxOk;
    EXPECT_EQ(Captured([&status] { status = RyxArgHelpPrint(2); }), "");
    EXPECT_EQ(status, RyxErrorUnsupported);
    LibraryReset();
}

} // namespace
