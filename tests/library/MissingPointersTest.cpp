// What operations say to a missing pointer.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/API/RyxOption.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryReset.h"
#include "Lib/Common/QelCrypto.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/Flash4kBufferAllocate.h"
#include "Lib/Platform/GetRsdtFromSystemTable.h"
#include "tests/library/Support.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

// Calls an operation with arguments that it takes, of which one pointer after the other is missing.
template <typename... Arguments>
void EachMissing(const char* name, RyxStatus (*operation)(Arguments...), std::type_identity_t<Arguments>... sound) {
    const auto call = [&]<std::size_t Place>() {
        std::tuple<Arguments...> arguments(sound...);
        using Argument = std::tuple_element_t<Place, decltype(arguments)>;
        if constexpr (std::is_pointer_v<Argument>) {
            const bool container = std::is_convertible_v<Argument, const RyxBin*>;
            std::get<Place>(arguments) = nullptr;
            EXPECT_EQ(std::apply(operation, arguments), container ? RyxErrorObject : RyxErrorArgument)
                << name << ", argument " << Place + 1;
        }
    };
    [&]<std::size_t... Place>(std::index_sequence<Place...>) {
        (call.template operator()<Place>(), ...);
    }
    (std::index_sequence_for<Arguments...>{});
}

#define EACH_MISSING(operation, ...) EachMissing(#operation, operation, __VA_ARGS__)

} // namespace

TEST(MissingPointers, AreRefused) {
    LibraryReset();
    constexpr std::uint8_t bytes[] = {1, 4, 0, 0, 0, 0};
    const DmiStruct structure({bytes}, 28);
    RyxBin object{};
    RyxBin* bin = nullptr;
    ArgNode command{};
    ArgNode parameter{};
    command.Kind = ArgNodeCommand;
    command.Params = &parameter;
    char text[] = "1";
    char* arguments[] = {text};
    const char* name = nullptr;
    std::int64_t number = 0;
    std::uint64_t size = 0;
    std::uint32_t length = 0;
    std::uint16_t version = 0;
    std::uint8_t* data = nullptr;
    std::unique_ptr<char[]> block;
    DmiTableCopy copy{};
    std::array<DmiTypeCount, 256> counts{};
    QelSha1Digest digest{};
    EACH_MISSING(RyxArgCommandRegister, text, text, text, text);
    EACH_MISSING(RyxArgParamGet, &command, 0, text, sizeof text);
    EACH_MISSING(RyxArgNumberParse, text, &number);
    EACH_MISSING(RyxArgsSet, 1, arguments);
    EACH_MISSING(RyxFileRead, text, &block, &length);
    EACH_MISSING(RyxPlatformNameGet, &name);
    EACH_MISSING(RyxConsoleSizeGet, &length, &length);
    EACH_MISSING(RyxBinCreate, 1, &bin);
    EACH_MISSING(RyxBinInfoGet, &object, &data, &size);
    EACH_MISSING(RyxBinFree, &object);
    EACH_MISSING(RyxSmbiosDataGet, RyxFieldsPerType, 1, &bin);
    EACH_MISSING(RyxSmbiosAreaGet, 1, 1, 4, &bin);
    EACH_MISSING(RyxSmbiosStringsGet, 1, 1, &bin);
    EACH_MISSING(RyxSmbiosCountsGet, &counts);
    EACH_MISSING(RyxSmbiosEpsDataGet, 0, &bin);
    EACH_MISSING(ArgumentCommandQuery, text);
    EACH_MISSING(ArgumentResponseFileRead, text);
    EACH_MISSING(ArgumentTokensAdd, text, 1);
    EACH_MISSING(ArgumentStringAdd, text, 1);
    EACH_MISSING(DmiStructFieldGet, structure, 14, &bin, false);
    EACH_MISSING(DmiStructAreaGet, structure, 0, &bin);
    EACH_MISSING(DmiStructStringsGet, structure, &bin);
    EACH_MISSING(DmiFirmwareTableRead, &copy);
    EACH_MISSING(DmiTableCopyGet, &copy);
    EACH_MISSING(PhysicalMemoryRead, 0, 1, text);
    EACH_MISSING(PhysicalMemoryWrite, 0, 1, text);
    EACH_MISSING(DriverVersionGet, &version);
    EACH_MISSING(QelSha1, text, 1, &digest);
    Flash4kBuffer buffer;
    EACH_MISSING(Flash4kBufferAllocate, 16, false, &buffer);
    EACH_MISSING(Flash4kBufferRelease, &buffer);
    EACH_MISSING(GetRsdtFromSystemTable, &length);
    EXPECT_EQ(RyxPrintf(nullptr), RyxErrorArgument);
    EXPECT_EQ(RyxArgCommandFind(nullptr, nullptr), RyxErrorArgument);
    EXPECT_EQ(RyxArgParamGet(&command, 0, text, 0), RyxErrorArgument);
    EXPECT_EQ(RyxArgsSet(0, arguments), RyxErrorArgument);
    EXPECT_EQ(RyxFirmwareRequest(0x10000, nullptr, nullptr), RyxErrorArgument);
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
