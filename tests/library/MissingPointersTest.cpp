// What operations say to a missing pointer.
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
#include "Lib/Common/QelCrypto.h"
#include "Lib/Platform/Driver.h"
#include "tests/library/Support.h"

#include <gtest/gtest.h>

TEST(MissingPointers, AreRefused) {
    LibraryReset();
    constexpr std::uint8_t bytes[] = {1, 4, 0, 0, 0, 0};
    const DmiStruct structure({bytes}, 28);
    RyxBin bin{};
    ArgNode command{};
    ArgNode parameter{};
    command.Kind = ArgNodeCommand;
    command.Params = &parameter;
    char text[] = "1";
    char* arguments[] = {text};
    std::int64_t number = 0;
    std::uint64_t size = 0;
    std::uint32_t length = 0;
    std::uint8_t* data = nullptr;
    std::unique_ptr<char[]> block;
    QelSha1Digest digest{};
    const struct {
        const char* Operation;
        RyxStatus Status;
        RyxStatus Expected = RyxErrorArgument;
    } calls[] = {
        {"RyxPrintf", RyxPrintf(nullptr)},
        {"RyxArgCommandRegister: name", RyxArgCommandRegister(nullptr, text, text, text)},
        {"RyxArgCommandRegister: description", RyxArgCommandRegister(text, nullptr, text, text)},
        {"RyxArgCommandRegister: format", RyxArgCommandRegister(text, text, nullptr, text)},
        {"RyxArgCommandRegister: syntax", RyxArgCommandRegister(text, text, text, nullptr)},
        {"RyxArgCommandFind", RyxArgCommandFind(nullptr, nullptr)},
        {"RyxArgParamGet: node", RyxArgParamGet(nullptr, 0, text, sizeof text)},
        {"RyxArgParamGet: buffer", RyxArgParamGet(&command, 0, nullptr, sizeof text)},
        {"RyxArgParamGet: length", RyxArgParamGet(&command, 0, text, 0)},
        {"RyxArgNumberParse: text", RyxArgNumberParse(nullptr, &number)},
        {"RyxArgNumberParse: number", RyxArgNumberParse(text, nullptr)},
        {"RyxArgsSet: count", RyxArgsSet(0, arguments)},
        {"RyxArgsSet: arguments", RyxArgsSet(1, nullptr)},
        {"RyxFileRead: name", RyxFileRead(nullptr, &block, &length)},
        {"RyxFileRead: block", RyxFileRead(text, nullptr, &length)},
        {"RyxFileRead: size", RyxFileRead(text, &block, nullptr)},
        {"RyxPlatformNameGet", RyxPlatformNameGet(nullptr)},
        {"RyxConsoleSizeGet: width", RyxConsoleSizeGet(nullptr, &length)},
        {"RyxConsoleSizeGet: height", RyxConsoleSizeGet(&length, nullptr)},
        {"RyxBinCreate", RyxBinCreate(1, nullptr)},
        {"RyxBinInfoGet: container", RyxBinInfoGet(nullptr, &data, &size), RyxErrorObject},
        {"RyxBinInfoGet: data", RyxBinInfoGet(&bin, nullptr, &size)},
        {"RyxBinInfoGet: size", RyxBinInfoGet(&bin, &data, nullptr)},
        {"RyxBinFree", RyxBinFree(nullptr), RyxErrorObject},
        {"RyxFirmwareRequest", RyxFirmwareRequest(0x10000, nullptr, nullptr)},
        {"RyxSmbiosDataGet", RyxSmbiosDataGet(RyxFieldsPerType, 1, nullptr)},
        {"RyxSmbiosAreaGet", RyxSmbiosAreaGet(1, 1, 4, nullptr)},
        {"RyxSmbiosEpsDataGet", RyxSmbiosEpsDataGet(0, nullptr)},
        {"ArgumentCommandQuery", ArgumentCommandQuery(nullptr)},
        {"ArgumentResponseFileRead", ArgumentResponseFileRead(nullptr)},
        {"ArgumentTokensAdd", ArgumentTokensAdd(nullptr, 1)},
        {"ArgumentStringAdd", ArgumentStringAdd(nullptr, 1)},
        {"DmiStructFieldGet", DmiStructFieldGet(structure, 14, nullptr)},
        {"DmiStructAreaGet", DmiStructAreaGet(structure, 0, nullptr)},
        {"DmiFirmwareTableRead", DmiFirmwareTableRead(nullptr)},
        {"PhysicalMemoryRead", PhysicalMemoryRead(0, 1, nullptr)},
        {"PhysicalMemoryWrite", PhysicalMemoryWrite(0, 1, nullptr)},
        {"DriverVersionGet", DriverVersionGet(nullptr)},
        {"QelSha1: data", QelSha1(nullptr, 1, &digest)},
        {"QelSha1: digest", QelSha1(text, 1, nullptr)},
    };
    for (const auto& call : calls) {
        EXPECT_EQ(call.Status, call.Expected) << call.Operation;
    }
    EXPECT_FALSE(DmiNextStructGet(nullptr));
    EXPECT_EQ(ArgumentParamNodeAdd(nullptr), nullptr);
}

TEST(MissingPointers, AnAbsentArgumentEndsTheCollection) {
    LibraryReset();
    char program[] = "Quarrinet";
    char command[] = "/type";
    char* arguments[] = {program, command, nullptr, command};
    ASSERT_EQ(RyxArgsSet(4, arguments), RyxOk);
    EXPECT_EQ(ArgumentCollect(), RyxErrorArgument);
    EXPECT_EQ(RyxArgCommandFind("type", nullptr), RyxErrorNotFound);
    LibraryReset();
}
